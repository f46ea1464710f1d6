#include <algorithm>
#include <unordered_map>

#include <vekdb/host/text_util.h>
#include "formats/input/input.h"
#include "formats/input/progress.h"
#include "formats/json/bare_text.h"
#include "formats/json/json.h"
#include "formats/json/json_text.h"
#include "formats/saving/change_formats.h"
#include "formats/writing/sheet_facts.h"

namespace vek::formats {

namespace {

std::string resolved(const JsonText::String& string) {
    std::string text(string.raw);
    if (string.hasEscapes) text.resize(resolveEscapes(text.data(), text.size()));
    return text;
}

// A name and a value of an object, as they stand and as they are read.
struct Member {
    std::string_view name;  // with its quotes
    std::string_view value;
    std::string readName;
    std::string readValue;
};

// The members of an object that a reader accepted.
class Members {
public:
    explicit Members(std::string_view object)
        : object_(object), text_(object.data(), object.data() + object.size()) {
        text_.take('{');
        do {
            text_.skipBlanks();
            if (text_.peek() == '"') takeMember();
            text_.skipBlanks();
        } while (text_.take(','));
    }

    const std::vector<Member>& all() const { return all_; }

    /// What stands in front of the first name and behind the last value.
    std::string_view opening() const { return all_.empty() ? "{" : upTo(all_.front().name); }
    std::string_view closing() const {
        return all_.empty() ? object_.substr(1) : behind(all_.back().value);
    }
    /// What stands between two members, and between a name and its value.
    std::string_view comma() const {
        return all_.size() < 2 ? ", " : between(all_[0].value, all_[1].name);
    }
    std::string_view colon() const {
        return all_.empty() ? ": " : between(all_[0].name, all_[0].value);
    }
    std::string_view behind(std::string_view piece) const {
        return object_.substr(offset(piece) + piece.size());
    }

    std::string_view between(std::string_view a, std::string_view b) const {
        return behind(a).substr(0, offset(b) - offset(a) - a.size());
    }

private:
    std::size_t offset(std::string_view piece) const {
        return static_cast<std::size_t>(piece.data() - object_.data());
    }
    std::string_view upTo(std::string_view piece) const { return object_.substr(0, offset(piece)); }
    std::string_view from(const char* begin) const {
        return {begin, static_cast<std::size_t>(text_.at() - begin)};
    }

    void takeMember() {
        Member member;
        const char* begin = text_.at();
        member.readName = resolved(*text_.takeString());
        member.name = from(begin);
        text_.skipBlanks();
        text_.take(':');
        text_.skipBlanks();
        begin = text_.at();
        member.readValue = takeValue();
        member.value = from(begin);
        all_.push_back(std::move(member));
    }

    std::string takeValue() {
        if (text_.peek() == '"') return resolved(*text_.takeString());
        if (text_.peek() == '{' || text_.peek() == '[') return takeNested();
        const std::string_view word = *text_.takeWord();
        return word == "null" ? std::string() : std::string(word);
    }

    std::string takeNested() {
        CompactJson found = *compactJson(object_.substr(offset({text_.at(), 0})));
        text_.goTo(text_.at() + found.size);
        return std::move(found.text);
    }

    std::string_view object_;
    JsonText text_;
    std::vector<Member> all_;
};

class ObjectWriter {
public:
    explicit ObjectWriter(const Saving& saving)
        : saving_(saving),
          log_(saving.log),
          source_(*log_.source),
          changesAll_(!saving.hasNamesAsTheyCame()) {
        for (unsigned i = 0; i < source_.columns.size(); ++i) places_[source_.memberNames[i]] = i;
        columnOf_.assign(source_.columns.size(), noColumn);
        for (unsigned column : saving.columns) {
            const unsigned came = source_.whereFrom(column);
            if (came < columnOf_.size()) columnOf_[came] = column;
        }
        for (std::size_t i = 0; i < source_.columns.size(); ++i) {
            hasOrder_ =
                hasOrder_ && i < saving.columns.size() && source_.whereFrom(saving.columns[i]) == i;
        }
    }

    /// Whether no object stays as it is.
    bool changesAll() const { return changesAll_; }

    /// The object of a row, in the place of another.
    std::string object(std::string_view came, unsigned row) {
        const Members members(came);
        std::vector<const Member*> ofColumn(log_.columnCount());
        for (const Member& member : members.all()) {
            const unsigned column = columnOf(member);
            if (column != noColumn) ofColumn[column] = &member;
        }
        return hasOrder_ ? patched(members, ofColumn, row) : remade(members, ofColumn, row);
    }

private:
    unsigned columnOf(const Member& member) const {
        const auto place = places_.find(member.readName);
        return place == places_.end() ? noColumn : columnOf_[place->second];
    }

    // Of a name that stands twice the last value counts.
    std::string patched(const Members& members, const std::vector<const Member*>& ofColumn,
                        unsigned row) {
        std::string out(members.opening());
        for (const Member& member : members.all()) {
            const unsigned column = columnOf(member);
            out += name(column, &member);
            out += members.between(member.name, member.value);
            const bool counts = ofColumn[column] == &member;
            out += counts ? value(column, row, &member) : std::string(member.value);
            if (&member != &members.all().back()) {
                out += members.between(member.value, (&member)[1].name);
            }
        }
        append(out, members, ofColumn, row);
        return out += members.closing();
    }

    void append(std::string& out, const Members& members,
                const std::vector<const Member*>& ofColumn, unsigned row) const {
        bool isFirst = members.all().empty();
        for (unsigned column : saving_.columns) {
            if (ofColumn[column] != nullptr || !isToAppend(column, row)) continue;
            if (!isFirst) out += members.comma();
            out += concat(name(column, nullptr), members.colon(), value(column, row, nullptr));
            isFirst = false;
        }
    }

    std::string remade(const Members& members, const std::vector<const Member*>& ofColumn,
                       unsigned row) {
        std::string out(members.opening());
        bool isFirst = true;
        for (unsigned column : saving_.columns) {
            const Member* const came = ofColumn[column];
            if (came == nullptr && !isToAppend(column, row)) continue;
            if (!isFirst) out += members.comma();
            out += concat(name(column, came), members.colon(), value(column, row, came));
            isFirst = false;
        }
        return out += members.closing();
    }

    bool isToAppend(unsigned column, unsigned row) const {
        const bool isNew = source_.whereFrom(column) == source_.columns.size();
        return isNew || !log_.cell(row, column).empty() || log_.bare.of(row, column) != Bare::no;
    }

    std::string name(unsigned column, const Member* came) const {
        if (came != nullptr) {
            const std::string& was = source_.columns[source_.whereFrom(column)].name;
            if (was == log_.columnName(column)) return std::string(came->name);
        }
        bool wasChanged = false;
        std::string text = jsonName(log_.columnName(column), wasChanged);
        if (wasChanged) {
            saving_.losses.add("column names that are no UTF-8", inQuotes(log_.columnName(column)));
        }
        return text;
    }

    std::string placeOf(unsigned row, unsigned column) const {
        return concat(log_.name, ":", std::to_string(log_.lineOf(row)), ":",
                      log_.columnName(column));
    }

    // A number stays one where the new value is one, too, and so does what is nested.
    std::string value(unsigned column, unsigned row, const Member* came) const {
        const std::string_view cell = log_.cell(row, column);
        if (came != nullptr && came->readValue == cell) return std::string(came->value);
        bool wasChanged = false;
        std::string text;
        addJsonValue(text, cell, log_.bare.of(row, column), wasChanged);
        if (wasChanged) {
            saving_.losses.add("cells that are no UTF-8", placeOf(row, column));
        }
        return text;
    }

    const Saving& saving_;
    const Log& log_;
    const Source& source_;
    bool changesAll_;                                   // asked once: names can be long
    std::unordered_map<std::string, unsigned> places_;  // of the columns as they came
    std::vector<unsigned> columnOf_;                    // what they are now
    bool hasOrder_ = true;                              // those that came stand first, all of them
};

class JsonInPlace {
public:
    JsonInPlace(const Saving& saving, const std::vector<unsigned>& rows)
        : log_(saving.log),
          places_(log_.source->places),
          rows_(rows),
          reader_(*log_.source->input),
          writer_(saving) {}

    PatchedText make() {
        if (haveOnlyGone())
            thinOut();
        else
            rearrange();
        return std::move(text_);
    }

private:
    bool isNew(unsigned row) const { return row >= places_.count(); }

    // Whether the rows are some of those that came, in their order.
    bool haveOnlyGone() const {
        return std::is_sorted(rows_.begin(), rows_.end()) &&
               (rows_.empty() || !isNew(rows_.back()));
    }

    void thinOut() {
        Progress progress(log_.opening.watcher, "writing", rows_.size());
        std::size_t next = 0;
        for (std::size_t i = 0; i < rows_.size(); ++i) {
            progress.reach(i);
            putGaps(next, rows_[i]);
            put(rows_[i]);
            next = rows_[i] + std::size_t{1};
        }
        putGaps(next, places_.count());
    }

    // What stands between rows stays where it is, whatever rows it is between; what is more stands
    // behind the last one.
    void rearrange() {
        if (places_.count() == 0) return fillEmpty();
        const std::size_t held = std::min(rows_.size(), places_.count());
        Progress progress(log_.opening.watcher, "writing", rows_.size());
        for (std::size_t i = 0; i < rows_.size(); ++i) {
            progress.reach(i);
            if (i < held)
                text_.keep(places_.gapBefore(i));
            else
                text_.own() += separator();
            put(rows_[i]);
        }
        putGaps(held, places_.count());
    }

    // Of a log without rows there is an array at most.
    void fillEmpty() {
        const Gap all = gapBefore(0);
        const std::size_t bracket = all.text.find('[');
        const bool isArray = bracket != std::string::npos;
        const std::uint64_t middle = isArray ? all.range.begin + bracket + 1 : all.range.end;
        text_.keep({all.range.begin, middle});
        for (std::size_t i = 0; i < rows_.size(); ++i) {
            if (i > 0) text_.own() += isArray ? ",\n" : "\n";
            put(rows_[i]);
        }
        text_.keep({middle, all.range.end});
    }

    // In front of a row that comes behind all others.
    std::string separator() {
        const bool isArray = gapBefore(places_.count()).text.find(']') != std::string::npos;
        if (places_.count() > 1) {
            const Gap gap = gapBefore(places_.count() - 1);
            const bool hasComma = gap.text.find(',') != std::string::npos;
            if (!gap.hasBrackets() && hasComma == isArray) return gap.text;
        }
        return isArray ? ",\n" : "\n";
    }

    // What stands between rows: a comma, or the brackets of arrays.
    struct Gap {
        Range range;
        std::string text;
        bool hasBrackets() const { return text.find_first_of("[]") != std::string::npos; }
    };

    // From the one in front of a row to that in front of another; rows between them go.
    void putGaps(std::size_t first, std::size_t last) {
        if (first == last) return text_.keep(places_.gapBefore(last));
        Gap gap = gapBefore(first);
        bool isOne = true;
        const std::vector<std::size_t>& all = gapsWithBrackets();
        for (auto row = std::upper_bound(all.begin(), all.end(), first);
             row != all.end() && *row <= last; ++row) {
            Gap next = gapBefore(*row);
            isOne = isOne && !gap.hasBrackets();
            gap = gap.hasBrackets() ? Gap{{}, withoutCommas(gap.text + next.text)} : next;
        }
        if (isOne)
            text_.keep(gap.range);
        else
            text_.own() += gap.text;
    }

    const std::vector<std::size_t>& gapsWithBrackets() {
        std::optional<std::vector<std::size_t>>& known = log_.source->gapsWithBrackets;
        if (known) return *known;
        known.emplace();
        for (std::size_t row = 0; row <= places_.count(); ++row) {
            if (gapBefore(row).hasBrackets()) known->push_back(row);
        }
        return *known;
    }

    Gap gapBefore(std::size_t row) {
        const Range range = places_.gapBefore(row);
        return {range, std::string(reader_.read(range))};
    }

    static std::string withoutCommas(std::string text) {
        std::erase(text, ',');
        return text;
    }

    void put(unsigned row) {
        if (isNew(row)) {
            text_.own() += writer_.object("{}", row);
            return;
        }
        const bool mayDiffer = writer_.changesAll() || log_.table->get_record(row)->get_changed();
        if (!mayDiffer) return text_.keep(places_.row(row));
        const std::string_view came = reader_.read(places_.row(row));
        const std::string now = writer_.object(came, row);
        if (now == came)
            text_.keep(places_.row(row));
        else
            text_.own() += now;
    }

    const Log& log_;
    const RowPlaces& places_;
    const std::vector<unsigned>& rows_;
    SourceReader reader_;
    ObjectWriter writer_;
    PatchedText text_;
};

}  // namespace

PatchedText jsonInPlace(const Saving& saving, const std::vector<unsigned>& rows) {
    if (rows.empty()) loseNames(saving.log, saving.columns, saving.losses);
    return JsonInPlace(saving, rows).make();
}

}  // namespace vek::formats
