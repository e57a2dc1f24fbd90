# Completion of TaVekInspect for bash. The program itself is asked for its commands and their flags.

_TaVekInspect() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    COMPREPLY=()
    if [ "$COMP_CWORD" -eq 1 ]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_TaVekInspect_commands) --help --version" -- "$word")
    elif [ "$before" = --platform ]; then
        mapfile -t COMPREPLY < <(compgen -W 'linux_arm7 linux_arm64 ombix win all' -- "$word")
    elif [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_TaVekInspect_flags) --help" -- "$word")
    else
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
    fi
}

_TaVekInspect_commands() {
    "${COMP_WORDS[0]}" --help 2>/dev/null | sed -n 's/^  TaVekInspect \([a-z][a-z]*\) .*/\1/p'
}

# The flags in the usage line of the command.
_TaVekInspect_flags() {
    "${COMP_WORDS[0]}" "${COMP_WORDS[1]}" --help 2>/dev/null | grep '^Usage:' | grep -oE -e '--[a-z]+'
}

complete -F _TaVekInspect TaVekInspect TaVekInspect.exe
