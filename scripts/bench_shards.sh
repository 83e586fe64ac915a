#!/usr/bin/env bash
# Cost of the FDR stage with glycopeptide q-values when a study is searched in
# shards and merged, against one run: generates the benchmark set (as
# scripts/bench_e2e.sh), builds its library once, splits the queries into N
# files, and in each round runs
#   one   `run --only search` over all N files (FDR stage and q-values included),
#   split `run --only search --query-dataset i --no-fdr` per file, then `fdr`.
# It prints per round the FDR stage of the one run, the deferred step of the
# shards (their evidence pass, summed) plus the merge (the whole `fdr`
# process), in wall and CPU seconds (from the summaries), and their ratio;
# then the medians, and the median of the rounds' own ratios (each round's two
# sides ran minutes apart at most, so a drift of the machine's speed cancels
# more within a round). CPU time is the fairer measure on a shared machine. The
# merged files are checked byte for byte against the one run.
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

# Wall and CPU seconds of the FDR stage from a summary file.
stage() { python3 -c 'import json,sys; f=json.load(open(sys.argv[1]))["fdr"]; print(f["seconds"], f["cpu_seconds"])' "$1"; }
sum() { awk -v a="$1" -v b="$2" 'BEGIN { print a + b }'; }

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
rows=()
for round in $(seq "$ROUNDS"); do
  "$QG" run "$OUT/bench.conf" --only search --threads "$THREADS" >/dev/null
  read -r one_wall one_cpu < <(stage "$OUT/bench_result_summary.json")
  wall=0 cpu=0 results=()
  for i in $(seq "$SHARDS"); do
    "$QG" run "$OUT/bench.conf" --only search --query-dataset "$i" --result "$OUT/shards/part$i.txt" \
      --no-fdr --threads "$THREADS" >/dev/null
    read -r w c < <(stage "$OUT/shards/part${i}_summary.json")
    wall=$(sum "$wall" "$w") cpu=$(sum "$cpu" "$c")
    results+=("$OUT/shards/part$i.txt")
  done
  "$QG" fdr --out "$OUT/merged.txt" "${results[@]}" >/dev/null
  read -r merge_wall merge_cpu < <(stage "$OUT/merged_summary.json")
  for suffix in .txt _qvalues.txt _qvalues.pin; do
    cmp -s "$OUT/merged$suffix" "$OUT/bench_result$suffix" || { echo "merged$suffix differs from the one run" >&2; exit 1; }
  done
  split_wall=$(sum "$wall" "$merge_wall") split_cpu=$(sum "$cpu" "$merge_cpu")
  printf 'round %d: one run %.2f s wall, %.2f s CPU; %d shards %.2f s wall, %.2f s CPU (deferred %.2f + merge %.2f); CPU ratio %.2f\n' \
    "$round" "$one_wall" "$one_cpu" "$SHARDS" "$split_wall" "$split_cpu" "$cpu" "$merge_cpu" \
    "$(awk -v a="$split_cpu" -v b="$one_cpu" 'BEGIN { print a / b }')"
  rows+=("$one_wall $one_cpu $split_wall $split_cpu $(awk -v a="$split_cpu" -v b="$one_cpu" 'BEGIN { print a / b }')")
done
median() { sort -g | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }
column() { printf '%s\n' "${rows[@]}" | cut -d' ' -f"$1" | median; }
printf 'medians: one run %.2f s wall, %.2f s CPU; %d shards %.2f s wall, %.2f s CPU; ratio %.2f wall, %.2f CPU; median of the rounds'"'"' CPU ratios %.2f (files identical every round)\n' \
  "$(column 1)" "$(column 2)" "$SHARDS" "$(column 3)" "$(column 4)" \
  "$(awk -v a="$(column 3)" -v b="$(column 1)" 'BEGIN { print a / b }')" \
  "$(awk -v a="$(column 4)" -v b="$(column 2)" 'BEGIN { print a / b }')" "$(column 5)"
