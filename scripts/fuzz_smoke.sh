#!/usr/bin/env bash
# Builds the libFuzzer targets of fuzz/ (clang, ASan + UBSan, in build-fuzz/)
# and runs every one of them for a few seconds, seeded from
# fuzz/corpus/<target>/. New inputs go to a scratch folder, never into the
# repository. A finding stops the script with the crash file's name.
#   FUZZ_SECONDS=N   seconds per target (default 5)
#   FUZZ_BUILD=DIR   build folder (default build-fuzz)
# Works from any working directory.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
seconds="${FUZZ_SECONDS:-5}"
build="${FUZZ_BUILD:-$root/build-fuzz}"
"$root/scripts/setup.sh" --fuzzers
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
      -DQUORIN_BUILD_FUZZERS=ON -DQUORIN_BUILD_TESTS=OFF >/dev/null
targets=()
for source in "$root"/fuzz/*Fuzzer.cpp; do
  targets+=("$(basename "$source" .cpp)")
done
cmake --build "$build" -j2 --target "${targets[@]}"

scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT
for target in "${targets[@]}"; do
  mkdir -p "$scratch/$target"
  seeds=()
  [ -d "$root/fuzz/corpus/$target" ] && seeds=("$root/fuzz/corpus/$target")
  echo "fuzz_smoke: $target for ${seconds}s"
  if ! "$build/fuzz/$target" -max_total_time="$seconds" -artifact_prefix="$build/$target-" \
       "$scratch/$target" "${seeds[@]}" >"$scratch/$target.log" 2>&1; then
    tail -n 40 "$scratch/$target.log"
    echo "fuzz_smoke: $target found a fault; the input is $(ls -t "$build/$target-"* 2>/dev/null | head -n 1)" >&2
    exit 1
  fi
  grep -E '^(#[0-9]+ +DONE|Done)' "$scratch/$target.log" | tail -n 1 || true
done
echo "fuzz_smoke: ${#targets[@]} targets ran ${seconds}s each without a finding"
