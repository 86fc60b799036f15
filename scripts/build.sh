#!/usr/bin/env bash
# Configures and builds one preset: scripts/build.sh [program|release|debug|sanitize|thread|clang|fuzz]
set -euo pipefail
cd "$(dirname "$0")/.."
preset=${1:-release}
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset"
