#!/usr/bin/env bash
# What hosts that are built already rely on: the libraries export what debian/*.symbols promise, no more and no less, and the
# functions take and return what they did. contract.sh SOURCE BUILD
set -euo pipefail
source=$1 build=$2
cd "$source"
g++ -std=c++20 -fsyntax-only -Iinclude tests/packages/functions.cpp
# 4: new, lost and changed symbols all fail.
dpkg-gensymbols -plibaveffect1 -v1.0.0 -c4 -O/dev/null -Idebian/libaveffect1.symbols \
  -e"$build/bin/libAVEffect.so" -e"$build/bin/libAVBaseTools.so" -e"$build/bin/libAVBaseMedia.so"
