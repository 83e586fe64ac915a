#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "spectrum/Spectrum.h"

namespace {
CPeak MakePeak(double mz, double intensity) {
  CPeak peak;
  peak.mz = mz;
  peak.intensity = intensity;
  return peak;
}
}  // namespace

TEST(PeakTest, DefaultPeakIsUnannotatedAndSeenOnce) {
  const CPeak peak;
  EXPECT_EQ(peak.mz, 0.0);
  EXPECT_EQ(peak.intensity, 0.0);
  EXPECT_EQ(peak.type, 4);
  EXPECT_EQ(peak.position, 0u);
  EXPECT_EQ(peak.charge, 0u);
  EXPECT_EQ(peak.count, 1u);
}

TEST(SpectrumLookupTest, MzIndexPointsAtFirstPeakOfEachIntegerSlot) {
  CSpectrum s;
  s.BuildMzIndex();
  EXPECT_TRUE(s.mzIndex.empty());

  s.peaks = {MakePeak(0.5, 1), MakePeak(2.1, 1), MakePeak(2.9, 1), MakePeak(5.0, 1)};
  s.BuildMzIndex();
  // trunc(5.0) + 1 slots; slot v -> first peak with trunc(mz) >= v.
  ASSERT_EQ(s.mzIndex.size(), 6u);
  EXPECT_EQ(s.mzIndex, (std::vector<int32_t>{0, 1, 1, 3, 3, 3}));

  // NaN m/z sorts last and does not widen the index.
  s.peaks.push_back(MakePeak(std::numeric_limits<double>::quiet_NaN(), 1));
  s.SortPeaksByMz();
  s.BuildMzIndex();
  EXPECT_EQ(s.mzIndex.size(), 6u);
}

TEST(SpectrumLookupTest, FindPeakTakesStrongestUnusedThenTheOtherThenNone) {
  CSpectrum s;
  s.peaks = {MakePeak(100.0, 5), MakePeak(100.3, 9), MakePeak(101.0, 50)};
  s.BuildMzIndex();
  s.ResetPeakUsed();
  EXPECT_EQ(s.peakUsed, (std::vector<uint32_t>{0, 0, 0}));
  EXPECT_EQ(s.FindPeak(100.2, 0.25), 1);
  EXPECT_EQ(s.FindPeak(100.2, 0.25), 0);
  EXPECT_EQ(s.FindPeak(100.2, 0.25), -1);
  EXPECT_EQ(s.peakUsed, (std::vector<uint32_t>{1, 1, 0}));

  // The range is closed at both ends.
  s.ResetPeakUsed();
  EXPECT_EQ(s.FindPeak(100.5, 0.5), 2);
  // Outside the index: below 0 and beyond the last slot.
  EXPECT_EQ(s.FindPeak(0.1, 0.5), -1);
  EXPECT_EQ(s.FindPeak(500.0, 0.5), -1);
  EXPECT_EQ(s.FindPeak(std::nan(""), 0.5), -1);
}

TEST(SpectrumLookupTest, FindPeakPrefersEarlierOnTiesAndIgnoresPeaksAddedAfterReset) {
  CSpectrum s;
  s.peaks = {MakePeak(200.0, 7), MakePeak(200.1, 7)};
  s.BuildMzIndex();
  s.ResetPeakUsed();
  s.peaks.push_back(MakePeak(200.05, 100));  // appended: past peakUsed
  EXPECT_EQ(s.FindPeak(200.05, 0.1), 0);
  EXPECT_EQ(s.FindPeak(200.05, 0.1), 1);
  EXPECT_EQ(s.FindPeak(200.05, 0.1), -1);
}

TEST(SpectrumLookupTest, SortsFollowThePeakOrdersAndSurviveNaN) {
  CSpectrum s;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (int i = 0; i < 100; ++i) {
    CPeak p = MakePeak((i * 37) % 100, i % 7 == 0 ? nan : (i * 13) % 50);
    p.count = static_cast<uint32_t>(i % 5);
    s.peaks.push_back(p);
  }
  s.SortPeaksByMz();
  for (std::size_t i = 1; i < s.peaks.size(); ++i) EXPECT_LE(s.peaks[i - 1].mz, s.peaks[i].mz);
  s.SortPeaksByIntensity();
  std::size_t firstNaN = s.peaks.size();
  for (std::size_t i = 0; i < s.peaks.size(); ++i) {
    if (std::isnan(s.peaks[i].intensity)) {
      firstNaN = std::min(firstNaN, i);
    } else {
      EXPECT_LT(i, firstNaN) << "a number after a NaN";
      if (i > 0) {
        EXPECT_GE(s.peaks[i - 1].intensity, s.peaks[i].intensity);
      }
    }
  }
  EXPECT_EQ(firstNaN, s.peaks.size() - 15);
  s.SortPeaksByCount();
  for (std::size_t i = 1; i < s.peaks.size(); ++i) EXPECT_GE(s.peaks[i - 1].count, s.peaks[i].count);
}
