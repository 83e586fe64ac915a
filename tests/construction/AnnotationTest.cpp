#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "construction/ConstructionFixtures.h"
#include "construction/LibraryBuilder.h"

using fixtures::Peak;
using fixtures::Spectrum;

namespace {

// A builder with the test masses, Da tolerance 0.5, NXS/NXT, the given theta.
std::unique_ptr<CLibraryBuilder> MakeBuilder(double theta = 0.2) {
  fixtures::SetLibrarySettings(0.5);
  auto builder = std::make_unique<CLibraryBuilder>();
  builder->param = CParam::GetInstance().construction;
  builder->param.theta = theta;
  fixtures::FillMassTable(builder->calculator.massTable);
  return builder;
}

int CountCharge(const CSpectrum& s, uint32_t charge) {
  int n = 0;
  for (const CPeak& p : s.peaks) n += p.charge == charge ? 1 : 0;
  return n;
}

}  // namespace

TEST(Annotation, FragmentChargeLimits) {
  EXPECT_EQ(MaxFragmentCharge(1), 1u);
  EXPECT_EQ(MaxFragmentCharge(2), 1u);
  EXPECT_EQ(MaxFragmentCharge(3), 2u);
  EXPECT_EQ(MaxFragmentCharge(4), 3u);
  EXPECT_EQ(MaxFragmentCharge(5), 4u);
  EXPECT_EQ(MaxFragmentCharge(7), 4u);
  EXPECT_EQ(MaxFragmentCharge(0), 4u);
}

TEST(Annotation, TheoreticalIonsAndTheoreticalMass) {
  auto builder = MakeBuilder(0.2);
  CSpectrum s;
  s.sequence = "AJGK";
  s.charge = 2;
  s.precursorMass = 123.0;  // the measured mass gives way to the theoretical one
  builder->AnnotateSpectrum(s);
  const double residues = 71.03711 + 114.04293 + 57.02146 + 128.09496;
  EXPECT_NEAR(s.precursorMass, residues + fixtures::kH2O + fixtures::kProton, 1e-9);
  ASSERT_EQ(s.peaks.size(), 6u);  // b1..b3 and y1..y3 at charge 1
  EXPECT_NEAR(s.peaks[0].mz, 71.03711 + fixtures::kProton, 1e-9);
  EXPECT_EQ(s.peaks[0].type, kPeakB);
  EXPECT_EQ(s.peaks[0].position, 1u);
  EXPECT_EQ(s.peaks[0].count, 0u);
  EXPECT_DOUBLE_EQ(s.peaks[0].intensity, 0.2);
  const CPeak& y1 = s.peaks[1];
  EXPECT_NEAR(y1.mz, 128.09496 + fixtures::kH2O + fixtures::kProton, 1e-9);
  EXPECT_EQ(y1.type, kPeakY);
  EXPECT_EQ(y1.position, 1u);
  EXPECT_EQ(CountCharge(s, 1), 6);

  // Charge 3: fragments at charges 1 and 2, the mark's mass included.
  CSpectrum three;
  three.sequence = "AJGK";
  three.charge = 3;
  three.modifications = {{2, "Deamidated[N]"}};
  builder->AnnotateSpectrum(three);
  EXPECT_EQ(three.peaks.size(), 12u);
  EXPECT_EQ(CountCharge(three, 2), 6);
  EXPECT_NEAR(three.precursorMass,
              residues + fixtures::kDeamidated + fixtures::kH2O + fixtures::kProton, 1e-9);

  // One residue: no fragments at all; measured peaks stay unannotated.
  CSpectrum one = Spectrum({Peak(150.0, 4.0), Peak(250.0, 1.0)});
  one.sequence = "K";
  one.charge = 1;
  builder->AnnotateSpectrum(one);
  ASSERT_EQ(one.peaks.size(), 2u);
  EXPECT_NEAR(one.peaks[0].intensity, 0.8, 1e-12);
  EXPECT_NEAR(one.peaks[1].intensity, 0.2, 1e-12);
  EXPECT_EQ(one.peaks[1].type, kPeakUnannotated);
}

TEST(Annotation, IonsAbove2500AreNotMadeAndMeasuredPeaksAreTrimmed) {
  auto builder = MakeBuilder(0.5);
  builder->calculator.massTable.SetEntry(0, "W", 1000.0);
  CSpectrum s = Spectrum({Peak(3000.0, 1.0), Peak(1500.0, 1.0)});
  s.sequence = "WWWW";
  s.charge = 2;
  builder->AnnotateSpectrum(s);
  // b1, b2, y1, y2 below 2500; the measured peak at 3000 is trimmed.
  ASSERT_EQ(s.peaks.size(), 5u);
  for (const CPeak& p : s.peaks) EXPECT_LE(p.mz, 2500.0);
}

TEST(Annotation, GlycoSiteMarks) {
  const std::string st = "ST";
  EXPECT_TRUE(IsGlycoSiteMark("AAJGTK", "", 3, st));
  EXPECT_FALSE(IsGlycoSiteMark("AANGTK", "", 3, st));  // an N is no site mark
  EXPECT_FALSE(IsGlycoSiteMark("AAJPTK", "", 3, st));  // proline in the middle
  EXPECT_FALSE(IsGlycoSiteMark("AAJGAK", "", 3, st));  // A is no acceptor
  EXPECT_FALSE(IsGlycoSiteMark("AAJGTK", "", 0, st));
  EXPECT_FALSE(IsGlycoSiteMark("AAJGTK", "", -1, st));
  EXPECT_FALSE(IsGlycoSiteMark("AAJGTK", "", 7, st));
  // Last but one residue: the acceptor is the first residue behind the peptide.
  EXPECT_TRUE(IsGlycoSiteMark("AAJK", "SX", 3, st));
  EXPECT_FALSE(IsGlycoSiteMark("AAJP", "SX", 3, st));
  EXPECT_FALSE(IsGlycoSiteMark("AAJK", "AS", 3, st));
  EXPECT_FALSE(IsGlycoSiteMark("AAJK", "", 3, st));  // unknown flank keeps the mark
  // Last residue: the two residues behind the peptide.
  EXPECT_TRUE(IsGlycoSiteMark("AAJ", "GT", 3, st));
  EXPECT_FALSE(IsGlycoSiteMark("AAJ", "PT", 3, st));
  EXPECT_FALSE(IsGlycoSiteMark("AAJ", "G", 3, st));
  EXPECT_FALSE(IsGlycoSiteMark("AAJ", "", 3, st));
  EXPECT_TRUE(IsGlycoSiteMark("J", "GS", 1, st));
  // The letters come from the configured motifs by default.
  CParam::GetInstance().construction.N_glycan_motifs = {2};  // NXC
  EXPECT_FALSE(IsGlycoSiteMark("AAJGTK", "", 3));
  EXPECT_TRUE(IsGlycoSiteMark("AAJGCK", "", 3));
  CParam::GetInstance().construction.N_glycan_motifs = {0, 1};
}

TEST(Annotation, RemoveModificationShiftsTheFragmentsThatHoldTheSite) {
  auto builder = MakeBuilder();
  const double mark = fixtures::kDeamidated;
  CSpectrum s = Spectrum({Peak(1000.0, 1, kPeakY, 8, 1), Peak(900.0, 1, kPeakY, 7, 1),
                          Peak(300.0, 1, kPeakB, 3, 1), Peak(200.0, 1, kPeakB, 2, 1),
                          Peak(600.0, 1, kPeakB, 5, 2), Peak(700.0, 1, kPeakYCore, 1, 2),
                          Peak(400.0, 1, kPeakUnannotated), Peak(500.0, 1, kPeakOther, 0, 1)},
                         1200.0);
  s.sequence = "AAJGTKAAAK";  // 10 residues, site at 3
  s.modifications = {{1, "Other"}, {3, "Deamidated[N]"}};
  builder->RemoveModification(s, 1);
  EXPECT_NEAR(s.precursorMass, 1200.0 - mark, 1e-12);
  EXPECT_NEAR(s.peaks[0].mz, 1000.0 - mark, 1e-12);  // y8 holds residue 3
  EXPECT_DOUBLE_EQ(s.peaks[1].mz, 900.0);            // y7 doesn't
  EXPECT_NEAR(s.peaks[2].mz, 300.0 - mark, 1e-12);   // b3 does
  EXPECT_DOUBLE_EQ(s.peaks[3].mz, 200.0);            // b2 doesn't
  EXPECT_NEAR(s.peaks[4].mz, 600.0 - mark / 2, 1e-12);  // doubly charged: half
  EXPECT_NEAR(s.peaks[5].mz, 700.0 - mark / 2, 1e-12);  // Y ions always
  EXPECT_DOUBLE_EQ(s.peaks[6].mz, 400.0);
  EXPECT_DOUBLE_EQ(s.peaks[7].mz, 500.0);
  ASSERT_EQ(s.modifications.size(), 1u);
  EXPECT_EQ(s.modifications[0].name, "Other");

  // A name without a mass removes the entry and shifts nothing; an index
  // past the list changes nothing.
  builder->RemoveModification(s, 0);
  EXPECT_TRUE(s.modifications.empty());
  EXPECT_NEAR(s.precursorMass, 1200.0 - mark, 1e-12);
  builder->RemoveModification(s, 5);
  EXPECT_NEAR(s.peaks[0].mz, 1000.0 - mark, 1e-12);
}

TEST(Annotation, YIonsPerChargeWithTheirLosses) {
  CSpectrum s;
  s.precursorMass = 1500.0;
  s.charge = 2;
  AddYIons(s, {0, 1}, 0.3);
  ASSERT_EQ(s.peaks.size(), 12u);
  EXPECT_NEAR(s.peaks[0].mz, 1500.0, 1e-12);
  EXPECT_NEAR(s.peaks[1].mz, 1500.0 - 18.01057, 1e-9);
  EXPECT_NEAR(s.peaks[2].mz, 1500.0 - 17.02656, 1e-9);
  EXPECT_NEAR(s.peaks[3].mz, 1500.0 + 203.0794, 1e-9);
  const CPeak& y1z2 = s.peaks[9];
  EXPECT_NEAR(y1z2.mz, (1500.0 + 203.0794 + 1.00728) / 2, 1e-9);
  EXPECT_EQ(y1z2.type, kPeakYCore);
  EXPECT_EQ(y1z2.position, 1u);
  EXPECT_EQ(y1z2.charge, 2u);
  EXPECT_EQ(y1z2.count, 1u);
  EXPECT_DOUBLE_EQ(y1z2.intensity, 0.3);
  EXPECT_NEAR(s.peaks[10].mz, (1500.0 + 203.0794 + 1.00728 - 18.01057) / 2, 1e-9);

  auto chargesFor = [](uint32_t charge) {
    CSpectrum t;
    t.precursorMass = 5000.0;  // Y ions above 2500 stay
    t.charge = charge;
    AddYIons(t, {1}, 1.0);
    uint32_t top = 0;
    for (const CPeak& p : t.peaks) top = std::max(top, p.charge);
    return std::make_pair(t.peaks.size(), top);
  };
  EXPECT_EQ(chargesFor(1), std::make_pair(std::size_t{3}, 1u));
  EXPECT_EQ(chargesFor(3), std::make_pair(std::size_t{6}, 2u));
  EXPECT_EQ(chargesFor(7), std::make_pair(std::size_t{18}, 6u));
  EXPECT_EQ(chargesFor(0).first, 0u);

  // From the configured settings.
  CParam::GetInstance().construction.added_Y_ions = {5};
  CParam::GetInstance().construction.Y_ion_relative_intensity = 0.7;
  CSpectrum c;
  c.precursorMass = 1000.0;
  c.charge = 1;
  AddYIons(c);
  ASSERT_EQ(c.peaks.size(), 3u);
  EXPECT_NEAR(c.peaks[0].mz, 1000.0 + 892.3172, 1e-9);
  EXPECT_DOUBLE_EQ(c.peaks[0].intensity, 0.7);
}
