#include "cli/case_file.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {

struct Section {
    std::string kind;
    std::string rest;
    std::string text;
};

std::string unescaped(const std::string& text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            out += text[i];
            continue;
        }
        switch (text[++i]) {
            case 'r':
                out += '\r';
                break;
            case 't':
                out += '\t';
                break;
            case '\n':
                break;
            case 'x':
                out += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
                i += 2;
                break;
            default:
                out += text[i];
        }
    }
    return out;
}

Section opened(const std::string& line) {
    std::string rest = line.substr(3);
    std::size_t blank = std::min(rest.find(' '), rest.size());
    Section section{rest.substr(0, blank), rest.substr(std::min(blank + 1, rest.size())), {}};
    return section;
}

std::vector<Section> sectionsOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::vector<Section> sections;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("== "))
            sections.push_back(opened(line));
        else if (!sections.empty())
            sections.back().text += line + "\n";
    }
    for (Section& section : sections) {
        bool isEscaped = section.rest == "escaped" || section.rest.ends_with(" escaped");
        if (!isEscaped) continue;
        section.text = unescaped(section.text);
        section.rest.resize(section.rest.size() - std::min<std::size_t>(8, section.rest.size()));
        if (section.rest.ends_with(' ')) section.rest.pop_back();
    }
    return sections;
}

class CaseBuilder {
public:
    void take(const Section& section) {
        if (takeBefore(section) || takeCommand(section)) return;
        if (made_.steps.empty() || !takeExpected(made_.steps.back(), section)) {
            throw std::runtime_error("section " + section.kind);
        }
    }

    CaseFile result() { return made_; }

private:
    bool takeBefore(const Section& section) {
        if (section.kind == "file")
            made_.files.emplace_back(section.rest, section.text);
        else if (section.kind == "stdin")
            next_.input = section.text;
        else if (section.kind == "env")
            next_.environment.push_back(section.rest);
        else if (section.kind == "terminal")
            next_.terminalWidth = std::stoi(section.rest);
        else if (section.kind == "to")
            next_.output = section.rest;
        else if (section.kind == "link") {
            std::vector<std::string> words = shellWords(section.rest);
            made_.links.emplace_back(words.at(0), words.at(1));
        } else
            return false;
        return true;
    }

    bool takeCommand(const Section& section) {
        if (section.kind != "vek") return false;
        next_.words = shellWords("vek " + section.rest);
        made_.steps.push_back({next_, {0, "", ""}, {}, {}});
        next_ = {};
        return true;
    }

    static bool takeExpected(Step& step, const Section& section) {
        if (section.kind == "exit")
            step.expected.exitCode = std::stoi(section.rest);
        else if (section.kind == "stdout")
            step.expected.output = section.text;
        else if (section.kind == "stderr")
            step.expected.errors = section.text;
        else if (section.kind == "after")
            step.after.emplace_back(section.rest, section.text);
        else if (section.kind == "absent")
            step.absent.push_back(section.rest);
        else
            return false;
        return true;
    }

    CaseFile made_;
    Start next_;
};

}  // namespace

CaseFile readCase(const fs::path& path) {
    CaseBuilder builder;
    for (const Section& section : sectionsOf(path)) builder.take(section);
    return builder.result();
}

std::vector<std::string> allCases(const fs::path& folder) {
    std::vector<std::string> out;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.path().extension() != ".case") continue;
        out.push_back(fs::relative(entry.path(), folder).generic_string());
    }
    std::sort(out.begin(), out.end());
    return out;
}
