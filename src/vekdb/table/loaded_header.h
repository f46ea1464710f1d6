#pragma once

#include "vekdb/lines/header_receiver.h"

class vekdb;
struct TableParts;

/// Gives a table the parameters and columns of a file. Types and names that stand there are
/// stored through the table, whose class may be one of its own.
class LoadedHeader final : public HeaderReceiver {
public:
    LoadedHeader(vekdb& table, TableParts& parts) : table_(table), parts_(parts) {}

    void beginParameters() override;
    void addParameter(std::string_view name, std::string_view value) override;
    void setRevision(int revision) override;
    unsigned announceColumns(std::size_t count) override;
    void makeColumns() override;
    void setType(unsigned column, DBFieldTypes::eType type) override;
    void guessType(unsigned column, bool holdsTimecodes) override;
    void endTypes() override;
    void setName(unsigned column, const char* name) override;
    void refuse(int line) override;

private:
    vekdb& table_;
    TableParts& parts_;
};
