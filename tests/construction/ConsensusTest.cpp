// The consensus of a peptide's spectra: count-weighted merging, the peak count
// filter, and the blend with the theoretical ions.
#include <gtest/gtest.h>

#include "construction/ConstructionFixtures.h"
#include "construction/IdentifiedAnalyzer.h"

using fixtures::Peak;
using fixtures::Spectrum;
using fixtures::ExpectPeaks;

namespace {

void MergeInto(CSpectrum& consensus, const CSpectrum& other) {
  consensus.SortPeaksByMz();
  consensus.BuildMzIndex();
  consensus.MergeSpectrum(other);
}

// An analyzer whose single dataset holds the spectra put into `io`.
struct ConsensusSetup {
  CIdentifiedAnalyzer analyzer;
  fixtures::CMemorySpecIO* io = new fixtures::CMemorySpecIO;

  explicit ConsensusSetup(double tolerance = 0.5, int32_t unit = 0) {
    fixtures::SetLibrarySettings(tolerance, unit);
    analyzer.param = CParam::GetInstance().construction;
    analyzer.pool = std::make_unique<CDatasetIOPool>();
    analyzer.pool->ios.emplace_back(io);
  }
  // The consensus of the named spectra, peaks by m/z; nullptr if none was read.
  CSpectrum* Build(const std::vector<std::string>& names, int32_t dataset = 0) {
    CIdentifiedPeptide peptide;
    for (const std::string& name : names) peptide.spectra.push_back({name, dataset});
    if (!analyzer.BuildConsensus(peptide)) return nullptr;
    analyzer.spectra[0].SortPeaksByMz();
    return &analyzer.spectra[0];
  }
};

}  // namespace

TEST(Consensus, MergeSpectrumTakesCountWeightedMeans) {
  fixtures::SetLibrarySettings(0.5);
  // 1.0, 0.5, 0.3 in this order: 0.75 with count 2, then 0.6 with count 3;
  // the third weighs one third, in m/z as in intensity.
  CSpectrum a = Spectrum({Peak(100.0, 1.0)}, 1000.0);
  MergeInto(a, Spectrum({Peak(100.3, 0.5)}, 1003.0));
  ExpectPeaks(a, &CPeak::intensity, {0.75});
  EXPECT_NEAR(a.precursorMass, 1001.5, 1e-9);
  MergeInto(a, Spectrum({Peak(100.6, 0.3)}, 1006.0));
  ExpectPeaks(a, &CPeak::intensity, {0.6});
  ExpectPeaks(a, &CPeak::mz, {100.3});
  ExpectPeaks(a, &CPeak::count, {3});
  EXPECT_EQ(a.frequency, 3u);
  EXPECT_NEAR(a.precursorMass, 1003.0, 1e-9);

  // 50.0 and 50.4 against 50.2: the more intense takes it, the other stays;
  // a peak without partner is appended as it was.
  CSpectrum b = Spectrum({Peak(50.0, 1.0), Peak(50.4, 0.5)});
  MergeInto(b, Spectrum({Peak(50.2, 0.2), Peak(80.0, 0.7)}));
  ExpectPeaks(b, &CPeak::mz, {50.1, 50.4, 80.0});
  ExpectPeaks(b, &CPeak::count, {2, 1, 1});
  // A consensus peak takes at most one peak of each merged spectrum.
  CSpectrum c = Spectrum({Peak(60.0, 1.0)});
  MergeInto(c, Spectrum({Peak(60.1, 0.4), Peak(60.2, 0.9)}));
  ExpectPeaks(c, &CPeak::count, {2, 1});
}

TEST(Consensus, BuildConsensusFiltersByCountAndTakesTheSquareRoot) {
  ConsensusSetup setup;
  // The same spectrum twice merges with itself: count 2, values unchanged.
  setup.io->byName["s0"] = Spectrum({Peak(200.0, 4.0), Peak(300.0, 1.0)}, 1500.0);
  const CSpectrum* self = setup.Build({"s0", "s0"});
  ASSERT_TRUE(self);
  EXPECT_EQ(self->frequency, 2u);
  EXPECT_DOUBLE_EQ(self->precursorMass, 1500.0);
  ExpectPeaks(*self, &CPeak::intensity, {1.0, 0.5});  // sqrt of 0.25
  ExpectPeaks(*self, &CPeak::count, {2, 2});

  // Four spectra: t = trunc(4 * 0.33) = 1, so a peak must be seen twice.
  setup.io->byName["s1"] = Spectrum({Peak(200.0, 1.0), Peak(400.0, 1.0), Peak(600.0, 1.0)});
  setup.io->byName["s2"] = Spectrum({Peak(200.1, 1.0), Peak(400.1, 1.0)});
  setup.io->byName["s3"] = Spectrum({Peak(200.2, 1.0), Peak(800.0, 1.0)});
  setup.io->byName["s4"] = Spectrum({Peak(199.9, 1.0)});
  const CSpectrum* four = setup.Build({"s1", "s2", "s3", "s4"});
  ASSERT_TRUE(four);
  ExpectPeaks(*four, &CPeak::mz, {200.05, 400.05});
  ExpectPeaks(*four, &CPeak::count, {4, 2});
  // Two spectra: t = 0, a peak seen once stays.
  EXPECT_EQ(setup.Build({"s1", "s3"})->peaks.size(), 4u);

  // The first filter keeps five peaks per 50 Th.
  std::vector<CPeak> peaks;
  for (int i = 0; i < 8; ++i) peaks.push_back(Peak(200.0 + 5 * i, 1.0 + i));
  setup.io->byName["s5"] = Spectrum(peaks);
  EXPECT_EQ(setup.Build({"s5"})->peaks.size(), 5u);
  EXPECT_DOUBLE_EQ(setup.Build({"s5"})->peaks[0].mz, 215.0);

  // Nothing readable: a missing name, a dataset index outside the pool.
  EXPECT_EQ(setup.Build({"missing"}), nullptr);
  EXPECT_EQ(setup.Build({"s0"}, 1), nullptr);
  EXPECT_EQ(setup.Build({"s0"}, -1), nullptr);
  // Intensities all 0 stay finite.
  setup.io->byName["zero"] = Spectrum({Peak(200.0, 0.0), Peak(300.0, 0.0)});
  for (const CPeak& peak : setup.Build({"zero", "zero"})->peaks) EXPECT_EQ(peak.intensity, 0.0);
}

TEST(Consensus, HighResolutionIncludesTheLimit) {
  // Close peaks collapse only at high resolution: at most 0.025 Da or 25 ppm.
  struct Case { double tolerance; int32_t unit; std::size_t peaks; };
  for (auto [tolerance, unit, count] :
       {Case{0.025, 0, 1}, Case{0.0251, 0, 2}, Case{25.0, 1, 1}, Case{25.1, 1, 2}}) {
    ConsensusSetup setup(tolerance, unit);
    setup.io->byName["s"] = Spectrum({Peak(200.0, 1.0), Peak(200.5, 0.5)});
    EXPECT_EQ(setup.Build({"s"})->peaks.size(), count) << tolerance;
  }
}

TEST(Consensus, MergeTheoreticalBlendsByTheta) {
  // Measured: base peak 100, relative 0.5 at 200 (count 3) and 300.
  // Theory: y2 at 200.1 and a b3 at 400 that nothing matches.
  auto blend = [](double theta) {
    fixtures::SetLibrarySettings(0.5);
    CSpectrum s = Spectrum({Peak(300.0, 2.0), Peak(100.0, 4.0), Peak(200.0, 2.0, 4, 0, 0, 3)});
    CSpectrum t = Spectrum({Peak(200.1, 1.0, kPeakY, 2, 1, 0), Peak(400.0, 1.0, kPeakB, 3, 1, 0)});
    s.MergeTheoretical(t, theta);
    return s;
  };
  // Matched: 0.6, with the ion's m/z and annotation and the measured count;
  // unannotated 0.4; the ion without a measured peak 0.2 and count 0.
  const CSpectrum s = blend(0.2);
  ExpectPeaks(s, &CPeak::mz, {100.0, 200.1, 300.0, 400.0});
  ExpectPeaks(s, &CPeak::intensity, {0.8, 0.6, 0.4, 0.2});
  ExpectPeaks(s, &CPeak::type, {kPeakUnannotated, kPeakY, kPeakUnannotated, kPeakB});
  ExpectPeaks(s, &CPeak::position, {0, 2, 0, 3});
  ExpectPeaks(s, &CPeak::count, {1, 3, 1, 0});
  EXPECT_TRUE(s.mzIndex.empty());
  ExpectPeaks(blend(0.0), &CPeak::intensity, {1.0, 0.5, 0.5, 0.0});
  ExpectPeaks(blend(1.0), &CPeak::intensity, {0.0, 1.0, 0.0, 1.0});

  // ppm: 10 ppm is 0.01 Th at 1000 and 0.015 at 1500.
  fixtures::SetLibrarySettings(10.0, 1);
  CSpectrum p = Spectrum({Peak(1000.0, 1.0), Peak(1500.0, 1.0)});
  CSpectrum t = Spectrum({Peak(1000.008, 1, kPeakB, 5, 1, 0), Peak(1500.02, 1, kPeakY, 7, 1, 0)});
  p.MergeTheoretical(t, 0.5);
  ExpectPeaks(p, &CPeak::type, {kPeakB, kPeakUnannotated, kPeakY});
}
