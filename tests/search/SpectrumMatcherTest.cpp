#include <gtest/gtest.h>

#include <cmath>

#include "SearchTestUtil.h"
#include "search/SpectrumMatcher.h"

using namespace searchtest;

namespace {

CGlycan Glycan(const std::string& name, double mass) {
  CGlycan g;
  g.name = name;
  g.mass = mass;
  return g;
}

// Library entry: b2 at 200, y3 at 350, an unannotated peak at 600, Y1 at 900.
CSpectrum Library() {
  CSpectrum lib = Spectrum(1000.0, 2, {Peak(200, 0.5, kPeakB, 2, 1), Peak(350, 0.4, kPeakY, 3, 1),
                                       Peak(600, 0.3), Peak(900, 0.6, kPeakYCore, 1, 1)});
  lib.name = "7";
  lib.sequence = "PEPJTIDE";
  lib.topPeakCount = 3;
  lib.motifs = {{4, "NXT"}};
  return lib;
}

// Query with the glycan mass 1000: y3 shifted at 1350, b2 and Y1 directly, the
// unannotated peak, and a peak that matches nothing; two top peaks.
CSpectrum Query() {
  CSpectrum q = Spectrum(2000.0, 2, {Peak(1350, 0.6), Peak(200, 0.5), Peak(900, 0.4),
                                     Peak(600, 0.3), Peak(700, 0.2)});
  q.name = "query";
  q.topPeakCount = 2;
  return q;
}

struct Lists {
  std::vector<CGlycan> storage;
  CGlycanLists lists;
  // Each inner vector holds indices into storage.
  Lists(std::vector<CGlycan> glycans, const std::vector<std::vector<int>>& perCandidate)
      : storage(std::move(glycans)) {
    for (const auto& list : perCandidate) {
      for (int i : list) lists.Add(&storage[i]);
      lists.Close();
    }
  }
};

}  // namespace

TEST(SpectrumMatcher, ScoresMatchedPeaksIonsAndSite) {
  SetTolerances(0.01, 0);
  CParam::GetInstance().search.minimal_peptide_ions = 2;
  CSpectrumMatcher matcher;
  matcher.Init(16);
  CSpectrum lib = Library(), query = Query();
  Lists glycans({Glycan("5-4-0-0-0", 1000.0)}, {{0}});
  CSpectralMatch m = matcher.Match(query, {&lib}, glycans.lists);

  ASSERT_EQ(m.library, &lib);
  EXPECT_EQ(m.query, &query);
  EXPECT_EQ(m.glycanName, "5-4-0-0-0");
  EXPECT_EQ(m.glycanMass, 1000.0);
  EXPECT_EQ(m.libraryPeakCount, 3);
  EXPECT_EQ(m.matchedTopPeakCount, 2);  // the Y1 match is beyond the top peaks
  EXPECT_EQ(m.matchedYIonCount, 1);
  EXPECT_EQ(m.matchedPeptideIonCount, 2);
  EXPECT_DOUBLE_EQ(m.dps, 0.75);  // three pairs, each of mean 0.5
  EXPECT_DOUBLE_EQ(m.matchedYIonIntensity, 0.16 / 0.9);
  EXPECT_DOUBLE_EQ(m.matchedPeptideIonIntensity, (0.36 + 0.25) / 0.9);
  // N = 2, k0 = 2, p = 3 * 2 * 0.01 / 2000: P = p^2.
  const double p = 3 * 2 * 0.01 / 2000;
  EXPECT_NEAR(m.ps, std::sqrt(-std::log(p * p)), 1e-12);
  EXPECT_DOUBLE_EQ(m.score, m.ps * m.dps);
  EXPECT_EQ(m.dpsIons, "b2+;y3+;Y1+;");
  EXPECT_EQ(m.psIons, "b2+;y3+;");
  EXPECT_EQ(m.dpsPairs.size(), 3u);
  EXPECT_EQ(m.candidateCount, 1);
  EXPECT_EQ(m.glycoLoc, "4");
  // Match states stay on the library spectrum: y3 shifted, b2 and Y1 direct,
  // the unannotated peak taken though it did not count.
  EXPECT_EQ(lib.peakUsed, (std::vector<uint32_t>{1, 2, 1, 1}));
}

TEST(SpectrumMatcher, MinimalPeptideIonsDecidesBetweenCandidates) {
  SetTolerances(0.01, 0);
  CSpectrumMatcher matcher;
  matcher.Init(16);
  CSpectrum lib = Library(), query = Query();
  // Only Y ions, all matching directly with high intensity: the higher score.
  CSpectrum yOnly = Spectrum(1000.0, 2, {Peak(200, 1.0, kPeakYCore, 0, 1),
                                         Peak(900, 1.0, kPeakYCore, 1, 1),
                                         Peak(1350, 1.0, kPeakYCore, 2, 1)});
  yOnly.name = "9";
  yOnly.sequence = "PEPJTIDE";
  yOnly.topPeakCount = 3;
  Lists glycans({Glycan("g", 1000.0)}, {{0}, {0}});

  CParam::GetInstance().search.minimal_peptide_ions = 0;
  CSpectralMatch any = matcher.Match(query, {&lib, &yOnly}, glycans.lists);
  EXPECT_EQ(any.library, &yOnly);
  EXPECT_EQ(any.candidateCount, 2);
  EXPECT_EQ(any.matchedPeptideIonCount, 0);

  CParam::GetInstance().search.minimal_peptide_ions = 1;
  CSpectralMatch one = matcher.Match(query, {&lib, &yOnly}, glycans.lists);
  EXPECT_EQ(one.library, &lib);
  EXPECT_GT(one.score, 0.0);

  // Nobody qualifies: the best record comes back with score -1, site assigned.
  CParam::GetInstance().search.minimal_peptide_ions = 3;
  CSpectralMatch none = matcher.Match(query, {&lib, &yOnly}, glycans.lists);
  EXPECT_EQ(none.library, &yOnly);
  EXPECT_EQ(none.score, -1.0);
  EXPECT_EQ(none.glycoLoc, "4");
  EXPECT_EQ(none.candidateCount, 2);
}

TEST(SpectrumMatcher, QueryWithoutCandidates) {
  CSpectrumMatcher matcher;
  matcher.Init(4);
  CSpectrum query = Query();
  CGlycanLists lists;
  CSpectralMatch m = matcher.Match(query, {}, lists);
  EXPECT_EQ(m.query, &query);
  EXPECT_EQ(m.library, nullptr);
  EXPECT_EQ(m.score, 0.0);
  EXPECT_EQ(m.candidateCount, 0);
  EXPECT_TRUE(m.glycoLoc.empty());
}

TEST(SpectrumMatcher, GlycanChoiceTiesAndTheHundredRule) {
  SetTolerances(0.01, 0);
  CParam::GetInstance().search.minimal_peptide_ions = 0;
  CSpectrumMatcher matcher;
  matcher.Init(4);
  auto choose = [&](double queryMass, std::vector<CGlycan> glycans) {
    CSpectrum lib = Library();
    CSpectrum query = Query();
    query.precursorMass = queryMass;
    std::vector<int> all;
    for (std::size_t i = 0; i < glycans.size(); ++i) all.push_back(static_cast<int>(i));
    Lists lists(std::move(glycans), {all});
    return matcher.Match(query, {&lib}, lists.lists).glycanName;
  };
  // Equal differences (0.25): the earlier entry stands.
  EXPECT_EQ(choose(2000.25, {Glycan("A", 1000.0), Glycan("B", 1000.5)}), "A");
  EXPECT_EQ(choose(2000.25, {Glycan("A", 1000.0), Glycan("B", 1000.375)}), "B");
  // Differences of 100 or more never displace the first entry.
  EXPECT_EQ(choose(2000.0, {Glycan("A", 500.0), Glycan("B", 900.0)}), "A");
  EXPECT_EQ(choose(2000.0, {Glycan("A", 500.0), Glycan("B", 900.5)}), "B");
  // One entry is the choice however far it is.
  EXPECT_EQ(choose(2000.0, {Glycan("A", 1234.0)}), "A");
}

TEST(SpectrumMatcher, ProbabilityScoreFromTheBinomialTail) {
  SetTolerances(0.02, 0);
  CSpectrumMatcher matcher;
  matcher.Init(4);
  CSpectralMatch record;
  record.libraryPeakCount = 40;
  record.matchedTopPeakCount = 5;
  record.dps = 2.0;
  matcher.AddMatch(record);
  record.libraryPeakCount = 0;  // no annotated peak, no match: P = 1
  record.matchedTopPeakCount = 0;
  matcher.AddMatch(record);
  matcher.ComputeScores(12);
  auto scored = matcher.Matches();
  ASSERT_EQ(scored.size(), 2u);
  EXPECT_NEAR(scored[0].ps, 5.383734829604751, 1e-9);
  EXPECT_NEAR(scored[0].score, 2.0 * 5.383734829604751, 1e-9);
  EXPECT_EQ(scored[1].ps, 0.0);
  EXPECT_EQ(scored[1].score, 0.0);

  // 20 ppm at the reference m/z 1000 is the same 0.02 Da.
  SetTolerances(20, 1);
  matcher.ClearMatches();
  record.libraryPeakCount = 40;
  record.matchedTopPeakCount = 5;
  matcher.AddMatch(record);
  matcher.ComputeScores(12);
  EXPECT_NEAR(matcher.Matches()[0].ps, 5.383734829604751, 1e-9);

  // With N = 0 the tail is 1 and the score 0.
  matcher.ClearMatches();
  record.matchedTopPeakCount = 0;
  matcher.AddMatch(record);
  matcher.ComputeScores(0);
  EXPECT_EQ(matcher.Matches()[0].ps, 0.0);
}

TEST(SpectrumMatcher, BinomialCoefficientIn32BitIntegers) {
  EXPECT_EQ(CSpectrumMatcher::BinomialCoefficient(12, 0), 1u);
  EXPECT_EQ(CSpectrumMatcher::BinomialCoefficient(12, 12), 1u);
  EXPECT_EQ(CSpectrumMatcher::BinomialCoefficient(12, 5), 792u);
  EXPECT_EQ(CSpectrumMatcher::BinomialCoefficient(12, 6), 924u);
  EXPECT_EQ(CSpectrumMatcher::BinomialCoefficient(20, 10), 184756u);
  // The products wrap at 2^32 before the division: not the true 2333606220.
  EXPECT_EQ(CSpectrumMatcher::BinomialCoefficient(34, 17), 11908473u);
  EXPECT_EQ(CSpectrumMatcher::BinomialCoefficient(40, 20), 132214225u);
  EXPECT_NEAR(CSpectrumMatcher::BinomialTail(12, 0, 0.3), 1.0, 1e-12);
}

TEST(SpectrumMatcher, HighestFragmentChargeByQueryCharge) {
  const uint32_t expected[] = {4, 1, 2, 2, 3, 4, 4, 4, 4, 4};
  for (uint32_t z = 0; z < 10; ++z)
    EXPECT_EQ(CSpectrumMatcher::HighestFragmentCharge(z), expected[z]) << z;
}
