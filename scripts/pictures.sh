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
effect aged aged-film
effect blurred blur:blur_count=8
ffmpeg -v error -y -i "$work/plain.png" -i "$work/inverted.png" -i "$work/aged.png" -i "$work/blurred.png" \
  -filter_complex "[0][1][2][3]xstack=inputs=4:layout=0_0|w0+8_0|0_h0+8|w0+8_h0+8:fill=white" -pix_fmt rgb24 docs/pictures/effects.png

# Two drawn pictures, and every transition between them.
ffmpeg -v error -f lavfi -i "color=s=320x240,format=gbrp,geq=r='if(lt(hypot(X-236,Y-62),30),240,20+Y/6)':g='if(lt(hypot(X-236,Y-62),30),236,34+Y/4)':b='if(lt(hypot(X-236,Y-62),30),205,88+Y/3)',drawbox=y=190:h=50:t=fill:color=0x0c1c24,drawbox=x=40:y=130:w=46:h=70:t=fill:color=0x0c1c24,drawbox=x=96:y=100:w=34:h=100:t=fill:color=0x0c1c24" \
  -frames:v 1 -pix_fmt rgb24 "$work/night.png"
ffmpeg -v error -f lavfi -i "color=s=320x240,format=gbrp,geq=r='if(gt(Y,176),150-(Y-176),if(lt(hypot(X-104,Y-140),46),255,252-Y/8))':g='if(gt(Y,176),84-(Y-176)/2,if(lt(hypot(X-104,Y-140),46),236,110+Y/2.6))':b='if(gt(Y,176),110-(Y-176)/2,if(lt(hypot(X-104,Y-140),46),150,96-Y/5))'" \
  -frames:v 1 -pix_fmt rgb24 "$work/dusk.png"
build/bin/aveffect sheet "$work/night.png" "$work/dusk.png" docs/pictures/transitions.png --size 128x96 --overwrite

# What the recipes' commands make of a face that crosses the dusk, second by second.
ffmpeg -v error -f lavfi -i "color=s=80x80,format=rgba,geq=r='if(lt(hypot(X-26,Y-30),6)+lt(hypot(X-54,Y-30),6)+between(hypot(X-40,Y-40),22,26)*gt(Y,46),60,236)':g='if(lt(hypot(X-26,Y-30),6)+lt(hypot(X-54,Y-30),6)+between(hypot(X-40,Y-40),22,26)*gt(Y,46),30,188)':b='if(lt(hypot(X-26,Y-30),6)+lt(hypot(X-54,Y-30),6)+between(hypot(X-40,Y-40),22,26)*gt(Y,46),30,150)':a='if(lt(hypot(X-40,Y-40),38),255,0)'" \
  -frames:v 1 "$work/face.png"
ffmpeg -v error -loop 1 -i "$work/dusk.png" -loop 1 -i "$work/face.png" -filter_complex "[0][1]overlay=x=4+57*t:y=92" \
  -t 4 -r 25 -c:v libx264 -crf 12 -pix_fmt yuv420p "$work/in.mp4"
cp "$work/in.mp4" "$work/clip.mp4"
sed -n '/^```sh/,/^```$/p' docs/recipes.md | grep -v '^```' > "$work/recipes.sh"
aveffect="$PWD/build/bin/aveffect"
(cd "$work"; aveffect() { "$aveffect" "$@" --crf 12; }; . ./recipes.sh)
for clip in clip $(sed -n 's/.*pictures\/recipe-\([a-z]*\)\.png.*/\1/p' docs/recipes.md | grep -v clip); do
  ffmpeg -v error -y -i "$work/$clip.mp4" -vf "select='eq(n,0)+eq(n,24)+eq(n,49)+eq(n,74)+eq(n,99)',scale=160:-1:flags=area,tile=5x1:padding=4:color=white" \
    -fps_mode vfr -frames:v 1 "docs/pictures/recipe-$clip.png"
done

# The studio's page with such a clip.
ffmpeg -v error -loop 1 -i "$work/dusk.png" -loop 1 -i "$work/face.png" -filter_complex "[0][1]overlay=x=4+57*t:y=92,scale=1280:960:flags=lanczos,crop=1280:720" \
  -t 4 -r 25 -c:v libx264 -crf 16 -pix_fmt yuv420p "$work/holiday.mp4"
scripts/studio_picture.py build/bin/aveffect "$work/holiday.mp4" docs/pictures/studio.png
