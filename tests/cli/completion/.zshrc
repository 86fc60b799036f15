# Completes each line and notes what is offered.
fpath=($share/zsh/site-functions $fpath)
autoload -Uz compinit
compinit -u -D
compadd() {
  if [[ ${@[1,(i)(-|--)]} == *-(O|A|D)\ * ]]; then builtin compadd "$@"; return; fi
  local -a hits
  builtin compadd -A hits "$@"
  (( $#hits )) && print -rl -- "$IPREFIX"${^hits} >>$found
  builtin compadd "$@"
}
offer() { _main_complete; compstate[insert]= compstate[list]=; }
zle -C offer list-choices offer
run() {
  local line
  for line in ${(f)"$(<$asked_lines)"}; do
    BUFFER=$line CURSOR=$#line
    print -r -- "== $line" >>$found
    zle offer
  done
  exit 0
}
zle -N zle-line-init run
