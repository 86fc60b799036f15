# Completion of aveffect's command lines for fish. The tables are made from the program's options and effects.

# What the lines, of three fields between tabs, begin with, and what it means: __aveffect_offer BEFORE FROM
# FROM is the character before what is offered, empty for none.
function __aveffect_offer
  while read -l line
    set -l fields (string split \t -- $line)
    if test -z "$argv[2]"; or string match -q -- "$argv[2]*" $fields[1]
      set -l word $fields[1]
      if test -n "$argv[2]"
        set word (string sub -s 2 -- $word)
      end
      printf '%s\t%s\n' $argv[1]$word $fields[3]
    end
  end
end

# A value of that kind: __aveffect_value KIND BEGUN BEFORE
function __aveffect_value
  switch $argv[1]
    case '?' ''
    case @files
      for file in $argv[2]*
        test -d $file; and set file $file/
        printf '%s\n' $argv[3]$file
      end
    case '*'
      # Behind a keyframe's time stands a value too.
      set -l keys (string match -r '^.*=' -- $argv[2]); or set keys ''
      printf '%s\n' $argv[3]$keys(string split ' ' -- $argv[1])
  end
end

# An effect with its settings: __aveffect_setting video|audio
function __aveffect_setting
  set -l word (commandline -ct | string replace -r '^["\']' '')
  # Of what one word of options begins with, the value alone.
  set -l option (string match -r -- '^--[a-z-]+=' $word); or set option ''
  set word (string replace -r -- '^--[a-z-]+=' '' $word)
  set -l effect (string replace -r '[/:].*' '' -- $word)
  if test "$effect" = "$word"
    __aveffect_effects $argv[1] | __aveffect_offer "$option" ''
    return
  end
  # The last colon that parts settings: no backslash before it, no digit behind it.
  set -l before (string match -r -g '^(.*[^\\\\]:)(?:[^0-9].*)?$' -- $word)
  if test -z "$before"
    __aveffect_settings $effect | __aveffect_offer $option$effect/ /
    return
  end
  set -l last (string sub -s (math (string length -- $before) + 1) -- $word)
  if not string match -q '*=*' -- $last
    __aveffect_settings $effect | __aveffect_offer $option$before :
    return
  end
  set -l name (string split -m 1 = -- $last)
  __aveffect_settings $effect | while read -l line
    set -l fields (string split \t -- $line)
    if test $fields[1] = :$name[1]=
      __aveffect_value $fields[2] "$name[2]" $option$before$name[1]=
    end
  end
end

# Whether that is the command on the line: __aveffect_at COMMAND, or COMMAND and one of its own
function __aveffect_at
  set -l command
  for word in (commandline -opc)[2..]
    string match -q -- '-*' $word; and continue
    set -a command $word
    string match -q -- "* $command *" $__aveffect_groups; or break
  end
  test "$command" = "$argv"
end

@TABLES@
