#!/usr/bin/env bash
# Cuts the power at every call that writes, syncs or names: power_cut.sh AVEFFECT FORGETFUL
# With --sync the output is the old file or the whole new one, and the new one once the program has said that it is done.
set -euo pipefail
program=$1 forgetful=$2
work=$(mktemp -d) && trap 'rm -rf "$work"' EXIT
disk=$work/disk
ffmpeg -v error -f lavfi -i testsrc2=s=320x240:r=25:d=0.2 -c:v ffv1 "$work/in.mkv"

# What a file shows, whatever its container's own marks are.
shown() { ffmpeg -v error -xerror -i "$1" -f md5 - 2>&1 || echo broken; }

# Renders to OUTPUT where the old file stands, the power being cut at a call; prints what is left.
after_cut() { # OUTPUT FORGET AT OPTIONS...
  local output=$disk/$1 kind=$2 at=$3
  shift 3
  rm -rf "$disk" && mkdir "$disk" && cp "$work/old.${output##*.}" "$output"
  code=0
  FORGET_IN=$disk FORGET=$kind FORGET_AT=$at FORGET_COUNT=$work/calls LD_PRELOAD=$forgetful \
    "$program" "${command[@]}" "$output" -e invert --overwrite "$@" 2>/dev/null || code=$?
  left=$(shown "$output")
}

failed=0 worse=0 cuts=0
fail() { echo "$*"; failed=1; }
for kind in mkv png; do
  if [ $kind = mkv ]; then command=(render --codec ffv1 "$work/in.mkv"); else command=(frame "$work/in.mkv"); fi
  command+=(--no-sandbox) # the layer keeps its count elsewhere
  "$program" "${command[@]}" "$work/old.$kind"
  "$program" "${command[@]}" "$work/new.$kind" -e invert
  old=$(shown "$work/old.$kind") new=$(shown "$work/new.$kind")
  [ "$old" != "$new" ] || fail "nothing to tell the files apart by"
  for forget in data names; do
    after_cut out.$kind $forget 0 --sync
    [ $code = 0 ] && [ "$left" = "$new" ] || fail "$kind, $forget: lost although it was done ($code)"
    calls=$(cat "$work/calls")
    [ "$calls" -ge 4 ] || fail "$kind: only $calls calls were seen"
    for at in $(seq 1 "$calls"); do
      cuts=$((cuts + 1))
      after_cut out.$kind $forget "$at" --sync
      [ $code = 99 ] || fail "$kind, $forget, call $at of $calls: no cut ($code)"
      [ "$left" = "$old" ] || [ "$left" = "$new" ] || fail "$kind, $forget, call $at of $calls: $left"
    done
    after_cut out.$kind $forget 0 # the same without it
    [ "$left" = "$new" ] || worse=$((worse + 1))
  done
done
# Else nothing was tried.
[ $worse = 4 ] || fail "without --sync only $worse of 4 outputs were lost"
echo "$cuts cuts"
exit $failed
