#!/usr/bin/env bash
# Makes the whole runs' inputs: a file of every kind that the tests know, as small as its format allows, each as what is made
# of clips: fuzz/render_corpus.sh DIR
set -euo pipefail
cd "$(dirname "$0")/.."
mkdir -p "$1"
file=$(mktemp -d)
trap 'rm -rf "$file"' EXIT

make() {
  local kind=$1 name=$2
  shift 2
  local drawn="-f lavfi -i testsrc2=size=48x32:rate=25:duration=0.2" sound="-f lavfi -i sine=duration=0.2:sample_rate=48000"
  case $kind in
    still) inputs="$drawn -frames:v 1" ;;
    clip) inputs="$drawn $sound" ;;
    sound) inputs=$sound ;;
  esac
  # shellcheck disable=SC2086 # they are words
  ffmpeg -v error -nostdin $inputs "$@" -flags +bitexact -fflags +bitexact "$file/$name"
}

# What is made of them, by its number in the target: coded again in one of three ways, its sound alone, one picture.
number=0
while read -r -a words; do
  number=$((number + 1))
  case ${words[0]} in
    still) use=$((number % 3)) ;;
    clip) use=$((number % 5)) ;;
    sound) use=3 ;;
    *) continue ;;
  esac
  make "${words[@]}"
  printf '%b' "\\x0$use\\x$(printf %02x "$number")" | cat - "$file/${words[1]}" >"$1/${words[1]}"
done <tests/support/media_kinds.txt
