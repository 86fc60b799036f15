#!/usr/bin/env bash
# Hosts built by other compilers call by slot number. Compares the compiler's own record of the interfaces'
# tables, and of where the members of what they exchange lie, with the contract: slots.sh INCLUDE
set -euo pipefail
include=$1 contract=$(dirname "$0")/slots.txt
work=$(mktemp -d) && trap 'rm -r "$work"' EXIT
for header in "$include"/aveffect/*.h; do echo "#include \"aveffect/${header##*/}\""; done >"$work/all.cpp"
g++ -std=c++20 -I"$include" -g -fno-eliminate-unused-debug-types -femit-class-debug-always \
  -c "$work/all.cpp" -o "$work/all.o"
# One line each: class::operation(arguments) slot, or class::member offset.
readelf --debug-dump=info "$work/all.o" | awk '
  /DW_TAG_/ { tag = $NF }
  /DW_AT_name/ { name = $NF; if (tag ~ /structure_type|class_type/) owner = name }
  /DW_AT_linkage_name/ { linkage = $NF }
  /DW_AT_vtable_elem_location/ { sub(/\)/, "", $NF); print linkage, $NF }
  /DW_AT_data_member_location/ && tag ~ /member/ && owner ~ /^(AVItem|ImagePostion)$/ { print owner "::" name, $NF }' |
  c++filt | sed -E 's/AVBased:://g' | { grep -E '^(I[A-Z]|AVItem|ImagePostion)' || true; } |
  LC_ALL=C sort -u -t: -k1,1 -k2V >"$work/actual"
LC_ALL=C sort -u -t: -k1,1 -k2V "$contract" | diff - "$work/actual" ||
  { echo "slots differ from $contract"; exit 1; }
