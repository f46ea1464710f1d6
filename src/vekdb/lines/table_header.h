#pragma once

#include <cstddef>
#include <string_view>

#include <vekdb/record.h>
#include "vekdb/lines/header_receiver.h"

class TextFile;

/// Reads what stands before the records of a table file: parameters and column header.
class TableHeader {
public:
    /// How the parameter block ended; the numbers are what `read_params` answers.
    enum class Block {
        missing,  ///< the file does not begin with one; the line stands in `line`
        magic,    ///< at the magic line, which stands in `line`
        names,    ///< at a line without a colon, with no magic line behind it
        broken,   ///< at the end of the file, or a magic line follows a line without a colon
    };

    /// `line` holds the line read last.
    TableHeader(TextFile& file, dbrecord& line, HeaderReceiver& receiver)
        : file_(file), line_(line), receiver_(receiver) {}

    /// Whether the file may begin with parameters, as far as the beginning of its text tells:
    /// one of another kind is not read on for the end of its first line.
    bool mayBegin() const;
    Block readParameters();
    /// Parameters and columns. False: the file is not one to be loaded, which the receiver was told
    /// where the header's lines do not fit together.
    bool readColumns(bool requireMagic);

private:
    bool hasLine() const;
    std::size_t readLine();
    std::string_view first() const { return line_.fieldView(0); }
    Block readFurtherParameters();
    Block endWithoutColon();
    bool magicFollows();
    void storeParameter();
    bool readColumnHeader();
    bool takeNamesOnly();
    bool refuse(int line);
    void nameColumns();

    TextFile& file_;
    dbrecord& line_;
    HeaderReceiver& receiver_;
    unsigned columns_ = 0;
};
