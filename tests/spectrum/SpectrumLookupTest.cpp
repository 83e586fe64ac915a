#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "SpectrumTestUtil.h"
#include "spectrum/Spectrum.h"

using spectest::MakePeak;

TEST(SpectrumLookupTest, MzIndexPointsAtFirstPeakOfEachIntegerSlot) {
  CSpectrum s;
  s.BuildMzIndex();
  EXPECT_TRUE(s.mzIndex.empty());
  s.peaks = {MakePeak(0.5, 1), MakePeak(2.1, 1), MakePeak(2.9, 1), MakePeak(5.0, 1)};
  s.BuildMzIndex();
  // trunc(5.0) + 1 slots; slot v -> first peak with trunc(mz) >= v.
  EXPECT_EQ(s.mzIndex, (std::vector<int32_t>{0, 1, 1, 3, 3, 3}));
  // NaN m/z sorts last and does not widen the index.
  s.peaks.push_back(MakePeak(std::numeric_limits<double>::quiet_NaN(), 1));
  s.SortPeaksByMz();
  s.BuildMzIndex();
  EXPECT_EQ(s.mzIndex.size(), 6u);
}

TEST(SpectrumLookupTest, FindPeakTakesStrongestUnusedInTheClosedRange) {
  CSpectrum s;
  s.peaks = {MakePeak(100.0, 5), MakePeak(100.3, 9), MakePeak(101.0, 50)};
  s.BuildMzIndex();
  s.ResetPeakUsed();
  EXPECT_EQ(s.FindPeak(100.2, 0.25), 1);
  EXPECT_EQ(s.FindPeak(100.2, 0.25), 0);
  EXPECT_EQ(s.FindPeak(100.2, 0.25), -1);
  EXPECT_EQ(s.peakUsed, (std::vector<uint32_t>{1, 1, 0}));
  s.ResetPeakUsed();
  EXPECT_EQ(s.FindPeak(100.5, 0.5), 2);  // both ends belong to the range
  for (double mz : {0.1, 500.0, std::nan("")}) EXPECT_EQ(s.FindPeak(mz, 0.5), -1) << mz;

  // The earlier peak wins a tie; a peak appended after the reset is invisible.
  s.peaks = {MakePeak(200.0, 7), MakePeak(200.1, 7)};
  s.BuildMzIndex();
  s.ResetPeakUsed();
  s.peaks.push_back(MakePeak(200.05, 100));
  EXPECT_EQ(s.FindPeak(200.05, 0.1), 0);
  EXPECT_EQ(s.FindPeak(200.05, 0.1), 1);
  EXPECT_EQ(s.FindPeak(200.05, 0.1), -1);
}

TEST(SpectrumLookupTest, SortsFollowThePeakOrdersAndSurviveNaN) {
  CSpectrum s;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (int i = 0; i < 100; ++i) {
    s.peaks.push_back(MakePeak((i * 37) % 100, i % 7 == 0 ? nan : (i * 13) % 50));
    s.peaks.back().count = static_cast<uint32_t>(i % 5);
  }
  s.SortPeaksByMz();
  for (std::size_t i = 1; i < s.peaks.size(); ++i) EXPECT_LE(s.peaks[i - 1].mz, s.peaks[i].mz);
  s.SortPeaksByIntensity();  // descending, the 15 NaN intensities last
  for (std::size_t i = 1; i < 85; ++i) EXPECT_GE(s.peaks[i - 1].intensity, s.peaks[i].intensity);
  for (std::size_t i = 85; i < 100; ++i) EXPECT_TRUE(std::isnan(s.peaks[i].intensity));
  s.SortPeaksByCount();
  for (std::size_t i = 1; i < s.peaks.size(); ++i)
    EXPECT_GE(s.peaks[i - 1].count, s.peaks[i].count);
}
