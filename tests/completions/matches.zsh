#!/usr/bin/env zsh
# matches.zsh DIRECTORY LINE: what zsh offers for the command line LINE, one match a line, when the completion
# functions of DIRECTORY are known. Presses the tab key in a shell of its own.

zmodload zsh/zpty
zpty shell zsh -f -i

# The shell is told to print what completion offers; calls of compadd that only look something up are no offers.
zpty -w shell "$(<<END
PROMPT= PROMPT2= RPROMPT=
unsetopt beep zle_bracketed_paste 2>/dev/null
stty -echo
fpath=(${(q)1} \$fpath)
autoload -Uz compinit && compinit -u -D
setopt no_list_ambiguous
compadd() {
    if [[ \${@[1,(i)(-|--)]} == *-(O|A|D)\ * ]]; then builtin compadd "\$@"; return; fi
    local -a offered
    builtin compadd -O offered "\$@"
    [[ \$#offered -eq 0 ]] || print -rl -- "match:"\$^offered
    builtin compadd "\$@"
}
finish() { print -r -- finished; zle kill-whole-line }
zle -N finish
complete-and-finish() { zle list-choices; finish }
zle -N complete-and-finish
bindkey '^I' complete-and-finish
print -r -- rea""dy
END
)"
zpty -r shell seen '*ready*' || exit 1
zpty -n -w shell "$2"$'\t'
zpty -r shell seen '*finished*' || exit 1
zpty -d shell
print -r -- $seen | tr -d '\r' | sed -n 's/^.*match://p' | sort -u
