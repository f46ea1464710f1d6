#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "formats/workbook/number_format.h"
#include "formats/workbook/xml_stream.h"
#include "formats/workbook/zip_archive.h"

/// What a workbook says beside its sheets.
namespace vek::formats {

/// The parts that a part of a workbook leads to.
class Relations : public XmlReceiver {
public:
    /// `folder` is that of the part, "xl/".
    explicit Relations(std::string folder) : folder_(std::move(folder)) {}

    struct Target {
        std::string id;
        std::string kind;  ///< "worksheet", "sharedStrings", ...
        std::string entry;
    };
    const Target* byId(std::string_view id) const;
    const Target* byKind(std::string_view kind) const;

    void begin(std::string_view name, const XmlAttributes& attributes) override;
    void end(std::string_view) override {}
    void text(std::string_view) override {}

private:
    std::string folder_;
    std::vector<Target> targets_;
};

class WorkbookSheets : public XmlReceiver {
public:
    struct Sheet {
        std::string name;
        std::string relation;
        bool isHidden = false;
    };
    std::vector<Sheet> sheets;
    bool from1904 = false;

    void begin(std::string_view name, const XmlAttributes& attributes) override;
    void end(std::string_view) override {}
    void text(std::string_view) override {}
};

/// How cells show their numbers.
class CellStyles : public XmlReceiver {
public:
    /// The format of a cell's style, General for one that there is not.
    const NumberFormat& format(std::size_t style) const;

    void begin(std::string_view name, const XmlAttributes& attributes) override;
    void end(std::string_view name) override;
    void text(std::string_view) override {}

private:
    std::unordered_map<unsigned, NumberFormat> own_;
    std::unordered_map<unsigned, NumberFormat> known_;  // that styles name
    std::vector<unsigned> numbers_;                     // of the format of each style
    bool isInCells_ = false;
    NumberFormat general_;
};

/// Characters of runs, without those that say how others are spoken.
class RunText {
public:
    void begin(std::string_view name);
    void end(std::string_view name);
    void add(std::string_view piece, std::string& to) const {
        if (isText_ && spoken_ == 0) to += piece;
    }

private:
    bool isText_ = false;
    std::size_t spoken_ = 0;
};

/// The texts that cells share.
class SharedTexts : public XmlReceiver {
public:
    std::size_t count() const { return ends_.size(); }
    std::string_view operator[](std::size_t number) const {
        const std::size_t begin = number == 0 ? 0 : ends_[number - 1];
        return std::string_view(texts_).substr(begin, ends_[number] - begin);
    }

    void begin(std::string_view name, const XmlAttributes& attributes) override;
    void end(std::string_view name) override;
    void text(std::string_view piece) override;

private:
    std::string texts_;
    std::vector<std::size_t> ends_;
    RunText run_;
};

/// Puts the characters in for _x000D_ and its like, which XML cannot hold, from a place on.
void resolveWrittenOut(std::string& text, std::size_t from);

/// Reads a part of a workbook to its end.
void readPart(ZipArchive& archive, const std::string& entry, const std::string& file,
              XmlReceiver& receiver);

}  // namespace vek::formats
