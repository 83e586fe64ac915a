#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "SearchTestUtil.h"

using namespace searchtest;
using Mz = std::vector<double>;

TEST(TrimMzRange, KeepsEndsDropsOutsideButNeverTheFirstPeak) {
  CSpectrum s = Spectrum(1000, 2, {Peak(2500.0, 1), Peak(10, 1), Peak(2500.0001, 1), Peak(0, 1)});
  s.TrimMzRange(0.0, 2500.0);
  EXPECT_EQ(Mzs(s), (Mz{0, 10, 2500.0}));

  CSpectrum lone = Spectrum(1000, 2, {Peak(3000, 1)});
  lone.TrimMzRange(0.0, 2500.0);
  EXPECT_EQ(Mzs(lone), (Mz{3000}));

  CSpectrum low = Spectrum(1000, 2, {Peak(50, 1), Peak(99.99, 1), Peak(100, 1)});
  low.TrimMzRange(100.0, 2500.0);
  EXPECT_EQ(Mzs(low), (Mz{100}));

  CSpectrum empty;
  empty.TrimMzRange(0, 2500);
  EXPECT_TRUE(empty.peaks.empty());
}

TEST(CollapsePeakClusters, ApexBelow400FirstAbove) {
  // Rising intensities half a unit apart: above 400 the first survives...
  CSpectrum high = Spectrum(0, 2, {Peak(401, 1), Peak(401.5, 2), Peak(402, 3)});
  high.CollapsePeakClusters();
  ASSERT_EQ(Mzs(high), (Mz{401}));
  // ...at or below 400 the most intense (the anchor stays at the first peak).
  CSpectrum low = Spectrum(0, 2, {Peak(400, 1), Peak(400.5, 2), Peak(401, 3)});
  low.CollapsePeakClusters();
  ASSERT_EQ(Mzs(low), (Mz{401}));
  EXPECT_EQ(low.peaks[0].intensity, 3);

  // 1.1 above the anchor starts a new cluster, even though 1.0 after the last peak.
  CSpectrum gap = Spectrum(0, 2, {Peak(300, 5), Peak(300.6, 1), Peak(301.1, 1)});
  gap.CollapsePeakClusters();
  EXPECT_EQ(Mzs(gap), (Mz{300, 301.1}));

  // Below m/z 100 every peak starts its own cluster.
  CSpectrum small = Spectrum(0, 2, {Peak(50, 1), Peak(50.2, 2), Peak(99.9, 1)});
  small.CollapsePeakClusters();
  EXPECT_EQ(Mzs(small), (Mz{50, 50.2, 99.9}));

  // Stored order, no sort: a lower m/z after a higher one is under the width.
  CSpectrum unsorted = Spectrum(0, 2, {Peak(500, 1), Peak(450, 9)});
  unsorted.CollapsePeakClusters();
  EXPECT_EQ(Mzs(unsorted), (Mz{500}));
}

TEST(KeepTopPeaksPerBin, TenStrongestPerBinAnnotatedStay) {
  CSpectrum s;
  for (int i = 0; i < 15; ++i) s.peaks.push_back(Peak(100 + i * 6, i + 1));
  s.KeepTopPeaksPerBin(10, 100);
  ASSERT_EQ(s.peaks.size(), 10u);
  EXPECT_EQ(s.peaks.front().mz, 130);  // the five weakest (100..124) are gone
  EXPECT_TRUE(std::is_sorted(s.peaks.begin(), s.peaks.end(), ByMz));

  CSpectrum edge = Spectrum(0, 2, {Peak(99.9, 1), Peak(100.0, 2)});
  edge.KeepTopPeaksPerBin(1, 100);
  EXPECT_EQ(Mzs(edge), (Mz{99.9, 100.0}));

  CSpectrum annotated = Spectrum(0, 2, {Peak(150, 3), Peak(160, 2, kPeakB, 2, 1), Peak(170, 1)});
  annotated.KeepTopPeaksPerBin(1, 100);
  EXPECT_EQ(Mzs(annotated), (Mz{150, 160}));

  // Beyond the table (m/z 6000 and up) peaks share one extra bin of the same limit.
  CSpectrum far;
  for (int i = 0; i < 12; ++i) far.peaks.push_back(Peak(6000 + i * 500, i + 1));
  far.KeepTopPeaksPerBin(10, 100);
  EXPECT_EQ(far.peaks.size(), 10u);
  EXPECT_EQ(far.peaks.front().mz, 7000);

  // A narrow width: 857 bins of 7; the partial last bin joins the extra one.
  CSpectrum narrow = Spectrum(0, 2, {Peak(7, 1), Peak(13, 2), Peak(14, 3), Peak(5999, 4),
                                     Peak(6000, 5)});
  narrow.KeepTopPeaksPerBin(1, 7);
  EXPECT_EQ(Mzs(narrow), (Mz{13, 14, 6000}));
}

TEST(ExtractDiagnosticPeaks, MovesOxoniumIonsAndSetsSialicFlags) {
  SetTolerances(0.01, 0);
  CSpectrum s = Spectrum(2000, 2, {Peak(500, 10), Peak(138.055, 100), Peak(274.0921, 4),
                                   Peak(204.0866, 50), Peak(109.028405 + 0.01, 7)});
  s.ExtractDiagnosticPeaks();
  // The upper end of each window is open.
  EXPECT_EQ(Mzs(s), (Mz{109.028405 + 0.01, 500}));
  ASSERT_EQ(s.diagnosticPeaks.size(), 3u);
  EXPECT_EQ(s.diagnosticPeaks[0].mz, 138.055);  // list order of the masses
  EXPECT_FALSE(s.hasNeuAc);                     // 4 % of the strongest diagnostic peak
  EXPECT_FALSE(s.hasNeuGc);

  CSpectrum acid = Spectrum(2000, 2, {Peak(138.055, 100), Peak(274.0921, 6), Peak(290.087, 5)});
  acid.ExtractDiagnosticPeaks();
  EXPECT_TRUE(acid.hasNeuAc);
  EXPECT_FALSE(acid.hasNeuGc);  // exactly 5 % is not more than 5 %
}

TEST(FindShiftedPeak, ShiftedBeatsDirectAndRespectsFragmentCharge) {
  CSpectrum lib = Spectrum(1000, 2, {Peak(300, 0.1, kPeakY, 2, 1), Peak(500, 0.9, kPeakY, 4, 1),
                                     Peak(500.005, 0.9, kPeakY, 5, 1)});
  lib.ResetPeakUsed();
  // Query peak at 500, shift 200: two y ions match directly, the weak one at 300
  // after the shift (z = 1); the shifted one wins.
  EXPECT_EQ(lib.FindShiftedPeak(500, 0.01, 2, 200), 0);
  EXPECT_EQ(lib.peakUsed, (std::vector<uint32_t>{2, 0, 0}));
  // The direct peaks stay free for the next query peaks, the first of two equal ones first.
  EXPECT_EQ(lib.FindShiftedPeak(500, 0.01, 2, 200), 1);
  EXPECT_EQ(lib.FindShiftedPeak(500, 0.01, 2, 200), 2);
  EXPECT_EQ(lib.peakUsed, (std::vector<uint32_t>{2, 1, 1}));
  EXPECT_EQ(lib.FindShiftedPeak(500, 0.01, 2, 200), -1);

  // A charge-2 b ion matches shifted only with z = 2, even inside a z = 1 range.
  CSpectrum two = Spectrum(1000, 2, {Peak(400, 0.2, kPeakB, 3, 2)});
  two.ResetPeakUsed();
  EXPECT_EQ(two.FindShiftedPeak(600, 0.01, 1, 400), -1);
  EXPECT_EQ(two.FindShiftedPeak(800, 0.01, 4, 400), -1);
  EXPECT_EQ(two.FindShiftedPeak(600, 0.01, 2, 400), 0);
  EXPECT_EQ(two.peakUsed[0], 2u);

  // Among shifted matches the most intense wins over all charges.
  CSpectrum both = Spectrum(1000, 2, {Peak(300, 0.1, kPeakY, 2, 1), Peak(400, 0.3, kPeakB, 3, 2)});
  both.ResetPeakUsed();
  EXPECT_EQ(both.FindShiftedPeak(500, 0.01, 2, 200), 1);

  // Y ions never match shifted; the upper end of a range is open.
  CSpectrum other = Spectrum(1000, 2, {Peak(300, 1, kPeakYCore, 1, 1),
                                       Peak(300.0 + 0.01, 1, kPeakY, 1, 1)});
  other.ResetPeakUsed();
  EXPECT_EQ(other.FindShiftedPeak(500, 0.01, 1, 200), -1);
  EXPECT_EQ(other.FindShiftedPeak(300, 0.01, 1, 200), 0);  // directly, any type
}

TEST(PeakIonName, LetterPositionCharges) {
  EXPECT_EQ(Peak(1, 1, kPeakB, 3, 1).GetIonName(), "b3+");
  EXPECT_EQ(Peak(1, 1, kPeakY, 11, 2).GetIonName(), "y11++");
  EXPECT_EQ(Peak(1, 1, kPeakYCore, 2, 1).GetIonName(), "Y2+");
  EXPECT_EQ(Peak(1, 1, kPeakOther, 0, 0).GetIonName(), "o0");
  EXPECT_EQ(Peak(1, 1, kPeakUnannotated, 7, 1).GetIonName(), "u7+");
  EXPECT_EQ(Peak(1, 1, 9, 7, 1).GetIonName(), "7+");
}

// The bisections must find exactly the peaks that a plain scan of every peak finds.
TEST(FindShiftedPeak, AgreesWithAScanOfEveryPeak) {
  auto reference = [](CSpectrum& s, double mz, double tol, uint32_t highest, double shift) {
    int found = -1;
    uint32_t state = 0;
    for (std::size_t i = 0; i < s.peaks.size(); ++i) {
      const CPeak& p = s.peaks[i];
      if (p.mz >= mz - tol && p.mz < mz + tol && s.peakUsed[i] == 0 &&
          (found < 0 || p.intensity > s.peaks[found].intensity)) {
        found = static_cast<int>(i);
        state = 1;
      }
    }
    double best = -1.0;
    for (uint32_t z = 1; z <= highest; ++z) {
      const double c = mz - shift / z;
      for (std::size_t i = 0; i < s.peaks.size(); ++i) {
        const CPeak& p = s.peaks[i];
        if (p.mz >= c - tol && p.mz < c + tol && p.charge == z && p.type <= 1 &&
            s.peakUsed[i] == 0 && p.intensity > best) {
          best = p.intensity;
          found = static_cast<int>(i);
          state = 2;
        }
      }
    }
    if (found >= 0) s.peakUsed[found] = state;
    return found;
  };
  std::mt19937 rng(7);
  std::uniform_real_distribution<double> mz(100, 1000), unit(0, 1);
  for (int round = 0; round < 200; ++round) {
    CSpectrum s;
    const int n = static_cast<int>(rng() % 40);
    for (int i = 0; i < n; ++i)
      s.peaks.push_back(Peak(std::round(mz(rng) * 10) / 10, std::round(unit(rng) * 4),
                             static_cast<int32_t>(rng() % 5), 1, 1 + rng() % 3));
    std::sort(s.peaks.begin(), s.peaks.end(), ByMz);
    CSpectrum copy = s;
    s.ResetPeakUsed();
    copy.ResetPeakUsed();
    for (int q = 0; q < 30; ++q) {
      const double at = std::round(mz(rng) * 10) / 10, shift = std::round(unit(rng) * 3000) / 10;
      const uint32_t highest = 1 + rng() % 4;
      ASSERT_EQ(s.FindShiftedPeak(at, 0.5, highest, shift), reference(copy, at, 0.5, highest, shift));
      ASSERT_EQ(s.peakUsed, copy.peakUsed);
    }
  }
}
