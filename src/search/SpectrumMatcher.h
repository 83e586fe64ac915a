#pragma once
#include <cmath>
#include <cstdint>
#include <span>
#include <vector>

#include "search/GlycanLists.h"
#include "search/LibraryPeakLookup.h"
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
  // The same scoring by one FindShiftedPeak per query peak, as the rule reads;
  // the reference that the fast look-up is tested against, and its fallback
  // for input it cannot take (non-finite or unsorted m/z, absurd scales).
  void ScoreCandidateByPeakSearch(const CSpectrum& query, CSpectrum& library);
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

  // Compact peak data of the library spectra, built after loading; spectra it
  // doesn't cover are described on the fly. Null: always on the fly.
  void UsePeakLookup(const CLibraryPeakLookup* lookup) { peakLookup = lookup; }

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
  // A query peak's direct window, [lower, upper), and its tolerance.
  struct QueryWindow {
    double mz;
    double tolerance;
    double lower;
    double upper;
    uint32_t index;  // place in the query's peaks
  };
  // Builds the look-up of query windows for `query`; lookupUsable tells
  // whether it can serve (else every candidate takes the reference path).
  void PrepareQueryLookup(const CSpectrum& query);
  // Scores with the look-up of the query last prepared.
  void ScoreCandidateFast(const CSpectrum& query, CSpectrum& library);
  // Reference scoring with queryTotal already set.
  void ScoreByPeakSearch(const CSpectrum& query, CSpectrum& library);
  // Sets queryTotal, the sum of the query's squared intensities.
  void SumQueryIntensities(const CSpectrum& query);
  // ps for N top peaks, k0 of them matched, p = libraryPeakCount * share.
  double ProbabilityScore(uint32_t topPeaks, int32_t libraryPeakCount, uint32_t matchedTop,
                          double share);
  // Asks the processor for the data that scoring `library` reads first: the
  // spectrum's fields and look-up record (early), then, once those are at
  // hand, the look-up's arrays and the marks (late).
  void PrefetchEarly(const CSpectrum& library) const;
  void PrefetchLate(const CSpectrum& library) const;
  // Resets `current` for a new candidate (step 3 of the scoring).
  void StartCandidate(CSpectrum& library);
  // Records a found library peak l for query peak q and adds to dps.
  void TakePair(const CSpectrum& query, const CSpectrum& library, std::size_t q, int l);
  // Ion statistics from the pair lists; appends the record.
  void FinishCandidate(const CSpectrum& query, const CSpectrum& library);
  // Fills dpsIons and psIons of `current` from its pair lists.
  void NameMatchedIons();
  // Bucket (of width 1 / bucketScale, counted from bucketBase) that holds
  // m/z x; false outside the table.
  bool BucketOf(double x, uint64_t& bucket) const {
    const double scaled = x * bucketScale;
    if (!(std::fabs(scaled) < kScaledLimit)) return false;
    bucket = static_cast<uint64_t>(FloorToInteger(scaled) - bucketBase);
    return bucket < bucketCount;
  }
  bool Occupied(uint64_t bucket) const { return (bucketBits[bucket >> 6] >> (bucket & 63)) & 1; }
  static constexpr double kScaledLimit = 1125899906842624.0;  // 2^50

  std::vector<CSpectralMatch> matches;  // the first matchCount are in use
  std::size_t matchCount = 0;
  std::vector<CPeak> ionScratch;
  std::vector<int> sitePositions;

  // Look-up of the current query: windows by ascending m/z; per bucket of
  // m/z the run of windows (first, count) that may reach into it, and a bit
  // that tells whether there is any (most buckets are empty, and the bits fit
  // the processor's nearest cache).
  std::vector<QueryWindow> windows;
  std::vector<std::pair<uint32_t, uint32_t>> buckets;
  std::vector<uint64_t> bucketBits;
  std::vector<uint64_t> touchedBuckets;  // to empty the tables for the next query
  uint64_t bucketCount = 0;
  int64_t bucketBase = 0;
  double bucketScale = 1.0;
  double scaleLimit = 0.0;  // |shift| and library m/z the look-up stays exact for
  bool lookupUsable = false;
  // Candidate pairs of one candidate: query peak << 32 | charge << 28 | library peak.
  std::vector<uint64_t> hits;
  const CLibraryPeakLookup* peakLookup = nullptr;
  // Compact data of a spectrum that the lookup doesn't cover.
  std::vector<double> scratchMzs;
  std::vector<CLibraryIon> scratchIons;
  double queryTotal = 0.0;
  // ps by N, then libraryPeakCount * (N + 1) + k0; NaN where not yet computed.
  // Valid for the share it was filled with.
  std::vector<std::vector<double>> psCache;
  double psCacheShare = 0.0;
};
