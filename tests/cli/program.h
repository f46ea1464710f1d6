#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

/// A folder of its own for one test, with the project's samples in it; gone with the object.
class WorkFolder {
public:
    WorkFolder();
    ~WorkFolder();
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    void write(const std::string& name, std::string_view text) const;
    /// The content of a file; a failure of the test when there is none.
    std::string read(const std::string& name) const;
    bool has(const std::string& name) const;
    /// The names in it, sorted, without the samples.
    std::vector<std::string> names() const;

private:
    std::filesystem::path path_;
};

/// How a program is started.
struct Start {
    std::vector<std::string> words;  ///< the program's name and its arguments; "vek" is ours
    std::string input;               ///< what stands on its standard input
    std::vector<std::string> environment;
    std::string output;             ///< a device or file for its standard output; "" catches it
    bool errorsToTerminal = false;  ///< messages go to a terminal
    int terminalWidth = 0;          ///< a terminal of this width instead, when not 0
    std::size_t readAtMost = std::string::npos;  ///< closes the pipe after so many bytes, or,
                                                 ///< for 0, before the program starts
    bool asNobody = false;     ///< without the rights of root, if the test has them
    bool failsToRead = false;  ///< files behind their first 2 MB, and 4 MB and more at once
};

struct Finish {
    int exitCode = -1;  ///< 1000 and the signal, when one ended it
    std::string output;
    std::string errors;
};

/// Runs a program in the folder to its end; a failure of the test when it takes too long.
Finish run(const WorkFolder& folder, const Start& start);

/// The same of our program with these arguments, or with those of a command line.
Finish runVek(const WorkFolder& folder, std::vector<std::string> words);
Finish runVekLine(const WorkFolder& folder, const std::string& line);
/// The same of a shell, in which "$0" is our program.
Finish shell(const WorkFolder& folder, const std::string& line);

/// The words of a command line, with quotes and backslashes as a shell has them.
std::vector<std::string> shellWords(std::string_view line);
