#!/usr/bin/env bash
# Makes the pictures of the documentation with a release build: scripts/pictures.sh
set -euo pipefail
cd "$(dirname "$0")/.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p docs/pictures

ffmpeg -v error -f lavfi -i mandelbrot=size=1280x960:start_scale=0.006:start_x=-0.743643887:start_y=-0.131825904:inner=mincol \
  -vf scale=320:240:flags=area -frames:v 1 "$work/plain.png"
effect() { build/bin/aveffect frame "$work/plain.png" "$work/$1.png" --at 0 -e "$2"; }
effect inverted invert
effect aged aged_film
effect blurred simple_gauss_blur:blur_count=8
ffmpeg -v error -y -i "$work/plain.png" -i "$work/inverted.png" -i "$work/aged.png" -i "$work/blurred.png" \
  -filter_complex "[0][1][2][3]xstack=inputs=4:layout=0_0|w0+8_0|0_h0+8|w0+8_h0+8:fill=white" -pix_fmt rgb24 docs/pictures/effects.png
