#!/usr/bin/env bash
# Builds the search tests with ThreadSanitizer in build-tsan/ and runs those that
# search on several threads; fails on any data race it reports.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${QUORIN_TSAN_BUILD_DIR:-$root/build-tsan}"
cd "$root"
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_CXX_FLAGS="-fsanitize=thread" -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=thread" >/dev/null
cmake --build "$build" -j2 --target search_tests
# Some kernels place memory where ThreadSanitizer can't map its shadow; without
# address randomisation it always can.
run=()
if command -v setarch >/dev/null 2>&1 && setarch "$(uname -m)" -R true 2>/dev/null; then
  run=(setarch "$(uname -m)" -R)
fi
TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1" \
  "${run[@]}" "$build/search_tests" --gtest_filter='ThreadedSearch.*'
