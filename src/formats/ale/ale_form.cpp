#include "formats/ale/ale_form.h"

#include <algorithm>
#include <utility>

#include "formats/text/text_lines.h"
#include "formats/text/written_names.h"
#include "formats/timecode/clip_columns.h"
#include "formats/timecode/range_names.h"

namespace vek::formats {

namespace {

std::string listed(const std::vector<std::string>& words) {
    std::string list;
    for (const std::string& word : words) list += concat(list.empty() ? "" : ", ", word);
    return list;
}

class FormMaker {
public:
    FormMaker(const Sheet& sheet, const WriteStyle& style, const std::string& output,
              Losses& losses)
        : sheet_(sheet),
          terms_(*sheet.log.opening.terms),
          style_(style),
          output_(output),
          losses_(losses) {
        for (unsigned i = 0; i < sheet.columns.size(); ++i) form_.names.push_back(sheet.name(i));
        isSaid_.resize(form_.names.size());
        form_.heading = ownParameters(sheet.log);
    }

    AleForm make() {
        for (const std::string& text : style_.ale.map) applyMap(text);
        setEntry("VIDEO_FORMAT", style_.ale.videoFormat);
        setEntry("AUDIO_FORMAT", style_.ale.audioFormat);
        setEntry("FPS", style_.rate);
        if (sheet_.log.format != Format::ale) nameKnownColumns();
        addTracks();
        if (sheet_.log.format != Format::ale) askForRest();
        return std::move(form_);
    }

private:
    static constexpr std::size_t nowhere = static_cast<std::size_t>(-1);

    // "OLD=NEW"; either name may hold further signs of equality where only one way names a column.
    void applyMap(const std::string& text) {
        const std::optional<WrittenName> bracketed = bracketedName(text);
        std::size_t equals = text.find('=', bracketed ? bracketed->size : 0);
        const std::size_t first = equals;
        while (equals != std::string::npos && !hasColumn(text.substr(0, equals))) {
            equals = text.find('=', equals + 1);
        }
        if (equals == std::string::npos) equals = first;
        if (equals == std::string::npos || equals == 0 || equals + 1 == text.size()) {
            throw Failure{wrongUsage,
                          concat(terms_.names, ": ", inQuotes(text), ", expected OLD=NEW")};
        }
        rename(placeOf(sheet_.log.requireColumn(text.substr(0, equals))), text,
               text.substr(equals + 1));
    }

    bool hasColumn(const std::string& name) const {
        return sheet_.log.findColumn(name) != noColumn;
    }

    void rename(std::size_t place, const std::string& text, const std::string& name) {
        if (place == nowhere) {
            throw Failure{wrongUsage, concat(terms_.names, ": ", inQuotes(text),
                                             " is about a column that is not written")};
        }
        std::size_t other = placeOfName(name);
        if (other != nowhere && other != place) {
            throw Failure{wrongUsage,
                          concat(terms_.names, ": ", inQuotes(text), ", but there is a column ",
                                 inQuotes(form_.names[other]), " already")};
        }
        form_.names[place] = name;
        isSaid_[place] = 1;
    }

    std::size_t placeOf(unsigned column) const {
        auto place = std::find(sheet_.columns.begin(), sheet_.columns.end(), column);
        if (place == sheet_.columns.end()) return nowhere;
        return static_cast<std::size_t>(place - sheet_.columns.begin());
    }

    std::size_t placeOfName(const std::string& name) const {
        auto found = std::find_if(form_.names.begin(), form_.names.end(),
                                  [&](const std::string& own) { return sameText(own, name); });
        if (found == form_.names.end()) return nowhere;
        return static_cast<std::size_t>(found - form_.names.begin());
    }

    void setEntry(const char* name, const std::string& value) {
        if (value.empty()) return;
        auto entry =
            std::find_if(form_.heading.begin(), form_.heading.end(),
                         [&](const ParameterText& own) { return sameText(own.name, name); });
        if (entry == form_.heading.end())
            form_.heading.push_back({name, value});
        else
            entry->value = value;
    }

    void nameKnownColumns() {
        const Log& log = sheet_.log;
        name("Name", firstColumn(log, {"Clip Name", "Clip", "Shot Name"}));
        name("Tracks", firstColumn(log, {"Track", "Channels"}));
        RangeColumns source = sourceColumns(log);
        name(sourceOfExchange.start, source.start);
        name(sourceOfExchange.end, source.end);
        name("Tape", reelColumn(log));
    }

    // The column gets the name, unless another has it or the person named that column.
    void name(const std::string& name, unsigned column) {
        std::size_t place = placeOfName(name);
        if (place == nowhere && column != noColumn) place = placeOf(column);
        if (place == nowhere || isSaid_[place] || form_.names[place] == name) return;
        std::string old = std::exchange(form_.names[place], name);
        losses_.addEach(concat(output_, ": column ", inQuotes(old), " is written as ", name,
                               ", its name in editing systems; keep it with ", terms_.names, " ",
                               inQuotes(old + "=" + old)));
    }

    void addTracks() {
        if (style_.ale.tracks.empty()) return;
        if (placeOfName("Tracks") != nowhere) {
            throw Failure{wrongUsage, concat(terms_.tracks, ": there is a column Tracks already")};
        }
        form_.tracks = style_.ale.tracks;
    }

    void askForRest() {
        std::vector<std::string> columns;
        for (const char* name :
             {"Name", "Tracks", sourceOfExchange.start, sourceOfExchange.end, "Tape"}) {
            bool isAdded = std::string_view(name) == "Tracks" && !form_.tracks.empty();
            if (!isAdded && placeOfName(name) == nowhere) columns.push_back(name);
        }
        std::vector<std::string> entries;
        std::vector<std::string> options;
        askForEntry("VIDEO_FORMAT", terms_.likelyVideo, entries, options);
        askForEntry("AUDIO_FORMAT", terms_.likelyAudio, entries, options);
        askForEntry("FPS", terms_.likelyRate, entries, options);
        if (!entries.empty()) {
            losses_.addEach(output_ + ": editing systems expect " + listed(entries) +
                            " in the heading; say what it is, such as " + listed(options));
        }
        if (columns.empty()) return;
        bool lacksTracks = std::find(columns.begin(), columns.end(), "Tracks") != columns.end();
        losses_.addEach(
            concat(output_, ": editing systems expect columns ", listed(columns),
                   "; say which one it is with ", terms_.names, " COLUMN=", columns.front(),
                   lacksTracks ? concat(", or the tracks of all with ", terms_.likelyTracks) : ""));
    }

    void askForEntry(const char* name, const char* option, std::vector<std::string>& entries,
                     std::vector<std::string>& options) const {
        bool isThere =
            std::any_of(form_.heading.begin(), form_.heading.end(),
                        [&](const ParameterText& own) { return sameText(own.name, name); });
        if (isThere) return;
        entries.push_back(name);
        options.push_back(option);
    }

    const Sheet& sheet_;
    const Terms& terms_;
    const WriteStyle& style_;
    const std::string& output_;
    Losses& losses_;
    AleForm form_;
    std::vector<char> isSaid_;  // columns whose names the person said
};

}  // namespace

AleForm aleForm(const Sheet& sheet, const WriteStyle& style, const std::string& output,
                Losses& losses) {
    return FormMaker(sheet, style, output, losses).make();
}

}  // namespace vek::formats
