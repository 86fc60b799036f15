#!/usr/bin/env bash
# Everything that tells the version tells the same one, and the day: versions.sh SOURCE BUILD
set -euo pipefail
source=$1 build=$2
version=$(sed -n 's/^project(aveffect VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt")
day=$(sed -n 's/^set(AVEFFECT_DATE \(.*\))$/\1/p' "$source/CMakeLists.txt")
failed=0
same() { [ "$2" = "$3" ] || { echo "$1 says '$2', CMakeLists.txt '$3'"; failed=1; }; }
changelog() { (cd "$source" && dpkg-parsechangelog -S "$1"); }

same "the program" "$("$build/bin/aveffect" --version)" "aveffect $version"
same "the packages' changelog" "$(changelog Version)" "$version"
# The packages' files get this time, so that packing twice gives the same bytes.
same "the packages' changelog" "$(date -u -d "@$(changelog Timestamp)" '+%F %T')" "$day 00:00:00"
changes=$(sed -n "s/^## \\([0-9][^ ]*\\).*/\\1/p" "$source/CHANGELOG.md" | head -1)
same "CHANGELOG.md" "${changes:-$version}" "$version" # until a version has a chapter there
same "aveffect.pc" "$(sed -n 's/^Version: //p' "$build/aveffect.pc.in")" "$version"
same "the CMake package" "$(sed -n 's/^set(PACKAGE_VERSION "\(.*\)")$/\1/p' "$build/aveffectConfigVersion.cmake")" "$version"
same "the package for Python" "$(sed -n 's/^version = "\(.*\)"$/\1/p' "$source/pyproject.toml")" "$version"
same "the manual" "$(sed -n '/^\.TH/s/.*"aveffect \([^"]*\)".*/\1/p' "$build/share/man/man1/aveffect.1")" "$version"
exit $failed
