#!/usr/bin/env bash
# Holds what a release build made to its hardening: each program, library and plug-in, and the objects that they are of.
#   scripts/hardening.sh [BUILD]      build/ if not given; prints what is missing where
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
export LC_ALL=C

bad=0 files=0 objects=0
complain() { echo "$1: $2" >&2; bad=1; }

check_file() { # FILE
  local dynamic segments imports
  dynamic=$(readelf -Wd "$1") segments=$(readelf -Wl "$1") imports=$(readelf -W --dyn-syms "$1")
  grep -q 'BIND_NOW\|FLAGS_1.*NOW' <<<"$dynamic" || complain "$1" "binds functions as they are called (no -z now)"
  grep -q GNU_RELRO <<<"$segments" || complain "$1" "its tables of addresses stay writable (no -z relro)"
  grep -q 'GNU_STACK.* RW ' <<<"$segments" || complain "$1" "its stack may be executed"
  ! grep -q '^ *LOAD.* RWE ' <<<"$segments" || complain "$1" "has memory that is both writable and executable"
  ! grep -q TEXTREL <<<"$dynamic" || complain "$1" "its code is written to when it is loaded"
  readelf -Wh "$1" | grep -q 'Type: *DYN' || complain "$1" "is loaded at a fixed address (no PIE)"
  # The modules are a name and calls, which have nothing to guard.
  case $1 in */frei0r-1/aveffect_*.so) return ;; esac
  grep -q ' __stack_chk_fail' <<<"$imports" || complain "$1" "guards no stack frame (no -fstack-protector)"
  case $1 in
    */bin/aveffect) grep -Eq ' __[a-z]+_chk' <<<"$imports" || complain "$1" "checks no copy's size (no _FORTIFY_SOURCE)" ;;
  esac
}

# What is linked lacks the note, because the system's own start-up objects do; ours have it one by one.
check_object() { # FILE
  local note
  note=$(readelf -Wn "$1" 2>/dev/null)
  [[ $note == *IBT* && $note == *SHSTK* ]] || complain "$1" "its jumps have no marks (no -fcf-protection)"
}

while read -r file; do
  check_file "$file"
  files=$((files + 1))
done < <(find "$build/bin" "$build/lib" -type f \( -name aveffect -o -name '*.so' \))
while read -r object; do
  check_object "$object"
  objects=$((objects + 1))
done < <(find "$build" -path '*/CMakeFiles/*' -name '*.o' ! -path "$build/tests/*" ! -path "$build/fuzz/*" ! -path "$build/bench/*" ! -path "$build/examples/*")
[ "$files" -ge 4 ] && [ "$objects" -gt 0 ] || complain "$build" "holds no build"
[ "$bad" -eq 0 ] && echo "$files files of $objects objects are hardened"
exit "$bad"
