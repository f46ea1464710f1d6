#include <string_view>

#include "tools/vek/cli/printout.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

// The scripts know nothing of the program: it is asked for what may stand where the cursor is. Its
// first line is "word", "part" for words that go on, or "file".
constexpr std::string_view bash = R"(# bash completion for vek
_vek() {
    local -a lines
    local line=${COMP_LINE:-${COMP_WORDS[*]}}
    local at=${COMP_POINT:-${#line}}
    mapfile -t lines < <(command vek complete bash "${line:0:at}" "$COMP_WORDBREAKS" \
        "${line:at}" 2>/dev/null)
    COMPREPLY=()
    case ${lines[0]} in
        file) compopt -o default 2>/dev/null ||
            mapfile -t COMPREPLY < <(compgen -f -- "${COMP_WORDS[COMP_CWORD]}") ;;
        part) compopt -o nospace 2>/dev/null; COMPREPLY=("${lines[@]:1}") ;;
        word) COMPREPLY=("${lines[@]:1}") ;;
    esac
}
complete -F _vek vek
)";

constexpr std::string_view zsh = R"(#compdef vek
_vek() {
    local -a lines found shown
    local line described=
    lines=("${(@f)$(command vek complete zsh $(( $#words - CURRENT )) \
        -- "${(@Q)words[2,CURRENT-1]}" "${(Q)PREFIX}" "${(@Q)words[CURRENT+1,-1]}" 2>/dev/null)}")
    if [[ $lines[1] == file ]]; then
        (( $#lines > 1 )) && compset -P "${(b)lines[2]}"
        _files
        return
    fi
    for line in "${(@)lines[2,-1]}"; do
        found+=("${line%%$'\t'*}")
        shown+=("${line/$'\t'/  -- }")
        [[ $line == *$'\t'* ]] && described=yes
    done
    (( $#found )) || return 1
    local -a how=()
    [[ $lines[1] == part ]] && how+=(-S '')
    [[ -n $described ]] && how+=(-l -d shown)
    compadd "${(@)how}" -a found
}
if [[ $zsh_eval_context[-1] == loadautofunc ]]; then _vek "$@"; else compdef _vek vek; fi
)";

// What stands behind the cursor is hidden from what completes in fish.
constexpr std::string_view fish = R"(# fish completion for vek
function __vek_complete
    set -l words (commandline -opc)
    set -l word (commandline -ct)
    set -l lines (command vek complete fish 0 -- $words[2..-1] "$word" 2>/dev/null)
    if test "$lines[1]" = file
        set -l path (string replace -- "$lines[2]" "" "$word")
        for name in (__fish_complete_path "$path")
            echo "$lines[2]$name"
        end
    else if set -q lines[2]
        printf '%s\n' $lines[2..-1]
    end
end
complete -c vek -f -a '(__vek_complete)'
)";

int run(const Args& args) {
    std::string shell = args.text("SHELL");
    Printout out;
    out.write(shell == "bash" ? bash : shell == "zsh" ? zsh : fish);
    out.close();
    return done;
}

}  // namespace

Command completionsCommand() {
    return {
        "completions",
        "print completions for bash, zsh or fish",
        "Prints a script for a shell that completes commands, options, what they take, files, and "
        "the columns and values of the log on the line: behind --sort, --columns, --where, --key, "
        "--by and the like, in what set and column are told, and values behind == and !=. The "
        "script asks vek while somebody writes; nothing but the beginning of the log is read.",
        {{"vek completions bash > vek.bash", "to be sourced from ~/.bashrc"},
         {"vek completions zsh > _vek", "into a folder of $fpath"},
         {"vek completions fish > vek.fish", "into ~/.config/fish/completions"}},
        {{"SHELL", "for which one", false, false, "bash|zsh|fish"}},
        {},
        run,
    };
}

}  // namespace vek
