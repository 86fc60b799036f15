#!/usr/bin/env bash
# The long run: every fuzz target, the sweep over all effects, the program in bad company, films killed and
# resumed, the same pictures on other processors, lint to the end of every path.
#   scripts/soak.sh [--minutes N] [--only fuzz|sweep|program|films|sharing|faults|formats|processors|aarch64|lint]
# N: processor minutes of each fuzz target, 3 if not given; of whole renders ten times as many. Logs and what is found stay in
# build-fuzz/soak/ until the next run.
set -euo pipefail
cd "$(dirname "$0")/.."

minutes=3 only=all
while [ $# -gt 0 ]; do
  case $1 in
    --minutes) minutes=$2 ;;
    --only) only=$2 ;;
    *) sed -n '2,7s/^# //p' "$0" >&2; exit 2 ;;
  esac
  shift 2
done
runs() { [ "$only" = all ] || [ "$only" = "$1" ]; }

export work=$PWD/build-fuzz/soak cpu_goal=$((minutes * 60))
export sweep_cases=5000 # an effect: more than 200000 in all
export ASAN_OPTIONS=allocator_may_return_null=1 LSAN_OPTIONS=suppressions=$PWD/cmake/leaks.txt:print_suppressions=0
rm -rf "$work"
mkdir -p "$work"
table=$work/table
printf 'part\truns\tCPU seconds\tfailed\n' >"$table"

# A program with its output in NAME.log and its user and system seconds in NAME.times; failures are counted.
run() {
  local name=$work/$1
  shift
  /usr/bin/time -q -a -o "$name.times" -f '%U %S' "$@" >>"$name.log" 2>&1 || { echo >>"$name.failed"; return 1; }
}
seconds() { awk '{ s += $1 + $2 } END { printf "%d", s }' "$work/$1.times"; }
report() {
  touch "$work/$1.failed"
  printf '%s\t%d\t%d\t%d\n' "$1" "$2" "$(seconds "$1")" "$(wc -l <"$work/$1.failed")" >>"$work/table"
}

# One target, again and again: libFuzzer counts time on the wall. It ends with the first failure.
fuzz() {
  local dir=$work/$1 used=0 goal=$cpu_goal
  mkdir -p "$dir/corpus" "$dir/found"
  cp "fuzz/corpus/$1/"* "$dir/corpus/"
  if [ "$1" = render ]; then
    goal=$((10 * cpu_goal))
    fuzz/render_corpus.sh "$dir/corpus"
  fi
  while [ "$used" -lt "$goal" ]; do
    run "$1" "build-fuzz/fuzz/$1_fuzzer" -max_total_time=$((goal - used + 5)) -timeout=20 -rss_limit_mb=8192 -print_final_stats=1 \
      -artifact_prefix="$dir/found/" "$dir/corpus" || break
    used=$(seconds "$1")
  done
  report "$1" "$(awk '/number_of_executed_units/ { s += $2 } END { print s }' "$work/$1.log")"
}

# Of the program's tests, every processor takes its share.
program() { GTEST_SHARD_INDEX=$1 AVEFFECT_SOAK=1 run program build/tests/program_robustness_test || true; }
sweep() { GTEST_SHARD_INDEX=$1 AVEFFECT_SWEEP_CASES=$sweep_cases run sweep build/tests/robustness_test || true; }
export -f run seconds report fuzz program sweep

# A function for each line, as many at a time as there are processors.
parallel() { xargs -P "$(nproc)" -I{} bash -euc "$1 {}"; }

if runs fuzz; then
  scripts/build.sh fuzz
  { echo render; ls fuzz/corpus | grep -v '^render$'; } | parallel fuzz # the longest first
fi
if runs sweep || runs program || runs films || runs sharing || runs faults || runs formats || runs processors || runs lint; then scripts/build.sh release; fi
if runs sweep; then
  seq 0 $(($(nproc) - 1)) | GTEST_TOTAL_SHARDS=$(nproc) parallel sweep
  report sweep $(($(grep -c '^\[       OK \] Every/' "$work/sweep.log") * sweep_cases))
fi
if runs program; then
  seq 0 $(($(nproc) - 1)) | GTEST_TOTAL_SHARDS=$(nproc) parallel program
  report program "$(grep -c '^\[       OK \]' "$work/program.log")"
  AVEFFECT_SOAK=1 run walls tests/cli/confinement/walls.sh build/bin/aveffect build/tests/libstranger.so || true
  report walls 1
fi
if runs films; then
  AVEFFECT_KILLS=20 run films build/tests/timeline_test --gtest_filter='FilmPieces.*' || true
  report films "$(grep -c '^\[       OK \]' "$work/films.log")"
fi
if runs sharing; then
  run sharing tests/sharing/every_effect.py build/bin/aveffect --full || true
  report sharing "$(sed -n 's/^\([0-9]*\) runs.*/\1/p' "$work/sharing.log")"
fi
if runs faults; then
  run faults python3 tests/faults/sweep.py build/bin/aveffect build/tests/libfaults.so || true
  report faults "$(sed -n 's/^\([0-9]*\) runs.*/\1/p' "$work/faults.log" | tail -n 1)"
  scripts/build.sh sanitize
  run leaks python3 tests/faults/sweep.py build-sanitize/bin/aveffect build/tests/libfaults.so --sanitizer --calls 2 || true
  report leaks "$(sed -n 's/^\([0-9]*\) runs.*/\1/p' "$work/leaks.log" | tail -n 1)"
fi
if runs formats; then
  cp docs/formats.md "$work/formats.md"
  run formats tests/formats/pairs.py build/bin/aveffect --full --table "$work/formats.md" --results "$work/formats.json" || true
  report formats "$(sed -n 's/^\([0-9]*\) runs.*/\1/p' "$work/formats.log" | tail -n 1)"
fi
if runs processors; then
  # Emulated ones: SSE4.2 alone, AVX2 with FMA, AVX2 without; and what no optimiser has touched.
  cmake --preset debug >/dev/null
  cmake --build --preset debug --target picture_ledger
  cmake --build --preset release --target elementary_errors
  build/bench/elementary_errors --bits >"$work/bits"
  for processor in Nehalem Haswell Haswell,-fma; do
    run processors qemu-x86_64 -cpu "$processor" build/tests/picture_ledger check tests/ledger/ledger.txt || true
    run processors bash -euo pipefail -c 'qemu-x86_64 -cpu "$0" build/bench/elementary_errors --bits | cmp - "$work/bits"' "$processor" || true
  done
  run processors build-debug/tests/picture_ledger check tests/ledger/ledger.txt || true
  report processors "$(awk '/ hashes, / { s += $1 } END { print s }' "$work/processors.log")"
fi
if runs aarch64; then
  run aarch64 scripts/aarch64.sh || true
  report aarch64 "$(awk '/ hashes, / { s += $1 } /tests from/ { s += $2 } END { print s }' "$work/aarch64.log")"
fi
if runs lint; then
  cmake --preset clang >/dev/null
  run lint scripts/lint.sh --deep || true
  report lint "$(git ls-files '*.cpp' | wc -l)"
fi

echo
column -t -s $'\t' "$table"
if [ -z "$(find "$work" -name '*.failed' -size +0)" ]; then exit 0; fi
echo
echo "Failed; the logs are in build-fuzz/soak/, the inputs:"
find "$work" -path '*/found/*'
exit 1
