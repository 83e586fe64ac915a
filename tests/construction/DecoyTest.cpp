// Decoy entries: reversal, sequons turned forward, peaks moved to the decoy's fragments.
#include <gtest/gtest.h>

#include <algorithm>

#include "construction/ConstructionFixtures.h"

using fixtures::Mass;
using fixtures::Peak;

namespace {

CSpectrum Target(const std::string& sequence, int32_t site, std::vector<CPeak> peaks = {}) {
  CSpectrum target = fixtures::Spectrum(std::move(peaks), 600.5);
  target.name = "1";
  target.sequence = sequence;
  target.charge = 2;
  target.proteinAC = "P1";
  target.prevAA = "R";
  target.lastAA = "EF";
  target.motifs = {{site, "NXT"}};
  return target;
}

}  // namespace

TEST(Decoy, ReversedPeptideWithItsSequonForwardAgain) {
  auto builder = fixtures::MakeBuilder();
  CSpectrum decoy = Target("AAJGTK", 3);
  decoy.modifications = {{3, "Deamidated[N]"}};  // travels with the J through the exchange
  builder->MakeDecoy(decoy);
  EXPECT_EQ(decoy.name, "Decoy_1");
  EXPECT_EQ(decoy.proteinAC, "Decoy_P1");
  EXPECT_EQ(decoy.prevAA, "FE");
  EXPECT_EQ(decoy.lastAA, "R");
  EXPECT_EQ(decoy.sequence, "KJGTAA");
  EXPECT_EQ(decoy.motifs, (std::vector<CGlycoSite>{{2, "NXT"}}));
  EXPECT_EQ(decoy.modifications, (std::vector<CModification>{{2, "Deamidated[N]"}}));
  EXPECT_DOUBLE_EQ(decoy.precursorMass, 600.5);
  EXPECT_EQ(decoy.charge, 2u);

  // Oxidised M at 2 of 8 residues goes to 7; the N-terminus (0) to L + 1.
  CSpectrum mods = Target("AMGJGTAK", 4);
  mods.proteinAC.clear();
  mods.modifications = {{0, "Nterm"}, {2, "Oxidation[M]"}, {4, "Deamidated[N]"}};
  builder->MakeDecoy(mods);
  EXPECT_EQ(mods.proteinAC, "Decoy_");
  EXPECT_EQ(mods.sequence, "KAJGTGMA");
  EXPECT_EQ(mods.modifications, (std::vector<CModification>{
                                    {3, "Deamidated[N]"}, {7, "Oxidation[M]"}, {9, "Nterm"}}));
  EXPECT_EQ(mods.motifs[0].position, 3);

  // A sequon reaching past the C-terminus has its acceptor in prevAA: no exchange.
  CSpectrum edge = Target("AAAJ", 4);
  edge.lastAA = "GT";
  builder->MakeDecoy(edge);
  EXPECT_EQ(edge.sequence, "JAAA");
  EXPECT_EQ(edge.prevAA, "TG");
  EXPECT_EQ(edge.motifs[0].position, 1);
}

TEST(Decoy, PeaksMoveToTheDecoyFragmentsWithTheirSatellites) {
  auto builder = fixtures::MakeBuilder();
  const double p = fixtures::kProton;
  const double h2o = fixtures::kH2O;
  const double b2 = 2 * Mass('A') + p;
  const double y1 = Mass('K') + h2o + p;
  CSpectrum decoy = Target("AAJGTK", 3,
                           {Peak(1.5, 0.1), Peak(b2, 1.0, kPeakB, 2, 1), Peak(b2 + 1.0, 0.2),
                            Peak(b2 + 2.3, 0.2), Peak(y1, 1.0, kPeakY, 1, 1),
                            Peak(y1 + 1.0, 0.3), Peak(y1 + 2.1, 0.3),
                            Peak(160.0, 0.5, kPeakYCore, 0, 1), Peak(161.0, 0.4),
                            Peak(170.0, 0.4, 7, 0, 0)});
  builder->MakeDecoy(decoy);  // KJGTAA
  std::vector<double> mz;
  for (const CPeak& peak : decoy.peaks) mz.push_back(peak.mz);
  EXPECT_TRUE(std::is_sorted(mz.begin(), mz.end()));
  const double decoyB2 = Mass('K') + Mass('J') + p;
  const double decoyY1 = Mass('A') + h2o + p;
  // Below 2.2 before any ion it stays; the satellites 1 and 2.1 Th above an ion
  // move with it, one 2.3 Th above stays; so do the Y ion, a peak far above the
  // last ion and an unknown type.
  const std::vector<double> expected = {1.5,      decoyY1,  decoyY1 + 1.0, decoyY1 + 2.1,
                                        b2 + 2.3, 160.0, 161.0, 170.0, decoyB2, decoyB2 + 1.0};
  ASSERT_EQ(mz.size(), expected.size());
  for (std::size_t i = 0; i < mz.size(); ++i) EXPECT_NEAR(mz[i], expected[i], 1e-9) << i;
  EXPECT_EQ(decoy.peaks[8].type, kPeakB);
  EXPECT_EQ(decoy.peaks[8].position, 2u);
}
