#pragma once
#include <cstdint>
#include <span>
#include <vector>

#include "search/GlycanLists.h"
#include "search/LibraryPeakTable.h"
#include "search/MatchScratch.h"
#include "search/SpectralMatch.h"
#include "spectrum/Spectrum.h"

// Compares a query with its candidates, scores them (DPS, PS) and picks the
// result. Reads the library spectra without changing them: all it writes is
// in its own scratch, so each thread of a search uses a matcher of its own.
class CSpectrumMatcher {
 public:
  // Empties the work storage and reserves room for `capacity` scored candidates.
  void Init(std::size_t capacity);
  // The whole comparison of one prepared query; returns its result record.
  // The chosen entry's motif list is left as it is (see NarrowMotifsToSite).
  CSpectralMatch Match(CSpectrum& query, const std::vector<CSpectrum*>& candidates,
                       const CGlycanLists& glycanLists);
  // Scores one candidate with the glycan already in `current`; appends a record.
  void ScoreCandidate(const CSpectrum& query, const CSpectrum& library);
  // The same scoring by one FindShiftedPeak per query peak, as the rule reads;
  // the reference that the fast look-up is tested against, and its fallback
  // for input it cannot take (non-finite or unsorted m/z, absurd scales).
  void ScoreCandidateByPeakSearch(const CSpectrum& query, const CSpectrum& library);
  // Fills ps and score of every scored record; N is the query's topPeakCount.
  void ComputeScores(uint32_t topPeaks);
  // Sets current.glycoLoc and current.site from the match states `marks` of
  // current.library's peaks, `peaks`.
  void AssignSite(const CEntryPeakView& peaks, std::span<const uint32_t> marks);
  // From a record's search on, its entry lists only the motif of the chosen
  // site, if it has one. The search applies this in query order.
  static void NarrowMotifsToSite(const CSpectralMatch& match);

  // C(n, k) in unsigned 32-bit arithmetic (wrapping as such), by the product
  // formula with integer division at each step.
  static uint32_t BinomialCoefficient(uint32_t n, uint32_t k);
  // Chance of at least k0 successes among n trials of chance p.
  static double BinomialTail(uint32_t n, uint32_t k0, double p);
  // Highest fragment charge tried in shifted matching for a query charge.
  static uint32_t HighestFragmentCharge(uint32_t queryCharge);

  // Where the library's peaks are, once loaded; spectra it doesn't hold are
  // described from their own peak lists. Null: always from their own lists.
  void UsePeakTable(const CLibraryPeakTable* table) { peakTable = table; }

  // The scored records of the current query, without their pair lists (the
  // candidate scored last has them in `current`). The records are reused from
  // query to query so that their strings keep their room.
  std::span<CSpectralMatch> Matches() { return {scratch.matches.data(), scratch.matchCount}; }
  // Appends a copy of `record` to the scored records.
  void AddMatch(const CSpectralMatch& record);
  void ClearMatches() { scratch.matchCount = 0; }
  // Match states of the library peaks of the candidate scored last; after
  // Match, of the chosen candidate (see CMatchScratch::marks).
  std::span<const uint32_t> Marks() const { return scratch.marks; }

  CSpectralMatch current;
  // How many next best candidates Match keeps in current.alternatives.
  std::size_t alternativeCount = 0;

 private:
  // Scores `library` into current and the marks; appends the record if `keep`.
  // With the look-up of the query last prepared and the entry's view, if
  // found already (FastScoring.cpp).
  void ScoreCandidateFast(const CSpectrum& query, const CSpectrum& library,
                          const CEntryPeakView* view = nullptr, bool keep = true);
  // Reference scoring with queryTotal and scratch.view already set.
  void ScoreByPeakSearch(const CSpectrum& query, const CSpectrum& library, bool keep = true);
  // Sets scratch.view to the peaks of `library`: the table's, or described.
  void TakeView(const CSpectrum& library);
  // Prepares the query's windows and queryTotal for scoring its candidates.
  void PrepareQuery(const CSpectrum& query);
  // ps for N top peaks, k0 of them matched, p = libraryPeakCount * share.
  double ProbabilityScore(uint32_t topPeaks, int32_t libraryPeakCount, uint32_t matchedTop,
                          double share);
  // Asks the processor for the table record of a candidate that is scored
  // soon (for a spectrum outside the table, its own fields). No effect on results.
  void PrefetchEarly(const CSpectrum& library) const;
  // The library table's view of a candidate, whose first lines it asks the
  // processor for; false if the table doesn't hold the spectrum.
  bool FindView(const CSpectrum& library, CEntryPeakView& view) const;
  // Resets `current` and the marks for a new candidate, whose peaks are in
  // scratch.view.
  void StartCandidate(const CSpectrum& library);
  // Records a found library peak l for query peak q and adds to dps.
  void TakePair(const CSpectrum& query, std::size_t q, int l);
  // Ion statistics from the pair lists; appends the record if `keep`.
  void FinishCandidate(const CSpectrum& query, bool keep);
  // Fills dpsIons and psIons of `current` from its pair lists and scratch.view.
  void NameMatchedIons();
  // Makes `current` the scored record `record` of `library` with its pair
  // lists, ion names and site: scored again, or (CompleteScored) when it was
  // the candidate scored last.
  void Complete(const CSpectrum& query, const CSpectrum& library, std::size_t record);
  void CompleteScored(std::size_t record);

  CMatchScratch scratch;
  const CLibraryPeakTable* peakTable = nullptr;
  bool lookupUsable = false;  // the windows of the current query can serve
  double queryTotal = 0.0;    // sum of the query's squared intensities
};
