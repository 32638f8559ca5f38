#include "tools/velk/cli/CompletionsCommand.h"

#include "tools/velk/context/Context.h"
#include "tools/velk/terminal/Terminal.h"

#include <memory>

namespace velk {
namespace {

/** The shell splits words at "=" and ":", and replaces only the part after the last of these. */
constexpr char const* kBash = R"(# bash completion of velk
_velk() {
    local each before line words=()
    for each in "${COMP_WORDS[@]:1:COMP_CWORD}"; do
        if [[ ${#words[@]} -gt 0 && ( $each == [=:] || ${words[-1]} == *[=:] ) ]]; then
            words[-1]+=$each
        else
            words+=("$each")
        fi
    done
    before=${words[-1]%"${words[-1]##*[=:]}"}
    mapfile -t COMPREPLY < <(command "${COMP_WORDS[0]/#\~/$HOME}" __complete "${words[@]}" 2>/dev/null)
    case ${COMPREPLY[0]} in
    :files | :folders)
        [[ ${COMPREPLY[0]} == :files ]] && line=-f || line=-d
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen "$line" -- "${words[-1]#"$before"}")
        ;;
    *)
        COMPREPLY=("${COMPREPLY[@]%%$'\t'*}")
        COMPREPLY=("${COMPREPLY[@]#"$before"}")
        ;;
    esac
}
complete -F _velk velk
)";

constexpr char const* kZsh = R"(#compdef velk
_velk() {
    local line
    local -a lines found
    lines=("${(@f)$(command "${${(Q)words[1]}/#\~/$HOME}" __complete "${(@Q)words[2,CURRENT]}" 2>/dev/null)}")
    case $lines[1] in
        :files | :folders)
            compset -P '--*='
            _files ${${lines[1]:#:files}:+-/}
            ;;
        *)
            for line in $lines; do
                found+=("${${line%%$'\t'*}//:/\\:}:${line#*$'\t'}")
            done
            _describe velk found
            ;;
    esac
}
_velk "$@"
)";

constexpr char const* kFish = R"(# fish completion of velk
function __velk_complete
    set -l words (commandline -opc)
    command -q $words[1]; or return
    set -l word (commandline -ct)
    set -l before (string match -r -- '^--[^=]*=' $word)
    set -l lines (command $words[1] __complete $words[2..] "$word" 2>/dev/null)
    switch "$lines[1]"
        case :files
            printf "$before%s\n" (__fish_complete_path (string replace -- "$before" '' $word))
        case :folders
            printf "$before%s\n" (__fish_complete_directories (string replace -- "$before" '' $word))
        case '*'
            printf '%s\n' $lines
    end
end
complete -c velk -f -a '(__velk_complete)'
)";

} // namespace

Command completionsCommand(Context& context) {
    auto const shell = std::make_shared<std::string>();
    auto const run = [shell, &context] {
        context.terminal.out(*shell == "bash" ? kBash : *shell == "zsh" ? kZsh : kFish);
        return ExitCode::Good;
    };
    return {.name = "completions",
            .description = "Print a script that lets a shell complete the words of velk",
            .words = {{"SHELL",
                       "",
                       std::vector<std::string>{"bash", "zsh", "fish"},
                       "The shell",
                       into(*shell),
                       {.required = true}}},
            .action = run};
}

} // namespace velk
