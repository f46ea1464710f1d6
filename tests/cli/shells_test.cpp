#include <gtest/gtest.h>

#include <iostream>
#include <ostream>
#include <span>

#include "cli/terminal.h"
#include "formats/workbook/made_workbook.h"

namespace fs = std::filesystem;

namespace {

// What somebody types, with tabs, and the arguments that the program gets in the end.
struct Typed {
    const char* keys;
    const char* arguments;
};

constexpr Typed inAllShells[] = {
    {"vek sho\tlog.csv --so\tSce\t", "<show><log.csv><--sort><Scene>"},
    {"vek show lo\t--tag\t", "<show><log.csv><--tagged>"},
    {"vek show log.csv --format mark\t", "<show><log.csv><--format><markdown>"},
    {"vek convert log.csv - --to=jsonl --enc\twind\t",
     "<convert><log.csv><-><--to=jsonl><--encoding><windows-1252>"},
    {"vek tag log.csv --where 'KN S\t=KJ'", "<tag><log.csv><--where><KN Start==KJ>"},
    {"vek show log.csv -w \"KN S\tx\"", "<show><log.csv><-w><KN Start=x>"},
    {"vek show log.csv -w KN\\ S\tx", "<show><log.csv><-w><KN Start=x>"},
    {"vek show log.csv -w Scene==67\t", "<show><log.csv><-w><Scene==67A>"},
    {"vek show log.csv -w Scene!=67\t", "<show><log.csv><-w><Scene!=67A>"},
    {"vek show log.csv -w Time==01:00:04\t", "<show><log.csv><-w><Time==01:00:04:00>"},
    {"vek show log.csv -w 'Notes==no g\t", "<show><log.csv><-w><Notes==no good>"},
    {"vek show log.csv -w Notes==it\t", "<show><log.csv><-w><Notes==it's \"on\">"},
    {"vek show log.csv -c Scene,Gr\t",
     "<show><log.csv><-c><Scene,Gr\xC3\xB6\xC3\x9F"
     "e>"},
    {"vek show log.csv --columns=No\t", "<show><log.csv><--columns=Notes>"},
    {"vek sort log.csv --by It\t", "<sort><log.csv><--by><It's>"},
    {"vek stats log.csv --by a:\t", "<stats><log.csv><--by><a:b>"},
    {"vek diff log.csv log.csv --key x\t", "<diff><log.csv><log.csv><--key><x=y>"},
    {"vek show log.csv -w '[x\t5'", "<show><log.csv><-w><[x=y]=5>"},
    {"vek show log.csv -w '[c<\t5'", "<show><log.csv><-w><[c<d]=5>"},
    {"vek set log.csv Note\tx", "<set><log.csv><Notes=x>"},
    {"vek set log.csv 'Notes={Sce\t}'", "<set><log.csv><Notes={Scene}>"},
    {"vek column rename log.csv Sce\tX", "<column><rename><log.csv><Scene><X>"},
    {"vek timecode shift log.csv 1 --columns Ti\t",
     "<timecode><shift><log.csv><1><--columns><Time>"},
    {"vek show log.csv --output=lo\t", "<show><log.csv><--output=log.csv>"},
    {"vek show my\t--so\tSce\t", "<show><my log.csv><--sort><Scene>"},
    {"vek show book.xlsx --sheet Day\t", "<show><book.xlsx><--sheet><Day one>"},
    {"vek info book.xlsx --sheet=Tak\t", "<info><book.xlsx><--sheet=Takes>"},
    {"vek show book.xlsx --sheet Takes --sort Le\t",
     "<show><book.xlsx><--sheet><Takes><--sort><Length>"},
    // A file's name is not offered where a column or a sheet is meant.
    {"vek show book.xlsx --sheet lo\t", "<show><book.xlsx><--sheet><lo>"},
    {"vek show log.csv --sort lo\t", "<show><log.csv><--sort><lo>"},
};

// The log may stand behind the cursor, which Ctrl-B takes back over it here. fish does not tell
// what stands there, and zsh takes it for a part of a quote that is open.
const Typed behindTheCursor[] = {
    {"vek show --sort Sce log.csv\x02\x02\x02\x02\x02\x02\x02\x02\t",
     "<show><--sort><Scene><log.csv>"},
    {"vek show -w Scene==67 log.csv\x02\x02\x02\x02\x02\x02\x02\x02\t",
     "<show><-w><Scene==67A><log.csv>"},
};

const Typed behindAQuote[] = {
    {"vek show -w 'KN S log.csv\x02\x02\x02\x02\x02\x02\x02\x02\t=KJ'",
     "<show><-w><KN Start==KJ><log.csv>"},
};

struct Shell {
    const char* name;
    std::vector<std::string> options;
    const char* setUp;
};

void PrintTo(const Shell& shell, std::ostream* out) {
    *out << shell.name;
}

const Shell shells[] = {
    {"bash",
     {"--norc", "--noprofile", "-i"},
     "bind 'set enable-bracketed-paste off'; bind 'set bell-style none'; "
     "source <(command vek completions bash); "
     "vek() { printf '{'; printf '<%s>' \"$@\"; echo '}'; }"},
    {"zsh",
     {"-f", "-i"},
     "unset zle_bracketed_paste; setopt no_beep; autoload -Uz compinit; compinit -u -D; "
     "source <(command vek completions zsh); "
     "vek() { printf '{'; printf '<%s>' \"$@\"; echo '}' }"},
    {"fish",
     {"--no-config", "-i"},
     "command vek completions fish | source; set -g fish_autosuggestion_enabled 0; "
     "function vek; printf '{'; printf '<%s>' $argv; echo '}'; end"},
};

class Session {
public:
    explicit Session(const Shell& shell) : terminal_(prepared(), wordsOf(shell), 250) {
        terminal_.type(std::string(shell.setUp) + "; echo ready'_'now\r");
        terminal_.waitFor("ready_now");
    }

    void expect(const Typed& typed) {
        SCOPED_TRACE(typed.keys);
        // Keys are typed as a person does, who sees them and what a tab has made.
        std::string keys = typed.keys;
        for (std::size_t tab; (tab = keys.find('\t')) != std::string::npos;
             keys.erase(0, tab + 1)) {
            press(keys.substr(0, tab), 30);
            press("\t", pause);
        }
        terminal_.type(keys + "\r");
        terminal_.waitFor(std::string("{") + typed.arguments + "}");
    }

private:
    static constexpr int pause = 150;

    void press(const std::string& keys, int quiet) {
        if (keys.empty()) return;
        terminal_.type(keys);
        terminal_.watchUntilQuiet(quiet);
    }

    static std::vector<std::string> wordsOf(const Shell& shell) {
        std::vector<std::string> words = {installed(shell.name)};
        words.insert(words.end(), shell.options.begin(), shell.options.end());
        return words;
    }

    const WorkFolder& prepared() {
        fs::create_directory(folder_.path() / "bin");
        fs::create_symlink(VEK_PROGRAM, folder_.path() / "bin/vek");
        folder_.write("log.csv",
                      "Scene,KN Start,KN End,Notes,Time,Gr\xC3\xB6\xC3\x9F"
                      "e,It's,a:b,x=y,c<d\n"
                      "67A,KJ 1+00,KJ 2+00,no good,01:00:04:00,1,2,3,4,5\n"
                      "12,KJ 3+00,KJ 4+00,\"it's \"\"on\"\"\",02:00:00:00,1,2,3,4,5\n");
        fs::copy(folder_.path() / "log.csv", folder_.path() / "my log.csv");
        folder_.write("book.xlsx", workbook());
        return folder_;
    }

    static std::string workbook() {
        const char* const rows = "<row><c t='inlineStr'><is><t>Length</t></is></c></row>";
        return MadeWorkbook{{{"Day one", ""}, {"Takes", rows}}}.bytes();
    }

    WorkFolder folder_;
    Terminal terminal_;
};

void expectAll(std::span<const Typed> lines, Session& session) {
    for (const Typed& typed : lines) {
        if (testing::Test::HasFailure()) return;
        session.expect(typed);
    }
}

}  // namespace

class Shells : public testing::TestWithParam<Shell> {};

TEST_P(Shells, CompletesWhatIsTyped) {
    const Shell& shell = GetParam();
    if (installed(shell.name).empty()) {
        std::cout << shell.name << " is not here and not tried; scripts/setup installs it\n";
        return;
    }
    Session session(shell);
    const std::string name = shell.name;
    expectAll(inAllShells, session);
    if (name != "fish") expectAll(behindTheCursor, session);
    if (name == "bash") expectAll(behindAQuote, session);
}

INSTANTIATE_TEST_SUITE_P(Cli, Shells, testing::ValuesIn(shells),
                         [](const auto& shell) { return std::string(shell.param.name); });
