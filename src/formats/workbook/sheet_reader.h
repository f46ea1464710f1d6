#pragma once

#include <string>
#include <string_view>

#include "formats/log/log.h"
#include "formats/workbook/sheet_cells.h"
#include "formats/workbook/workbook_parts.h"

namespace vek::formats {

/// What the cells of a sheet refer to.
struct SheetContext {
    const SharedTexts& texts;
    const CellStyles& styles;
    bool from1904 = false;
};

/// Takes the cells of a sheet as the sheet shows them. What it cannot use is told.
class SheetReader : public XmlReceiver {
public:
    SheetReader(const SheetContext& context, Log& log) : context_(context), log_(log) {}

    SheetCells cells;

    void begin(std::string_view name, const XmlAttributes& attributes) override;
    void end(std::string_view name) override;
    void text(std::string_view piece) override;
    /// Tells what is to be said of the sheet as a whole. To be called behind its end.
    void finish();

    /// Bytes of all texts so far.
    std::size_t textSize() const { return textSize_; }

private:
    enum class Kind { number, shared, inlined, formula, truth, error, date };

    static Kind kindOf(std::string_view name);
    void beginRow(const XmlAttributes& attributes);
    void beginCell(const XmlAttributes& attributes);
    void endCell();
    void placeCell(std::string_view reference);
    std::string_view shownText();
    std::string_view sharedText();
    std::string_view numberText();
    std::string_view dateText();
    void addCell(std::string_view text);
    void report(const char* what, const char* expected, const char* outcome);

    SheetContext context_;
    Log& log_;
    std::size_t row_ = 0;
    unsigned column_ = 0;
    unsigned nextColumn_ = 0;
    bool isInCell_ = false;
    bool isValue_ = false;
    bool hasFormula_ = false;
    bool hasInlined_ = false;
    Kind kind_ = Kind::number;
    std::size_t style_ = 0;
    std::string value_;
    std::string shown_;
    RunText run_;
    std::size_t merged_ = 0;
    std::size_t textSize_ = 0;
};

}  // namespace vek::formats
