#!/usr/bin/env bash
# Packs twice: the bytes are the same, and lintian has nothing to say that isn't answered. pack.sh SOURCE BUILD PACKAGES
set -euo pipefail
source=$1 build=$2 packages=$3
again=$(mktemp -d) && trap 'rm -rf "$again"' EXIT
rm -rf "$packages"
"$source/scripts/packages.sh" --build "$build" --to "$packages" >/dev/null
"$source/scripts/packages.sh" --build "$build" --to "$again" >/dev/null
failed=0
for package in "$packages"/*.deb; do
  cmp "$package" "$again/${package##*/}" || failed=1
done
lintian --allow-root --fail-on error,warning "$packages"/*.changes || failed=1
exit $failed
