#!/usr/bin/env bash
# Neither man nor mandoc has a complaint of the pages, there is one of each command, and whatis finds its line: manuals.sh SHARE PROGRAM
set -euo pipefail
cd "$1/man"
words=$(mandoc -T lint man?/* 2>&1 || true)
for page in man?/*; do
  words+=$(LC_ALL=C.UTF-8 MANWIDTH=80 man -l --warnings=w,mac "$page" 2>&1 >/dev/null)
  lexgrog "$page" >/dev/null || words+="$page has no line for whatis"
done
[ -z "$words" ] || { echo "$words"; exit 1; }
commands=$("$2" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\) .*/\1/p')
[ "$(wc -w <<<"$commands")" -gt 5 ]
for command in $commands; do
  [ -s "man1/aveffect-$command.1" ] || { echo "no page of $command"; exit 1; }
done
