// Annotation with theoretical ions, site marks, removal of the marking
// modification, and the Y ions.
#include <gtest/gtest.h>

#include <algorithm>

#include "construction/ConstructionFixtures.h"

using fixtures::Mass;
using fixtures::Peak;
using fixtures::Spectrum;

TEST(Annotation, TheoreticalIonsChargesAndMass) {
  auto builder = fixtures::MakeBuilder(0.2);
  for (auto [charge, zmax] : {std::pair{1u, 1u}, {2u, 1u}, {3u, 2u}, {4u, 3u}, {5u, 4u}, {7u, 4u}})
    EXPECT_EQ(MaxFragmentCharge(charge), zmax) << charge;

  CSpectrum s;
  s.sequence = "AJGK";
  s.charge = 3;
  s.modifications = {{2, "Deamidated[N]"}};
  s.precursorMass = 123.0;  // the measured mass gives way to the theoretical one
  builder->AnnotateSpectrum(s);
  const double residues = Mass('A') + Mass('J') + Mass('G') + Mass('K');
  EXPECT_NEAR(s.precursorMass, residues + fixtures::kDeamidated + fixtures::kH2O + fixtures::kProton,
              1e-9);
  // b1..b3 and y1..y3 at charges 1 and 2, each at theta with count 0.
  ASSERT_EQ(s.peaks.size(), 12u);
  EXPECT_NEAR(s.peaks[1].mz, Mass('A') + fixtures::kProton, 1e-9);  // b1+, behind b1++
  EXPECT_EQ(s.peaks[1].type, kPeakB);
  EXPECT_EQ(s.peaks[1].position, 1u);
  EXPECT_EQ(std::count_if(s.peaks.begin(), s.peaks.end(), [](auto& p) { return p.charge == 2; }), 6);
  for (const CPeak& p : s.peaks) EXPECT_TRUE(p.intensity == 0.2 && p.count == 0);

  // Per residue the y ion comes before the b ion and wins a peak both reach.
  builder->calculator.massTable.SetEntry(0, "A", Mass('K') + fixtures::kH2O + 0.1);
  CSpectrum race = Spectrum({Peak(Mass('K') + fixtures::kH2O + fixtures::kProton + 0.05, 1.0)});
  race.sequence = "AK";
  race.charge = 2;
  builder->AnnotateSpectrum(race);
  fixtures::ExpectPeaks(race, &CPeak::type, {kPeakY, kPeakB});
  fixtures::ExpectPeaks(race, &CPeak::intensity, {1.0, 0.2});

  // One residue: no ions; measured peaks stay unannotated at (1 - theta) x relative.
  CSpectrum one = Spectrum({Peak(150.0, 4.0), Peak(250.0, 1.0)});
  one.sequence = "K";
  one.charge = 1;
  builder->AnnotateSpectrum(one);
  ASSERT_EQ(one.peaks.size(), 2u);
  EXPECT_NEAR(one.peaks[1].intensity, 0.2, 1e-12);

  // No ion above 2500 is made, and measured peaks above it are trimmed.
  builder->calculator.massTable.SetEntry(0, "W", 1000.0);
  CSpectrum heavy = Spectrum({Peak(3000.0, 1.0), Peak(1500.0, 1.0)});
  heavy.sequence = "WWWW";
  heavy.charge = 2;
  builder->AnnotateSpectrum(heavy);
  EXPECT_EQ(heavy.peaks.size(), 5u);  // b1, b2, y1, y2 and the peak at 1500
}

TEST(Annotation, GlycoSiteMarks) {
  struct Case { const char* sequence; const char* lastAA; int32_t position; bool mark; };
  const Case cases[] = {
      {"AAJGTK", "", 3, true}, {"AANGTK", "", 3, false}, {"AAJPTK", "", 3, false},
      {"AAJGAK", "", 3, false}, {"AAJGTK", "", 0, false}, {"AAJGTK", "", 7, false},
      // Last but one: the acceptor is the first residue behind the peptide.
      {"AAJK", "SX", 3, true}, {"AAJP", "SX", 3, false}, {"AAJK", "", 3, false},
      // Last: the two residues behind the peptide.
      {"AAJ", "GT", 3, true}, {"AAJ", "PT", 3, false}, {"AAJ", "G", 3, false}};
  for (const Case& c : cases)
    EXPECT_EQ(IsGlycoSiteMark(c.sequence, c.lastAA, c.position, "ST"), c.mark) << c.sequence;
  // The letters come from the configured motifs by default.
  CParam::GetInstance().construction.N_glycan_motifs = {2};  // NXC
  EXPECT_FALSE(IsGlycoSiteMark("AAJGTK", "", 3));
  EXPECT_TRUE(IsGlycoSiteMark("AAJGCK", "", 3));
  CParam::GetInstance().construction.N_glycan_motifs = {0, 1};
}

TEST(Annotation, RemoveModificationShiftsTheFragmentsThatHoldTheSite) {
  auto builder = fixtures::MakeBuilder();
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
  // y8 and b3 hold residue 3, y7 and b2 don't; doubly charged by half; Y ions always.
  fixtures::ExpectPeaks(s, &CPeak::mz, {1000.0 - mark, 900.0, 300.0 - mark, 200.0,
                                        600.0 - mark / 2, 700.0 - mark / 2, 400.0, 500.0});
  EXPECT_EQ(s.modifications, (std::vector<CModification>{{1, "Other"}}));
  // A name without a mass shifts nothing.
  builder->RemoveModification(s, 0);
  EXPECT_TRUE(s.modifications.empty());
  EXPECT_NEAR(s.peaks[0].mz, 1000.0 - mark, 1e-12);
}

TEST(Annotation, YIonsPerChargeWithTheirLosses) {
  CSpectrum s;
  s.precursorMass = 1500.0;
  s.charge = 2;
  AddYIons(s, {0, 1}, 0.3);  // 2 charges x 2 ions x 3 peaks: mass, water and ammonia losses
  const double y0 = 1500.0, y1 = 1500.0 + 203.0794, w = 18.01057, n = 17.02656, h = 1.00728;
  fixtures::ExpectPeaks(s, &CPeak::mz, {y0, y0 - w, y0 - n, y1, y1 - w, y1 - n, (y0 + h) / 2,
                                        (y0 + h - w) / 2, (y0 + h - n) / 2, (y1 + h) / 2,
                                        (y1 + h - w) / 2, (y1 + h - n) / 2});
  fixtures::ExpectPeaks(s, &CPeak::position, {0, 0, 0, 1, 1, 1, 0, 0, 0, 1, 1, 1});
  fixtures::ExpectPeaks(s, &CPeak::charge, {1, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 2});
  for (const CPeak& p : s.peaks) EXPECT_TRUE(p.type == kPeakYCore && p.count == 1 && p.intensity == 0.3);

  for (auto [charge, peaks] : {std::pair{1u, 3u}, {3u, 6u}, {7u, 18u}}) {
    CSpectrum t;
    t.precursorMass = 5000.0;  // above 2500 they stay
    t.charge = charge;
    AddYIons(t, {1}, 1.0);
    EXPECT_EQ(t.peaks.size(), peaks) << charge;
  }
  // From the configured settings.
  CParam::GetInstance().construction.added_Y_ions = {5};
  CParam::GetInstance().construction.Y_ion_relative_intensity = 0.7;
  CSpectrum c;
  c.precursorMass = 1000.0;
  c.charge = 1;
  AddYIons(c);
  fixtures::ExpectPeaks(c, &CPeak::mz, {1892.3172, 1892.3172 - w, 1892.3172 - n});
  fixtures::ExpectPeaks(c, &CPeak::intensity, {0.7, 0.7, 0.7});
}
