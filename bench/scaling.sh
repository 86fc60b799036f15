#!/usr/bin/env bash
# Renders 1080p30 H.264 with four chains on 1 to N threads and prints pictures a second, to raw video and to x264
# (ultrafast), the medians of runs made in turn. Then, for each chain on one thread, what share of the processor's time
# goes to decoder, conversion, effects and encoder: the difference between runs that leave the part out and runs that have it.
#   bench/scaling.sh [RUNS [THREADS [SECONDS]]]     3 runs, one thread a processor and 12 s unless told; expects a release build
set -euo pipefail
cd "$(dirname "$0")/.."
runs=${1:-3} threads=${2:-$(nproc)} seconds=${3:-12}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
clip=$work/clip.mp4
chains=("-e invert" "-e fadein" "-e radiate -e noise -e relief" "-e oilpainting -e radiate -e relief")
outputs=("rawvideo" "matroska --codec libx264 --preset ultrafast")

ffmpeg -v error -f lavfi -i "testsrc2=size=1920x1080:rate=30:duration=$seconds" -vf noise=alls=6:allf=t \
  -c:v libx264 -preset veryfast -crf 20 -pix_fmt yuv420p "$clip"
pictures=$((seconds * 30))

# Wall seconds and processor seconds of a render to an output, on so many threads, through a chain (which may be empty).
measure() {
  local TIMEFORMAT='%R %U %S'
  # shellcheck disable=SC2086 # chains and outputs are several words
  { time build/bin/aveffect render "$clip" - --format $1 --threads "$2" $3 --progress none >/dev/null 2>"$work/messages"; } 2>&1 |
    awk '{ print $1, $2 + $3 }'
}
# Median of a column of the lines on standard input.
median() { sort -n -k "$1,$1" | awk -v at="$1" '{ v[NR] = $at } END { print (v[int((NR + 1) / 2)] + v[int(NR / 2) + 1]) / 2 }'; }

echo "pictures a second, $(nproc) processors: $(awk -F': ' '/model name/ { print $2; exit }' /proc/cpuinfo)"
for ((run = 0; run <= runs; ++run)); do # the first warms the caches
  for output in "${outputs[@]}"; do
    for chain in "${chains[@]}"; do
      for ((n = 1; n <= threads; ++n)); do
        [ "$run" -gt 0 ] || [ "$n" = "$threads" ] || continue
        line=$(measure "$output" "$n" "$chain")
        [ "$run" = 0 ] || echo "$line" >>"$work/${output%% *}$chain$n"
      done
    done
  done
done
for output in "${outputs[@]}"; do
  for chain in "${chains[@]}"; do
    printf '%-9s %-38s' "${output%% *}" "$chain"
    for ((n = 1; n <= threads; ++n)); do
      median 1 <"$work/${output%% *}$chain$n" | awk -v n="$n" -v p="$pictures" '{ printf "  %d: %.1f", n, p / $1 }'
    done
    echo
  done
done

echo "share of the processor's time on one thread, to x264"
# The effect that changes nothing with these settings works in the format that the chain works in.
# shellcheck disable=SC2086
format_of() { build/bin/aveffect render "$clip" - --format rawvideo --frames 1 $1 -v 2>&1 >/dev/null | sed -n 's/.*effects work in \([a-z0-9]*\).*/\1/p'; }
cpu() { for ((run = 0; run < runs; ++run)); do measure "$1" 1 "$2"; done | median 2; }
plain=$(cpu rawvideo "")
for chain in "${chains[@]}"; do
  converted=$(cpu rawvideo "-e brightness-contrast:brightness=0 --pixel-format $(format_of "$chain")")
  made=$(cpu rawvideo "$chain")
  encoded=$(cpu "${outputs[1]}" "$chain")
  awk -v chain="$chain" -v a="$plain" -v b="$converted" -v c="$made" -v d="$encoded" 'BEGIN {
    printf "%-38s decoder %.0f %%, conversion and copies %.0f %%, effects %.0f %%, encoder %.0f %%, of %.2f s\n", chain,
           100 * a / d, 100 * (b - a) / d, 100 * (c - b) / d, 100 * (d - c) / d, d }'
done
