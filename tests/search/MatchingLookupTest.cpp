// The bucketed look-up of ScoreCandidate against the reference scoring by one
// FindShiftedPeak per query peak: same pairs, same dps to the last bit, same marks.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "SearchTestUtil.h"
#include "search/SpectrumMatcher.h"

using namespace searchtest;

namespace {

// The record, pairs and marks of the candidate scored last by each matcher.
void ExpectSameRecord(CSpectrumMatcher& fast, CSpectrumMatcher& reference) {
  // The candidate's state after scoring; the kept record has no pair lists.
  const CSpectralMatch& a = fast.current;
  const CSpectralMatch& b = reference.current;
  ASSERT_EQ(fast.Matches()[0].dps, a.dps);
  ASSERT_EQ(a.dpsPairs, b.dpsPairs);
  ASSERT_EQ(a.psPairs, b.psPairs);
  ASSERT_EQ(a.dps, b.dps);
  ASSERT_EQ(a.matchedTopPeakCount, b.matchedTopPeakCount);
  ASSERT_EQ(a.libraryPeakCount, b.libraryPeakCount);
  ASSERT_EQ(a.matchedPeptideIonCount, b.matchedPeptideIonCount);
  ASSERT_EQ(a.matchedYIonCount, b.matchedYIonCount);
  ASSERT_EQ(a.matchedPeptideIonIntensity, b.matchedPeptideIonIntensity);
  ASSERT_TRUE(std::ranges::equal(fast.Marks(), reference.Marks()));
}

// Scores `query` against `lib` both ways and compares the records and marks;
// the fast way once from the spectrum's own peaks and once with its peaks
// moved into a library table, as a loaded library holds them.
void ExpectSameScoring(const CSpectrum& query, const CSpectrum& lib) {
  CSpectrumMatcher reference;
  reference.Init(1);
  reference.ScoreCandidateByPeakSearch(query, lib);
  std::vector<CSpectrum> entries{Spectrum(0, 1, {Peak(100, 1, kPeakB, 1, 1)}), lib};
  CLibraryPeakTable table;
  for (CSpectrum& entry : entries) table.Add(entry);
  table.Attach(entries);
  for (const CSpectrum* scored : {&lib, static_cast<const CSpectrum*>(&entries[1])}) {
    CSpectrumMatcher fast;
    fast.Init(1);
    fast.UsePeakTable(&table);
    fast.ScoreCandidate(query, *scored);
    ExpectSameRecord(fast, reference);
  }
}

}  // namespace

TEST(MatchingLookup, AgreesWithOneFindShiftedPeakPerQueryPeak) {
  std::mt19937 rng(11);
  auto uniform = [&](double low, double high) {
    return low + (high - low) * static_cast<double>(rng() % 100000) / 1e5;
  };
  // m/z on a grid of 0.01 so that peaks share m/z and lie on window edges.
  auto grid = [&](double low, double high) { return std::round(uniform(low, high) * 100) / 100; };
  for (int round = 0; round < 400; ++round) {
    const bool ppm = round % 3 == 2;
    SetTolerances(ppm ? 20.0 : (round % 2 ? 0.02 : 0.5), ppm ? 1 : 0);
    const double shift = round % 5 == 0 ? 0.0 : grid(0, 3000);
    CSpectrum lib = Spectrum(1500, 2);
    for (int i = 0, n = static_cast<int>(rng() % 60); i < n; ++i)
      lib.peaks.push_back(Peak(grid(100, 1200), std::round(uniform(0, 4)),
                               static_cast<int32_t>(rng() % 5), 1 + rng() % 9, rng() % 6));
    std::sort(lib.peaks.begin(), lib.peaks.end(), ByMz);
    lib.topPeakCount = static_cast<uint32_t>(lib.peaks.size());
    CSpectrum query = Spectrum(1500 + shift, static_cast<uint32_t>(rng() % 6));
    for (const CPeak& p : lib.peaks) {
      // Direct copies, shifted copies by the peak's charge, and copies moved to
      // the window edges.
      const double z = p.charge == 0 ? 1 : p.charge;
      const double edge = (rng() % 3 == 0 ? 0.5 : rng() % 2 ? 0.02 : -0.02);
      switch (rng() % 4) {
        case 0: query.peaks.push_back(Peak(p.mz, uniform(0, 1))); break;
        case 1: query.peaks.push_back(Peak(p.mz + shift / z, uniform(0, 1))); break;
        case 2: query.peaks.push_back(Peak(p.mz + shift / z + edge, uniform(0, 1))); break;
        default: query.peaks.push_back(Peak(p.mz + edge, uniform(0, 1))); break;
      }
    }
    for (int n = 0; n < 20; ++n) query.peaks.push_back(Peak(grid(100, 4000), uniform(0, 1)));
    std::sort(query.peaks.begin(), query.peaks.end(), ByIntensity);
    query.topPeakCount = std::min<uint32_t>(12, static_cast<uint32_t>(query.peaks.size()));
    ExpectSameScoring(query, lib);
  }
}

// Input the look-up cannot take goes the reference way with the same result.
TEST(MatchingLookup, UnusualInputKeepsTheReferenceResult) {
  SetTolerances(0.5, 0);
  CSpectrum lib = Spectrum(1000, 2, {Peak(300, 0.5, kPeakY, 2, 1), Peak(200, 0.4, kPeakB, 2, 1),
                                     Peak(500, 0.3, kPeakY, 4, 2)});
  CSpectrum query = Spectrum(1200, 3, {Peak(NAN, 0.9), Peak(500, 0.8), Peak(300, 0.7),
                                       Peak(INFINITY, 0.6), Peak(200, 0.5), Peak(600, 0.4)});
  query.topPeakCount = 3;
  ExpectSameScoring(query, lib);  // unsorted library
  std::sort(lib.peaks.begin(), lib.peaks.end(), ByMz);
  ExpectSameScoring(query, lib);  // non-finite query m/z
  lib.peaks.push_back(Peak(NAN, 1.0, kPeakY, 1, 1));
  ExpectSameScoring(query, lib);
  query.precursorMass = 1e300;  // a shift beyond the look-up's scale
  ExpectSameScoring(query, lib);
  SetTolerances(1e305, 1);  // tolerances that overflow
  ExpectSameScoring(query, lib);
}
