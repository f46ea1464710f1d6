// The only place that knows CLI11.
#include <CLI/CLI.hpp>

#include <algorithm>

#include "tools/vek/cli/command.h"

namespace vek {

namespace {

// The parser would split a word such as "[a,b]" into two; a mark in front keeps it whole.
constexpr char wholeMark = '\x01';

// Where the value begins in a word, which may have an option in front of it.
std::size_t placeOfValue(const std::string& word) {
    if (word.starts_with("--")) return std::min(word.find('='), word.size() - 1) + 1;
    return word.starts_with('-') && word.size() > 2 ? 2 : 0;
}

// A word that begins with the mark gets a second one, so that one can always be taken off.
std::vector<std::string> marked(std::vector<std::string> words) {
    for (std::string& word : words) {
        std::size_t place = placeOfValue(word);
        char first = place < word.size() ? word[place] : '\0';
        if (first == '[' || first == wholeMark) word.insert(place, 1, wholeMark);
    }
    return words;
}

std::vector<std::string> unmarked(std::vector<std::string> words) {
    for (std::string& word : words) {
        if (word.starts_with(wholeMark)) word.erase(0, 1);
    }
    return words;
}

// The parser says "--output: 1 required" and "--output: At Most 1 required but received 2".
std::string inOurWords(const std::string& message) {
    std::string option = message.substr(0, message.find(':'));
    if (option == message) return message;
    bool isTooMany = message.find("received") != std::string::npos;
    return option + (isTooMany ? " is given more than once" : " needs a value");
}

std::string listed(const std::vector<std::string>& words) {
    std::string list;
    for (const std::string& word : words) list += (list.empty() ? "" : ", ") + word;
    return list;
}

// One subcommand's command line: declares it to the parser, and reads the result.
class CommandLine {
public:
    explicit CommandLine(const Command& command) : command_(command) {
        app_.set_help_flag();
        app_.allow_extras();
        help_ = app_.add_flag("-h,--help");
        for (const Option& option : command.options) declare(option);
        for (const Argument& argument : command.arguments) declare(argument);
    }

    Args parse(const std::vector<std::string>& words) {
        try {
            std::vector<std::string> backwards = marked(words);
            std::reverse(backwards.begin(), backwards.end());
            app_.parse(backwards);
        } catch (const CLI::ParseError& error) {
            refuse(inOurWords(error.what()));
        }
        Args args;
        if (help_->count() > 0) {
            args.set("help", {"true"});
            return args;
        }
        checkLeftovers();
        collect(args);
        return args;
    }

private:
    void declare(const Option& option) {
        if (*option.value == '\0') {
            options_.push_back(app_.add_flag(option.names));
            return;
        }
        auto* made = app_.add_option(option.names)->expected(1)->allow_extra_args(false);
        if (option.repeats) made->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
        options_.push_back(made);
    }

    // What an argument is called in the help may hold signs that the parser takes no names with.
    void declare(const Argument& argument) {
        std::string name = "argument" + std::to_string(arguments_.size());
        if (argument.repeats)
            arguments_.push_back(app_.add_option(name, repeated_));
        else
            arguments_.push_back(app_.add_option(name));
    }

    void checkLeftovers() {
        // The mark that ends the options stands among what is left.
        std::vector<std::string> left = unmarked(app_.remaining());
        auto end = std::find(left.begin(), left.end(), "--");
        for (auto word = left.begin(); word != end; ++word) {
            if (word->size() > 1 && word->front() == '-') {
                refuseOption(word->substr(0, word->find('=')));
            }
        }
        if (end != left.end()) left.erase(end);
        if (!left.empty()) refuse("did not expect " + inQuotes(left.front()));
        for (std::size_t i = 0; i < arguments_.size(); ++i) {
            if (arguments_[i]->count() > 0 || command_.arguments[i].optional) continue;
            refuse(std::string(command_.arguments[i].name) +
                   " is missing, expected: " + usageLine(command_));
        }
    }

    void collect(Args& args) const {
        for (std::size_t i = 0; i < options_.size(); ++i) {
            const Option& option = command_.options[i];
            collect(args, *options_[i], longName(option), option.choices);
        }
        for (std::size_t i = 0; i < arguments_.size(); ++i) {
            const Argument& argument = command_.arguments[i];
            collect(args, *arguments_[i], argument.name, argument.choices);
        }
    }

    void collect(Args& args, const CLI::Option& from, const std::string& title,
                 const char* choices) const {
        if (from.count() == 0) return;
        std::vector<std::string> values = unmarked(from.results());
        std::vector<std::string> known = choicesOf(choices);
        for (const std::string& value : values) {
            if (known.empty()) break;
            if (std::find(known.begin(), known.end(), value) != known.end()) continue;
            refuse(title + " is one of " + listed(known) + ", not " + inQuotes(value) +
                   suggestion(value, known));
        }
        args.set(title.starts_with("--") ? title.substr(2) : title, values);
    }

    [[noreturn]] void refuseOption(const std::string& word) const {
        std::vector<std::string> names = {"--help"};
        for (const Option& option : command_.options) names.push_back(longName(option));
        refuse("there is no option " + word + suggestion(word, names));
    }

    [[noreturn]] void refuse(const std::string& what) const {
        std::string name = command_.name;
        throw Failure{wrongUsage, name + ": " + what + " (vek " + name + " --help shows how)"};
    }

    const Command& command_;
    CLI::App app_;
    CLI::Option* help_ = nullptr;
    std::vector<CLI::Option*> options_;
    std::vector<CLI::Option*> arguments_;
    std::vector<std::string> repeated_;  // tells the parser that an argument takes many words
};

}  // namespace

Args parse(const Command& command, const std::vector<std::string>& words) {
    return CommandLine(command).parse(words);
}

}  // namespace vek
