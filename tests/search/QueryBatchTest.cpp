#include <gtest/gtest.h>

#include <cmath>

#include "SearchTestUtil.h"
#include "search/QueryBatch.h"

using namespace searchtest;

namespace {
CQueryBatch MakeBatch() {
  CQueryBatch batch;
  batch.Init(CParam::GetInstance().search);
  return batch;
}
}  // namespace

TEST(QueryBatch, AcceptsOnlyAStrongGlycopeptideMarker) {
  SetTolerances(0.02, 0);
  CQueryBatch batch = MakeBatch();
  // Exactly 30 % of the base peak is rejected, slightly more accepted.
  EXPECT_FALSE(batch.IsGlycoSpectrum(Spectrum(1000, 2, {Peak(138.055, 30), Peak(500, 100)})));
  EXPECT_TRUE(batch.IsGlycoSpectrum(Spectrum(1000, 2, {Peak(138.055, 30.001), Peak(500, 100)})));
  // The marker may be the base peak itself.
  EXPECT_TRUE(batch.IsGlycoSpectrum(Spectrum(1000, 2, {Peak(138.054953, 5)})));
  // Out of tolerance, or no peaks at all.
  EXPECT_FALSE(batch.IsGlycoSpectrum(Spectrum(1000, 2, {Peak(138.08, 100)})));
  EXPECT_FALSE(batch.IsGlycoSpectrum(Spectrum(1000, 2)));
  // ppm tolerance is taken at the peak's m/z: 20 ppm of 138 is 0.00276.
  SetTolerances(20, 1);
  EXPECT_TRUE(batch.IsGlycoSpectrum(Spectrum(1000, 2, {Peak(138.0572, 5)})));
  EXPECT_FALSE(batch.IsGlycoSpectrum(Spectrum(1000, 2, {Peak(138.0580, 5)})));
}

TEST(QueryBatch, HighResolutionLimits) {
  EXPECT_TRUE(CQueryBatch::IsHighResolution(20, 1));
  EXPECT_TRUE(CQueryBatch::IsHighResolution(25, 1));
  EXPECT_FALSE(CQueryBatch::IsHighResolution(30, 1));
  EXPECT_TRUE(CQueryBatch::IsHighResolution(0.025, 0));
  EXPECT_FALSE(CQueryBatch::IsHighResolution(0.05, 0));
}

TEST(QueryBatch, PrepareCountsTopPeaksAndNormalises) {
  SetTolerances(0.05, 0);
  CQueryBatch batch = MakeBatch();
  // 20 equal peaks, two in each of ten bins: 12 top peaks.
  CSpectrum equal;
  for (int i = 0; i < 20; ++i) equal.peaks.push_back(Peak(1000 + 50 * i, 7));
  batch.PrepareSpectrum(equal, false);
  EXPECT_EQ(equal.peaks.size(), 20u);
  EXPECT_EQ(equal.topPeakCount, 12u);
  double sum = 0;
  for (const CPeak& p : equal.peaks) sum += p.intensity * p.intensity;
  EXPECT_NEAR(sum, 1.0, 1e-12);

  // The threshold is 5 % of the strongest scaled peak, and a peak exactly at it counts.
  CSpectrum ratio = Spectrum(1000, 2, {Peak(1000, 100), Peak(1100, 5), Peak(1200, 4.99), Peak(1300, 50)});
  batch.PrepareSpectrum(ratio, false);
  EXPECT_EQ(ratio.topPeakCount, 3u);
  ASSERT_EQ(ratio.peaks.size(), 4u);
  EXPECT_EQ(ratio.peaks[0].mz, 1000);  // descending intensity
  EXPECT_EQ(ratio.peaks[1].mz, 1300);
  // Square roots of the scaled intensities, then unit length.
  const double norm = std::sqrt(1.0 + 0.5 + 0.05 + 0.0499);
  EXPECT_NEAR(ratio.peaks[0].intensity, 1.0 / norm, 1e-12);
  EXPECT_NEAR(ratio.peaks[1].intensity, std::sqrt(0.5) / norm, 1e-12);

  // A query of diagnostic ions only ends without peaks and with no top peak.
  CSpectrum oxonium = Spectrum(1000, 2, {Peak(138.055, 10), Peak(204.087, 5), Peak(366.14, 3)});
  batch.PrepareSpectrum(oxonium, true);
  EXPECT_TRUE(oxonium.peaks.empty());
  EXPECT_EQ(oxonium.topPeakCount, 0u);
  EXPECT_EQ(oxonium.diagnosticPeaks.size(), 3u);

  // A single peak: counted, intensity 1.
  CSpectrum one = Spectrum(1000, 2, {Peak(700, 3)});
  batch.PrepareSpectrum(one, false);
  EXPECT_EQ(one.topPeakCount, 1u);
  EXPECT_DOUBLE_EQ(one.peaks[0].intensity, 1.0);
}

TEST(QueryBatch, PrepareCollapsesOnlyAtHighResolution) {
  CQueryBatch batch = MakeBatch();
  SetTolerances(20, 1);
  batch.spectra = {Spectrum(1000, 2, {Peak(500, 1), Peak(500.5, 2)})};
  batch.Prepare();
  EXPECT_EQ(batch.spectra[0].peaks.size(), 1u);
  SetTolerances(30, 1);
  batch.spectra = {Spectrum(1000, 2, {Peak(500, 1), Peak(500.5, 2)})};
  batch.Prepare();
  EXPECT_EQ(batch.spectra[0].peaks.size(), 2u);
}

TEST(QueryBatch, DamagedPeaksAreDroppedNotPropagated) {
  SetTolerances(0.05, 0);
  CQueryBatch batch = MakeBatch();
  CSpectrum bad = Spectrum(1000, 2, {Peak(NAN, 5), Peak(600, INFINITY), Peak(700, -3), Peak(800, 2)});
  batch.PrepareSpectrum(bad, false);
  ASSERT_EQ(bad.peaks.size(), 1u);
  EXPECT_EQ(bad.peaks[0].mz, 800);
  CSpectrum zeros = Spectrum(1000, 2, {Peak(600, 0), Peak(800, 0)});
  batch.PrepareSpectrum(zeros, false);
  for (const CPeak& p : zeros.peaks) EXPECT_EQ(p.intensity, 0.0);
}
