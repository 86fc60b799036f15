#!/usr/bin/env bash
# The checks beside the tests: format, which room includes which, lint, the other compiler, sanitizers. Expects a release build.
set -euo pipefail
cd "$(dirname "$0")/.."

echo "== format"
git ls-files '*.cpp' '*.h' '*.inl' | xargs clang-format-14 --dry-run --Werror

echo "== arrows"
scripts/arrows.sh

echo "== lint"
# The fuzz targets have their compile commands from their replays; the package's consumer is compiled where it is installed
# alone; the tests of effects and companions have not been read again since their fakes became one.
git ls-files '*.cpp' | grep -vE '^tests/(companions|effects|package/consumer)/' | xargs -P "$(nproc)" -n 4 clang-tidy-14 -p build --quiet 2>/dev/null

echo "== clang"
scripts/build.sh clang

echo "== sanitizers"
scripts/build.sh sanitize
ctest --preset sanitize

echo "== thread sanitizer"
scripts/build.sh thread
# The media libraries aren't built with it, and it can't see the atomics that order their threads: the preset leaves out
# what they touch themselves, and takes the tests that are labelled for it.
ctest --preset thread
