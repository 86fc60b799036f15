#!/usr/bin/env bash
# clang-tidy over all sources.
#   scripts/lint.sh [--deep]     deep: every path through every function, and the tests' too; expects a clang build that is configured
set -euo pipefail
cd "$(dirname "$0")/.."
paths='-*,clang-analyzer-*,-clang-analyzer-valist.Uninitialized'
tidy() { xargs -P "$(nproc)" -n "$1" clang-tidy-14 --quiet "${@:2}" 2>/dev/null; }

# Several sources at a time, as the clang build puts them together: system headers are looked at once for all of them.
mkdir -p build-clang/units
ninja -C build-clang studio/page_files.cpp >/dev/null # a source that is made
ninja -C build-clang -t compdb >build-clang/units/compile_commands.json
# They lie in the build's folders, out of reach of tests/.clang-tidy.
units='-clang-analyzer-*,-bugprone-suspicious-include'
find build-clang -name 'unity_*.cxx' ! -path '*/tests/*' | tidy 2 -p build-clang/units --checks="$units"
find build-clang/tests -name 'unity_*.cxx' | tidy 2 -p build-clang/units \
  --checks="$units,-performance-inefficient-vector-operation,-performance-inefficient-string-concatenation"

# Paths are followed in a unit's own source alone, as a build of each source alone has it. What holds the contract compiles or does not, and is no program.
cmake --preset release -B build-clang/sources -DCMAKE_UNITY_BUILD=OFF >/dev/null
sources=$(git ls-files '*.cpp' ':!tests/packages')
if [ "${1:-}" = --deep ]; then
  grep -v '^tests/' <<<"$sources" | tidy 4 -p build-clang/sources --checks="$paths"
  grep '^tests/' <<<"$sources" | tidy 4 -p build-clang/sources --checks="$paths,-clang-analyzer-optin.performance.Padding"
else
  # Destructors aren't looked into then; the sanitizers see what leaks.
  paths+=',-clang-analyzer-cplusplus.NewDeleteLeaks'
  grep -vE '^(tests|fuzz|bench)/' <<<"$sources" | tidy 4 -p build-clang/sources --checks="$paths" \
    --extra-arg=-Xclang --extra-arg=-analyzer-config --extra-arg=-Xclang --extra-arg=mode=shallow
fi
