#include "tools/vek/cli/command.h"

#include <algorithm>
#include <charconv>

namespace vek {

namespace {

constexpr std::size_t helpColumn = 26;

// Breaks a help text into lines of 78 characters, each but the first moved in.
std::string wrapped(const std::string& text, std::size_t indent) {
    std::string out;
    std::size_t column = indent;
    std::size_t at = 0;
    while (at < text.size()) {
        std::size_t end = std::min(text.find(' ', at), text.size());
        if (column > indent && column + 1 + end - at > 78) {
            out += '\n';
            out.append(indent, ' ');
            column = indent;
        } else if (column > indent) {
            out += ' ';
            ++column;
        }
        out.append(text, at, end - at);
        column += end - at;
        at = end + 1;
    }
    return out;
}

void addEntry(std::string& out, const std::string& left, const std::string& help) {
    std::size_t width = left.size() + 2;
    out += "  ";
    out += left;
    if (width + 2 > helpColumn) {
        out += '\n';
        width = 0;
    }
    out.append(helpColumn - width, ' ');
    out += wrapped(help, helpColumn);
    out += '\n';
}

std::string optionTitle(const Option& option) {
    std::string brief = shortName(option);
    std::string title = (brief.empty() ? "    " : brief + ", ") + longName(option);
    return *option.value == '\0' ? title : title + " " + option.value;
}

std::string withChoices(const char* help, const char* choices) {
    if (*choices == '\0') return help;
    std::string list = choices;
    std::string spaced;
    for (char c : list) spaced += c == '|' ? std::string(", ") : std::string(1, c);
    return std::string(help) + " (" + spaced + ")";
}

std::string argumentTitle(const Argument& argument) {
    std::string title = argument.name;
    if (argument.repeats) title += "...";
    return argument.optional ? "[" + title + "]" : title;
}

}  // namespace

const char* const columnTypes =
    "text|text_s|timecode|timecode_s|date|time_of_day|dos_date|numeric|long|double";

bool Args::has(std::string_view name) const {
    return std::any_of(entries_.begin(), entries_.end(),
                       [&](const Entry& entry) { return entry.name == name; });
}

const std::vector<std::string>& Args::all(std::string_view name) const {
    static const std::vector<std::string> nothing;
    auto entry = std::find_if(entries_.begin(), entries_.end(),
                              [&](const Entry& e) { return e.name == name; });
    return entry == entries_.end() ? nothing : entry->values;
}

std::string Args::text(std::string_view name, const std::string& otherwise) const {
    const std::vector<std::string>& values = all(name);
    return values.empty() ? otherwise : values.back();
}

std::size_t Args::number(std::string_view name, std::size_t otherwise) const {
    if (!has(name)) return otherwise;
    std::string value = text(name);
    std::size_t number = 0;
    auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
    if (error != std::errc() || end != value.data() + value.size()) {
        throw Failure{wrongUsage, "--" + std::string(name) +
                                      " takes a whole number of 0 or more, "
                                      "not " +
                                      inQuotes(value)};
    }
    return number;
}

void Args::set(std::string_view name, std::vector<std::string> values) {
    std::erase_if(entries_, [&](const Entry& entry) { return entry.name == name; });
    entries_.push_back({std::string(name), std::move(values)});
}

std::vector<Option> join(std::vector<Option> first, const std::vector<Option>& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

std::string shortName(const Option& option) {
    std::string_view names = option.names;
    return names.starts_with("--") ? std::string() : std::string(names.substr(0, 2));
}

std::string longName(const Option& option) {
    std::string_view names = option.names;
    return std::string(names.substr(names.find("--")));
}

std::vector<std::string> choicesOf(const char* choices) {
    std::vector<std::string> out;
    std::string_view rest = choices;
    while (!rest.empty()) {
        std::size_t bar = std::min(rest.find('|'), rest.size());
        out.emplace_back(rest.substr(0, bar));
        rest.remove_prefix(std::min(bar + 1, rest.size()));
    }
    return out;
}

std::string usageLine(const Command& command) {
    std::string line = std::string("vek ") + command.name + " [OPTIONS]";
    for (const Argument& argument : command.arguments) line += concat(" ", argumentTitle(argument));
    return line;
}

std::string helpText(const Command& command) {
    std::string out = std::string("vek ") + command.name + ": " + command.summary + "\n\n";
    out += "Examples:\n";
    for (const Example& example : command.examples) {
        out += std::string("  ") + example.command + "\n      " + wrapped(example.does, 6) + "\n";
    }
    out += "\nUsage: " + usageLine(command) + "\n\n" + wrapped(command.description, 0) + "\n";
    if (!command.arguments.empty()) out += "\nArguments:\n";
    for (const Argument& argument : command.arguments) {
        addEntry(out, argument.name, withChoices(argument.help, argument.choices));
    }
    out += "\nOptions:\n";
    for (const Option& option : command.options) {
        addEntry(out, optionTitle(option), withChoices(option.help, option.choices));
    }
    addEntry(out, "-h, --help", "this help");
    return out;
}

}  // namespace vek
