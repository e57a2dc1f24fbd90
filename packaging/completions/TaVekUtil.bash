# Completion of TaVekUtil for bash.

_TaVekUtil() {
    local word=${COMP_WORDS[COMP_CWORD]} before=
    [ "$COMP_CWORD" -eq 0 ] || before=${COMP_WORDS[COMP_CWORD - 1]}
    COMPREPLY=()
    case $before in
        --platform)
            mapfile -t COMPREPLY < <(compgen -W 'linux_arm7 linux_arm64 ombix win all' -- "$word")
            ;;
        --archive | --file | --manifest | --config)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -f -- "$word")
            ;;
        *)
            mapfile -t COMPREPLY < <(compgen -W "$(_TaVekUtil_flags)" -- "$word")
            ;;
    esac
}

# The flags that go with those given already.
_TaVekUtil_flags() {
    local given=" ${COMP_WORDS[*]:1:COMP_CWORD-1} "
    case $given in
        *' --config '*' --platform '* | *' --platform '*' --config '*) ;;
        *' --config '*) printf '%s\n' --platform ;;
        *' --platform '*) printf '%s\n' --config ;;
        *' --archive '*' --file '* | *' --file '*' --archive '*) ;;
        *' --archive '*' --manifest '* | *' --manifest '*' --archive '*) ;;
        *' --archive '*) printf '%s\n' --file --manifest ;;
        *' --file '* | *' --manifest '*) printf '%s\n' --archive ;;
        *) printf '%s\n' --config --archive --file --manifest --platform --help ;;
    esac
}

complete -F _TaVekUtil TaVekUtil TaVekUtil.exe
