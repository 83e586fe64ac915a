#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "search/LibraryPeakTable.h"
#include "search/QueryPeakLookup.h"
#include "search/SpectralMatch.h"
#include "spectrum/Peak.h"

// Everything a matcher writes while it scores a query's candidates. Each search
// thread owns one matcher and so one scratch; the library is only read, which
// is what lets threads share it. The vectors are reused from query to query
// so that they keep their room.
struct CMatchScratch {
  // Per peak of the candidate scored last: 0 free, 1 matched directly, 2
  // matched shifted by the glycan. After Match: those of the chosen candidate.
  std::vector<uint32_t> marks;
  // Look-up of the current query's peak windows.
  CQueryPeakLookup queryLookup;
  // Candidate pairs of one candidate: query peak << 32 | charge << 28 | library peak.
  std::vector<uint64_t> hits;
  // The peaks of the candidate scored last; after Match, of the chosen one.
  CEntryPeakView view;
  // The arrays of that view for a spectrum outside the library's table.
  CDescribedPeaks described;
  // The peak records of a table entry for the reference path, which searches
  // records.
  CSpectrum materialized;
  // Views of the candidates, found once each, a few candidates ahead of scoring.
  std::vector<std::optional<CEntryPeakView>> views;
  // The pair lists of the candidate being scored while its record is copied
  // without them (see CSpectralMatch::dpsPairs, psPairs).
  std::vector<std::pair<uint32_t, uint32_t>> dpsPairs;
  std::vector<std::pair<uint32_t, uint32_t>> psPairs;
  // The scored records of the current query, without pair lists; the first
  // matchCount are in use.
  std::vector<CSpectralMatch> matches;
  std::size_t matchCount = 0;
  // Ion naming and site assignment.
  std::vector<CPeak> namedIons;
  std::vector<int> sitePositions;
  std::vector<uint32_t> forwardEvidence;
  std::vector<uint32_t> backwardEvidence;
  std::vector<uint32_t> siteSupport;
  // ps by N, then libraryPeakCount * (N + 1) + k0; NaN where not yet computed.
  // Valid for the share it was filled with.
  std::vector<std::vector<double>> psCache;
  double psCacheShare = 0.0;
};
