// Decoy entries: the reversed peptide with its sequons read forward again and
// the target's peaks moved to the decoy's fragments.
#include <algorithm>
#include <regex>
#include <vector>

#include "construction/LibraryBuilder.h"
#include "run/Motif.h"

namespace {

// Unannotated peaks closer than this above an annotated one move with it.
constexpr double kCarryDistance = 2.2;

// Compiling the expression is far dearer than matching it on a short peptide,
// so the compiled form is kept while the motif list stays the same.
const std::regex& CompiledExpression(const std::string& text) {
  static std::string cachedText;
  static std::regex cached;
  static bool valid = false;
  if (!valid || text != cachedText) {
    cached = std::regex(text, std::regex::ECMAScript);
    cachedText = text;
    valid = true;
  }
  return cached;
}

void RestoreSequonsWith(CSpectrum& decoy, const CConstructionParam& settings) {
  // No motif, no acceptor letter: nothing can match, and "[]" would not compile.
  if (!settings.N_glycan_motifs.empty()) {
    const std::string context = decoy.prevAA + decoy.sequence;
    std::vector<int> occurrences;
    FindMotifOccurrences(CompiledExpression(settings.GetReverseMotifRegex()), context,
                         occurrences);
    std::sort(occurrences.begin(), occurrences.end());
    for (int p : occurrences) {
      // Below 2 the acceptor lies in prevAA, outside the peptide. With a prevAA
      // longer than two an offset may lie past the sequence: nothing to exchange.
      if (p < 2 || static_cast<std::size_t>(p) >= decoy.sequence.size()) continue;
      std::swap(decoy.sequence[static_cast<std::size_t>(p - 2)],
                decoy.sequence[static_cast<std::size_t>(p)]);
      for (CModification& mod : decoy.modifications) {
        if (mod.position - 1 == p - 2) {
          mod.position += 2;
        } else if (mod.position - 1 == p) {
          mod.position -= 2;
        }
      }
    }
  }
  for (CGlycoSite& site : decoy.motifs) {
    if (site.position > 2) site.position -= 2;
  }
}

}  // namespace

void RestoreSequons(CSpectrum& decoy) {
  RestoreSequonsWith(decoy, CParam::GetInstance().construction);
}

void CLibraryBuilder::MakeDecoy(CSpectrum& decoy) {
  const auto length = static_cast<int32_t>(decoy.sequence.size());
  decoy.name = kDecoyPrefix + decoy.name;
  decoy.proteinAC = kDecoyPrefix + decoy.proteinAC;
  std::swap(decoy.prevAA, decoy.lastAA);
  std::reverse(decoy.prevAA.begin(), decoy.prevAA.end());
  std::reverse(decoy.sequence.begin(), decoy.sequence.end());
  for (CGlycoSite& site : decoy.motifs) site.position = length - site.position + 1;
  for (CModification& mod : decoy.modifications) mod.position = length - mod.position + 1;
  RestoreSequonsWith(decoy, param);
  SortModifications(decoy.modifications);
  calculator.SetPeptide(decoy.sequence, decoy.modifications);
  decoy.SortPeaksByMz();
  RemapDecoyPeaks(decoy);
  decoy.SortPeaksByMz();
}

void CLibraryBuilder::RemapDecoyPeaks(CSpectrum& decoy) {
  // One walk in m/z order: each b or y ion moves to the decoy's fragment of the
  // same kind, length and charge; each unannotated peak less than 2.2 Th above
  // the last such ion moves with it; Y ions and peaks of unknown type stay.
  double oldMz = 0.0;
  double newMz = 0.0;
  for (CPeak& peak : decoy.peaks) {
    if (peak.type == kPeakB || peak.type == kPeakY) {
      oldMz = peak.mz;
      // A fragment longer than the peptide can't come from the annotation;
      // such a peak keeps its m/z rather than read outside the mass table.
      if (peak.position <= calculator.length) {
        newMz = calculator.FragmentMz(peak.type, peak.position, peak.charge);
      } else {
        newMz = peak.mz;
      }
      peak.mz = newMz;
    } else if (peak.type == kPeakUnannotated) {
      const double distance = peak.mz - oldMz;
      if (distance < kCarryDistance) peak.mz = distance + newMz;
    }
  }
}
