# Completion of aveffect's command lines for bash. The tables are made from the program's options and effects.
# shellcheck shell=bash

@TABLES@

# The words up to the cursor. Readline also parts them at characters of COMP_WORDBREAKS, such as : and =; what no
# blank parts is joined again.
_aveffect_words() {
  local rest=${COMP_LINE:0:COMP_POINT} gap word i
  words=()
  for ((i = 0; i <= COMP_CWORD; ++i)); do
    gap=${rest%%[![:space:]]*}
    rest=${rest#"$gap"}
    word=${COMP_WORDS[i]:0:${#rest}}
    rest=${rest#"$word"}
    if ((i > 0)) && [ -z "$gap" ]; then words[-1]+=$word; else words+=("$word"); fi
  done
}

# Adds the words that continue what is there: _aveffect_add BEFORE BEGUN WORDS...
_aveffect_add() {
  local before=$1 begun=$2 word
  shift 2
  for word; do
    if [[ $word == "$begun"* ]]; then COMPREPLY+=("$before$word"); fi
  done
}

# Files whose path continues it: _aveffect_add_files BEFORE BEGUN KIND
_aveffect_add_files() {
  local file
  compopt -o filenames 2>/dev/null
  while IFS= read -r file; do COMPREPLY+=("$1$file"); done < <(compgen "$3" -- "$2")
}

# An effect with its settings: _aveffect_setting video|audio
_aveffect_setting() {
  local lines line effect=${cur%%[/:]*} written value help before=''
  compopt -o nospace 2>/dev/null
  if [ "$effect" = "$cur" ]; then
    _aveffect_effects "$1"
    for line in "${lines[@]}"; do _aveffect_add '' "$cur" "${line%%$'\t'*}"; done
    return
  fi
  _aveffect_settings "$effect"
  # The last colon that parts settings: no backslash before it, no digit behind it.
  local parted='^(.*[^\]:)([^0-9].*)?$'
  if [[ $cur =~ $parted ]]; then before=${BASH_REMATCH[1]}; fi
  local last=${cur#"$before"}
  for line in "${lines[@]}"; do
    IFS=$'\t' read -r written value help <<<"$line"
    case $written in
    /*) if [ -z "$before" ]; then _aveffect_add '' "$cur" "$effect$written"; fi ;;
    :*)
      written=${written#:}
      if [ -z "$before" ]; then continue; fi
      if [[ $last != *=* ]]; then
        _aveffect_add "$before" "$last" "$written"
      elif [[ $last == "$written"* ]]; then
        compopt +o nospace 2>/dev/null
        _aveffect_value "$value" "${last#"$written"}" "$before$written"
      fi
      ;;
    esac
  done
}

# A value of that kind: _aveffect_value KIND BEGUN BEFORE
_aveffect_value() {
  local begun=$2 before=$3 keys
  case $1 in
  - | \?) ;;
  @files) _aveffect_add_files "$before" "$begun" -f ;;
  @directories) _aveffect_add_files "$before" "$begun" -d ;;
  @video | @audio) _aveffect_setting "${1#@}" ;;
  *)
    # Behind a keyframe's time stands a value too.
    keys=${begun%"${begun##*=}"}
    # shellcheck disable=SC2086 # the kind is a list of words
    _aveffect_add "$before$keys" "${begun#"$keys"}" $1
    ;;
  esac
}

# Options and positionals of the command: _aveffect_command COMMAND PREVIOUS-WORD
_aveffect_command() {
  local lines line written value help option=$2 positional=''
  _aveffect_options "$1"
  if [[ $cur == --*=* ]]; then option=${cur%%=*}; fi
  for line in "${lines[@]}"; do
    IFS=$'\t' read -r written value help <<<"$line"
    case $written in
    \*) positional=$value ;;
    "$option")
      if [ "$value" = - ]; then continue; fi
      local given=''
      if [[ $cur == --*=* ]]; then given=$option= cur=${cur#*=}; fi
      _aveffect_value "$value" "$cur" ''
      COMPREPLY=("${COMPREPLY[@]/#/$given}")
      return
      ;;
    -*) if [[ $cur == -* ]]; then _aveffect_add '' "$cur" "$written"; fi ;;
    *) _aveffect_add '' "$cur" "$written" ;;
    esac
  done
  if [ -n "$positional" ] && [[ $cur != -?* ]]; then _aveffect_value "$positional" "$cur" ''; fi
}

_aveffect() {
  local words cur quoted='' command='' word broken='' kept i
  COMPREPLY=()
  _aveffect_words
  cur=${words[-1]}
  local whole=$cur
  if [[ $cur == [\"\']* ]]; then quoted=yes cur=${cur:1}; fi
  for word in "${words[@]:1:${#words[@]}-2}"; do
    if [[ $word != -* ]]; then
      command+=${command:+ }$word
      if [[ $_aveffect_groups != *" $command "* ]]; then break; fi
    fi
  done
  _aveffect_command "$command" "${words[-2]}"
  if [ -n "$quoted" ]; then return; fi
  # Readline replaces what stands behind the last of its breaks alone.
  for word in : =; do
    if [[ $COMP_WORDBREAKS == *$word* ]]; then broken+=$word; fi
  done
  if [ -z "$broken" ]; then return; fi
  kept=${whole%"${whole##*[$broken]}"}
  for i in "${!COMPREPLY[@]}"; do COMPREPLY[i]=${COMPREPLY[i]#"$kept"}; done
}

complete -F _aveffect aveffect
