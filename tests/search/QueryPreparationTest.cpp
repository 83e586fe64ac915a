// Query acceptance and preparation, and the peak filters it is built from.
#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

#include "SearchTestUtil.h"
#include "search/QueryBatch.h"

using namespace searchtest;
using Mz = std::vector<double>;

namespace {
CQueryBatch MakeBatch() {
  CQueryBatch batch;
  batch.Init(CParam::GetInstance().search);
  return batch;
}

// The m/z values left by one filter.
template <typename Filter>
Mz After(std::vector<CPeak> peaks, Filter filter) {
  CSpectrum s = Spectrum(1000, 2, std::move(peaks));
  filter(s);
  return Mzs(s);
}
}  // namespace

TEST(PeakFilters, TrimMzRangeAndCollapsePeakClusters) {
  auto trim = [](double low) { return [low](CSpectrum& s) { s.TrimMzRange(low, 2500); }; };
  EXPECT_EQ(After({Peak(2500.0, 1), Peak(10, 1), Peak(2500.0001, 1), Peak(0, 1)}, trim(0)),
            (Mz{0, 10, 2500.0}));
  EXPECT_EQ(After({Peak(3000, 1)}, trim(0)), (Mz{3000}));  // the first peak stays
  EXPECT_EQ(After({Peak(50, 1), Peak(99.99, 1), Peak(100, 1)}, trim(100)), (Mz{100}));
  auto collapse = [](CSpectrum& s) { s.CollapsePeakClusters(); };
  // Rising intensities half a unit apart: above 400 the first survives, at or
  // below 400 the most intense (the anchor stays at the first peak).
  EXPECT_EQ(After({Peak(401, 1), Peak(401.5, 2), Peak(402, 3)}, collapse), (Mz{401}));
  EXPECT_EQ(After({Peak(400, 1), Peak(400.5, 2), Peak(401, 3)}, collapse), (Mz{401}));
  // 1.1 above the anchor starts a new cluster, though only 0.5 after the last peak.
  EXPECT_EQ(After({Peak(300, 5), Peak(300.6, 1), Peak(301.1, 1)}, collapse), (Mz{300, 301.1}));
  // Below m/z 100 every peak starts its own cluster.
  EXPECT_EQ(After({Peak(50, 1), Peak(50.2, 2), Peak(99.9, 1)}, collapse), (Mz{50, 50.2, 99.9}));
  // Stored order, no sort: a lower m/z after a higher one is under the width.
  EXPECT_EQ(After({Peak(500, 1), Peak(450, 9)}, collapse), (Mz{500}));
}

TEST(PeakFilters, KeepTopPeaksPerBin) {
  auto keep = [](uint32_t limit, uint32_t width) {
    return [=](CSpectrum& s) { s.KeepTopPeaksPerBin(limit, width); };
  };
  std::vector<CPeak> fifteen;  // the ten strongest stay, in m/z order
  for (int i = 0; i < 15; ++i) fifteen.push_back(Peak(100 + i * 6, i + 1));
  EXPECT_EQ(After(fifteen, keep(10, 100)), (Mz{130, 136, 142, 148, 154, 160, 166, 172, 178, 184}));
  EXPECT_EQ(After({Peak(99.9, 1), Peak(100.0, 2)}, keep(1, 100)), (Mz{99.9, 100.0}));
  EXPECT_EQ(After({Peak(150, 3), Peak(160, 2, kPeakB, 2, 1), Peak(170, 1)}, keep(1, 100)),
            (Mz{150, 160}));  // annotated peaks stay beyond the limit
  // Beyond the table (m/z 6000 up, or the partial last bin of a width that
  // does not divide 6000) peaks share one extra bin of the same limit.
  EXPECT_EQ(After({Peak(7, 1), Peak(13, 2), Peak(14, 3), Peak(5999, 4), Peak(6000, 5)}, keep(1, 7)),
            (Mz{13, 14, 6000}));
}

TEST(PeakFilters, ExtractDiagnosticPeaksAndSialicFlags) {
  SetTolerances(0.01, 0);
  const double o = 109.028405;
  CSpectrum s = Spectrum(2000, 2, {Peak(500, 10), Peak(138.055, 100), Peak(o + 0.01, 7),
                                   Peak(o - 0.01, 7)});
  s.ExtractDiagnosticPeaks();
  EXPECT_EQ(Mzs(s), (Mz{o + 0.01, 500}));  // windows [o - t, o + t)
  ASSERT_EQ(s.diagnosticPeaks.size(), 2u);
  EXPECT_EQ(s.diagnosticPeaks[0].mz, o - 0.01);  // list order of the masses
  auto flags = [](std::vector<CPeak> peaks) {
    CSpectrum s = Spectrum(2000, 2, std::move(peaks));
    s.ExtractDiagnosticPeaks();
    return std::pair(s.hasNeuAc, s.hasNeuGc);
  };
  const CPeak base = Peak(138.055, 100);
  // Above 5 % of the strongest diagnostic peak; 4 % or exactly 5 % is not.
  EXPECT_EQ(flags({base, Peak(274.0921, 6), Peak(290.087, 5)}), std::pair(true, false));
  EXPECT_EQ(flags({base, Peak(274.0921, 4), Peak(290.087, 6)}), std::pair(false, true));
  // Only the first diagnostic peak near the marker is looked at.
  EXPECT_EQ(flags({base, Peak(274.085, 1), Peak(274.095, 90)}), std::pair(false, false));
}

TEST(QueryBatch, AcceptsOnlyAStrongGlycopeptideMarker) {
  SetTolerances(0.02, 0);
  CQueryBatch batch = MakeBatch();
  auto accepted = [&](std::vector<CPeak> peaks) {
    return batch.IsGlycoSpectrum(Spectrum(1000, 2, std::move(peaks)));
  };
  EXPECT_FALSE(accepted({Peak(138.055, 30), Peak(500, 100)}));  // exactly 30 % of the base
  EXPECT_TRUE(accepted({Peak(138.055, 30.001), Peak(500, 100)}));
  EXPECT_TRUE(accepted({Peak(138.054953, 5)}));  // the marker is the base peak
  EXPECT_FALSE(accepted({Peak(138.08, 100)}));
  EXPECT_FALSE(accepted({}));
  // ppm is taken at the peak's m/z: 20 ppm of 138 is 0.00276.
  SetTolerances(20, 1);
  EXPECT_TRUE(accepted({Peak(138.0572, 5)}));
  EXPECT_FALSE(accepted({Peak(138.0580, 5)}));
}

TEST(QueryBatch, PrepareCollapsesOnlyAtHighResolution) {
  EXPECT_TRUE(IsHighResolution(25, 1) && IsHighResolution(0.025, 0));
  EXPECT_FALSE(IsHighResolution(30, 1) || IsHighResolution(0.05, 0));
  CQueryBatch batch = MakeBatch();
  for (double ppm : {20.0, 30.0}) {
    SetTolerances(ppm, 1);
    batch.spectra = {Spectrum(1000, 2, {Peak(500, 1), Peak(500.5, 2)})};
    batch.Prepare();
    EXPECT_EQ(batch.spectra[0].peaks.size(), ppm == 20.0 ? 1u : 2u);
  }
}

TEST(QueryBatch, PrepareCountsTopPeaksAndNormalises) {
  SetTolerances(0.05, 0);
  CQueryBatch batch = MakeBatch();
  auto prepare = [&](std::vector<CPeak> peaks) {
    CSpectrum s = Spectrum(1000, 2, std::move(peaks));
    batch.PrepareSpectrum(s, true);
    return s;
  };
  std::vector<CPeak> equal;  // 20 equal peaks, two in each of ten bins: 12 top peaks
  for (int i = 0; i < 20; ++i) equal.push_back(Peak(1000 + 50 * i, 7));
  EXPECT_EQ(prepare(equal).topPeakCount, 12u);
  // The threshold is 5 % of the strongest scaled peak (not of its square root),
  // and a peak exactly at it counts; then square roots, unit length, descending
  // intensity.
  CSpectrum ratio = prepare({Peak(1000, 100), Peak(1100, 5), Peak(1200, 4.99), Peak(1300, 50)});
  EXPECT_EQ(ratio.topPeakCount, 3u);
  EXPECT_EQ(Mzs(ratio), (Mz{1000, 1300, 1100, 1200}));
  const double norm = std::sqrt(1.0 + 0.5 + 0.05 + 0.0499);
  EXPECT_NEAR(ratio.peaks[0].intensity, 1.0 / norm, 1e-12);
  EXPECT_NEAR(ratio.peaks[1].intensity, std::sqrt(0.5) / norm, 1e-12);
  // Diagnostic ions only: no peaks, no top peak.
  EXPECT_EQ(prepare({Peak(138.055, 10), Peak(204.087, 5)}).topPeakCount, 0u);
  // Damaged peaks (NaN, infinite, negative) are dropped; all-zero stays zero.
  CSpectrum bad = prepare({Peak(NAN, 5), Peak(600, INFINITY), Peak(700, -3), Peak(800, 2)});
  EXPECT_EQ(Mzs(bad), (Mz{800}));
  EXPECT_EQ(bad.topPeakCount, 1u);
  EXPECT_DOUBLE_EQ(bad.peaks[0].intensity, 1.0);
  for (const CPeak& p : prepare({Peak(600, 0), Peak(800, 0)}).peaks) EXPECT_EQ(p.intensity, 0.0);
}
