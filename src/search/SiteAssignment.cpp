// Glycosylation site of the chosen candidate: matched b and y ions vote for the
// residues that may hold the glycan.
#include <algorithm>
#include <cstdio>
#include <regex>

#include "run/Motif.h"
#include "search/SpectrumMatcher.h"

void CSpectrumMatcher::AssignSite(const CEntryPeakView& peaks, std::span<const uint32_t> marks) {
  const CSpectrum* library = current.library;
  current.site = 0;
  if (library == nullptr) return;
  const std::string& sequence = library->sequence;
  const std::size_t length = sequence.size();
  std::vector<uint32_t>& forwardEvidence = scratch.forwardEvidence;
  std::vector<uint32_t>& backwardEvidence = scratch.backwardEvidence;
  std::vector<uint32_t>& siteSupport = scratch.siteSupport;
  std::vector<int>& sitePositions = scratch.sitePositions;
  forwardEvidence.assign(length + 1, 0);
  backwardEvidence.assign(length + 1, 0);
  siteSupport.assign(length + 1, 0);

  // Each ion says the site lies at index k or lower, in its array's direction:
  // a direct b ion (no glycan) excludes its first p residues, a shifted b ion
  // (glycan on it) holds the site within them; likewise from the C-terminus for y.
  const std::size_t peakCount = std::min(peaks.peakCount, marks.size());
  for (std::size_t i = 0; i < peakCount; ++i) {
    const CPeakLabel& peak = peaks.Label(i);
    const uint32_t state = marks[i];
    const std::size_t p = peak.position;
    // A position beyond the sequence can only come from a damaged library; it
    // names no residue and is passed over.
    if (p > length || (state != 1 && state != 2)) continue;
    if (state == 1 && peak.type == kPeakB) ++backwardEvidence[length - p];
    else if (state == 1 && peak.type == kPeakY) ++forwardEvidence[length - p];
    else if (state == 2 && peak.type == kPeakB) ++forwardEvidence[p];
    else if (state == 2 && peak.type == kPeakY) ++backwardEvidence[p];
  }

  // Running sums from the far end, from L - 2 down to 1.
  for (long k = static_cast<long>(length) - 2; k >= 1; --k) {
    forwardEvidence[k] += forwardEvidence[k + 1];
    backwardEvidence[k] += backwardEvidence[k + 1];
  }

  static const std::regex kSiteLetter("[J]");
  sitePositions.clear();
  FindMotifOccurrences(kSiteLetter, sequence, sitePositions);

  char text[32];
  if (sitePositions.empty()) {
    // An empty sequence has no residue to name; its site stays empty.
    if (length == 0) {
      current.glycoLoc.clear();
      return;
    }
    uint32_t best = 0;
    for (std::size_t i = 1; i <= length; ++i) {
      siteSupport[i] = backwardEvidence[length + 1 - i] + forwardEvidence[i];
      best = std::max(best, siteSupport[i]);
    }
    std::size_t site = 1;
    while (siteSupport[site] != best) ++site;
    std::snprintf(text, sizeof text, "%d,", static_cast<int>(site));
    current.glycoLoc = text;
    return;
  }

  uint32_t best = 0;
  for (int j : sitePositions) {
    const std::size_t i = static_cast<std::size_t>(j) + 1;
    siteSupport[i] = backwardEvidence[length + 1 - i] + forwardEvidence[i];
    best = std::max(best, siteSupport[i]);
  }
  int site = sitePositions[0] + 1;
  for (int j : sitePositions) {
    if (siteSupport[static_cast<std::size_t>(j) + 1] == best) {
      site = j + 1;
      break;
    }
  }
  std::snprintf(text, sizeof text, "%d", site);
  current.glycoLoc = text;
  current.site = site;
}

void CSpectrumMatcher::NarrowMotifsToSite(const CSpectralMatch& match) {
  CSpectrum* library = match.library;
  if (library == nullptr || match.site == 0) return;
  for (const CGlycoSite& motif : library->motifs) {
    if (motif.position == match.site) {
      CGlycoSite kept = motif;
      library->motifs.assign(1, kept);
      break;
    }
  }
}
