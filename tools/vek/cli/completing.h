#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/vek/cli/command.h"

namespace vek {

/// What may stand where a word of a command line is being written.
struct Completion {
    struct Word {
        std::string text;   ///< the whole word
        std::string about;  ///< for the shells that show it, "" for nothing
    };
    std::vector<Word> words;
    bool goesOn = false;      ///< a word is not done when it is put in
    bool isFile = false;      ///< names of files instead
    std::string inFrontFile;  ///< of the word, in front of the file's name: "--output="
};

/// `before` are the words behind the command's name, `behind` those that stand behind the word that
/// is being written: the log may be one of them. Says nothing where anything may stand, and of
/// words that hold what a shell cannot show.
Completion completionOf(const Command& command, const std::vector<std::string>& before,
                        const std::string& word, const std::vector<std::string>& behind);

/// Adds those that the word in work begins, case ignored where none has its case.
void addWords(Completion& completion, std::vector<Completion::Word> words, std::string_view word);

}  // namespace vek
