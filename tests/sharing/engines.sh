#!/usr/bin/env bash
# Renders in parts, by real engines, hold what the whole does: engines.sh BIN_DIR
# shellcheck source=tests/sharing/farm.sh
. "$(dirname "$0")/farm.sh"

# Runs the plan in "plan" by an engine, as its words are printed.
lines() {
  aveffect plan plan --as lines >commands
  echo : >machines # this one
  head -n -1 commands | parallel --will-cite -j2 --sshloginfile machines --workdir .
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

# Encoders that lose: the same chunks make the same file, in whatever order.
for order in "0 1 2 3" "3 1 2 0"; do
  rm -rf plan
  aveffect plan plan --chunks 3 render steady.mp4 "lossy${order%% *}.mp4" -e noise/coarse >/dev/null
  for part in $order; do aveffect work plan "$part" --progress none; done
  aveffect finish plan
done
cmp lossy0.mp4 lossy3.mp4 || fail "chunks in another order make another film"

# Numbered pictures, read and written; a mask is read on all machines too.
aveffect render steady.mp4 in%03d.png --frames 20 --no-sound --progress none
aveffect frame steady.mp4 mask.png -e gray
numbered=(render in%03d.png -e noise:addnoise_level=-10:@mask=mask.png --seed 7)
aveffect plan pictures --chunks 3 "${numbered[@]:0:2}" part%d.jpg "${numbered[@]:2}" >/dev/null
grep -q '"in%03d.png"' pictures/plan.json && grep -q '"mask.png"' pictures/plan.json || fail "media are missing in the plan"
for part in 3 2 1 0; do aveffect work pictures $part --progress none; done
aveffect finish pictures
aveffect "${numbered[@]:0:2}" whole%d.jpg "${numbered[@]:2}" --progress none
for number in $(seq 20); do cmp part$number.jpg whole$number.jpg || fail "picture $number"; done
[ ! -e part21.jpg ] || fail "a picture too many"
rm part*.jpg
printf x | dd of="$(echo pictures/chunks/000001.*/3.jpg)" bs=1 seek=300 conv=notrunc status=none
! aveffect finish pictures 2>said && grep -q "3.jpg is not what was rendered" said || fail "a spoilt picture: $(cat said)"
[ ! -e part10.jpg ] && [ -e part9.jpg ] || fail "pictures before the spoilt one, no others"

# Tags come along.
[ "$(ffprobe -v error -show_entries format_tags=title -of csv=p=0 whole.mkv)" = "" ] || fail "a film has a clip's tags"
aveffect plan tags --chunks 2 render steady.mp4 tags.mkv -e invert >/dev/null
for part in 0 1 2; do aveffect work tags $part --progress none; done
aveffect finish tags
[ "$(ffprobe -v error -show_entries format_tags=title -of csv=p=0 tags.mkv)" = Steady ] || fail "tags are lost"
