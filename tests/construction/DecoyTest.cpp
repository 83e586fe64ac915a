#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include "construction/ConstructionFixtures.h"
#include "construction/LibraryBuilder.h"

using fixtures::Peak;
using fixtures::Spectrum;

namespace {

std::unique_ptr<CLibraryBuilder> MakeBuilder() {
  fixtures::SetLibrarySettings(0.5);
  auto builder = std::make_unique<CLibraryBuilder>();
  builder->param = CParam::GetInstance().construction;
  fixtures::FillMassTable(builder->calculator.massTable);
  return builder;
}

double Mass(char residue) {
  for (const auto& [letter, mass] : fixtures::kResidues)
    if (letter[0] == residue) return mass;
  return 0.0;
}

const CPeak* FindAnnotated(const CSpectrum& s, int32_t type, uint32_t position) {
  for (const CPeak& p : s.peaks)
    if (p.type == type && p.position == position) return &p;
  return nullptr;
}

}  // namespace

TEST(Decoy, ReversedPeptideWithItsSequonForwardAgain) {
  auto builder = MakeBuilder();
  CSpectrum target;
  target.name = "1";
  target.sequence = "AAJGTK";
  target.charge = 2;
  target.frequency = 3;
  target.precursorMass = 600.5;
  target.startPosition = 17;
  target.proteinAC = "P1";
  target.prevAA = "R";
  target.lastAA = "EF";
  target.motifs = {{3, "NXT"}};
  CSpectrum decoy = target;
  builder->MakeDecoy(decoy);
  EXPECT_EQ(decoy.name, "Decoy_1");
  EXPECT_EQ(decoy.proteinAC, "Decoy_P1");
  EXPECT_EQ(decoy.prevAA, "FE");
  EXPECT_EQ(decoy.lastAA, "R");
  EXPECT_EQ(decoy.sequence, "KJGTAA");
  ASSERT_EQ(decoy.motifs.size(), 1u);
  EXPECT_EQ(decoy.motifs[0].position, 2);
  EXPECT_EQ(decoy.motifs[0].sequon, "NXT");
  EXPECT_DOUBLE_EQ(decoy.precursorMass, 600.5);
  EXPECT_EQ(decoy.charge, 2u);
  EXPECT_EQ(decoy.frequency, 3u);
  EXPECT_EQ(decoy.startPosition, 17);

  // A mark still on the J travels with it through the exchange.
  CSpectrum marked = target;
  marked.modifications = {{3, "Deamidated[N]"}};
  builder->MakeDecoy(marked);
  ASSERT_EQ(marked.modifications.size(), 1u);
  EXPECT_EQ(marked.modifications[0].position, 2);

  // Without a known protein the accession is the bare prefix.
  CSpectrum bare = target;
  bare.proteinAC.clear();
  builder->MakeDecoy(bare);
  EXPECT_EQ(bare.proteinAC, "Decoy_");
}

TEST(Decoy, ModificationsTravelWithTheirResidues) {
  auto builder = MakeBuilder();
  CSpectrum target;
  target.sequence = "AMGJGTAK";  // 8 residues, oxidised M at 2, site at 4
  target.prevAA = "R";
  target.lastAA = "EF";
  target.motifs = {{4, "NXT"}};
  target.modifications = {{0, "Nterm"}, {2, "Oxidation[M]"}, {4, "Deamidated[N]"}};
  builder->MakeDecoy(target);
  EXPECT_EQ(target.sequence, "KAJGTGMA");
  ASSERT_EQ(target.modifications.size(), 3u);
  EXPECT_EQ(target.modifications[0], (CModification{3, "Deamidated[N]"}));
  EXPECT_EQ(target.modifications[1], (CModification{7, "Oxidation[M]"}));
  EXPECT_EQ(target.modifications[2], (CModification{9, "Nterm"}));  // L + 1
  EXPECT_EQ(target.motifs[0].position, 3);

  // A sequon reaching past the C-terminus has its acceptor in prevAA: no exchange.
  CSpectrum edge;
  edge.sequence = "AAAJ";
  edge.prevAA = "R";
  edge.lastAA = "GT";
  edge.motifs = {{4, "NXT"}};
  builder->MakeDecoy(edge);
  EXPECT_EQ(edge.sequence, "JAAA");
  EXPECT_EQ(edge.prevAA, "TG");
  EXPECT_EQ(edge.motifs[0].position, 1);
}

TEST(Decoy, PeaksMoveToTheDecoyFragmentsWithTheirSatellites) {
  auto builder = MakeBuilder();
  const double p = fixtures::kProton;
  const double h2o = fixtures::kH2O;
  const double targetB2 = 2 * Mass('A') + p;
  const double targetY1 = Mass('K') + h2o + p;
  CSpectrum target = Spectrum({Peak(1.5, 0.1), Peak(targetB2, 1.0, kPeakB, 2, 1),
                               Peak(targetB2 + 1.0, 0.2), Peak(targetY1, 1.0, kPeakY, 1, 1),
                               Peak(targetY1 + 1.0, 0.3), Peak(160.0, 0.5, kPeakYCore, 0, 1),
                               Peak(161.0, 0.4), Peak(170.0, 0.4, 7, 0, 0)});
  target.sequence = "AAJGTK";
  target.charge = 2;
  target.prevAA = "R";
  target.lastAA = "EF";
  target.motifs = {{3, "NXT"}};
  builder->MakeDecoy(target);  // KJGTAA

  ASSERT_EQ(target.peaks.size(), 8u);
  const CPeak* b2 = FindAnnotated(target, kPeakB, 2);
  const CPeak* y1 = FindAnnotated(target, kPeakY, 1);
  ASSERT_TRUE(b2 && y1);
  EXPECT_NEAR(b2->mz, Mass('K') + Mass('J') + p, 1e-9);
  EXPECT_NEAR(y1->mz, Mass('A') + h2o + p, 1e-9);
  std::vector<double> mz;
  for (const CPeak& peak : target.peaks) mz.push_back(peak.mz);
  EXPECT_TRUE(std::is_sorted(mz.begin(), mz.end()));
  EXPECT_DOUBLE_EQ(mz.front(), 1.5);  // below 2.2 before any ion: stays
  auto has = [&](double value) {
    for (double m : mz)
      if (std::abs(m - value) < 1e-9) return true;
    return false;
  };
  EXPECT_TRUE(has(Mass('K') + Mass('J') + p + 1.0));  // carried with b2
  EXPECT_TRUE(has(Mass('A') + h2o + p + 1.0));        // carried with y1
  EXPECT_TRUE(has(160.0));  // Y ions stay
  EXPECT_TRUE(has(161.0));  // far above the last ion: stays
  EXPECT_TRUE(has(170.0));  // an unknown type stays and ends no walk
}
