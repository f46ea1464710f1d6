#include "tools/vek/cli/completing.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <unordered_map>

#include <vekdb/host/text_util.h>
#include "formats/log/column_names.h"
#include "formats/text/name_list.h"
#include "formats/text/text_lines.h"
#include "formats/text/width.h"
#include "formats/text/written_names.h"
#include "tools/vek/cli/log_head.h"
#include "tools/vek/cli/reading.h"

namespace vek {

namespace {

using Words = std::vector<Completion::Word>;

constexpr std::size_t mostValues = 200;
constexpr std::size_t mostUnpacked = 16 << 20;  // of a log that is packed
constexpr std::size_t longestValue = 200;       // bytes
constexpr std::string_view conditionSigns = "=<>~!";

// What stands on the line in front of the word in work: options with their values, arguments, and
// the option that waits for its value.
class Line {
public:
    Line(const Command& command, const std::vector<std::string>& words) : command_(command) {
        for (const std::string& word : words) take(word);
    }

    /// The same line with the word in work, unless that is an option, and those behind it.
    Line with(const std::string& word, const std::vector<std::string>& behind) const {
        Line whole = *this;
        const bool isOption = awaiting_ == nullptr && word.starts_with('-');
        if (!isOption) whole.take(word);
        for (const std::string& one : behind) whole.take(one);
        return whole;
    }

    const Option* awaiting() const { return awaiting_; }
    bool hasEnded() const { return hasEnded_; }
    const std::vector<std::string>& arguments() const { return arguments_; }
    const Command& command() const { return command_; }

    std::string argument(std::string_view name) const {
        for (std::size_t i = 0; i < arguments_.size() && i < command_.arguments.size(); ++i) {
            if (name == command_.arguments[i].name) return arguments_[i];
        }
        return {};
    }
    bool has(const std::string& option) const { return values_.contains(option); }

    const Option* optionNamed(std::string_view name) const {
        for (const Option& option : command_.options) {
            const bool isIt = longName(option) == name || shortName(option) == name;
            if (isIt && !name.empty()) return &option;
        }
        return nullptr;
    }

    /// The options as far as they say how logs are read. Later ones that are wrong do no harm.
    Args readingArgs() const {
        Args args;
        for (const char* name :
             {"from", "delimiter", "encoding", "skip-lines", "no-header", "sheet"}) {
            auto known = values_.find(concat("--", name));
            if (known != values_.end()) args.set(name, {known->second});
        }
        return args;
    }

private:
    void take(const std::string& word) {
        if (awaiting_ != nullptr) return give(word);
        const bool isOption = !hasEnded_ && word.size() > 1 && word[0] == '-';
        if (!isOption) return arguments_.push_back(word);
        if (word == "--") {
            hasEnded_ = true;
            return;
        }
        takeOption(word);
    }

    void takeOption(const std::string& word) {
        const std::size_t equals = word.find('=');
        const bool isLong = word.starts_with("--");
        const Option* option = optionNamed(isLong ? word.substr(0, equals) : word.substr(0, 2));
        if (option == nullptr) return takeUnknown(word);
        if (*option->value == '\0') {
            values_[longName(*option)] = "true";
            return;
        }
        awaiting_ = option;
        if (isLong && equals != std::string::npos) return give(word.substr(equals + 1));
        if (!isLong && word.size() > 2) give(word.substr(2));
    }

    // "-12" is a number of frames.
    void takeUnknown(const std::string& word) {
        if (isAsciiDigit(word[1])) arguments_.push_back(word);
    }

    void give(const std::string& value) {
        values_[longName(*awaiting_)] = value;
        awaiting_ = nullptr;
    }

    const Command& command_;
    const Option* awaiting_ = nullptr;
    bool hasEnded_ = false;
    std::vector<std::string> arguments_;
    std::unordered_map<std::string, std::string> values_;
};

// A shell shows it as it is, and it can be put into a line.
bool canBeShown(std::string_view text) {
    return text.size() <= longestValue && escaped(text) == text;
}

// A column's name as it is written where some signs mean something else.
class WrittenColumns {
public:
    WrittenColumns(const Log& log, std::string_view signs) : log_(log), signs_(signs) {}

    /// All of them; between brackets where the word that is being written begins so.
    std::vector<std::string> all(bool inBrackets) const {
        std::vector<std::string> names;
        for (unsigned column = 0; column < log_.columnCount(); ++column) {
            std::string name = written(column, inBrackets);
            if (!name.empty()) names.push_back(std::move(name));
        }
        return names;
    }

private:
    std::string written(unsigned column, bool inBrackets) const {
        const std::string name = log_.columnName(column);
        if (!canBeShown(name)) return {};
        const std::string turn = concat("#", std::to_string(turnOf(column)));
        const bool isRepeated = repeatedNameOf(log_, column) != nullptr;
        if (!inBrackets && standsFree(name)) {
            const std::string free = isRepeated ? name + turn : name;
            if (says(free, column)) return free;
        }
        const std::string bracketed = formats::inBrackets(name);
        if (!isRepeated && says(bracketed, column)) return bracketed;
        return says(bracketed + turn, column) ? bracketed + turn : std::string();
    }

    std::size_t turnOf(unsigned column) const {
        const RepeatedName* repeated = repeatedNameOf(log_, column);
        if (repeated == nullptr) return 1;
        const auto& columns = repeated->columns;
        return static_cast<std::size_t>(std::find(columns.begin(), columns.end(), column) -
                                        columns.begin()) +
               1;
    }

    bool standsFree(const std::string& name) const {
        return !name.empty() && name.front() != '[' && trimmed(name) == name &&
               name.find_first_of(signs_) == std::string::npos;
    }

    bool says(const std::string& text, unsigned column) const {
        try {
            return log_.requireColumn(text) == column;
        } catch (const Failure&) {
            return false;
        }
    }

    const Log& log_;
    std::string_view signs_;
};

// Where the name of a column ends that a text begins with: behind its brackets, else at a sign.
std::size_t endOfName(std::string_view text, std::string_view signs) {
    const std::optional<WrittenName> name = bracketedName(text);
    if (name) return name->size;
    return text.starts_with('[') ? text.size() : std::min(text.find_first_of(signs), text.size());
}

class Completer {
public:
    /// The line up to the word, and all of it.
    Completer(const Line& line, const std::string& word, const Line& whole)
        : line_(line), word_(word), whole_(whole) {}

    Completion complete() {
        const Option* option = line_.awaiting();
        if (option != nullptr) {
            value(*option, "", word_);
        } else if (!line_.hasEnded() && word_.starts_with('-')) {
            optionOrValue();
        } else {
            argument();
        }
        return std::move(made_);
    }

private:
    void optionOrValue() {
        const std::size_t equals = word_.find('=');
        if (!word_.starts_with("--") && word_.size() > 2) return valueBehindLetter();
        const Option* option = line_.optionNamed(word_.substr(0, equals));
        const bool isBeforeValue = word_.starts_with("--") && equals != std::string::npos;
        if (!isBeforeValue) return options();
        if (option == nullptr || *option->value == '\0') return;
        value(*option, word_.substr(0, equals + 1), word_.substr(equals + 1));
    }

    // "-wReel=": the value stands behind the letter.
    void valueBehindLetter() {
        const Option* option = line_.optionNamed(word_.substr(0, 2));
        if (option == nullptr || *option->value == '\0') return options();
        value(*option, word_.substr(0, 2), word_.substr(2));
    }

    void options() {
        Words words = {{"--help", "this help"}};
        for (const Option& option : line_.command().options) {
            const bool isLeft = option.repeats || !whole_.has(longName(option));
            if (!isLeft) continue;
            words.push_back({longName(option), option.help});
            const bool wantsShort = word_.size() < 2 || word_[1] != '-';
            if (wantsShort && !shortName(option).empty()) {
                words.push_back({shortName(option), option.help});
            }
        }
        add(std::move(words));
    }

    void value(const Option& option, const std::string& front, const std::string& text) {
        if (*option.choices != '\0') return choices(front, option.choices);
        if (*option.suggestions != '\0') return choices(front, option.suggestions);
        const std::string_view what = option.value;
        if (what == "OUT") return files(front);
        if (what == "NAME" && longName(option) == "--output") return fileName(front, text);
        named(what, front, text);
    }

    void argument() {
        const std::vector<Argument>& declared = line_.command().arguments;
        const std::size_t at = line_.arguments().size();
        if (declared.empty()) return;
        const bool isBehind = at >= declared.size();
        if (isBehind && !declared.back().repeats) return;
        const Argument& argument = isBehind ? declared.back() : declared[at];
        if (*argument.choices != '\0') return choices("", argument.choices);
        const std::string_view name = argument.name;
        if (isFile(name)) return files("");
        if (name == "WORD") return columnWord();
        named(name, "", word_);
    }

    static bool isFile(std::string_view name) {
        return name == "FILE" || name == "A" || name == "B" || name == "IN" || name == "OUT" ||
               name == "MORE" || name == "PATH";
    }

    // What is meant by what it is called in the help.
    void named(std::string_view what, const std::string& front, const std::string& text) {
        if (what == "COLUMN") return columns(front, text, "");
        if (what == "A,B") return columnList(front, text);
        if (what == "COND") return condition(front, text);
        if (what == "OLD=NEW") return mapping(front, text);
        if (what == "COLUMN=VALUE") return change(text);
        if (what == "SHEET") return sheets(front);
    }

    void sheets(const std::string& front) {
        Words words;
        for (const std::string& name : sheetsOfWorkbook(pathOfLog(), openingOfLog())) {
            if (canBeShown(name)) words.push_back({front + name, ""});
        }
        add(std::move(words));
    }

    // What follows FILE depends on what is done to its columns.
    void columnWord() {
        const std::string action = line_.argument("ACTION");
        const std::size_t at = line_.arguments().size() - 2;
        const bool isType = (action == "type" || action == "add") && at == 1;
        const bool isColumn = action == "order" || (at == 0 && action != "add");
        if (isType) return choices("", columnTypes);
        if (action == "order") return columnList("", word_);
        if (isColumn) columns("", word_, "");
    }

    void choices(const std::string& front, const char* list) {
        Words words;
        for (const std::string& choice : choicesOf(list)) words.push_back({front + choice, ""});
        add(std::move(words));
    }

    void files(const std::string& front) {
        made_.isFile = true;
        made_.inFrontFile = front;
    }

    // `front` stays as it is, and `behind` is put behind each name.
    void columns(const std::string& front, std::string_view text, std::string_view signs,
                 const std::string& behind = "") {
        const std::optional<LogHead> head = headWith(bytesForColumns);
        if (!head) return;
        Words words;
        const WrittenColumns names(head->log, signs);
        for (const std::string& name : names.all(text.starts_with('['))) {
            words.push_back({concat(front, name, behind), ""});
        }
        add(std::move(words));
    }

    void columnList(const std::string& front, std::string_view text) {
        const std::string_view last = splitNames(text).back();
        const std::string_view name =
            last.substr(std::min(last.find_first_not_of(' '), last.size()));
        made_.goesOn = true;
        columns(front + std::string(text.substr(0, text.size() - name.size())), name, ",");
    }

    // Where one column alone is left two words are offered that begin so, and no shell takes the
    // first for done and ends its quote.
    void columnsWithSign(const std::string& front, std::string_view text, std::string_view signs,
                         const std::string& sign, const std::string& other) {
        made_.goesOn = true;
        columns(front, text, signs, sign);
        if (made_.words.size() != 1) return;
        const std::string& only = made_.words.front().text;
        made_.words.push_back({only.substr(0, only.size() - sign.size()) + other, ""});
    }

    void condition(const std::string& front, const std::string& text) {
        const std::size_t end = endOfName(text, conditionSigns);
        std::string_view rest = std::string_view(text).substr(end);
        if (rest.empty()) return columnsWithSign(front, text, conditionSigns, "=", "==");
        rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
        if (!rest.starts_with("==") && !rest.starts_with("!=")) return;
        const std::size_t valueAt = text.size() - rest.size() + 2;
        values(front + text.substr(0, valueAt), std::string(trimmed(text.substr(0, end))));
    }

    void mapping(const std::string& front, const std::string& text) {
        const std::size_t end = endOfName(text, "=");
        if (end < text.size()) return;
        made_.goesOn = true;
        columns(front, text, "=", "=");
    }

    void change(const std::string& text) {
        const std::size_t sign = text.find_first_of("=~", endOfName(text, "=~"));
        if (sign == std::string::npos) return changedColumn(text);
        if (text[sign] == '=') return columnInBraces(text, sign + 1);
        Words words;
        for (const char* function : {"upper", "lower", "trim", "s/"}) {
            words.push_back({text.substr(0, sign + 1) + function, ""});
        }
        made_.goesOn = true;
        add(std::move(words));
    }

    // Several columns may stand in front of a function.
    void changedColumn(const std::string& text) {
        const std::string_view last = splitNames(text).back();
        const std::string front = text.substr(0, text.size() - last.size());
        const bool isOne = front.empty();
        columnsWithSign(front, last, ",=~", isOne ? "=" : "~", isOne ? "={" : "~s/");
    }

    // "day_{Re": a file may be named by columns.
    void fileName(const std::string& front, const std::string& text) {
        const std::size_t open = text.rfind('{');
        const bool isOpen = open != std::string::npos && text.find('}', open) == std::string::npos;
        isOpen ? columnInBraces(front + text, front.size()) : files(front);
    }

    // "Name={Sce": the columns that a value is made of.
    void columnInBraces(const std::string& text, std::size_t valueAt) {
        const std::size_t open = text.rfind('{');
        const bool isOpen = open != std::string::npos && open >= valueAt &&
                            text.find_first_of("}|", open) == std::string::npos;
        if (!isOpen) return;
        columnsWithSign(text.substr(0, open + 1), std::string_view(text).substr(open + 1), "{|}#",
                        "}", "|");
    }

    void values(const std::string& front, const std::string& name) {
        const std::optional<LogHead> head = headWith(bytesForValues);
        if (!head) return;
        const Log& log = head->log;
        unsigned column = noColumn;
        try {
            column = log.requireColumn(name);
        } catch (const Failure&) {
            return;
        }
        const unsigned rows = log.rowCount() - (head->isWhole || log.rowCount() == 0 ? 0 : 1);
        const std::string_view begun = std::string_view(word_).substr(front.size());
        NameList found;
        for (unsigned row = 0; row < rows && found.size() < mostValues; ++row) {
            const std::string_view cell = log.cell(row, column);
            if (!cell.empty() && startsWithText(cell, begun) && canBeShown(cell)) found.place(cell);
        }
        Words words;
        for (const std::string& value : found) words.push_back({front + value, ""});
        add(std::move(words));
    }

    static bool startsWithText(std::string_view text, std::string_view begin) {
        return text.size() >= begin.size() && sameText(text.substr(0, begin.size()), begin);
    }

    std::string pathOfLog() const {
        for (const char* name : {"FILE", "A", "IN", "PATH"}) {
            if (std::string path = whole_.argument(name); !path.empty()) return path;
        }
        return {};
    }

    Opening openingOfLog() const {
        Opening opening = openingFrom(whole_.readingArgs());
        opening.limits.bytes = mostUnpacked;
        opening.watcher = nullptr;
        return opening;
    }

    std::optional<LogHead> headWith(std::size_t bytes) const {
        const std::string path = pathOfLog();
        if (path.empty()) return {};
        return headOfLog(path, openingOfLog(), bytes);
    }

    void add(Words words) { addWords(made_, std::move(words), word_); }

    const Line& line_;
    const std::string& word_;
    const Line& whole_;
    Completion made_;
};

}  // namespace

void addWords(Completion& completion, Words words, std::string_view word) {
    Words near;
    for (Completion::Word& one : words) {
        const std::string_view begin = std::string_view(one.text).substr(0, word.size());
        if (begin == word)
            completion.words.push_back(std::move(one));
        else if (sameText(begin, word))
            near.push_back(std::move(one));
    }
    if (!completion.words.empty()) return;
    completion.words = std::move(near);
}

Completion completionOf(const Command& command, const std::vector<std::string>& before,
                        const std::string& word, const std::vector<std::string>& behind) {
    const Line line(command, before);
    const Line whole = line.with(word, behind);
    try {
        return Completer(line, word, whole).complete();
    } catch (const Failure&) {
        return {};
    }
}

}  // namespace vek
