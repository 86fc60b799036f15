# For the tests of shared-out renders: media in a directory that goes away, the program on the path.
set -euo pipefail
export PATH=$1:$PATH
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

fail() {
  echo "FAILED: $*" >&2
  exit 1
}

# The picture's times differ from each other in vary.mkv; those of steady.mp4 don't come in order.
ffmpeg -v error -nostdin -f lavfi -i testsrc2=s=64x48:r=30000/1001:d=2 -f lavfi -i sine=d=2 \
  -c:v libx264 -preset veryfast -bf 2 -c:a aac -metadata title=Steady steady.mp4
ffmpeg -v error -nostdin -f lavfi -i testsrc2=s=64x48:r=25:d=2 -vf 'setpts=N/25/TB+0.004*mod(N\,7)/TB' -fps_mode vfr \
  -c:v ffv1 vary.mkv

# Every picture and every sample, with their times.
contents() { ffmpeg -v error -nostdin -i "$1" -map 0 -f framemd5 - | grep -v '^#'; }
same() { diff <(contents "$1") <(contents "$2") >difference || fail "$3: $(head -4 difference)"; }
