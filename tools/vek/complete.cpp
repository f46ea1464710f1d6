#include <algorithm>
#include <charconv>

#include "formats/text/width.h"
#include "tools/vek/cli/completing.h"
#include "tools/vek/cli/printout.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/shell_line.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

Completion ofCommandNames(const std::string& word, bool withOptions) {
    std::vector<Completion::Word> words;
    for (const Command& command : allCommands()) words.push_back({command.name, command.summary});
    words.push_back({"help", "tell about a command"});
    if (withOptions) {
        words.push_back({"--help", "list the commands"});
        words.push_back({"--version", "tell the version"});
    }
    Completion completion;
    addWords(completion, std::move(words), word);
    return completion;
}

// A command that is not there has nothing to complete.
Completion completionFor(const ShellLine& line) {
    if (line.words.empty()) return ofCommandNames(line.word, true);
    const std::string& name = line.words.front();
    if (name == "help")
        return line.words.size() == 1 ? ofCommandNames(line.word, false) : Completion();
    try {
        return completionOf(commandNamed(name), {line.words.begin() + 1, line.words.end()},
                            line.word, line.behind);
    } catch (const Failure&) {
        return {};
    }
}

const char* kindOf(const Completion& completion) {
    if (completion.isFile) return "file";
    return completion.goesOn ? "part" : "word";
}

// The first line tells what the others are: words, parts of a word that goes on, or, for a file,
// what stands in front of its name.
void print(const Completion& completion, const ShellLine& line, bool isBash) {
    Printout out;
    out.line(kindOf(completion));
    if (completion.isFile && !completion.inFrontFile.empty()) out.line(completion.inFrontFile);
    for (const Completion::Word& word : completion.words) {
        if (isBash) {
            out.line(bashQuoted(std::string_view(word.text).substr(line.kept), line.quote));
        } else {
            out.line(word.about.empty() ? word.text : concat(word.text, "\t", word.about));
        }
    }
    out.close();
}

std::string at(const std::vector<std::string>& words, std::size_t place) {
    return place < words.size() ? words[place] : std::string();
}

// How many words stand behind the one that is being written, where that is said in front of "--".
std::size_t takeCount(std::vector<std::string>& words) {
    std::size_t count = 0;
    const std::string text = at(words, 0);
    const bool isSaid = at(words, 1) == "--" && !text.empty();
    if (isSaid) {
        std::from_chars(text.data(), text.data() + text.size(), count);
        words.erase(words.begin());
    }
    if (at(words, 0) == "--") words.erase(words.begin());
    return std::min(count, words.size() - std::min<std::size_t>(1, words.size()));
}

// zsh gives the words without quotes, and fish but for the one that is still open.
ShellLine lineOf(const std::string& shell, std::vector<std::string> words) {
    if (shell == "bash") return bashLine(at(words, 0), at(words, 1), at(words, 2));
    ShellLine line;
    const auto behind = static_cast<std::ptrdiff_t>(takeCount(words));
    if (words.empty()) return line;
    line.behind.assign(words.end() - behind, words.end());
    words.erase(words.end() - behind, words.end());
    line.word = shell == "fish" ? fishUnquoted(words.back()) : words.back();
    words.pop_back();
    line.words = std::move(words);
    return line;
}

}  // namespace

int complete(std::vector<std::string> words) {
    leaveMessagesOut();
    const std::string shell = at(words, 0);
    if (!words.empty()) words.erase(words.begin());
    const ShellLine line = lineOf(shell, std::move(words));
    print(completionFor(line), line, shell == "bash");
    return done;
}

}  // namespace vek
