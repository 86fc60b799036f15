#!/usr/bin/env bash
# Builds and runs the benchmarks and prints one table: milliseconds, and the ratio to copying the same bytes.
#   bench/run.sh [--json] [FILTER]     FILTER is a regular expression on the rows' names
set -euo pipefail
cd "$(dirname "$0")/.."
options=(--benchmark_min_time=0.1)
for argument in "$@"; do
  case $argument in
    --json) options+=(--benchmark_format=json) ;;
    *) options+=("--benchmark_filter=$argument") ;;
  esac
done
cmake --preset release >/dev/null
cmake --build --preset release --target aveffect_bench >&2
build/bench/aveffect_bench "${options[@]}"
