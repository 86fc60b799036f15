#!/usr/bin/env bash
# In a system that is thrown away: installs the packages, uses them as their users do, removes them.
set -euo pipefail
cd /opt
export HOME=/opt LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive
failed=0
fail() { echo "$*"; failed=1; }

# Not what package management and the index of man pages keep for themselves.
files() { find / -xdev \( -path /proc -o -path /sys -o -path /dev -o -path /opt -o -path /tmp -o -path /var/lib/dpkg -o -path /var/lib/apt \
  -o -path /var/cache -o -path /var/log \) -prune -o -print | sort; }
files >before
apt-get install -y -qq ./in/*.deb >install.log 2>&1 || { cat install.log; exit 1; }
mapfile -t packages < <(dpkg-query -W -f '${binary:Package}\n' '*aveffect*')
[ ${#packages[@]} -eq 8 ] || fail "installed: ${packages[*]}"

# B, G and R of a file's first pixel; what inverts 10, 60, 200 makes 245, 195, 55, give or take what goes through YUV.
pixel() { ffmpeg -v error -i "$1" -frames:v 1 -f rawvideo -pix_fmt bgr24 - | od -An -tu1 -N3; }
inverted() {
  local b g r
  read -r b g r < <(pixel "$2") || { fail "$1 made nothing"; return; }
  [ $((b - 55)) -ge "-$3" ] && [ $((b - 55)) -le "$3" ] && [ $((g - 195)) -ge "-$3" ] && [ $((g - 195)) -le "$3" ] &&
    [ $((r - 245)) -ge "-$3" ] && [ $((r - 245)) -le "$3" ] || fail "$1: $b $g $r"
}
ffmpeg -v error -f lavfi -i color=0x0a3cc8:s=96x64:r=25:d=0.4,format=bgra -f lavfi -i sine -shortest -c:v ffv1 clip.mkv
aveffect render clip.mkv out.mkv -e invert --codec ffv1 || fail "aveffect fails"
inverted aveffect out.mkv 0
[ "$(ffprobe -v error -count_frames -select_streams v -show_entries stream=nb_read_frames -of csv=p=0 out.mkv)" = 10 ] || fail "pictures are missing"
ffmpeg -v error -i clip.mkv -vf frei0r=aveffect_invert -c:v ffv1 module.mkv
inverted ffmpeg module.mkv 0
melt -silent clip.mkv -filter frei0r.aveffect_invert -consumer avformat:melt.mkv vcodec=ffv1 an=1 >/dev/null 2>&1 || fail "melt fails"
inverted melt melt.mkv 4

melt -silent clip.mkv -filter aveffect.invert -consumer avformat:module.mkv vcodec=ffv1 an=1 >/dev/null 2>&1 || fail "melt fails with MLT's module"
inverted "MLT's module" module.mkv 4
gst-inspect-1.0 aveffect-invert >inspected && grep -q Invert inspected || fail "GStreamer finds no elements"
python3 -c 'import aveffect, numpy
assert aveffect.Effect("invert")(numpy.zeros((4, 4, 3), numpy.uint8)).all()
assert aveffect.render("clip.mkv", "python.mkv", "invert", codec="ffv1").frames == 10' || fail "Python fails"
inverted Python python.mkv 0

# Half as loud: the loudest sample halves.
peak() { ffmpeg -v error -i clip.mkv -af "$1" -f s16le -ac 1 - | od -An -v -w2 -td2 | awk '$1 > m {m = $1} END {print m + 0}'; }
loud=$(peak anull) soft=$(peak ladspa=file=aveffect:plugin=audio_volume:c=c0=50)
[ "$loud" -gt 100 ] && [ $((2 * soft - loud)) -ge -3 ] && [ $((2 * soft - loud)) -le 3 ] || fail "LADSPA: $loud becomes $soft"
lv2ls | grep -qx urn:aveffect:audio_volume || fail "LV2 hosts don't find the plug-ins"

for page in aveffect aveffect-{render,effects,mlt,gstreamer}; do
  man "$page" | grep -q NAME || fail "man finds no $page"
done
aveffect timeline schema | cmp -s - /usr/share/aveffect/metadata.schema.json || fail "the schema of films is not that of the program"
[ -e /usr/share/doc/aveffect/recipes.md ] && [ -e /usr/share/doc/aveffect/api/index.html ] || fail "no documentation"

cmake -S /usr/share/doc/aveffect/examples -B examples -G Ninja -DCMAKE_BUILD_TYPE=Release >cmake.log && cmake --build examples >>cmake.log || { cat cmake.log; fail "CMake"; }
in/examples.sh examples || failed=1
read -ra flags < <(pkg-config --cflags --libs aveffect)
g++ -std=c++20 -DPLUGIN_DIR="\"$(pkg-config --variable=plugindir aveffect)\"" /usr/share/doc/aveffect/examples/smallest_host.cpp -o host "${flags[@]}"
[ "$(./host)" = "255 254 253 9" ] || fail "the host that pkg-config helped to build fails"

apt-get purge -y -qq "${packages[@]}" >purge.log 2>&1 || { cat purge.log; fail "purge fails"; }
files >after
diff before after || fail "these files are new or gone behind the purge"
exit $failed
