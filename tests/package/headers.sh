#!/usr/bin/env bash
# Every public header compiles alone, warning-free, with both compilers.
set -euo pipefail
include=$1
failed=0
for header in "$include"/aveffect/*.h "$include"/aveffect/catalogue/*.h; do
  for compiler in g++ clang++-14; do
    echo "#include \"${header#"$include"/}\"" |
      "$compiler" -std=c++20 -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror -I"$include" -fsyntax-only -x c++ - ||
      { echo "$header does not compile alone with $compiler"; failed=1; }
  done
done
exit $failed
