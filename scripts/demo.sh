#!/usr/bin/env bash
# Installs what is missing, builds, renders a clip through the plug-in, says where to look.
#   scripts/demo.sh [CLIP]     without a clip, one is drawn first
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/dependencies.sh program
scripts/build.sh program

out=build/demo
mkdir -p "$out"
clip=${1:-$out/clip.mp4}
if [ $# -eq 0 ]; then
  ffmpeg -v error -y -f lavfi -i testsrc2=size=1280x720:rate=30:duration=5 -f lavfi -i sine=frequency=330:duration=5 \
    -c:v libx264 -preset veryfast -pix_fmt yuv420p -c:a aac "$clip"
fi
build/bin/aveffect render "$clip" "$out/aged.mp4" --overwrite \
  -e brightness-contrast:contrast=+25:saturation=-60 -e blur:blur_count=2 -e aged-film
build/bin/aveffect render "$clip" "$out/negative.mp4" --overwrite -e invert
build/bin/aveffect frame "$clip" "$out/negative.png" --at 0 --overwrite -e invert
build/bin/aveffect join "$out/aged.mp4" "$out/negative.mp4" "$out/joined.mp4" --overwrite -e clock --duration 1

echo
echo "Rendered from $clip:"
echo "  $out/aged.mp4      contrast, blur and the tint of old film"
echo "  $out/negative.mp4  the negative"
echo "  $out/negative.png  the negative's first picture"
echo "  $out/joined.mp4    the two clips, one crossing into the other"
echo "What else there is: build/bin/aveffect list"
