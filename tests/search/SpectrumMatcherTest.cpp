// Peak look-up, matching, scoring and site assignment.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <tuple>

#include "SearchTestUtil.h"
#include "search/SpectrumMatcher.h"

using namespace searchtest;
using States = std::vector<uint32_t>;

namespace {
CSpectrum Prepared(std::vector<CPeak> peaks) {
  CSpectrum s = Spectrum(1000, 2, std::move(peaks));
  s.ResetPeakUsed();
  return s;
}

// Site assignment on a library spectrum whose peaks carry the given states,
// and the narrowing of its motif list that the search applies.
std::string Site(CSpectrum& lib, const States& states) {
  CSpectrumMatcher matcher;
  matcher.current.library = &lib;
  CDescribedPeaks storage;
  CEntryPeakView peaks;
  CLibraryPeakTable::Describe(lib, storage, peaks);
  matcher.AssignSite(peaks, states);
  CSpectrumMatcher::NarrowMotifsToSite(matcher.current);
  return matcher.current.glycoLoc;
}
}  // namespace

TEST(FindShiftedPeak, ShiftedBeatsDirectAndRespectsFragmentCharge) {
  // At 500 with shift 200 two y ions match directly, the weak one at 300 after
  // the shift; the shifted one wins, then the direct ones, the first of equals first.
  CSpectrum lib = Prepared({Peak(300, 0.1, kPeakY, 2, 1), Peak(500, 0.9, kPeakY, 4, 1),
                            Peak(500.005, 0.9, kPeakY, 5, 1)});
  for (int expected : {0, 1, 2, -1}) EXPECT_EQ(lib.FindShiftedPeak(500, 0.01, 2, 200), expected);
  EXPECT_EQ(lib.peakUsed, (States{2, 1, 1}));
  // A charge-2 b ion matches shifted only with z = 2, even inside a z = 1 range.
  CSpectrum two = Prepared({Peak(400, 0.2, kPeakB, 3, 2)});
  EXPECT_EQ(two.FindShiftedPeak(600, 0.01, 1, 400), -1);
  EXPECT_EQ(two.FindShiftedPeak(800, 0.01, 4, 400), -1);
  EXPECT_EQ(two.FindShiftedPeak(600, 0.01, 2, 400), 0);
  // Among shifted matches the most intense wins over all charges.
  CSpectrum both = Prepared({Peak(300, 0.1, kPeakY, 2, 1), Peak(400, 0.3, kPeakB, 3, 2)});
  EXPECT_EQ(both.FindShiftedPeak(500, 0.01, 2, 200), 1);
  // Y ions never match shifted; the upper end of a range is open.
  CSpectrum other = Prepared({Peak(300, 1, kPeakYCore, 1, 1), Peak(300.01, 1, kPeakY, 1, 1)});
  EXPECT_EQ(other.FindShiftedPeak(500, 0.01, 1, 200), -1);
  EXPECT_EQ(other.FindShiftedPeak(300, 0.01, 1, 200), 0);
}

// The bisections must find exactly the peaks that a plain scan of every peak finds.
TEST(FindShiftedPeak, AgreesWithAScanOfEveryPeak) {
  auto scan = [](CSpectrum& s, double mz, double tol, uint32_t highest, double shift) {
    int found = -1;
    uint32_t state = 0;
    double best = -1.0;
    for (uint32_t z = 0; z <= highest; ++z) {  // z = 0: the direct search
      const double c = z == 0 ? mz : mz - shift / z;
      for (std::size_t i = 0; i < s.peaks.size(); ++i) {
        const CPeak& p = s.peaks[i];
        if (p.mz < c - tol || p.mz >= c + tol || s.peakUsed[i] != 0) continue;
        if (z == 0 ? (found < 0 || p.intensity > s.peaks[found].intensity)
                   : (p.charge == z && p.type <= 1 && p.intensity > best)) {
          if (z != 0) best = p.intensity;
          found = static_cast<int>(i);
          state = z == 0 ? 1 : 2;
        }
      }
    }
    if (found >= 0) s.peakUsed[found] = state;
    return found;
  };
  std::mt19937 rng(7);
  auto tenths = [&](int low, int high) {
    return (low + static_cast<int>(rng() % static_cast<unsigned>(high - low))) / 10.0;
  };
  for (int round = 0; round < 200; ++round) {
    CSpectrum s;
    for (int i = 0, n = static_cast<int>(rng() % 40); i < n; ++i)
      s.peaks.push_back(Peak(tenths(1000, 10000), rng() % 5, rng() % 5, 1, 1 + rng() % 3));
    std::sort(s.peaks.begin(), s.peaks.end(), ByMz);
    s.ResetPeakUsed();
    CSpectrum copy = s;
    for (int q = 0; q < 30; ++q) {
      const double at = tenths(1000, 10000), shift = tenths(0, 3000);
      const uint32_t highest = 1 + rng() % 4;
      ASSERT_EQ(s.FindShiftedPeak(at, 0.5, highest, shift), scan(copy, at, 0.5, highest, shift));
      ASSERT_EQ(s.peakUsed, copy.peakUsed);
    }
  }
}

TEST(SpectrumMatcher, IonNamesAndHighestFragmentCharge) {
  std::string names;
  for (const CPeak& p : {Peak(1, 1, kPeakB, 3, 1), Peak(1, 1, kPeakY, 11, 2),
                         Peak(1, 1, kPeakYCore, 2, 1), Peak(1, 1, kPeakOther, 0, 0),
                         Peak(1, 1, kPeakUnannotated, 7, 1), Peak(1, 1, 9, 7, 1)})
    names += p.GetIonName() + " ";
  EXPECT_EQ(names, "b3+ y11++ Y2+ o0 u7+ 7+ ");
  const uint32_t highest[] = {4, 1, 2, 2, 3, 4, 4, 4, 4, 4};  // by query charge 0..9
  for (uint32_t z = 0; z < 10; ++z)
    EXPECT_EQ(CSpectrumMatcher::HighestFragmentCharge(z), highest[z]);
}

class Matching : public ::testing::Test {
 protected:
  void SetUp() override {
    SetTolerances(0.01, 0);
    CParam::GetInstance().search.minimal_peptide_ions = 0;
    // Library: b2 at 200, y3 at 350, an unannotated peak at 600, Y1 at 900.
    lib = Spectrum(1000.0, 2, {Peak(200, 0.5, kPeakB, 2, 1), Peak(350, 0.4, kPeakY, 3, 1),
                               Peak(600, 0.3), Peak(900, 0.6, kPeakYCore, 1, 1)});
    lib.sequence = "PEPJTIDE";
    lib.topPeakCount = 3;
    // Query 1000 above: y3 shifted at 1350, b2 and Y1 directly, the unannotated
    // peak, and a peak that matches nothing; two top peaks.
    query = Spectrum(2000.0, 2, {Peak(1350, 0.6), Peak(200, 0.5), Peak(900, 0.4), Peak(600, 0.3),
                                 Peak(700, 0.2)});
    query.topPeakCount = 2;
  }
  CSpectrumMatcher matcher;
  CSpectrum lib, query;
};

TEST_F(Matching, ScoresMatchedPeaksIonsAndSite) {
  Glycans glycans({{"5-4-0-0-0", 1000.0}}, {{0}});
  CSpectralMatch m = matcher.Match(query, {&lib}, glycans.lists);
  EXPECT_TRUE(m.library == &lib && m.query == &query && m.glycanName == "5-4-0-0-0");
  // Library peaks, top peaks matched (Y1 is beyond them), Y ions, b/y ions, candidates.
  EXPECT_EQ(std::tuple(m.libraryPeakCount, m.matchedTopPeakCount, m.matchedYIonCount,
                       m.matchedPeptideIonCount, m.candidateCount),
            std::tuple(3, 2, 1, 2, 1));
  EXPECT_DOUBLE_EQ(m.dps, 0.75);  // three pairs, each of mean 0.5
  EXPECT_DOUBLE_EQ(m.matchedYIonIntensity, 0.16 / 0.9);
  EXPECT_DOUBLE_EQ(m.matchedPeptideIonIntensity, (0.36 + 0.25) / 0.9);
  const double p = 3 * 2 * 0.01 / 2000;  // N = 2, k0 = 2: P = p^2
  EXPECT_NEAR(m.ps, std::sqrt(-std::log(p * p)), 1e-12);
  EXPECT_DOUBLE_EQ(m.score, m.ps * m.dps);
  EXPECT_EQ(m.dpsIons, "b2+;y3+;Y1+;");  // by type, charge, position
  EXPECT_EQ(m.psIons, "b2+;y3+;");
  EXPECT_EQ(m.glycoLoc, "4");
  // The states of the chosen entry: y3 shifted, the rest direct, the
  // unannotated peak taken though it did not count.
  EXPECT_EQ(std::vector<uint32_t>(matcher.Marks().begin(), matcher.Marks().end()),
            (States{1, 2, 1, 1}));
  // No candidates: no library spectrum, score 0, no site.
  CSpectralMatch none = matcher.Match(query, {}, CGlycanLists());
  EXPECT_TRUE(none.library == nullptr && none.score == 0.0 && none.glycoLoc.empty());
}

TEST_F(Matching, MinimalPeptideIonsDecidesBetweenCandidates) {
  // Only Y ions, all matching directly: the higher score.
  CSpectrum yOnly = Spectrum(1000, 2, {Peak(200, 1, kPeakYCore, 0, 1),
                                       Peak(900, 1, kPeakYCore, 1, 1),
                                       Peak(1350, 1, kPeakYCore, 2, 1)});
  yOnly.sequence = "PEPJTIDE";
  yOnly.topPeakCount = 3;
  Glycans glycans({{"g", 1000.0}}, {{0}, {0}});
  auto match = [&](int minimal) {
    CParam::GetInstance().search.minimal_peptide_ions = minimal;
    return matcher.Match(query, {&lib, &yOnly}, glycans.lists);
  };
  EXPECT_EQ(match(0).library, &yOnly);
  EXPECT_EQ(match(1).library, &lib);
  // Nobody qualifies: the best record with score -1, its site still assigned.
  CSpectralMatch none = match(3);
  EXPECT_TRUE(none.library == &yOnly && none.score == -1.0 && none.candidateCount == 2);
  EXPECT_EQ(none.glycoLoc, "4");
}

TEST_F(Matching, GlycanChoiceTiesAndTheHundredRule) {
  auto choose = [&](double queryMass, std::vector<std::pair<std::string, double>> list) {
    query.precursorMass = queryMass;
    std::vector<int> all = {0, 1};
    all.resize(list.size());
    Glycans glycans(list, {all});
    return matcher.Match(query, {&lib}, glycans.lists).glycanName;
  };
  EXPECT_EQ(choose(2000.25, {{"A", 1000.0}, {"B", 1000.5}}), "A");  // a tie keeps the first
  EXPECT_EQ(choose(2000.25, {{"A", 1000.0}, {"B", 1000.375}}), "B");
  EXPECT_EQ(choose(2000.0, {{"A", 500.0}, {"B", 900.0}}), "A");  // 100 off never displaces
  EXPECT_EQ(choose(2000.0, {{"A", 500.0}, {"B", 900.5}}), "B");
  EXPECT_EQ(choose(2000.0, {{"A", 1234.0}}), "A");
}

TEST(SpectrumMatcher, ProbabilityScoreFromTheBinomialTail) {
  CSpectrumMatcher matcher;
  auto ps = [&](uint32_t n, int32_t libraryPeaks, int32_t matched) {
    CSpectralMatch record;
    record.libraryPeakCount = libraryPeaks;
    record.matchedTopPeakCount = matched;
    record.dps = 2.0;
    matcher.ClearMatches();
    matcher.AddMatch(record);
    matcher.ComputeScores(n);
    EXPECT_EQ(matcher.Matches()[0].score, 2.0 * matcher.Matches()[0].ps);
    return matcher.Matches()[0].ps;
  };
  // N = 12, 40 annotated peaks, 0.02 Da (or 20 ppm at the reference m/z 1000),
  // 5 matched top peaks.
  SetTolerances(0.02, 0);
  EXPECT_NEAR(ps(12, 40, 5), 5.383734829604751, 1e-9);
  EXPECT_EQ(ps(12, 0, 0), 0.0);  // P = 1
  SetTolerances(20, 1);
  EXPECT_NEAR(ps(12, 40, 5), 5.383734829604751, 1e-9);
  SetTolerances(50, 0);  // p above 1 makes P meaningless: PS 0
  EXPECT_EQ(ps(12, 40, 5), 0.0);
  // C(n, k): the products wrap at 2^32 before the division (not 2333606220).
  EXPECT_EQ(CSpectrumMatcher::BinomialCoefficient(12, 5), 792u);
  EXPECT_EQ(CSpectrumMatcher::BinomialCoefficient(34, 17), 11908473u);
}

TEST(SiteAssignment, JPositionsDecidedByShiftedOrDirectIons) {
  // J at residues 2 and 5 of 8, one b or y ion of the given length and state.
  auto site = [](int32_t type, uint32_t length, uint32_t state) {
    CSpectrum lib = Spectrum(1000, 2, {Peak(300, 1, type, length, 1)});
    lib.sequence = "AJCDJFGH";
    lib.motifs = {{2, "NXC"}, {5, "NXF"}};
    const std::string loc = Site(lib, {state});
    return loc + ":" + (lib.motifs.size() == 1 ? lib.motifs[0].sequon : "all");
  };
  EXPECT_EQ(site(kPeakB, 3, 2), "2:NXC");  // b3 with the glycan: within the first three
  EXPECT_EQ(site(kPeakB, 3, 1), "5:NXF");  // b3 without it: not within them
  EXPECT_EQ(site(kPeakY, 3, 1), "2:NXC");  // y3 without it allows both: the first wins
  EXPECT_EQ(site(kPeakY, 5, 2), "5:NXF");  // y5 with it: the last five residues
  EXPECT_EQ(site(kPeakUnannotated, 3, 1), "2:NXC");
  // One J is reported whatever the evidence; its first motif entry stays alone,
  // and a list without an entry of the site stays as it was.
  CSpectrum one = Spectrum(1000, 2, {Peak(300, 1, kPeakB, 6, 1)});
  one.sequence = "PEPJTIDE";
  one.motifs = {{2, "NXA"}, {4, "NXT"}, {4, "NXS"}};
  EXPECT_EQ(Site(one, {1}), "4");
  EXPECT_EQ(one.motifs, (std::vector<CGlycoSite>{{4, "NXT"}}));
  one.motifs = {{2, "NXA"}};
  EXPECT_EQ(Site(one, {1}), "4");
  EXPECT_EQ(one.motifs.size(), 1u);
  // Without J every residue competes and the site ends in a comma.
  CSpectrum none = Spectrum(1000, 2, {Peak(300, 1, kPeakY, 2, 1)});
  none.sequence = "ACDEFGH";
  EXPECT_EQ(Site(none, {0}), "1,");  // no evidence: residue 1
  EXPECT_EQ(Site(none, {2}), "6,");  // y2 with the glycan: residues 6 and 7 tie
  none.peaks[0].position = 40;  // a damaged position beyond the sequence is passed over
  EXPECT_EQ(Site(none, {2}), "1,");
}
