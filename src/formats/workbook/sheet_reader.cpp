#include "formats/workbook/sheet_reader.h"

#include <charconv>
#include <cmath>
#include <optional>

#include "formats/workbook/written_date.h"

namespace vek::formats {

namespace {

template <class Number>
std::optional<Number> numberOf(std::string_view text) {
    Number number = 0;
    if (text.starts_with('+')) text.remove_prefix(1);
    const char* const last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, number);
    if (text.empty() || end != last || error != std::errc()) return {};
    return number;
}

}  // namespace

SheetReader::Kind SheetReader::kindOf(std::string_view name) {
    if (name == "s") return Kind::shared;
    if (name == "inlineStr") return Kind::inlined;
    if (name == "str") return Kind::formula;
    if (name == "b") return Kind::truth;
    if (name == "e") return Kind::error;
    return name == "d" ? Kind::date : Kind::number;
}

void SheetReader::begin(std::string_view name, const XmlAttributes& attributes) {
    if (isInCell_) {
        if (name == "v") isValue_ = true;
        if (name == "f") hasFormula_ = true;
        if (name == "is") hasInlined_ = true;
        return run_.begin(name);
    }
    if (name == "row") beginRow(attributes);
    if (name == "c") beginCell(attributes);
    if (name == "mergeCell") ++merged_;
}

void SheetReader::end(std::string_view name) {
    run_.end(name);
    if (name == "v") isValue_ = false;
    if (name == "c" && isInCell_) endCell();
    if (name == "row") cells.endRow(static_cast<std::uint32_t>(row_));
}

void SheetReader::text(std::string_view piece) {
    if (!isInCell_) return;
    if (isValue_)
        value_ += piece;
    else if (hasInlined_)
        run_.add(piece, value_);
}

// A row or a cell without a place follows the one before it.
void SheetReader::beginRow(const XmlAttributes& attributes) {
    const std::string_view place = attributes["r"];
    const std::optional<std::size_t> number = numberOf<std::size_t>(place);
    const bool isPlace = number && *number >= 1 && *number <= mostSheetRows;
    column_ = nextColumn_ = 0;
    row_ = isPlace ? *number : row_ + 1;
    if (isPlace || place.empty()) return;
    log_.report([&]() -> Problem {
        return {row_, "", "a row " + inQuotes(place), "a number from 1 to 1048576",
                "it is taken for the one behind the row before it"};
    });
}

void SheetReader::beginCell(const XmlAttributes& attributes) {
    isInCell_ = true;
    hasFormula_ = hasInlined_ = isValue_ = false;
    run_ = {};
    value_.clear();
    kind_ = kindOf(attributes["t"]);
    style_ = numberOf<std::size_t>(attributes["s"]).value_or(0);
    placeCell(attributes["r"]);
}

void SheetReader::placeCell(std::string_view reference) {
    column_ = reference.empty() ? nextColumn_ : columnOfReference(reference);
    if (column_ >= mostSheetColumns && !reference.empty()) {
        column_ = nextColumn_;
        report("a place that no sheet has", "one from A1 to XFD1048576",
               "it is taken for the one behind the cell before it");
    }
    nextColumn_ = column_ + 1;
}

void SheetReader::endCell() {
    isInCell_ = false;
    if (column_ >= mostSheetColumns) {
        return report("a cell behind the last column", "at most 16384", "it is not read");
    }
    const std::string_view text = shownText();
    // An empty text that a program wrote on purpose is a cell, one that a formula gives is none.
    const bool isThere = !text.empty() || (kind_ == Kind::inlined && hasInlined_);
    if (isThere) addCell(text);
    if (hasFormula_ && value_.empty() && kind_ != Kind::formula) {
        report("a formula without its value", "what it gives",
               "the cell is empty; open the workbook in a spreadsheet program and save it");
    }
}

void SheetReader::addCell(std::string_view text) {
    textSize_ += text.size();
    if (cells.add(column_, text)) return;
    report("a second cell in this place", "one", "it is not read");
}

std::string_view SheetReader::shownText() {
    switch (kind_) {
        case Kind::shared:
            return sharedText();
        case Kind::inlined:
        case Kind::formula:
            resolveWrittenOut(value_, 0);
            return value_;
        case Kind::truth:
            if (value_.empty()) return {};
            return value_ == "1" || value_ == "true" ? "TRUE" : "FALSE";
        case Kind::number:
            return numberText();
        case Kind::date:
            return dateText();
        default:
            return value_;
    }
}

std::string_view SheetReader::sharedText() {
    if (value_.empty()) return {};
    const std::optional<std::size_t> number = numberOf<std::size_t>(value_);
    if (number && *number < context_.texts.count()) return context_.texts[*number];
    report("a text that the workbook does not have", "the number of one", "the cell is empty");
    return {};
}

std::string_view SheetReader::numberText() {
    if (value_.empty()) return {};
    const std::optional<double> number = numberOf<double>(value_);
    if (!number || !std::isfinite(*number)) {
        report("a number that is none", "digits", "its characters are kept");
        return value_;
    }
    shown_ = context_.styles.format(style_).shown(*number, context_.from1904);
    return shown_;
}

// A moment that is written out is shown by the format of its cell, as its number is.
std::string_view SheetReader::dateText() {
    const NumberFormat& format = context_.styles.format(style_);
    if (!format.isForDates()) return value_;
    const std::optional<double> number = writtenDate(value_, context_.from1904);
    if (!number) return value_;
    shown_ = format.shown(*number, context_.from1904);
    return shown_;
}

void SheetReader::report(const char* what, const char* expected, const char* outcome) {
    log_.report([&]() -> Problem {
        return {row_, lettersOfColumn(column_), what, expected, outcome};
    });
}

void SheetReader::finish() {
    if (merged_ == 0) return;
    log_.report([&]() -> Problem {
        return {0,
                "",
                counted(merged_, "range of merged cells", "ranges of merged cells"),
                "cells of their own",
                "the first cell of each has the text, the others are empty",
                false};
    });
}

}  // namespace vek::formats
