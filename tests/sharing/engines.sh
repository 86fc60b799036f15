#!/usr/bin/env bash
# Renders in parts, by real engines, hold what the whole does: engines.sh BIN_DIR
# shellcheck source=tests/sharing/farm.sh
. "$(dirname "$0")/farm.sh"

# Runs the plan in "plan" by an engine, as its words are printed.
lines() {
  aveffect plan plan --as lines >commands
  head -n -1 commands | parallel --will-cite -j2
  sh -c "$(tail -n 1 commands)"
}
by_make() { aveffect plan plan --as make >Makefile && make -s -j2; }
# The last part first.
one_by_one() { aveffect plan plan --as lines | head -n -1 | tac | sh -e && aveffect finish plan; }

# share ENGINE COMMAND...: OUT stands for the output.
share() {
  local engine=$1
  shift
  rm -rf plan part.mkv whole.mkv
  aveffect plan plan --chunks 3 "${@//OUT/part.mkv}" >/dev/null
  "$engine" || fail "$engine: $*"
  aveffect "${@//OUT/whole.mkv}" --progress none
  same part.mkv whole.mkv "$*"
}

lossless=(--codec ffv1 --audio-codec flac)
share lines render steady.mp4 OUT "${lossless[@]}" -e noise/coarse -e rotate/twirl
share by_make render vary.mkv OUT -e 'spherize:spherize_r=0=5;1.5=40' --codec ffv1
share one_by_one render steady.mp4 OUT -e tile-reflect --codec ffv1
share one_by_one render steady.mp4 OUT "${lossless[@]}" -e fade-in --from 0.3 --to 1.7 --restart
share one_by_one render steady.mp4 OUT -e atomize/frosted --fps 25 --frames 31 --codec ffv1 --no-sound
share one_by_one render vary.mkv OUT --right steady.mp4 -e anaglyph --fps 30 --codec ffv1
share one_by_one join steady.mp4 vary.mkv OUT -e clock --duration 0.5 "${lossless[@]}"
aveffect timeline new film.otio steady.mp4 vary.mkv steady.mp4 -e crossfade --duration 0.5
share by_make timeline render film.otio OUT "${lossless[@]}"

# Tags come along.
[ "$(ffprobe -v error -show_entries format_tags=title -of csv=p=0 whole.mkv)" = "" ] || fail "a film has a clip's tags"
aveffect plan tags --chunks 2 render steady.mp4 tags.mkv -e invert >/dev/null
for part in 0 1 2; do aveffect work tags $part --progress none; done
aveffect finish tags
[ "$(ffprobe -v error -show_entries format_tags=title -of csv=p=0 tags.mkv)" = Steady ] || fail "tags are lost"
