#!/usr/bin/env bash
# The checks beside the tests: format, which room includes which, the other compiler, lint, sanitizers. Expects a release build.
set -euo pipefail
cd "$(dirname "$0")/.."

echo "== format"
git ls-files '*.cpp' '*.h' '*.inl' | xargs clang-format-14 --dry-run --Werror

echo "== arrows"
scripts/arrows.sh

echo "== hardening"
scripts/hardening.sh

echo "== clang"
scripts/build.sh clang
scripts/hardening.sh build-clang
ctest --preset clang -R '^ledger\.' # the same pictures as the other compiler's

echo "== AArch64"
scripts/aarch64.sh ledger || [ $? -eq 77 ]

echo "== lint"
scripts/lint.sh

echo "== sanitizers"
scripts/build.sh sanitize
ctest --preset sanitize

echo "== thread sanitizer"
scripts/build.sh thread
# The media libraries aren't built with it, and it can't see the atomics that order their threads: the preset leaves out
# what they touch themselves, and takes the tests that are labelled for it.
ctest --preset thread
