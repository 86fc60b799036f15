#!/usr/bin/env bash
# How many instructions of AArch64 each kernel takes for 16 bytes of its planes, counted by QEMU, which runs them one by one; a loop
# over bytes would take at least three for each. Expects build-aarch64 (scripts/aarch64.sh).
#   bench/instructions.sh
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --build build-aarch64 --target kernel_instructions >&2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkfifo "$work/log"
qemu-aarch64 -L build-aarch64/sysroot -singlestep -strace -d exec,nochain -D "$work/log" \
  build-aarch64/bench/kernel_instructions >"$work/kernels" &
# Every second line that is written ends a kernel.
awk '/^Trace/ { ++count } / write\(1,/ { if (++lines % 2 == 0) print count; count = 0 }' "$work/log" >"$work/counts"
wait
awk '/^begin/ { getline count < counts; printf "%-40s %8.1f\n", substr($0, index($0, $3)), count * 16 / $2 }' counts="$work/counts" "$work/kernels"
