#!/usr/bin/env bash
# Renders 10 s of 1080p30 H.264 with the effect invert and, in turn, with the ffmpeg program's negate filter, same encoder
# settings, and prints wall times, their ratio and peak memory.
#   bench/pipeline.sh [PAIRS]     5 pairs unless told; expects a release build
set -euo pipefail
cd "$(dirname "$0")/.."
pairs=${1:-5}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Noise over a moving picture makes a clip of some 45 MB: as much to decode as detailed camera footage.
ffmpeg -v error -f lavfi -i testsrc2=size=1920x1080:rate=30:duration=10 -vf noise=alls=6:allf=t \
  -c:v libx264 -preset veryfast -crf 20 -pix_fmt yuv420p "$work/clip.mp4"

# Wall seconds and peak kilobytes of one command.
measure() { /usr/bin/time -f '%e %M' "$@" 2>&1 >/dev/null | tail -1; }

for ((i = 0; i <= pairs; ++i)); do
  ours=$(measure build/bin/aveffect render "$work/clip.mp4" "$work/ours.mp4" -e invert \
    --codec libx264 --preset ultrafast --crf 23 --progress none --overwrite)
  peer=$(measure ffmpeg -v error -y -i "$work/clip.mp4" -vf negate -c:v libx264 -preset ultrafast -crf 23 "$work/peer.mp4")
  [ "$i" -gt 0 ] && echo "$ours $peer" # the first pair warms the caches
done | awk '
  { ratio[NR] = $1 / $3; ours[NR] = $1; peer[NR] = $3; if ($2 > memory) memory = $2; if ($4 > peerMemory) peerMemory = $4
    printf "pair %d: aveffect %.2f s, ffmpeg %.2f s, ratio %.3f\n", NR, $1, $3, ratio[NR] }
  function median(v, n,   i, j, t) {
    for (i = 1; i <= n; ++i) for (j = i + 1; j <= n; ++j) if (v[j] < v[i]) { t = v[i]; v[i] = v[j]; v[j] = t }
    return n % 2 ? v[(n + 1) / 2] : (v[n / 2] + v[n / 2 + 1]) / 2 }
  END { printf "median: aveffect %.2f s, ffmpeg %.2f s, ratio %.3f; peak memory %.0f MB and %.0f MB\n",
        median(ours, NR), median(peer, NR), median(ratio, NR), memory / 1024, peerMemory / 1024 }'
