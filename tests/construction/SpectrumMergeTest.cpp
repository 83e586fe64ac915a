#include <gtest/gtest.h>

#include <cmath>

#include "construction/ConstructionFixtures.h"

using fixtures::Peak;
using fixtures::Spectrum;

namespace {

void PrepareForMerge(CSpectrum& consensus) {
  consensus.SortPeaksByMz();
  consensus.BuildMzIndex();
}

}  // namespace

TEST(SpectrumMerge, NormalizeToBasePeakScalesAndLeavesAllZeroSpectraAlone) {
  CSpectrum s = Spectrum({Peak(100, 2.0), Peak(200, 8.0), Peak(300, 4.0)});
  s.NormalizeToBasePeak();
  EXPECT_DOUBLE_EQ(s.peaks[0].intensity, 0.25);
  EXPECT_DOUBLE_EQ(s.peaks[1].intensity, 1.0);
  EXPECT_DOUBLE_EQ(s.peaks[2].intensity, 0.5);

  CSpectrum zero = Spectrum({Peak(100, 0.0), Peak(200, 0.0)});
  zero.NormalizeToBasePeak();
  EXPECT_EQ(zero.peaks[0].intensity, 0.0);
  EXPECT_EQ(zero.peaks[1].intensity, 0.0);

  CSpectrum empty;
  empty.NormalizeToBasePeak();
  EXPECT_TRUE(empty.peaks.empty());
}

TEST(SpectrumMerge, CountWeightedMeansOfMzIntensityAndPrecursor) {
  fixtures::SetLibrarySettings(0.5);
  CSpectrum a = Spectrum({Peak(100.0, 1.0)}, 1000.0);
  const CSpectrum b = Spectrum({Peak(100.3, 0.5)}, 1003.0);
  const CSpectrum c = Spectrum({Peak(100.6, 0.3)}, 1006.0);

  PrepareForMerge(a);
  a.MergeSpectrum(b);
  ASSERT_EQ(a.peaks.size(), 1u);
  EXPECT_NEAR(a.peaks[0].intensity, 0.75, 1e-12);
  EXPECT_NEAR(a.peaks[0].mz, 100.15, 1e-9);
  EXPECT_EQ(a.peaks[0].count, 2u);
  EXPECT_EQ(a.frequency, 2u);
  EXPECT_NEAR(a.precursorMass, 1001.5, 1e-9);

  // The third spectrum weighs one third, in m/z as in intensity.
  PrepareForMerge(a);
  a.MergeSpectrum(c);
  ASSERT_EQ(a.peaks.size(), 1u);
  EXPECT_NEAR(a.peaks[0].intensity, 0.6, 1e-12);
  EXPECT_NEAR(a.peaks[0].mz, 100.3, 1e-9);
  EXPECT_EQ(a.peaks[0].count, 3u);
  EXPECT_EQ(a.frequency, 3u);
  EXPECT_NEAR(a.precursorMass, 1003.0, 1e-9);
}

TEST(SpectrumMerge, EachConsensusPeakTakesOnePeakAndUnmatchedPeaksAreAppended) {
  fixtures::SetLibrarySettings(0.5);
  // The more intense of two candidates takes the new peak, the other stays.
  CSpectrum a = Spectrum({Peak(50.0, 1.0), Peak(50.4, 0.5)});
  PrepareForMerge(a);
  a.MergeSpectrum(Spectrum({Peak(50.2, 0.2), Peak(80.0, 0.7)}));
  ASSERT_EQ(a.peaks.size(), 3u);
  EXPECT_NEAR(a.peaks[0].mz, 50.1, 1e-9);
  EXPECT_NEAR(a.peaks[0].intensity, 0.6, 1e-12);
  EXPECT_EQ(a.peaks[0].count, 2u);
  EXPECT_DOUBLE_EQ(a.peaks[1].mz, 50.4);
  EXPECT_DOUBLE_EQ(a.peaks[1].intensity, 0.5);
  EXPECT_EQ(a.peaks[1].count, 1u);
  EXPECT_DOUBLE_EQ(a.peaks[2].mz, 80.0);  // no partner: appended as it was
  EXPECT_EQ(a.peaks[2].count, 1u);

  // Two peaks of the merged spectrum near one consensus peak: the first takes
  // it, the second finds it used and is appended.
  CSpectrum single = Spectrum({Peak(60.0, 1.0)});
  PrepareForMerge(single);
  single.MergeSpectrum(Spectrum({Peak(60.1, 0.4), Peak(60.2, 0.9)}));
  ASSERT_EQ(single.peaks.size(), 2u);
  EXPECT_EQ(single.peaks[0].count, 2u);
  EXPECT_DOUBLE_EQ(single.peaks[1].mz, 60.2);
}

TEST(SpectrumMerge, PowerTransformRaisesEachIntensity) {
  CSpectrum s = Spectrum({Peak(100, 0.25), Peak(200, 1.0), Peak(300, 0.0)});
  s.PowerTransform(0.5);
  EXPECT_DOUBLE_EQ(s.peaks[0].intensity, 0.5);
  EXPECT_DOUBLE_EQ(s.peaks[1].intensity, 1.0);
  EXPECT_DOUBLE_EQ(s.peaks[2].intensity, 0.0);
}

namespace {

// Measured: base peak 100, two peaks of relative intensity 0.5 at 200 and 300.
// Theory: a y2 at 200.1 and a b3 at 400 that nothing measured matches.
CSpectrum BlendWithTheory(double theta) {
  fixtures::SetLibrarySettings(0.5);
  CSpectrum s = Spectrum({Peak(300.0, 2.0, kPeakUnannotated, 0, 0, 2), Peak(100.0, 4.0),
                          Peak(200.0, 2.0, kPeakUnannotated, 0, 0, 3)});
  CSpectrum t = Spectrum({Peak(200.1, 1.0, kPeakY, 2, 1, 0), Peak(400.0, 1.0, kPeakB, 3, 1, 0)});
  s.MergeTheoretical(t, theta);
  return s;
}

}  // namespace

TEST(SpectrumMerge, MergeTheoreticalBlendsMeasurementAndTheoryByTheta) {
  const CSpectrum s = BlendWithTheory(0.2);
  ASSERT_EQ(s.peaks.size(), 4u);
  EXPECT_NEAR(s.peaks[0].intensity, 0.8, 1e-12);  // base peak, unannotated
  EXPECT_EQ(s.peaks[0].type, kPeakUnannotated);
  // Matched: the ion's m/z and annotation, the measured count.
  EXPECT_DOUBLE_EQ(s.peaks[1].mz, 200.1);
  EXPECT_NEAR(s.peaks[1].intensity, 0.6, 1e-12);
  EXPECT_EQ(s.peaks[1].type, kPeakY);
  EXPECT_EQ(s.peaks[1].position, 2u);
  EXPECT_EQ(s.peaks[1].charge, 1u);
  EXPECT_EQ(s.peaks[1].count, 3u);
  EXPECT_NEAR(s.peaks[2].intensity, 0.4, 1e-12);  // unannotated at 0.5
  EXPECT_EQ(s.peaks[2].type, kPeakUnannotated);
  EXPECT_DOUBLE_EQ(s.peaks[3].mz, 400.0);  // ion without a measured peak
  EXPECT_NEAR(s.peaks[3].intensity, 0.2, 1e-12);
  EXPECT_EQ(s.peaks[3].type, kPeakB);
  EXPECT_EQ(s.peaks[3].count, 0u);
  EXPECT_TRUE(s.mzIndex.empty());

  const CSpectrum none = BlendWithTheory(0.0);
  EXPECT_NEAR(none.peaks[1].intensity, 0.5, 1e-12);
  EXPECT_EQ(none.peaks[3].intensity, 0.0);
  EXPECT_EQ(none.peaks[3].type, kPeakB);

  const CSpectrum all = BlendWithTheory(1.0);
  EXPECT_EQ(all.peaks[0].intensity, 0.0);
  EXPECT_DOUBLE_EQ(all.peaks[1].intensity, 1.0);
  EXPECT_EQ(all.peaks[2].intensity, 0.0);
  EXPECT_DOUBLE_EQ(all.peaks[3].intensity, 1.0);
}

TEST(SpectrumMerge, MergeTheoreticalUsesPpmTolerances) {
  fixtures::SetLibrarySettings(10.0, 1);  // 10 ppm: 0.01 Th at 1000
  CSpectrum s = Spectrum({Peak(1000.0, 1.0), Peak(1500.0, 1.0)});
  CSpectrum t = Spectrum({Peak(1000.008, 1.0, kPeakB, 5, 1, 0), Peak(1500.02, 1.0, kPeakY, 7, 1, 0)});
  s.MergeTheoretical(t, 0.5);
  ASSERT_EQ(s.peaks.size(), 3u);
  EXPECT_EQ(s.peaks[0].type, kPeakB);  // within 0.01
  EXPECT_EQ(s.peaks[1].type, kPeakUnannotated);  // 0.02 is beyond 0.015
  EXPECT_EQ(s.peaks[2].type, kPeakY);
  EXPECT_EQ(s.peaks[2].count, 0u);
}
