#!/usr/bin/env bash
# Runs the examples, as they were built in a folder, and judges what they make: examples.sh FOLDER
set -euo pipefail
examples=$(realpath "$1")
work=$(mktemp -d) && trap 'rm -rf "$work"' EXIT
cd "$work"
failed=0
same() { [ "$2" = "$3" ] || { echo "$1: '$2' instead of '$3'"; failed=1; }; }
# Sums of the pictures that a filter makes of a clip.
sums() { ffmpeg -v error -i "$1" -an -vf "$2" -pix_fmt yuv420p -f framemd5 - | grep -v '^#' | awk '{print $NF}'; }

same smallest_host "$("$examples/smallest_host")" "255 254 253 9"

ffmpeg -v error -f lavfi -i testsrc2=s=96x64:r=25:d=0.4 -f lavfi -i sine -shortest -pix_fmt yuv420p -c:v ffv1 clip.mkv
ffmpeg -v error -i clip.mkv -f rawvideo - | "$examples/own_frames_host" 96 64 reverse mirror=1 >mirrored.yuv
ffmpeg -v error -f rawvideo -pix_fmt yuv420p -s 96x64 -i mirrored.yuv -c:v ffv1 mirrored.mkv
same own_frames_host "$(sums mirrored.mkv null)" "$(sums clip.mkv hflip)"
said=$("$examples/own_frames_host" 96 64 no_such_effect </dev/null 2>&1) && { echo "an effect that is none: no failure"; failed=1; }
case $said in *no_such_effect*) ;; *) echo "an effect that is none: $said"; failed=1 ;; esac

same host_library "$("$examples/host_library" clip.mkv out.mkv reverse/mirror reverse/flip 2>/dev/null)" 10
# Whatever codec the output has: decoded, it is the turned clip but for the codec's loss; its sound is the clip's.
quality=$(ffmpeg -v info -i out.mkv -i clip.mkv -lavfi "[1:v]hflip,vflip[turned];[0:v][turned]psnr" -f null - 2>&1 | sed -n 's/.*average:\([0-9inf]*\).*/\1/p')
[ "$quality" = inf ] || [ "${quality:-0}" -ge 25 ] || { echo "host_library: ${quality:-no} dB"; failed=1; }
same "host_library's streams" "$(ffprobe -v error -show_entries stream=codec_type -of csv=p=0 out.mkv | sort | tr '\n' ' ')" "audio video "
exit $failed
