#!/usr/bin/env bash
# Installs the packages in a new Debian 12 that has the programs which know our plug-ins and what builds hosts, tries them there
# (inside.sh) and takes them away again: root.sh SOURCE PACKAGES. 77 where no such system can be made.
set -euo pipefail
source=$1 packages=$2
work=$(mktemp -d) && trap 'rm -rf "$work"' EXIT
command -v mmdebstrap >/dev/null || { echo "skipped: mmdebstrap is not installed"; exit 77; }

# What our packages ask for, less themselves.
needs=$(for package in "$packages"/*.deb; do dpkg-deb -f "$package" Depends | tr ',' '\n'; done |
  awk '$1 != "" && $1 !~ /aveffect/ {print $1}' | sort -u | paste -sd,)
tools=ffmpeg,melt,gstreamer1.0-tools,lilv-utils,man-db,g++,cmake,ninja-build
# The places that this system has its packages from; those of Debian are of the same version.
apt-get indextargets --format 'deb $(REPO_URI) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' 'Origin: Debian' | grep bookworm | sort -u >"$work/sources.list" || true
[ -s "$work/sources.list" ] && from=("$work/sources.list") || from=()

mkdir "$work/in"
cp -r "$packages"/*.deb "$source/tests/packages/inside.sh" "$source/tests/packages/examples.sh" "$work/in/"
mmdebstrap --quiet --mode=auto --variant=apt --aptopt='APT::Install-Recommends "0"' --include="$needs,$tools" --format=null \
  --customize-hook="touch $work/made" --customize-hook="copy-in $work/in /opt" --customize-hook='chroot "$1" bash /opt/in/inside.sh' \
  bookworm /dev/null ${from[@]+"${from[@]}"} >"$work/log" 2>&1 && exit 0
tail -40 "$work/log"
[ -e "$work/made" ] && exit 1
echo "skipped: no Debian system can be made here"
exit 77
