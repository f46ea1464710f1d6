#include "tools/vek/report/data.h"

#include <algorithm>

#include "formats/choosing/column_asking.h"
#include "formats/failure.h"
#include "formats/text/width.h"
#include "tools/vek/cli/fitting.h"
#include "tools/vek/report/markup.h"

namespace vek::page {

namespace {

constexpr std::size_t roomOfTable = 170;  // in characters, of a large window

const char* wordOf(ColumnAsking::Kind kind) {
    switch (kind) {
        case ColumnAsking::Kind::text:
            return "text";
        case ColumnAsking::Kind::timecode:
            return "timecode";
        case ColumnAsking::Kind::asShown:
            return "shown";
        case ColumnAsking::Kind::date:
            return "date";
        case ColumnAsking::Kind::range:
            return "range";
        case ColumnAsking::Kind::labelRange:
            return "labels";
        default:
            return "unclear";
    }
}

template <class Texts>
void addTexts(std::string& out, const char* name, const Texts& texts) {
    ((out += ",\"") += name) += "\":[";
    for (std::size_t i = 0; i < texts.size(); ++i) {
        if (i > 0) out += ',';
        addJson(out, texts[i]);
    }
    out += ']';
}

// What a value shares with the one before it, of characters that are one byte everywhere.
std::size_t sharedFront(std::string_view before, std::string_view value) {
    const std::size_t most = std::min(before.size(), value.size());
    std::size_t shared = 0;
    while (shared < most && before[shared] == value[shared] && value[shared] >= ' ' &&
           value[shared] <= '~') {
        ++shared;
    }
    return shared;
}

// Values in their order have much in common with those before them, so each is written without.
void addValues(std::string& out, const std::vector<std::string_view>& values) {
    std::vector<std::uint32_t> shared;
    std::vector<std::string_view> rests;
    std::string_view before;
    for (std::string_view value : values) {
        shared.push_back(static_cast<std::uint32_t>(sharedFront(before, value)));
        rests.push_back(value.substr(shared.back()));
        before = value;
    }
    out += concat(",\"shared\":\"", packedNumbers(shared), "\"");
    addTexts(out, "values", rests);
}

std::string positionOf(unsigned column) {
    return column == noColumn ? "null" : std::to_string(column);
}

void addAsking(std::string& out, const Log& log, unsigned column, const SortedValues& sorted) {
    const ColumnAsking asking = askingOf(log, column);
    out += concat(",\"ask\":\"", wordOf(asking.kind), "\"");
    if (asking.kind == ColumnAsking::Kind::range || asking.kind == ColumnAsking::Kind::labelRange) {
        out += concat(",\"range\":[", positionOf(asking.range.start), ",",
                      positionOf(asking.range.end), "]");
    }
    if (asking.kind != ColumnAsking::Kind::asShown && asking.kind != ColumnAsking::Kind::date) {
        return;
    }
    std::vector<std::string> forms;
    for (std::string_view value : sorted.values) forms.push_back(shownForm(asking.kind, value));
    addTexts(out, "forms", forms);
}

std::vector<std::uint32_t> placesWhere(const std::vector<bool>& is) {
    std::vector<std::uint32_t> places;
    for (std::uint32_t place = 0; place < is.size(); ++place) {
        if (is[place]) places.push_back(place);
    }
    return places;
}

// The widest cell, or name; a value that is no longer in bytes than that is not looked at.
std::size_t naturalWidth(const Log& log, unsigned column, const SortedValues& sorted) {
    std::size_t width = displayWidth(escaped(log.columnName(column))) + 2;
    for (std::string_view value : sorted.values) {
        if (value.size() > width) width = std::max(width, displayWidth(escaped(value)));
    }
    return width;
}

class DataWriter {
public:
    DataWriter(const LogOnPage& log, Output& out) : log_(log), out_(out), sorting_(log.log()) {}

    void write() {
        std::string head = "<script type=\"application/json\">{\"path\":";
        addJson(head, log_.log().path);
        addTexts(head, "options", log_.options());
        head += concat(",\"rows\":", std::to_string(log_.rowCount()), ",\"tagged\":\"",
                       packedNumbers(placesWhere(tags())), "\",\"columns\":[\n");
        out_.write(head);
        for (unsigned column = 0; column < log_.log().columnCount(); ++column) writeColumn(column);
        out_.write(concat("],\"shown\":[", listOf(log_.shown()), "],\"widths\":[", listOf(widths()),
                          "],\"isFieldMap\":", log_.isFieldMap() ? "true" : "false",
                          ",\"isCut\":", log_.isCut() ? "true" : "false", "}</script>\n"));
    }

private:
    std::vector<bool> tags() const {
        std::vector<bool> tags(log_.rowCount());
        for (unsigned row = 0; row < tags.size(); ++row) tags[row] = log_.isTagged(row);
        return tags;
    }

    void writeColumn(unsigned column) {
        const SortedValues sorted = sorting_.valuesOf(column);
        natural_.push_back(naturalWidth(log_.log(), column, sorted));
        std::string text = column == 0 ? "{\"name\":" : ",{\"name\":";
        addJson(text, log_.log().columnName(column));
        addAsking(text, log_.log(), column, sorted);
        text += concat(",\"places\":\"", packedNumbers(sorted.placeOf), "\",\"same\":\"",
                       packedNumbers(placesWhere(sorted.isSameAsBefore)), "\"");
        addValues(text, sorted.values);
        out_.write(text += "}\n");
    }

    // Those that are shown at first are fitted as `vek show` fits them; all others get what a cut
    // column has at least.
    std::vector<std::size_t> widths() const {
        std::vector<std::size_t> all;
        for (std::size_t width : natural_) all.push_back(std::min(width, 2 * narrowestColumn));
        std::vector<std::size_t> shown;
        for (unsigned column : log_.shown()) shown.push_back(natural_[column]);
        shown = fittedWidths(std::move(shown), roomOfTable);
        for (std::size_t i = 0; i < shown.size(); ++i) all[log_.shown()[i]] = shown[i];
        return all;
    }

    template <class Numbers>
    static std::string listOf(const Numbers& numbers) {
        std::string list;
        for (auto number : numbers) list += (list.empty() ? "" : ",") + std::to_string(number);
        return list;
    }

    const LogOnPage& log_;
    Output& out_;
    ValueSorting sorting_;
    std::vector<std::size_t> natural_;
};

}  // namespace

void writeData(const LogOnPage& log, Output& out) {
    DataWriter(log, out).write();
}

}  // namespace vek::page
