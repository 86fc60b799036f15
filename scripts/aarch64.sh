#!/usr/bin/env bash
# Builds all for AArch64 on another processor and tries it under QEMU's emulation of a process: the ledger; the tests of kernels,
# effects, framework and companions; and renders of the program beside this processor's.
#   scripts/aarch64.sh [ledger]     ledger: that alone
# Debian's arm64 packages are unpacked in build-aarch64/sysroot; nothing of them is installed. Where they can't be had it ends with 77.
set -euo pipefail
cd "$(dirname "$0")/.."
build=$PWD/build-aarch64 sysroot=$PWD/build-aarch64/sysroot
not_tried=77
emulated() { qemu-aarch64 -L "$sysroot" "$@"; }

# A package system of its own, in which nothing is there yet.
unpack_sysroot() {
  local apt=$build/apt folder package library
  mkdir -p "$apt"/{lists,archives}/partial "$sysroot"/usr/{lib,bin,sbin}
  for folder in lib bin sbin; do ln -sfn "usr/$folder" "$sysroot/$folder"; done
  : >"$apt/status"
  cat >"$apt/conf" <<END
APT::Architecture "arm64";
#clear APT::Architectures;
APT::Architectures { "arm64"; };
APT::Install-Recommends "false";
APT::Sandbox::User "";
#clear APT::Update::Post-Invoke;
#clear APT::Update::Post-Invoke-Success;
Debug::NoLocking "true";
Dir::State::Status "$apt/status";
Dir::State::Lists "$apt/lists";
Dir::Cache "$apt";
Dir::Cache::Archives "$apt/archives";
END
  apt-get -qq -c "$apt/conf" -o APT::Update::Error-Mode=any update || { echo "Debian's arm64 packages can't be had here: AArch64 was not tried"; exit "$not_tried"; }
  apt-get -qq -c "$apt/conf" install -y --download-only libc6-dev libstdc++-12-dev \
    lib{avformat,avcodec,avfilter,avutil,swscale,swresample}-dev libcli11-dev libcpp-httplib-dev zlib1g-dev nlohmann-json3-dev \
    libsdl2-dev libseccomp-dev libsleef-dev libgtest-dev libbenchmark-dev >/dev/null
  for package in "$apt"/archives/*.deb; do dpkg-deb --fsys-tarfile "$package" | tar -x -C "$sysroot" --keep-directory-symlink --no-same-owner; done
  # Which of several is meant would be settled when packages are installed.
  for library in blas lapack; do ln -sf "$library/lib$library.so.3" "$sysroot/usr/lib/aarch64-linux-gnu/lib$library.so.3"; done
  rm -r "$apt"
  touch "$sysroot/whole"
}

if [ ! -e "$sysroot/whole" ]; then
  rm -rf "$sysroot"
  unpack_sysroot
fi
[ -e "$build/build.ninja" ] ||
  cmake -G Ninja -S . -B "$build" --toolchain cmake/Aarch64Toolchain.cmake -DCMAKE_BUILD_TYPE=Release -DCMAKE_UNITY_BUILD=ON -DAVEFFECT_BUILD_BENCH=ON >/dev/null
tests=() targets=()
if [ "${1:-}" != ledger ]; then
  tests=(kernels_test effects_test effects_plain_test framework_test tools_test companions_test)
  targets=(aveffect elementary_errors "${tests[@]}")
fi
cmake --build "$build" --target picture_ledger AVEffect "${targets[@]}"

echo "AArch64, emulated:"
emulated "$build/tests/picture_ledger" check tests/ledger/ledger.txt
for test in "${tests[@]}"; do
  echo "$test"
  emulated "$build/tests/$test" --gtest_brief=1
done
[ "${1:-}" = ledger ] && exit

# Functions that effects compute places with, bit for bit.
cmake --preset release >/dev/null
cmake --build --preset release --target elementary_errors aveffect
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
build/bench/elementary_errors --bits >"$work/bits"
emulated "$build/bench/elementary_errors" --bits | cmp - "$work/bits"
echo "Sines, tangents and powers are the same."

# The same clip here and there, by an effect of each kind and with sound.
ffmpeg -v error -f lavfi -i testsrc2=s=320x180:r=25 -f lavfi -i "aevalsrc=sin(2000*t)|cos(3000*t):s=48000" -t 1 -c:v ffv1 -c:a pcm_s16le "$work/in.mkv"
words=(render "$work/in.mkv" -e spherize/bulge -e radiate -e fade-in -a volume/half --codec ffv1 --audio-codec pcm_s16le --progress none)
build/bin/aveffect "${words[@]}" "$work/here.mkv"
emulated "$build/bin/aveffect" "${words[@]}" "$work/there.mkv"
for place in here there; do ffmpeg -v error -i "$work/$place.mkv" -f framemd5 "$work/$place.md5"; done
cmp "$work/here.md5" "$work/there.md5"
echo "A render of the program is the same."
