// The glycosite of a line: the sequons of a peptide, and the choice among
// them on hand-made spectra of a two-sequon peptide, with the ions that tell
// the sites apart present, absent and contradicting.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "fdr/SiteCall.h"
#include "molecule/MassTable.h"

namespace {

TEST(SiteCall, CandidatesAreTheSequonsAlsoAcrossTheCleavageAndTheMarkedSites) {
  EXPECT_EQ(CandidateSites("ANVTGLNESR", "--", "ST"), (std::vector<int>{2, 7}));
  EXPECT_EQ(CandidateSites("ANPTGLJESR", "--", "ST"), (std::vector<int>{7}));  // N-P-T is none
  EXPECT_EQ(CandidateSites("AJGGK", "--", "ST"), (std::vector<int>{2}));       // the list's mark stands
  EXPECT_EQ(CandidateSites("GGNVSK", "--", "T"), (std::vector<int>{}));        // only NXT configured
  // The S or T after the peptide completes a sequon at its end.
  EXPECT_EQ(CandidateSites("AGNK", "SA", "ST"), (std::vector<int>{3}));
  EXPECT_EQ(CandidateSites("AGGN", "KT", "ST"), (std::vector<int>{4}));
  EXPECT_EQ(CandidateSites("AGNK", "--", "ST"), (std::vector<int>{}));
}

class TwoSequonSpectra : public ::testing::Test {
 protected:
  // A N V T G L N E S R: sequons at 2 and 7. b2 to b6 hold site 2 alone,
  // y4 to y8 site 7 alone.
  void SetUp() override {
    CMassTable& t = peptide.massTable;
    const std::pair<char, double> residues[] = {{'A', 71.03711}, {'N', 114.04293}, {'J', 114.04293},
                                                {'V', 99.06841}, {'T', 101.04768}, {'G', 57.02146},
                                                {'L', 113.08406}, {'E', 129.04259}, {'S', 87.03203},
                                                {'R', 156.10111}};
    for (auto [r, m] : residues) t.SetEntry(0, std::string(1, r), m);
    t.SetEntry(1, "H2O", 18.010565);
    t.SetEntry(1, "Proton", 1.00727646688);
    peptide.SetPeptide(sequence, {});
    // Ions every site reading shares: short b and y ions, bare.
    for (uint32_t k : {1u, 2u, 3u}) Add(1, k, 0.0);
    for (uint32_t k : {8u, 9u}) Add(0, k, 0.0);
  }
  void Add(int type, uint32_t k, double shift) {
    peaks.push_back({peptide.FragmentMz(type, k, 1) + shift, 100.0});
  }
  CSiteCall Call(int preferred) {
    std::sort(peaks.begin(), peaks.end(), [](const CPeak& a, const CPeak& b) { return a.mz < b.mz; });
    return CallSite(CandidateSites(sequence, "--", "ST"), preferred, peptide, 1216.42, peaks, 2,
                    {0.02, 0});
  }
  const std::string sequence = "ANVTGLNESR";
  CPeptideCalculator peptide;
  std::vector<CPeak> peaks;
};

TEST_F(TwoSequonSpectra, IonsWithAHexNAcBetweenTheSequonsDecideTheSite) {
  Add(0, 3, kHexNAcMass);
  Add(0, 4, kHexNAcMass);
  Add(1, 5, 0.0);  // bare y5: the glycan came off or was never on it
  const CSiteCall call = Call(7);  // against the search's site
  EXPECT_EQ(call.reported, 2);
  EXPECT_TRUE(call.group.empty());
  EXPECT_GT(call.ReportedProbability(), 0.95);
  std::string shown = "AJVTGLJESR", loc = "7";
  ApplySite(call, shown, loc);
  EXPECT_EQ(shown, "AJVTGLNESR");
  EXPECT_EQ(loc, "2");

  peaks.clear();
  SetUp();
  Add(1, 5, 1216.42);  // the whole glycan on y5
  Add(1, 6, kHexNAcMass);
  EXPECT_EQ(Call(2).reported, 7);
  EXPECT_TRUE(Call(2).group.empty());
}

TEST_F(TwoSequonSpectra, WithoutTellingIonsOrWithContradictingOnesBothSitesStayCandidates) {
  // Absent: the search's site is reported, the other is its group.
  CSiteCall call = Call(7);
  EXPECT_EQ(call.reported, 7);
  EXPECT_EQ(call.group, (std::vector<int>{2}));
  EXPECT_NEAR(call.GroupProbability(), 1.0, 1e-12);
  EXPECT_LT(call.ReportedProbability(), 0.75);

  // Contradicting: a HexNAc on b4 and on y6 at once.
  Add(0, 4, kHexNAcMass);
  Add(1, 6, kHexNAcMass);
  call = Call(2);
  EXPECT_EQ(call.reported, 2);
  EXPECT_EQ(call.group, (std::vector<int>{7}));
  EXPECT_LT(call.ReportedProbability(), 0.75);
}

TEST(SiteCall, APeptideWithoutCandidatesKeepsItsSequenceAndCountsAsSure) {
  const CSiteCall none;
  EXPECT_DOUBLE_EQ(none.GroupProbability(), 1.0);
  std::string sequence = "AGGK", loc = "3,";
  ApplySite(none, sequence, loc);
  EXPECT_EQ(sequence, "AGGK");
  EXPECT_EQ(loc, "3,");
}

}  // namespace
