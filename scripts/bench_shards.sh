#!/usr/bin/env bash
# Cost of the FDR stage with glycopeptide q-values when a study is searched in
# shards and merged, against one run: generates the benchmark set (as
# scripts/bench_e2e.sh), builds its library once, splits the queries into N
# files, and in each round runs
#   one   `run --only search` over all N files (FDR stage and q-values included),
#   split `run --only search --query-dataset i --no-fdr` per file, then `fdr`.
# It prints per round the FDR stage of the one run, the deferred step of the
# shards (their evidence pass, summed) plus the merge, and their ratio; then
# the medians. The merged files are checked byte for byte against the one run.
#
#   scripts/bench_shards.sh [--shards N] [--rounds N] [--threads N] [--peptides N] [--queries N]
#   QUORIN_BUILD_DIR=/path  build folder, default build/ (the data goes to <build>/bench_shards)
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${QUORIN_BUILD_DIR:-$ROOT/build}"
OUT="$BUILD/bench_shards"
SHARDS=8
ROUNDS=3
THREADS=2
PEPTIDES=20000
QUERIES=50000
while [ $# -gt 0 ]; do
  case "$1" in
    --shards) SHARDS="$2"; shift 2 ;;
    --rounds) ROUNDS="$2"; shift 2 ;;
    --threads) THREADS="$2"; shift 2 ;;
    --peptides) PEPTIDES="$2"; shift 2 ;;
    --queries) QUERIES="$2"; shift 2 ;;
    *) echo "usage: $0 [--shards N] [--rounds N] [--threads N] [--peptides N] [--queries N]" >&2; exit 2 ;;
  esac
done
QG="$BUILD/QuorinGlyco"
cmake --build "$BUILD" --target QuorinGlyco quorin_datagen -j2 >/dev/null

now() { echo "${EPOCHREALTIME/,/.}"; }
seconds() { python3 -c 'import json,sys; print(json.load(open(sys.argv[1]))["fdr"]["seconds"])' "$1"; }

echo "== Generating $PEPTIDES peptide ions, $QUERIES queries, $SHARDS query files into $OUT"
rm -rf "$OUT"
"$BUILD/quorin_datagen" bench "$OUT" --peptides "$PEPTIDES" --queries "$QUERIES" --masstable "$BUILD/MassTable.ini" >/dev/null
python3 - "$OUT" "$SHARDS" <<'PY'
import re, sys
out, n = sys.argv[1], int(sys.argv[2])
conf = open(f"{out}/bench.conf").read()
query = re.search(r"query_dataset_pathname_1 = (.*)\n", conf).group(1)
mgf = open(query).read()
starts = [m.start() for m in re.finditer("BEGIN IONS", mgf)] + [len(mgf)]
k = len(starts) - 1
names = []
for i in range(n):
    names.append(f"{out}/part{i + 1}.mgf")
    open(names[-1], "w").write(mgf[starts[k * i // n]:starts[k * (i + 1) // n]])
lines = "".join(f"query_dataset_pathname_{i + 1} = {p}\n" for i, p in enumerate(names))
conf = conf.replace("query_dataset_number = 1\n", f"query_dataset_number = {n}\n")
conf = re.sub(r"query_dataset_pathname_1 = .*\n", lines, conf)
open(f"{out}/bench.conf", "w").write(conf + "glycopeptide_fdr = yes\n")
PY
"$QG" run "$OUT/bench.conf" --only construction >/dev/null

mkdir -p "$OUT/shards"
one_all=() split_all=()
for round in $(seq "$ROUNDS"); do
  "$QG" run "$OUT/bench.conf" --only search --threads "$THREADS" >/dev/null
  one=$(seconds "$OUT/bench_result_summary.json")
  deferred=0
  results=()
  for i in $(seq "$SHARDS"); do
    "$QG" run "$OUT/bench.conf" --only search --query-dataset "$i" --result "$OUT/shards/part$i.txt" \
      --no-fdr --threads "$THREADS" >/dev/null
    deferred=$(awk -v a="$deferred" -v b="$(seconds "$OUT/shards/part${i}_summary.json")" 'BEGIN { print a + b }')
    results+=("$OUT/shards/part$i.txt")
  done
  m0=$(now)
  "$QG" fdr --out "$OUT/merged.txt" "${results[@]}" >/dev/null
  m1=$(now)
  merge=$(awk -v a="$m0" -v b="$m1" 'BEGIN { print b - a }')
  for suffix in .txt _qvalues.txt _qvalues.pin; do
    cmp -s "$OUT/merged$suffix" "$OUT/bench_result$suffix" || { echo "merged$suffix differs from the one run" >&2; exit 1; }
  done
  split=$(awk -v a="$deferred" -v b="$merge" 'BEGIN { print a + b }')
  printf 'round %d: one run %.2f s; shards %.2f s (deferred %.2f + merge %.2f); ratio %.2f\n' \
    "$round" "$one" "$split" "$deferred" "$merge" "$(awk -v a="$split" -v b="$one" 'BEGIN { print a / b }')"
  one_all+=("$one") split_all+=("$split")
done
median() { printf '%s\n' "$@" | sort -g | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }
m_one=$(median "${one_all[@]}") m_split=$(median "${split_all[@]}")
printf 'medians: one run %.2f s, %d shards %.2f s, ratio %.2f (files identical every round)\n' \
  "$m_one" "$SHARDS" "$m_split" "$(awk -v a="$m_split" -v b="$m_one" 'BEGIN { print a / b }')"
