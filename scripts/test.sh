#!/usr/bin/env bash
# Installs what is missing, builds QuorinGlyco with its tests and runs them all,
# the threaded search also under ThreadSanitizer, and a few seconds of each
# fuzz target.
# Works from any working directory.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
"$root/scripts/setup.sh"
cd "$root"
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release
cmake --build build -j2
# The threaded search under ThreadSanitizer (its own build, about a minute and a half).
"$root/scripts/tsan.sh"
# A few seconds of every fuzz target under ASan and UBSan (its own clang build).
"$root/scripts/fuzz_smoke.sh"
ctest --test-dir build --output-on-failure
