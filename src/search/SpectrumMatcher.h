#pragma once
#include <cstdint>
#include <span>
#include <vector>

#include "search/GlycanLists.h"
#include "search/SpectralMatch.h"
#include "spectrum/Spectrum.h"

// Compares a query with its candidates, scores them (DPS, PS) and picks the result.
class CSpectrumMatcher {
 public:
  // Empties the work storage and reserves room for `capacity` scored candidates.
  void Init(std::size_t capacity);
  // The whole comparison of one prepared query; returns its result record.
  CSpectralMatch Match(CSpectrum& query, const std::vector<CSpectrum*>& candidates,
                       const CGlycanLists& glycanLists);
  // Scores one candidate with the glycan already in `current`; appends a record.
  void ScoreCandidate(const CSpectrum& query, CSpectrum& library);
  // Fills ps and score of every scored record; N is the query's topPeakCount.
  void ComputeScores(uint32_t topPeaks);
  // Sets current.glycoLoc from the match states of current.library, and may
  // narrow its motif list to the chosen site.
  void AssignSite();

  // C(n, k) in unsigned 32-bit arithmetic (wrapping as such), by the product
  // formula with integer division at each step.
  static uint32_t BinomialCoefficient(uint32_t n, uint32_t k);
  // Chance of at least k0 successes among n trials of chance p.
  static double BinomialTail(uint32_t n, uint32_t k0, double p);
  // Highest fragment charge tried in shifted matching for a query charge.
  static uint32_t HighestFragmentCharge(uint32_t queryCharge);

  // The scored records of the current query. The records are reused from query
  // to query so that their strings and lists keep their room.
  std::span<CSpectralMatch> Matches() { return {matches.data(), matchCount}; }
  // Appends a copy of `record` to the scored records.
  void AddMatch(const CSpectralMatch& record);
  void ClearMatches() { matchCount = 0; }

  CSpectralMatch current;
  std::vector<uint32_t> forwardEvidence;
  std::vector<uint32_t> backwardEvidence;
  std::vector<uint32_t> siteSupport;

 private:
  // Fills dpsIons and psIons of `current` from its pair lists.
  void NameMatchedIons();

  std::vector<CSpectralMatch> matches;  // the first matchCount are in use
  std::size_t matchCount = 0;
  std::vector<uint32_t> order;
  std::vector<CPeak> ionScratch;
  std::vector<int> sitePositions;
};
