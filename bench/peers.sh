#!/usr/bin/env bash
# Whole programs side by side: renders of 1080p30 H.264 by aveffect and by ffmpeg's filter of the same kind (and melt's, where
# the program is installed), same encoder and settings, in turn, in one run. Prints medians of wall seconds and our ratio to
# each: below 1 we are faster. Then, in melt and without an encoder, effects by the module for MLT and by those for frei0r: frames a second.
#   bench/peers.sh [RUNS [SECONDS]]     5 runs and 6 s unless told; expects a release build
set -euo pipefail
cd "$(dirname "$0")/.."
runs=${1:-5} seconds=${2:-6}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for name in a b; do # as much to decode as detailed camera footage
  ffmpeg -v error -f lavfi -i "testsrc2=size=1920x1080:rate=30:duration=$seconds" -vf "noise=alls=6:allf=t:all_seed=$RANDOM" \
    -c:v libx264 -preset veryfast -crf 20 -pix_fmt yuv420p "$work/$name.mp4"
done
a=$work/a.mp4 b=$work/b.mp4
x264=(-c:v libx264 -preset ultrafast -crf 23)

ours() { build/bin/aveffect "$@" "$work/ours.mp4" --codec libx264 --preset ultrafast --crf 23 --progress none --overwrite; }
filter() { ffmpeg -v error -y -i "$a" -vf "$1" "${x264[@]}" "$work/peer.mp4"; }
melted() { melt -silent "$a" -filter "$1" -consumer "avformat:$work/melt.mp4" vcodec=libx264 preset=ultrafast crf=23 an=1; }

# Work, our command, ffmpeg's, melt's or nothing; words hold no spaces.
work_list=(
  "invert|ours render $a -e invert|filter negate|melted invert"
  "grey|ours render $a -e gray|filter hue=s=0|melted greyscale"
  "contrast|ours render $a -e brightness-contrast:contrast=25|filter eq=contrast=1.2|"
  "blur|ours render $a -e blur:blur_count=1|filter gblur=sigma=0.8:steps=1|"
  "sharpen|ours render $a -e sharpen|sharpened|"
  "edges|ours render $a -e edge-light/neon|filter sobel|"
  "dilation|ours render $a -e dilate|filter dilation|"
  "mosaic|ours render $a -e mosaic/pixelate|filter pixelize=w=16:h=16|"
  "mirror|ours render $a -e reverse/mirror|filter hflip|melted mirror:flip"
  "fade from black|ours render $a -e fade-in|filter fade=in:0:$((seconds * 30))|"
  "cross-fade|ours transition $a $b --live -e crossfade --duration $seconds|crossed|"
)
sharpened() { filter "convolution=-1 -1 -1 -1 9 -1 -1 -1 -1"; }
crossed() {
  ffmpeg -v error -y -i "$a" -i "$b" -filter_complex "xfade=duration=$seconds:offset=0" "${x264[@]}" "$work/peer.mp4"
}

timed() { # wall seconds; empty where the program isn't there
  local TIMEFORMAT=%R
  [ -z "$1" ] || { [[ $1 == melted* ]] && ! command -v melt >/dev/null; } && return
  # shellcheck disable=SC2086
  { time $1 >/dev/null 2>&1; } 2>&1
}
median() { sort -n | awk 'NF { v[++n] = $1 } END { if (n) print (v[int((n + 1) / 2)] + v[int(n / 2) + 1]) / 2; else print "-" }'; }

# Runs what the variables of these names say by turns, and keeps their seconds but for the first's, which warms the caches.
in_turn() {
  local run who
  for ((run = 0; run <= runs; ++run)); do
    for who in "$@"; do
      [ "$run" -gt 1 ] || : >"$work/$who"
      timed "${!who}" >>"$work/$who"
    done
  done
}

awk -F': ' -v n="$(nproc)" '/model name/ { print n " processors: " $2; exit }' /proc/cpuinfo
printf '%-16s %9s %9s %7s %9s %7s\n' work aveffect ffmpeg ratio melt ratio
for line in "${work_list[@]}"; do
  IFS='|' read -r name mine theirs melts <<<"$line"
  in_turn mine theirs melts
  awk -v name="$name" -v m="$(median <"$work/mine")" -v t="$(median <"$work/theirs")" -v e="$(median <"$work/melts")" 'BEGIN {
    printf "%-16s %9.2f %9.2f %7.2f %9s %7s\n", name, m, t, m / t, e, e == "-" ? "-" : sprintf("%.2f", m / e) }'
done

command -v melt >/dev/null && [ -e build/lib/mlt-7/libmltaveffect.so ] || exit 0
mkdir "$work/modules"
ln -s /usr/lib/*/mlt-7/*.so "$PWD"/build/lib/mlt-7/libmltaveffect.so "$work/modules"
export MLT_REPOSITORY=$work/modules FREI0R_PATH=$PWD/build/lib/frei0r-1 QT_QPA_PLATFORM=offscreen
shown() { melt -silent "$a" -filter "$@" -consumer null real_time=-1 terminate_on_pause=1; }
printf '\n%-20s %9s %9s %7s\n' 'in melt' module frei0r ratio
for effect in gray invert 'brightness-contrast preset=faded' 'blur preset=soft'; do
  own="shown aveffect.$effect" other="shown frei0r.aveffect_${effect//-/_}"
  in_turn own other
  awk -v name="${effect% *}" -v n=$((seconds * 30)) -v o="$(median <"$work/own")" -v t="$(median <"$work/other")" 'BEGIN {
    printf "%-20s %9.0f %9.0f %7.2f\n", name, n / o, n / t, t / o }'
done
