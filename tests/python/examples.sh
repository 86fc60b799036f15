#!/usr/bin/env bash
# Runs the examples, each with the package that it is about, and the gallery's notebook: examples.sh SOURCE PYTHON
set -euo pipefail
examples=$1/examples/python python=$2
work=$(mktemp -d) && trap 'rm -rf "$work"' EXIT
cd "$work"
failed=0
fail() { echo "$*"; failed=1; }
frames() { ffprobe -v error -count_frames -select_streams v -show_entries stream=nb_read_frames -of csv=p=0 "$1"; }
# Distance of two clips' pictures, in dB.
distance() { ffmpeg -v info -i "$1" -i "$2" -lavfi "[0:v]format=gray[a];[1:v]format=gray[b];[a][b]psnr" -f null - 2>&1 | sed -n 's/.*average:\([0-9inf]*\).*/\1/p'; }
ffmpeg -v error -f lavfi -i testsrc2=s=96x64:r=25:d=1 -c:v mpeg4 -q:v 2 clip.mkv

[ "$("$python" "$examples/camera.py" clip.mkv camera.avi)" = "25 pictures" ] && [ "$(frames camera.avi)" = 25 ] || fail "OpenCV"
[ "$(distance clip.mkv camera.avi)" -lt 20 ] || fail "OpenCV: no effect is seen"
ffmpeg -v error -i clip.mkv -frames:v 1 photo.png
"$python" "$examples/photo.py" photo.png made.png invert && "$python" "$examples/photo.py" made.png back.png invert || fail "Pillow"
[ "$(distance photo.png back.png)" = inf ] && [ "$(distance photo.png made.png)" -lt 20 ] || fail "Pillow: twice inverted is not the same"
"$python" "$examples/clip.py" clip.mkv made.mkv && [ "$(frames made.mkv)" = 25 ] || fail "PyAV"
[ "$(distance clip.mkv made.mkv)" -lt 30 ] || fail "PyAV: no effect is seen"

if "$python" -c 'import moviepy' 2>/dev/null; then
  "$python" "$examples/moviepy_clip.py" clip.mkv movie.mp4 && [ "$(frames movie.mp4)" = 25 ] && [ "$(distance clip.mkv movie.mp4)" -lt 30 ] || fail "MoviePy"
else
  echo "MoviePy is not there: its example is not tried"
fi

"$python" "$examples/make_gallery.py" gallery.ipynb
IPYTHONDIR=$work JUPYTER_PLATFORM_DIRS=0 HOME=$work "$python" -m nbconvert --to notebook --execute --output seen.ipynb gallery.ipynb >log 2>&1 || { cat log; fail "the gallery"; }
"$python" - <<'END' || failed=1
import json, aveffect
cells = json.load(open("seen.ipynb"))["cells"]
pictures = sum("image/png" in output.get("data", {}) for cell in cells for output in cell.get("outputs", []))
wanted = 1 + sum(effect.kind != "audio" for effect in aveffect.effects())
assert pictures == wanted, f"{pictures} pictures in the gallery instead of {wanted}"
END
exit $failed
