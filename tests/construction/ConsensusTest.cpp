#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "construction/ConstructionFixtures.h"
#include "construction/IdentifiedAnalyzer.h"

using fixtures::Peak;
using fixtures::Spectrum;

namespace {

// An analyzer whose single dataset holds the given spectra.
struct ConsensusSetup {
  CIdentifiedAnalyzer analyzer;
  fixtures::CMemorySpecIO* io = nullptr;

  explicit ConsensusSetup(double tolerance = 0.5) {
    fixtures::SetLibrarySettings(tolerance);
    analyzer.param = CParam::GetInstance().construction;
    analyzer.pool = std::make_unique<CDatasetIOPool>();
    auto memory = std::make_unique<fixtures::CMemorySpecIO>();
    io = memory.get();
    analyzer.pool->ios.push_back(std::move(memory));
  }

  CIdentifiedPeptide Peptide(const std::vector<std::string>& names, int32_t dataset = 0) {
    CIdentifiedPeptide peptide;
    peptide.sequence = "AAJGTK";
    peptide.charge = 2;
    for (const std::string& name : names) peptide.spectra.push_back({name, dataset});
    return peptide;
  }
};

}  // namespace

TEST(Consensus, SameSpectrumListedTwiceMergesWithItself) {
  ConsensusSetup setup;
  setup.io->byName["s1"] = Spectrum({Peak(200.0, 4.0), Peak(300.0, 1.0)}, 1500.0);
  ASSERT_TRUE(setup.analyzer.BuildConsensus(setup.Peptide({"s1", "s1"})));
  ASSERT_EQ(setup.analyzer.spectra.size(), 2u);
  CSpectrum& consensus = setup.analyzer.spectra[0];
  consensus.SortPeaksByMz();
  EXPECT_EQ(consensus.frequency, 2u);
  EXPECT_DOUBLE_EQ(consensus.precursorMass, 1500.0);
  ASSERT_EQ(consensus.peaks.size(), 2u);
  EXPECT_DOUBLE_EQ(consensus.peaks[0].mz, 200.0);
  EXPECT_DOUBLE_EQ(consensus.peaks[0].intensity, 1.0);
  EXPECT_DOUBLE_EQ(consensus.peaks[1].intensity, 0.5);  // sqrt of 0.25
  EXPECT_EQ(consensus.peaks[0].count, 2u);
  EXPECT_EQ(consensus.peaks[1].count, 2u);
}

TEST(Consensus, PeaksSeenByTooFewSpectraAreDropped) {
  ConsensusSetup setup;
  // Four spectra: t = trunc(4 * 0.33) = 1, so a peak must be seen twice.
  setup.io->byName["s1"] = Spectrum({Peak(200.0, 1.0), Peak(400.0, 1.0), Peak(600.0, 1.0)});
  setup.io->byName["s2"] = Spectrum({Peak(200.1, 1.0), Peak(400.1, 1.0)});
  setup.io->byName["s3"] = Spectrum({Peak(200.2, 1.0), Peak(800.0, 1.0)});
  setup.io->byName["s4"] = Spectrum({Peak(199.9, 1.0)});
  ASSERT_TRUE(setup.analyzer.BuildConsensus(setup.Peptide({"s1", "s2", "s3", "s4"})));
  CSpectrum& consensus = setup.analyzer.spectra[0];
  EXPECT_EQ(consensus.frequency, 4u);
  consensus.SortPeaksByMz();
  ASSERT_EQ(consensus.peaks.size(), 2u);
  EXPECT_NEAR(consensus.peaks[0].mz, 200.05, 1e-9);
  EXPECT_EQ(consensus.peaks[0].count, 4u);
  EXPECT_NEAR(consensus.peaks[1].mz, 400.05, 1e-9);
  EXPECT_EQ(consensus.peaks[1].count, 2u);

  // Two spectra: t = 0, a peak seen once stays.
  ASSERT_TRUE(setup.analyzer.BuildConsensus(setup.Peptide({"s1", "s3"})));
  EXPECT_EQ(setup.analyzer.spectra[0].peaks.size(), 4u);
}

TEST(Consensus, FirstFilterKeepsFivePeaksPerFiftyTh) {
  ConsensusSetup setup;
  std::vector<CPeak> peaks;
  for (int i = 0; i < 8; ++i) peaks.push_back(Peak(200.0 + 5 * i, 1.0 + i));
  setup.io->byName["s1"] = Spectrum(peaks);
  ASSERT_TRUE(setup.analyzer.BuildConsensus(setup.Peptide({"s1"})));
  const CSpectrum& consensus = setup.analyzer.spectra[0];
  ASSERT_EQ(consensus.peaks.size(), 5u);
  for (const CPeak& peak : consensus.peaks) EXPECT_GE(peak.mz, 215.0);
  EXPECT_EQ(consensus.frequency, 1u);
}

TEST(Consensus, NothingReadableGivesFalse) {
  ConsensusSetup setup;
  setup.io->byName["s1"] = Spectrum({Peak(200.0, 1.0)});
  EXPECT_FALSE(setup.analyzer.BuildConsensus(setup.Peptide({"missing"})));
  EXPECT_TRUE(setup.analyzer.spectra.empty());
  // A dataset index past the pool reads nothing, and neither does a negative one.
  EXPECT_FALSE(setup.analyzer.BuildConsensus(setup.Peptide({"s1"}, 1)));
  EXPECT_FALSE(setup.analyzer.BuildConsensus(setup.Peptide({"s1"}, -1)));
  EXPECT_FALSE(setup.analyzer.BuildConsensus(setup.Peptide({})));
  // A spectrum whose intensities are all 0 stays finite.
  setup.io->byName["zero"] = Spectrum({Peak(200.0, 0.0), Peak(300.0, 0.0)});
  ASSERT_TRUE(setup.analyzer.BuildConsensus(setup.Peptide({"zero", "zero"})));
  for (const CPeak& peak : setup.analyzer.spectra[0].peaks) EXPECT_EQ(peak.intensity, 0.0);
}
