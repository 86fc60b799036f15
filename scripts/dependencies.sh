#!/usr/bin/env bash
# Installs the Debian 12 packages that building, testing and checking need, as far as they are missing.
set -euo pipefail

packages=(
  git g++ cmake ninja-build pkg-config
  libavformat-dev libavcodec-dev libavfilter-dev libavutil-dev libswscale-dev libswresample-dev
  libcli11-dev nlohmann-json3-dev
  libgtest-dev libbenchmark-dev ffmpeg time
  clang-14 clang-format-14 clang-tidy-14
)

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
