#!/usr/bin/env bash
# Installs into a new directory, builds a host against the package, and runs it and the installed program.
set -euo pipefail
build=$1
consumer=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/prefix" >/dev/null
cmake -S "$consumer" -B "$work/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
cmake --build "$work/consumer" >/dev/null
[ "$("$work/consumer/host")" = "255 254 253 9" ] || { echo "the host's pixel came out wrong"; exit 1; }
# Programs that are shown the modules' folder find the effects.
words=$(FREI0R_PATH=$(echo "$work"/prefix/lib*/frei0r-1 "$work"/prefix/lib/*/frei0r-1 | tr ' ' :) \
  ffmpeg -v error -f lavfi -i testsrc=s=64x48 -frames:v 1 -vf frei0r=aveffect_invert -f null - 2>&1)
[ -z "$words" ] || { echo "the installed modules don't work: $words"; exit 1; }
# The whole list is read: a program whose reader goes away fails.
# Found through a link in bin/, the program still finds the libraries beside it.
"$work/prefix/bin/aveffect" list | grep simple_gauss_blur >/dev/null || { echo "the installed program lists no effects"; exit 1; }
for file in ladspa/aveffect.so lv2/aveffect.lv2/aveffect.so lv2/aveffect.lv2/manifest.ttl lv2/aveffect.lv2/aveffect.ttl; do
  [ -e "$work/prefix/lib/$file" ] || { echo "lib/$file is not installed"; exit 1; }
done
for file in man/man1/aveffect-render.1 man/man7/aveffect-effects.7 bash-completion/completions/aveffect zsh/site-functions/_aveffect \
  fish/vendor_completions.d/aveffect.fish; do
  [ -e "$work/prefix/share/$file" ] || { echo "share/$file is not installed"; exit 1; }
done
