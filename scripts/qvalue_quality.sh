#!/bin/sh
# Judges a ranked result file and its glycopeptide q-values against the
# generator's truth table (quorin_datagen quality):
#
#   scripts/qvalue_quality.sh <truth.tsv> <result file> [<q-values file>] [--curve]
#
# A target line is right when its sequence (J read as N), modifications and
# glycan are the truth's; a glycan also counts as right when the line's
# IsobaricGlycans group holds it. It is right with its site when, besides, its
# GlycoLoc is the true site or its SiteCandidates group holds it. For each q
# column (the result file's FDR, the q-value file's GlycopeptideQ) it prints,
# at the cuts 1 % and 5 %: the target lines kept, the right ones and the true
# false share, both without and with the site; the share of kept lines that
# carry a site group; the sensitivity (right with the site, of the queries of
# library glycopeptides that were accepted: every one of a kind that carries
# its markers, and those of weak markers that got a line); and where the
# missed ones of those queries went. --curve adds a table of the cut against
# the estimated and the true false share (with the site), ready to plot.
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
    NR == FNR {
      pep[$1] = $3; mods[$1] = $8; gly[$1] = $5; site[$1] = $7
      if ($9 == "yes") { library[$1] = 1; if ($2 != "weak_marker") wanted[$1] = 1 }
      next
    }
    FNR == 1 { for (i = 1; i <= NF; i++) col[$i] = i; next }
    {
      name = $col["QuerySpecName"]
      if (name in library) wanted[name] = 1              # accepted: it got a line
      if (name in seen) next                             # the first line of a query counts
      seen[name] = 1
      q = $col[qname] + 0
      s = $col["Sequence"]; gsub("J", "N", s)
      peptideRight = (name in pep) && s == pep[name] && $col["Modification"] == mods[name]
      g = $col["GlycanName"]; ok = g == gly[name]
      if (!ok && ("IsobaricGlycans" in col)) {
        k = split($col["IsobaricGlycans"], alt, ";")
        for (j = 1; j <= k; j++) if (alt[j] == gly[name]) ok = 1
      }
      loc = $col["GlycoLoc"]; sub(",$", "", loc)
      siteOk = loc == site[name]; grouped = 0
      if ("SiteCandidates" in col && $col["SiteCandidates"] != "") {
        grouped = 1
        k = split($col["SiteCandidates"], alt, ";")
        for (j = 1; j <= k; j++) if (alt[j] == site[name]) siteOk = 1
      }
      decoy = $col["Target/DecoyHit"] != "T"
      fate[name] = decoy ? "decoy" : !peptideRight ? "other_peptide" : !ok ? "wrong_glycan" : !siteOk ? "wrong_site" : "right"
      lineQ[name] = q
      if (decoy) next
      n++; qs[n] = q; good[n] = peptideRight && ok; goodSite[n] = good[n] && siteOk; group[n] = grouped
    }
    END {
      split("0.01 0.05", cuts, " ")
      for (c = 1; c <= 2; c++) {
        cut = cuts[c] + 1e-12
        kept = 0; r = 0; rs = 0; groups = 0
        for (i = 1; i <= n; i++) if (qs[i] <= cut) { kept++; r += good[i]; rs += goodSite[i]; groups += group[i] }
        total = 0; found = 0; delete miss
        for (name in wanted) {
          total++
          f = !(name in fate) ? "no_line" : fate[name]
          if (f == "right" && lineQ[name] > cut) f = "above_cut"
          if (f == "right") found++; else miss[f]++
        }
        misses = ""
        split("above_cut other_peptide decoy wrong_glycan wrong_site no_line", kinds, " ")
        for (k = 1; k <= 6; k++) misses = misses sprintf(" %s=%d", kinds[k], miss[kinds[k]] + 0)
        printf "%s\t%s\t%d\t%d\t%.4f\t%d\t%.4f\t%.4f\t%.4f\t%s\n", qname, cuts[c], kept, r,
               kept ? (kept - r) / kept : 0, rs, kept ? (kept - rs) / kept : 0,
               kept ? groups / kept : 0, total ? found / total : 0, substr(misses, 2)
      }
      if (curve == "yes") {
        print "# cut\testimated\ttrue_false_share_with_site\ttarget_lines"
        split("0.001 0.002 0.005 0.01 0.02 0.03 0.05 0.075 0.1 0.2", cs, " ")
        for (c = 1; c <= 10; c++) {
          kept = 0; r = 0; est = 0
          for (i = 1; i <= n; i++) if (qs[i] <= cs[c] + 1e-12) { kept++; r += goodSite[i]; if (qs[i] > est) est = qs[i] }
          printf "%s\t%.4f\t%.4f\t%d\n", cs[c], est, kept ? (kept - r) / kept : 0, kept
        }
      }
    }' "$truth" "$1"
}

printf "column\tcut\ttarget_lines\tright\tfalse_share\tright_with_site\tfalse_share_with_site\tsite_groups\tsensitivity\tmisses\n"
judge "$result" FDR
[ -n "$qvalues" ] && judge "$qvalues" GlycopeptideQ
exit 0
