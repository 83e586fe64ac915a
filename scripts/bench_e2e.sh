#!/usr/bin/env bash
# End-to-end benchmark: builds Release, generates a large dataset with
# quorin_datagen, runs construction, search and FDR in one run of QuorinGlyco,
# and prints the wall time of each stage, queries per second and peak memory.
#
#   scripts/bench_e2e.sh [--peptides N] [--queries N] [--seed N] [--threads N] [--glycopeptide-fdr]
#     --peptides  library peptide ions (each gives a target and a decoy entry), default 20000
#     --queries   query spectra, default 50000 (60 % glycopeptides of library peptides,
#                 20 % glycopeptides of other peptides, 20 % to be rejected)
#     --threads   threads of the search, default all the machine has
#     --glycopeptide-fdr  also write and time the glycopeptide q-values
#   QUORIN_BUILD_DIR=/path  build folder, default build/ (the data goes to <build>/bench)
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${QUORIN_BUILD_DIR:-$ROOT/build}"
OUT="$BUILD/bench"
PEPTIDES=20000
QUERIES=50000
SEED=20240611
QVALUES=no
THREADS=0
while [ $# -gt 0 ]; do
  case "$1" in
    --peptides) PEPTIDES="$2"; shift 2 ;;
    --queries) QUERIES="$2"; shift 2 ;;
    --seed) SEED="$2"; shift 2 ;;
    --threads) THREADS="$2"; shift 2 ;;
    --glycopeptide-fdr) QVALUES=yes; shift ;;
    *) echo "usage: $0 [--peptides N] [--queries N] [--seed N] [--threads N] [--glycopeptide-fdr]" >&2; exit 2 ;;
  esac
done

"$ROOT/scripts/setup.sh" --benchmarks
if [ ! -f "$BUILD/CMakeCache.txt" ]; then
  echo "== Configuring a Release build in $BUILD"
  if ! cmake -S "$ROOT" -B "$BUILD" -DCMAKE_BUILD_TYPE=Release >/dev/null; then
    cmake -S "$ROOT" -B "$BUILD" -DCMAKE_BUILD_TYPE=Release -DQUORIN_BUILD_TESTS=OFF >/dev/null
  fi
fi
type=$(sed -n 's/^CMAKE_BUILD_TYPE:[A-Z]*=//p' "$BUILD/CMakeCache.txt")
if [ "$type" != "Release" ]; then
  echo "warning: $BUILD is a '$type' build; numbers are only meaningful for Release" >&2
fi
echo "== Building QuorinGlyco and quorin_datagen ($type)"
cmake --build "$BUILD" --target QuorinGlyco quorin_datagen -j"$(nproc 2>/dev/null || echo 2)" >/dev/null

now() {
  if [ -n "${EPOCHREALTIME:-}" ]; then echo "${EPOCHREALTIME/,/.}"; else date +%s.%N; fi
}
elapsed() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", b - a }'; }

echo "== Generating $PEPTIDES library peptide ions and $QUERIES queries into $OUT"
rm -rf "$OUT"
g0=$(now)
"$BUILD/quorin_datagen" bench "$OUT" --peptides "$PEPTIDES" --queries "$QUERIES" --seed "$SEED" \
  --masstable "$BUILD/MassTable.ini"
g1=$(now)
if [ "$QVALUES" = yes ]; then echo "glycopeptide_fdr = yes" >>"$OUT/bench.conf"; fi
echo "   generated in $(elapsed "$g0" "$g1") s, $(du -sh "$OUT" | cut -f1) on disk"

# Peak memory from GNU time when it is installed; line-buffered output so that
# each progress line can be stamped when it appears.
timer=()
if [ -x /usr/bin/time ]; then timer=(/usr/bin/time -v -o "$OUT/time.txt"); fi
buffer=()
if command -v stdbuf >/dev/null; then buffer=(stdbuf -oL); fi

echo "== Running QuorinGlyco"
t0=$(now)
set +e
"${timer[@]}" "${buffer[@]}" "$BUILD/QuorinGlyco" run "$OUT/bench.conf" --threads "$THREADS" </dev/null |
  while IFS= read -r line; do printf '%s\t%s\n' "$(now)" "$line"; done >"$OUT/console.txt"
status=${PIPESTATUS[0]}
set -e
t1=$(now)
if [ "$status" -ne 0 ]; then
  echo "QuorinGlyco ended with status $status; see $OUT/console.txt" >&2
  tail -5 "$OUT/console.txt" >&2
  exit 1
fi

stamp() { awk -F'\t' -v key="$1" 'index($0, key) > 0 { print $1; exit }' "$OUT/console.txt"; }
c0=$(stamp ">> Constructing:")
s0=$(stamp ">> Searching:")
s1=$(stamp "library spectra have been loaded.")
f0=$(stamp ">> Estimating FDR.")
f1=$(stamp "Summary")
q0=$(stamp ">> Estimating glycopeptide q-values.")
progress=$(grep -o 'Spectra: [0-9]*/[0-9]*' "$OUT/console.txt" | tail -1 | cut -d' ' -f2)
accepted=${progress%/*}
total=${progress#*/}
entries=$(grep -o '[0-9]* library spectra have been loaded' "$OUT/console.txt" | cut -d' ' -f1)
hits=$(($(wc -l <"$OUT/bench_result.txt") - 1))
search=$(elapsed "$s0" "$f0")
matching=$(elapsed "$s1" "$f0")

echo
threads_shown=$THREADS
if [ "$threads_shown" = 0 ]; then threads_shown="all"; fi
echo "== Results ($PEPTIDES peptide ions, $QUERIES queries, $threads_shown search threads)"
printf '  %-34s %s s\n' "construction:" "$(elapsed "$c0" "$s0")"
printf '  %-34s %s s\n' "search, total:" "$search"
printf '  %-34s %s s\n' "  of it library loading:" "$(elapsed "$s0" "$s1")"
printf '  %-34s %s s\n' "  of it query reading and matching:" "$matching"
if [ -n "$q0" ]; then
  printf '  %-34s %s s\n' "FDR estimation:" "$(elapsed "$f0" "$q0")"
  printf '  %-34s %s s\n' "glycopeptide q-values:" "$(elapsed "$q0" "$f1")"
else
  printf '  %-34s %s s\n' "FDR estimation:" "$(elapsed "$f0" "$f1")"
fi
printf '  %-34s %s s\n' "whole run:" "$(elapsed "$t0" "$t1")"
printf '  %-34s %s\n' "library entries:" "$entries"
printf '  %-34s %s of %s read\n' "queries accepted:" "$accepted" "$total"
printf '  %-34s %s\n' "result lines:" "$hits"
awk -v a="$accepted" -v r="$total" -v t="$search" -v m="$matching" 'BEGIN {
  if (t > 0) printf "  %-34s %.0f accepted, %.0f read (per second of the search stage)\n", "queries per second:", a / t, r / t
  if (m > 0) printf "  %-34s %.0f accepted per second\n", "  without library loading:", a / m
}'
if [ -f "$OUT/time.txt" ]; then
  rss=$(sed -n 's/.*Maximum resident set size (kbytes): //p' "$OUT/time.txt")
  library=$(stat -c %s "$OUT/bench.quolib")
  printf '  %-34s %s MiB, %s x the library file (%s MiB)\n' "peak memory (RSS):" \
    "$(awk -v k="$rss" 'BEGIN { printf "%.1f", k / 1024 }')" \
    "$(awk -v k="$rss" -v b="$library" 'BEGIN { printf "%.2f", k * 1024 / b }')" \
    "$(awk -v b="$library" 'BEGIN { printf "%.1f", b / 1048576 }')"
else
  echo "  peak memory: /usr/bin/time not installed (apt-get install time)"
fi
echo "Console with time stamps: $OUT/console.txt"
