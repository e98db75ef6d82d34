#!/usr/bin/env bash
# run-fuzz.sh [SECONDS]: build every libFuzzer target of fuzz/ with clang (build/fuzz) and run each for
# SECONDS (10 by default) from its seed inputs in fuzz/corpus/<target>/. New inputs go to a scratch
# copy, never into the repository. A target that crashes, leaks, trips a sanitizer or does not build
# fails the run; the input that did it is kept as build/fuzz/artifacts/<target>-crash-... .
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
seconds=${1:-10}
"$root/scripts/install-deps.sh" fuzz
cd "$root"
[[ -f build/fuzz/build.ninja ]] ||
  cmake -S . -B build/fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
        -DZQ_BUILD_FUZZ=ON -DZQ_BUILD_TESTS=OFF -DZQ_BUILD_BENCH=OFF >/dev/null
cmake --build build/fuzz --target zq_fuzz

export UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1
mkdir -p build/fuzz/artifacts
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
status=0
for source in $(find fuzz -name '*_fuzz.cpp' | sort); do
  target=$(basename "$source" .cpp)
  seeds=fuzz/corpus/$target
  [[ -d $seeds ]] || { echo "run-fuzz: $target has no seed inputs in $seeds" >&2; seeds=; }
  mkdir -p "$scratch/$target"
  log=$scratch/$target.log
  if build/fuzz/bin/"$target" -max_total_time="$seconds" -timeout=10 -print_final_stats=1 \
       -artifact_prefix=build/fuzz/artifacts/"$target"- "$scratch/$target" $seeds >"$log" 2>&1; then
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    echo "run-fuzz: $target: ${runs:-?} executions in ${seconds} s, clean"
  else
    echo "run-fuzz: $target FAILED; the end of its output:" >&2
    tail -n 40 "$log" >&2
    status=1
  fi
done
exit $status
