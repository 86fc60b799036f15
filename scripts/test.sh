#!/usr/bin/env bash
# Installs what is missing, builds, runs all the tests.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/dependencies.sh
# From nothing it is built several sources at a time, which is sooner done; who builds first by scripts/build.sh has each alone.
[ -e build/CMakeCache.txt ] || cmake --preset release -DCMAKE_UNITY_BUILD=ON >/dev/null
scripts/build.sh release
ctest --preset release
