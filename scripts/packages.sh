#!/usr/bin/env bash
# Packs the release build as Debian packages, into dist/.
#   scripts/packages.sh [--build DIR] [--to DIR]
# DIR: a release build that is whole; without it one is made first, with the manual and the reference.
set -euo pipefail
cd "$(dirname "$0")/.."

build='' to=dist
while [ $# -gt 0 ]; do
  [ $# -gt 1 ] || set -- help help
  case $1 in
    --build) build=$(realpath "$2") ;;
    --to) to=$2 ;;
    *) sed -n '2,4s/^# //p' "$0" >&2; exit 2 ;;
  esac
  shift 2
done
if [ -z "$build" ]; then
  scripts/build.sh release
  build=$PWD/build
  for target in manual api; do
    if cmake --build build --target help | grep -q "^$target:"; then cmake --build build --target "$target"; fi
  done
fi

[ -e "$build/bin/libAVEffect.so" ] || { echo "$build holds no release build: scripts/build.sh release makes one" >&2; exit 1; }

# Packed beside the source, which stays as it is.
work=$(mktemp -d) && trap 'rm -rf "$work"' EXIT
mkdir "$work/aveffect"
cp -r debian "$work/aveffect/"
(cd "$work/aveffect" && AVEFFECT_BUILD_DIR=$build dpkg-buildpackage -b -d -uc -us) >"$work/log" 2>&1 || { cat "$work/log" >&2; exit 1; }
mkdir -p "$to"
rm -f "$to"/*aveffect*.deb
cp "$work"/*.deb "$work"/*.changes "$work"/*.buildinfo "$to/"
ls "$to"/*.deb
