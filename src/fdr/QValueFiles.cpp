#include "fdr/QValueFiles.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <numeric>

#include "fdr/GlycopeptideQValues.h"
#include "fdr/SiteCall.h"
#include "run/NumberText.h"
#include "run/Process.h"
#include "run/SafeOutputFile.h"

namespace {

// Writes `text` so that the file is either complete or not there. Ends the
// run on failure.
void WriteFileAtomically(const std::string& path, const std::string& text) {
  CSafeOutputFile file;
  bool ok = file.Open(path, std::ios::binary);
  if (ok) {
    file.Stream().write(text.data(), static_cast<std::streamsize>(text.size()));
    ok = file.Commit();
  }
  if (!ok) {
    std::cout << "Glycopeptide q-value file write error: failed to write file " << path
              << std::endl;
    ExitProgram(1);
  }
}

}  // namespace

void WriteQValueFiles(std::vector<CGlycopeptideHit>& hits, const std::string& resultPath) {
  std::vector<std::size_t> order(hits.size());
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    if (hits[a].glycopeptideQ != hits[b].glycopeptideQ)
      return hits[a].glycopeptideQ < hits[b].glycopeptideQ;
    return hits[a].score > hits[b].score;
  });
  std::string text =
      "QuerySpecName\tSequence\tModification\tGlycanName\tGlycoLoc\tTarget/DecoyHit\tScore\t"
      "PeptideQ\tGlycanQ\tGlycopeptideQ\tIsobaricGlycans\tSearchGlycanName\tIsotopeShift\t"
      "GlycanMassErrorPpm\tSiteProbability\tSiteCandidates\tProteinGlycoLoc\n";
  std::string pin = "SpecId\tLabel\tScanNr";
  for (const std::string& name : kGlycopeptideFeatureNames) (pin += '\t') += name;
  pin += "\tPeptide\tProteins\n";
  for (std::size_t rank = 0; rank < order.size(); ++rank) {
    const CGlycopeptideHit& hit = hits[order[rank]];
    std::string isobaric;
    for (const CGlycan* glycan : hit.call.isobaric) (isobaric += isobaric.empty() ? "" : ";") += glycan->name;
    std::string sequence = hit.sequence, glycoLoc = hit.glycoLoc;
    ApplySite(hit.site, sequence, glycoLoc);
    text += hit.query + '\t' + sequence + '\t' + hit.modification + '\t' + hit.GlycanName() +
            '\t' + glycoLoc + '\t' + (hit.decoy ? "D" : "T") + '\t';
    for (double value : {hit.score, hit.peptideQ, hit.glycanQ, hit.glycopeptideQ}) {
      AppendFixed(text, value, 6);
      text += '\t';
    }
    text += isobaric + '\t' + hit.searchGlycan + '\t';
    AppendSigned(text, hit.call.isotope);
    text += '\t';
    AppendFixed(text, hit.call.massErrorPpm, 2);
    text += '\t';
    AppendFixed(text, hit.site.ReportedProbability(), 4);
    text += '\t';
    for (std::size_t i = 0; i < hit.site.group.size(); ++i)
      (text += i > 0 ? ";" : "") += std::to_string(hit.site.group[i]);
    text += '\t';
    // The site in the protein, where the search found the peptide in one.
    if (hit.site.reported > 0 && hit.proteinStart > 0)
      AppendSigned(text, hit.proteinStart + hit.site.reported - 1);
    text += '\n';

    pin += hit.query + '\t' + (hit.decoy ? "-1" : "1") + '\t';
    AppendUnsigned(pin, rank + 1);
    for (double value : hit.features) {
      pin += '\t';
      AppendFixed(pin, value, 6);
    }
    pin += "\t-." + hit.sequence + "[" + hit.GlycanName() + "].-\t" +
           (hit.protein.empty() ? std::string("-") : hit.protein) + '\n';
  }
  WriteFileAtomically(QValuePath(resultPath), text);
  WriteFileAtomically(QValuePath(resultPath, ".pin"), pin);
}

