#!/usr/bin/env bash
# Installs what is missing, builds, runs all the tests.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/dependencies.sh
scripts/build.sh release
ctest --preset release
