#!/usr/bin/env bash
# Installs into a new directory, builds a host against the package, and runs it and the installed program.
set -euo pipefail
build=$1
source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/prefix" >/dev/null
cmake -S "$source/examples" -B "$work/examples" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$work/examples" >/dev/null
"$source/tests/packages/examples.sh" "$work/examples"
# By pkg-config, too; and every header of the host library finds those that it names.
export PKG_CONFIG_PATH=$work/prefix/lib/pkgconfig
read -ra flags < <(pkg-config --cflags --libs aveffect libavformat libavcodec)
g++ -std=c++20 -DPLUGIN_DIR="\"$(pkg-config --variable=plugindir aveffect)\"" "$source/examples/smallest_host.cpp" "${flags[@]}" -o "$work/host"
[ "$("$work/host")" = "255 254 253 9" ] || { echo "the host that pkg-config helped to build fails"; exit 1; }
for top in host mediabridge; do (cd "$work/prefix/include/aveffect-host" && find "$top" -name '*.h' -printf '#include "%p"\n'); done >"$work/all.cpp"
g++ -std=c++20 -fsyntax-only -I"$work/prefix/include/aveffect-host" "$work/all.cpp" "${flags[@]}"
# Programs that are shown the modules' folder find the effects.
words=$(FREI0R_PATH=$(echo "$work"/prefix/lib*/frei0r-1 "$work"/prefix/lib/*/frei0r-1 | tr ' ' :) \
  ffmpeg -v error -f lavfi -i testsrc=s=64x48 -frames:v 1 -vf frei0r=aveffect_invert -f null - 2>&1)
[ -z "$words" ] || { echo "the installed modules don't work: $words"; exit 1; }
mkdir "$work/mlt"
ln -s /usr/lib/*/mlt-7/*.so "$(find "$work/prefix" -name libmltaveffect.so)" "$work/mlt"
MLT_REPOSITORY=$work/mlt melt -query filters >"$work/services" 2>&1
grep -q aveffect.invert "$work/services" || { echo "melt finds no effects: $(grep -m1 -i aveffect "$work/services")"; exit 1; }
mkdir "$work/gst"
ln -s "$(find "$work/prefix" -name libgstaveffect.so)" "$work/gst"
GST_PLUGIN_PATH=$work/gst GST_REGISTRY=$work/registry gst-inspect-1.0 aveffect-invert >/dev/null || { echo "GStreamer finds no effects"; exit 1; }
# The whole list is read: a program whose reader goes away fails.
# Found through a link in bin/, the program still finds the libraries beside it.
"$work/prefix/bin/aveffect" list | grep simple_gauss_blur >/dev/null || { echo "the installed program lists no effects"; exit 1; }
for file in ladspa/aveffect.so lv2/aveffect.lv2/aveffect.so lv2/aveffect.lv2/manifest.ttl lv2/aveffect.lv2/aveffect.ttl; do
  [ -e "$work/prefix/lib/$file" ] || { echo "lib/$file is not installed"; exit 1; }
done
for file in man/man1/aveffect-render.1 man/man7/aveffect-{effects,mlt,gstreamer}.7 bash-completion/completions/aveffect zsh/site-functions/_aveffect \
  fish/vendor_completions.d/aveffect.fish aveffect/metadata.schema.json \
  kdenlive/effects/aveffect_blur.xml kdenlive/transitions/aveffect_push.xml; do
  [ -e "$work/prefix/share/$file" ] || { echo "share/$file is not installed"; exit 1; }
done
