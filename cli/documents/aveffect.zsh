#compdef aveffect
# Completion of aveffect's command lines for zsh. The tables are made from the program's options and effects.

@TABLES@

# Offers what the lines, of three fields between tabs, begin with: _aveffect_describe NAME FROM OPTION...
# FROM is the character before what is offered, empty for none.
_aveffect_describe() {
  local name=$1 from=$2 line
  local -a offered fields
  shift 2
  for line in $lines; do
    fields=("${(@s:	:)line}")
    if [[ -z $from || $line == $from* ]]; then offered+=("${${fields[1]#$from}//:/\\:}:$fields[3]"); fi
  done
  _describe -t $name $name offered "$@"
}

# An effect with its settings: _aveffect_setting video|audio
_aveffect_setting() {
  local -a lines match mbegin mend
  local effect=${PREFIX%%[/:]*} line before= value
  if [[ $effect == $PREFIX ]]; then
    _aveffect_effects $1
    _aveffect_describe effects '' -S ''
    return
  fi
  _aveffect_settings $effect
  # The last colon that parts settings: no backslash before it, no digit behind it.
  if [[ $PREFIX =~ '^(.*[^\\]:)([^0-9].*)?$' ]]; then before=$match[1]; fi
  if [[ -z $before ]]; then
    compset -p $((${#effect} + 1))
    _aveffect_describe presets / -S ''
    return
  fi
  compset -p ${#before}
  if [[ $PREFIX != *=* ]]; then
    _aveffect_describe settings : -S ''
    return
  fi
  for line in $lines; do
    if [[ $line == ":${PREFIX%%=*}="* ]]; then value=${${line#*	}%%	*}; fi
  done
  compset -P 1 '*='
  case $value in
  @files) _files ;;
  \?|'') _message value ;;
  *)
    # Behind a keyframe's time stands a value too.
    compset -P '*='
    compadd -S '' -- ${=value}
    ;;
  esac
}

# A command that has commands: _aveffect_group COMMAND
_aveffect_group() {
  local context state line curcontext=$curcontext
  _arguments -C '(- *)'{-h,--help}'[Print this help message and exit]' '1:command:->command' '*::argument:->argument'
  case $state in
  command)
    _aveffect_commands $1
    _aveffect_describe commands ''
    ;;
  argument) _aveffect_arguments "$1 $words[1]" ;;
  esac
}

_aveffect() {
  local context state line curcontext=$curcontext
  local -a lines state_descr
  local -A opt_args
  _arguments -C '(- *)'{-h,--help}'[Print this help message and exit]' \
    '(- *)--version[Display program version information and exit]' '1:command:->command' '*::argument:->argument'
  case $state in
  command)
    _aveffect_commands ''
    _aveffect_describe commands ''
    ;;
  argument) _aveffect_arguments $words[1] ;;
  esac
}

if [[ $funcstack[1] == _aveffect ]]; then _aveffect "$@"; else compdef _aveffect aveffect; fi
