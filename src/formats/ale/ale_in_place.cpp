#include <vekdb/host/text_util.h>
#include "formats/ale/ale_entries.h"
#include "formats/ale/ale_form.h"
#include "formats/ale/ale_lines.h"
#include "formats/delimited/separated_in_place.h"
#include "formats/reading/readers.h"
#include "formats/reading/table_builder.h"

namespace vek::formats {

namespace {

// The heading of a log exchange file with other entries and names: each line that says something
// else is replaced, and entries that are new stand behind the last one.
class AleHeading {
public:
    AleHeading(const Saving& saving, const std::vector<std::string>& names)
        : saving_(saving), names_(names), changed_(changedParameters(saving.log)) {}

    std::string patched(std::string_view came) {
        LineWalk walk(came);
        std::string_view line;
        while (walk.next(line)) {
            const auto begin = static_cast<std::size_t>(line.data() - came.data());
            const std::string_view whole =
                came.substr(begin, came.size() - walk.rest().size() - begin);
            addLine(trimmed(line).empty() ? Part::blank : nextPart(line), line, whole);
        }
        return std::move(text_);
    }

private:
    enum class Part { title, entries, columns, names, data, blank };

    // The filled lines follow one another as a reader takes them.
    Part nextPart(std::string_view line) {
        const bool isBehind = part_ == Part::title || part_ == Part::entries;
        if (!isBegun_)
            isBegun_ = true;
        else if (isBehind)
            part_ = sameText(trimmed(line), "Column") ? Part::columns : Part::entries;
        else
            part_ = part_ == Part::columns ? Part::names : Part::data;
        return part_;
    }

    // Blank lines wait for the line behind them, as a new entry stands in front of them.
    void addLine(Part part, std::string_view line, std::string_view whole) {
        const std::string_view end = endOfLine(whole);
        if (part == Part::blank) {
            blanks_ += whole;
            return;
        }
        if (part == Part::columns) addNewEntries();
        text_ += std::exchange(blanks_, {});
        if (part == Part::entries)
            addEntries(line, whole);
        else if (part == Part::names && !saving_.hasNamesAsTheyCame())
            text_ += concat(namesLine(), end);
        else
            text_ += whole;
        end_ = end;
    }

    void addEntries(std::string_view line, std::string_view whole) {
        const std::vector<AleEntry> entries = aleEntries(line);
        std::string text;
        bool isChanged = false;
        for (const AleEntry& entry : entries) {
            const Source::Parameter* now = changeOf(entry.name);
            isChanged = isChanged || now != nullptr;
            text += text.empty() ? "" : "\t";
            text += now == nullptr ? concat(entry.name, "\t", entry.value)
                                   : aleEntry(std::string(entry.name), now->value, saving_.losses);
        }
        text_ += isChanged ? concat(text, endOfLine(whole)) : std::string(whole);
    }

    const Source::Parameter* changeOf(std::string_view name) const {
        for (const Source::Parameter& one : changed_) {
            if (sameText(one.name, name)) return &one;
        }
        return nullptr;
    }

    void addNewEntries() {
        for (const Source::Parameter& one : changed_) {
            if (wasThere(saving_.log, one.name) || isTableFilesOwn(one.name)) continue;
            const std::string line = aleEntry(one.name, one.value, saving_.losses);
            // A reader would take it for the end of the heading.
            if (sameText(trimmed(line), "Column")) {
                saving_.losses.add("heading entries that would begin the columns, left out",
                                   inQuotes(one.name));
                continue;
            }
            text_ += concat(line, end_);
        }
    }

    std::string namesLine() const {
        AleForm form;
        form.names = names_;
        std::string line = aleNames(form, saving_.losses);
        if (!trimmed(line).empty()) return line;
        throw Failure{unwritable, saving_.output +
                                      ": a log exchange file needs a column with a name, " +
                                      saving_.log.name + " has none"};
    }

    const Saving& saving_;
    const std::vector<std::string>& names_;
    std::vector<Source::Parameter> changed_;
    Part part_ = Part::title;
    bool isBegun_ = false;
    std::string text_;
    std::string blanks_;
    std::string_view end_;
};

class AleInPlace : public SeparatedInPlace {
public:
    explicit AleInPlace(const Saving& saving)
        : SeparatedInPlace(saving, '\t', DelimitedScanner::Quotes::ordinary) {}

    // A tab that closed the row closes it again.
    void add(std::string& text, unsigned row, std::string_view piece) override {
        std::size_t came = 0;
        bool isClosed = false;
        if (!piece.empty()) {
            const std::vector<std::string_view>& cells = cellsOf(piece);
            isClosed = cells.size() == saving().log.source->named + 1 && cells.back().empty();
            came = cells.size() - (isClosed ? 1 : 0);
        }
        const std::size_t count = length(row, came) + (isClosed ? 1 : 0);
        addAleRow(text, rows(), row, count, saving().losses);
    }

    std::string heading(std::string_view came) override {
        const bool isSame =
            saving().hasNamesAsTheyCame() && changedParameters(saving().log).empty();
        if (isSame) return std::string(came);
        const std::vector<std::string> now = names();
        return AleHeading(saving(), now).patched(came);
    }
};

}  // namespace

std::unique_ptr<RowsInPlace> aleInPlace(const Saving& saving) {
    return std::make_unique<AleInPlace>(saving);
}

}  // namespace vek::formats
