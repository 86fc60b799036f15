#!/usr/bin/env bash
# Workers that are killed, doubled, spoilt or otherwise than the plan: failures.sh BIN_DIR
# shellcheck source=tests/sharing/farm.sh
. "$(dirname "$0")/farm.sh"

refuses() { # TEXT COMMAND...
  local text=$1 code=0
  shift
  "$@" >said 2>&1 || code=$?
  [ "$code" -ne 0 ] || fail "not refused: $*"
  grep -qF -- "$text" said || fail "$*: $(cat said)"
}
says() { grep -qF "$1" <(aveffect status plan) || fail "status does not say '$1': $(aveffect status plan)"; }

aveffect render steady.mp4 whole.mkv -e oil-painting --codec ffv1 --audio-codec flac --progress none
aveffect plan plan --chunks 4 render "$PWD/steady.mp4" part.mkv -e oil-painting --codec ffv1 --audio-codec flac >/dev/null
grep -q "$PWD" plan/plan.json && fail "the plan knows this machine's folders"
refuses "lacks 5 of 5 parts: 0-4" aveffect finish plan

for after in 0.005 0.02 0.05 0.1; do timeout -s KILL $after aveffect work plan 1 --progress none || true; done
aveffect work plan 2 --progress none & aveffect work plan 2 --progress none
wait
ls plan/chunks/000002.*.mkv | wc -l | grep -qx 1 || fail "two workers left two files"
grep -qE "missing: 0(-1)?, 3-4$" <(aveffect status plan) || fail "it is otherwise: $(aveffect status plan)"
aveffect work plan 2 --progress none

# Another machine has its media elsewhere.
mkdir other
cp steady.mp4 other/
for part in 0 1 3 4; do aveffect work plan $part --media-root other --progress none; done
says "5 of 5 parts"
aveffect finish plan
same part.mkv whole.mkv "after failures"
refuses "exists" aveffect finish plan

# A chunk that is not what was rendered, by length or by content.
chunk=$(echo plan/chunks/000003.*.mkv)
cp "$chunk" kept
printf x >>"$chunk"
says "missing: 3"
cp kept "$chunk"
dd if=/dev/zero of="$chunk" bs=1 seek=3000 count=9 conv=notrunc status=none
rm part.mkv
refuses "is not what was rendered" aveffect finish plan
[ ! -e part.mkv ] || fail "a spoilt film was left"

# Machines that are otherwise.
refuses "parts 0 to 4" aveffect work plan 9
rm plan/chunks/000000.json
printf x >>other/steady.mp4
refuses "bytes, not" aveffect work plan 0 --media-root other
says "failed: 0"
sed -i 's/"probe": "..../"probe": "0000/' plan/plan.json
refuses "another first picture" aveffect work plan 0
sed -i 's/"version": "[^"]*"/"version": "0.0.1"/' plan/plan.json
refuses "made by version 0.0.1" aveffect work plan 0

refuses "can be shared out, no other command" aveffect plan new --chunks 2 frame steady.mp4 a.png
refuses "is one picture" aveffect plan new --chunks 2 render steady.mp4 a.png
refuses "copied as they are" aveffect plan new --chunks 2 render steady.mp4 a.mkv -a volume
refuses "--chunks N or --chunk-seconds S" aveffect plan new render steady.mp4 a.mkv -e invert
