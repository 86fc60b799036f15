#!/usr/bin/env bash
# Installs the Debian 12 packages that are needed, as far as they are missing.
#   scripts/dependencies.sh           for building, testing and checking
#   scripts/dependencies.sh program   for building the program and drawing its demonstration's clip
set -euo pipefail

packages=(
  git g++ cmake ninja-build pkg-config
  libavformat-dev libavcodec-dev libavfilter-dev libavutil-dev libswscale-dev libswresample-dev
  libcli11-dev libcpp-httplib-dev zlib1g-dev nlohmann-json3-dev libsdl2-dev libseccomp-dev libsleef-dev ffmpeg
)
if [ "${1:-}" != program ]; then
  packages+=(libgtest-dev libbenchmark-dev libyuv-dev libmpfr-dev libimage-exiftool-perl time xvfb clang-14 clang-format-14 clang-tidy-14)
  # What packs, what judges packages, and what makes the system that they are tried in.
  packages+=(dpkg-dev debhelper dh-python lintian mmdebstrap doxygen)
  # The shells that complete, and what reads man pages.
  packages+=(zsh fish man-db groff-base mandoc bsdutils)
  # What runs renders that are shared out.
  packages+=(make parallel slurm-wlm munge)
  # What holds films to their schema.
  packages+=(python3-jsonschema)
  # What the package for Python is built with, and what its tests need.
  packages+=(python3-dev pybind11-dev python3-numpy python3-pytest python3-av python3-pil python3-pip python3-opencv python3-nbconvert python3-ipykernel mypy)
  # Processors of other kinds.
  packages+=(qemu-user g++-aarch64-linux-gnu)
  # What makes the manual, and the browser that tries it.
  packages+=(cmark-gfm chromium chromium-driver python3-selenium)
  # Programs that try the adapters, and the headers that they are held to.
  packages+=(ladspa-sdk lv2-dev lilv-utils sordi frei0r-plugins-dev sox melt libmlt-dev mpv)
  packages+=(gstreamer1.0-tools gstreamer1.0-plugins-{base,good,bad} libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev ges1.0-tools)
  packages+=(python3-gi gir1.2-gstreamer-1.0 gir1.2-gst-plugins-base-1.0)
fi

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f '${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { echo "These packages are missing and only root can install them: ${missing[*]}" >&2; exit 1; }
  as_root=(sudo)
fi
echo "Installing: ${missing[*]}"
"${as_root[@]}" apt-get update -qq
DEBIAN_FRONTEND=noninteractive "${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
