#!/usr/bin/env bash
# What a stranger's file could do through the media libraries is refused, in each command, and the command's work is done all
# the same; without the walls it would succeed. Sees to it that every encoder works behind them.
#   walls.sh AVEFFECT STRANGER
set -euo pipefail
program=$(realpath "$1") stranger=$(realpath "$2")
work=$(mktemp -d) && trap 'rm -rf "$work"; [ -z "${listener:-}" ] || kill "$listener"' EXIT
mkdir "$work/home" "$work/elsewhere" "$work/here"
cd "$work/here"
fail() { echo "$*" >&2; cat ../err >&2; exit 1; }

python3 -c 'import socket, sys
s = socket.socket(); s.bind(("127.0.0.1", 0)); s.listen(99)
print(s.getsockname()[1], flush=True)
while True: s.accept()' >../port &
listener=$!
until [ -s ../port ]; do read -rt 0.05 <> <(:) || true; done

ffmpeg -v error -f lavfi -i testsrc2=s=96x64:r=25:d=0.4 -f lavfi -i sine=d=0.4 -c:v mpeg4 -c:a aac a.mp4
ffmpeg -v error -i a.mp4 -frames:v 2 p%d.png
"$program" timeline new film.otio a.mp4 p1.png@1 -e crossfade --duration 0.2 --music a.mp4

export STRANGER_KEY=$work/home/key STRANGER_PLACE=$work/elsewhere/file STRANGER_PORT
STRANGER_PORT=$(cat ../port)
attempt() { # ARGUMENTS: what the program says goes to ../err
  echo secret >"$STRANGER_KEY"
  LD_PRELOAD=$stranger HOME=$work/home "$program" "$@" >../out 2>../err </dev/null
}

attempt render a.mp4 open.mkv --no-sandbox || fail "render fails when nothing holds it back"
for what in read-key write-elsewhere cut-key connect socket-here fork spawn signal; do
  grep -qx "$what done" ../err || fail "$what is not possible without walls: the test is worth nothing"
done
rm -rf ../elsewhere/*

if [ -n "$("$program" frame a.mp4 note.png -v 2>&1 | grep confined)" ]; then
  echo "this system can't raise both walls: not tried"
  exit 77
fi
commands=(
  "render a.mp4 o.mp4 -e blur:@mask=p1.png" "render a.mp4 copy.mkv --codec copy" "render p%d.png q%d.png" "frame a.mp4 f.png"
  "transition p1.png p2.png t.mp4 -e clock" "join a.mp4 p1.png j.mp4 -e push --duration 0.2 --music a.mp4" "sheet p1.png p2.png s.png"
  "compare a.mp4 a.mp4" "batch p1.png p2.png --to many/folders" "render a.mp4 s.wav -a volume/half"
  "timeline check film.otio" "timeline render film.otio film.mp4 --work pieces" "timeline show film.otio --html film.html"
  "timeline new other.otio a.mp4 p1.png -e cut"
)
for command in "${commands[@]}"; do
  # shellcheck disable=SC2086
  attempt $command || fail "$command: ended with $?"
  grep -q refused ../err || fail "$command: the stranger was not there"
  ! grep ' done$' ../err || fail "$command: not refused"
  [ "$(cat "$STRANGER_KEY")" = secret ] && [ -z "$(ls ../elsewhere)" ] || fail "$command: key or folder were touched"
done
! ls -d .[a-z]* 2>/dev/null || fail "files are left behind"
[ "$(ls many/folders)" = $'p1.png\np2.png' ] || fail "batch wrote: $(ls many/folders)"

# What an input may name besides itself.
printf 'ffconcat version 1.0\nfile a.mp4\n' >list.txt
! "$program" render list.txt l.mkv 2>../err || fail "a list was followed"
[ "$(cat ../err)" = "aveffect: list.txt names other files (concat), which are opened only when its format is asked for: list.txt?format=concat" ] ||
  fail "of a list it says"
"$program" render 'list.txt?format=concat' l.mkv || fail "a list that is asked for"

# Every encoder of pictures: what works without walls works behind them, and the other way round.
tried=0 differ=0
while read -r encoder; do
  case $encoder in *_vaapi | *_nvenc | *_qsv | *_amf | *_v4l2m2m | *_omx | *_vulkan) continue ;; esac
  codes=()
  for wall in '' --no-sandbox; do
    code=0
    timeout 60 "$program" render a.mp4 e.mkv --codec "$encoder" --frames 3 --no-sound --overwrite $wall >../out 2>../err </dev/null || code=$?
    codes+=("$code")
  done
  tried=$((tried + 1))
  [ "${codes[0]}" = "${codes[1]}" ] || { echo "$encoder: ${codes[0]} behind walls, ${codes[1]} without" >&2; differ=1; }
done < <(ffmpeg -v error -hide_banner -encoders | awk '$1 ~ /^V/ && $2 != "=" { print $2 }' |
  if [ -n "${AVEFFECT_SOAK:-}" ]; then cat; else grep -E '^(libx264|libx265|libsvtav1|libaom-av1|libvpx|libtheora|libwebp|libxvid|libopenjpeg|mpeg2video|ffv1|prores_ks)$'; fi)
[ "$tried" -ge 5 ] && [ "$differ" -eq 0 ] || fail "encoders: $tried tried"
