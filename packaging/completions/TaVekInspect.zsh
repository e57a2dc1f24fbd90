#compdef TaVekInspect TaVekInspect.exe
# Completion of TaVekInspect for zsh. The program itself is asked for its commands and their flags.

local program=${words[1]}
if (( CURRENT == 2 )); then
    local -a offered
    offered=(${(f)"$(_call_program commands $program --help | sed -n 's/^  TaVekInspect \([a-z][a-z]*\) .*/\1/p')"})
    compadd -- $offered --help --version
elif [[ ${words[CURRENT - 1]} == --platform ]]; then
    compadd -- linux_arm7 linux_arm64 ombix win all
elif [[ $PREFIX == -* ]]; then
    local -a offered
    offered=(${(f)"$(_call_program flags $program ${words[2]} --help | grep '^Usage:' | grep -oE -e '--[a-z]+')"})
    compadd -- $offered --help
else
    _files
fi
