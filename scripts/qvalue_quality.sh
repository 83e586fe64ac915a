#!/bin/sh
# Judges a ranked result file and its glycopeptide q-values against the
# generator's truth table (quorin_datagen quality):
#
#   scripts/qvalue_quality.sh <truth.tsv> <result file> [<q-values file>] [--curve]
#
# A target line is right when its sequence (J read as N), modifications and
# glycan are the truth's; a glycan also counts as right when the line's
# IsobaricGlycans group holds it. For each q column (the result file's FDR, the
# q-value file's GlycopeptideQ) it prints, at the cuts 1 % and 5 %, the target
# lines kept, the right ones and the true false share. --curve adds a table of
# the cut against the estimated and the true false share, ready to plot.
set -eu
[ $# -ge 2 ] || { echo "usage: $0 truth.tsv result.txt [qvalues.txt] [--curve]" >&2; exit 2; }
truth=$1
result=$2
qvalues=${3:-}
curve=no
for a in "$@"; do [ "$a" = "--curve" ] && curve=yes; done
[ "$qvalues" = "--curve" ] && qvalues=

judge() {  # file, q column name
  awk -F'\t' -v qname="$2" -v curve="$curve" '
    FNR == 1 && NR == 1 { next }                       # truth header
    NR == FNR { pep[$1] = $3; mods[$1] = $8; gly[$1] = $5; next }
    FNR == 1 { for (i = 1; i <= NF; i++) col[$i] = i; next }
    {
      if ($col["Target/DecoyHit"] != "T") next
      q = $col[qname] + 0; n++; qs[n] = q
      s = $col["Sequence"]; gsub("J", "N", s); name = $col["QuerySpecName"]
      right = (name in pep) && s == pep[name] && $col["Modification"] == mods[name]
      g = $col["GlycanName"]; ok = g == gly[name]
      if (!ok && ("IsobaricGlycans" in col)) {
        k = split($col["IsobaricGlycans"], alt, ";")
        for (j = 1; j <= k; j++) if (alt[j] == gly[name]) ok = 1
      }
      good[n] = right && ok
    }
    END {
      split("0.01 0.05", cuts, " ")
      for (c = 1; c <= 2; c++) {
        kept = 0; r = 0
        for (i = 1; i <= n; i++) if (qs[i] <= cuts[c] + 1e-12) { kept++; r += good[i] }
        printf "%s\t%s\t%d\t%d\t%.4f\n", qname, cuts[c], kept, r, kept ? (kept - r) / kept : 0
      }
      if (curve == "yes") {
        print "# cut\testimated\ttrue_false_share\ttarget_lines"
        split("0.001 0.002 0.005 0.01 0.02 0.03 0.05 0.075 0.1 0.2", cs, " ")
        for (c = 1; c <= 10; c++) {
          kept = 0; r = 0; est = 0
          for (i = 1; i <= n; i++) if (qs[i] <= cs[c] + 1e-12) { kept++; r += good[i]; if (qs[i] > est) est = qs[i] }
          printf "%s\t%.4f\t%.4f\t%d\n", cs[c], est, kept ? (kept - r) / kept : 0, kept
        }
      }
    }' "$truth" "$1"
}

printf "column\tcut\ttarget_lines\tright\tfalse_share\n"
judge "$result" FDR
[ -n "$qvalues" ] && judge "$qvalues" GlycopeptideQ
exit 0
