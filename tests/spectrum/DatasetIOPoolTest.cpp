#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "common/TestUtil.h"
#include "spectrum/DatasetIOPool.h"
#include "spectrum/DtaIO.h"
#include "spectrum/MgfIO.h"
#include "spectrum/QuolibIO.h"

namespace {
std::vector<CIdentifiedSpectrum> Named(const std::vector<std::string>& names) {
  std::vector<CIdentifiedSpectrum> list;
  for (const std::string& name : names) {
    CIdentifiedSpectrum s;
    s.spectrumName = name;
    s.datasetIndex = -1;
    list.push_back(s);
  }
  return list;
}
}  // namespace

TEST(DatasetIOPoolTest, FactoryMakesOneReaderPerFormatCode) {
  std::unique_ptr<CSpecIO> lib(CreateSpecIO(0));
  std::unique_ptr<CSpecIO> dta(CreateSpecIO(1));
  std::unique_ptr<CSpecIO> mgf(CreateSpecIO(2));
  std::unique_ptr<CSpecIO> dtas(CreateSpecIO(3));
  EXPECT_NE(dynamic_cast<CQuolibIO*>(lib.get()), nullptr);
  EXPECT_NE(dynamic_cast<CDtaIO*>(dta.get()), nullptr);
  EXPECT_NE(dynamic_cast<CMgfIO*>(mgf.get()), nullptr);
  ASSERT_NE(dtas.get(), nullptr);
  EXPECT_EQ(lib->Extension(), ".quolib");
  EXPECT_EQ(dta->Extension(), ".dta");
  EXPECT_EQ(mgf->Extension(), ".mgf");
  EXPECT_EQ(dtas->Extension(), ".dta");
  EXPECT_EQ(CreateSpecIO(4), nullptr);
  EXPECT_EQ(CreateSpecIO(-1), nullptr);
}

TEST(DatasetIOPoolTest, PrefixesEndAtTheLastPointOfTheFileName) {
  const std::vector<CDatasetFile> datasets = {
      {"/data/run1.mgf", 2}, {"C:\\data\\run10.mgf", 2}, {"/data/dir.v2/spectra", 1},
      {"plain.x.mgf", 2}, {"/mixed\\sep/a.b", 2}};
  std::vector<std::string> prefixes = {"stale"};
  BuildDatasetPrefixes(datasets, prefixes);
  EXPECT_EQ(prefixes, (std::vector<std::string>{"run1.", "run10.", "", "plain.x.", "a."}));

  std::vector<CIdentifiedSpectrum> list = Named({"run10.3.3.2", "run1.5.5.2", "other.1.1.1"});
  AssignDatasets(prefixes, list);
  EXPECT_EQ(list[0].datasetIndex, 1);
  EXPECT_EQ(list[1].datasetIndex, 0);
  EXPECT_EQ(list[2].datasetIndex, 2);  // the empty prefix takes what no earlier prefix took

  // Two datasets of the same base name: the first takes every spectrum.
  BuildDatasetPrefixes({{"/a/run.mgf", 2}, {"/b/run.mgf", 2}}, prefixes);
  list = Named({"run.1.1.2", "run.2.2.2"});
  AssignDatasets(prefixes, list);
  EXPECT_EQ(list[0].datasetIndex, 0);
  EXPECT_EQ(list[1].datasetIndex, 0);

  std::vector<CIdentifiedSpectrum> empty;
  AssignDatasets({}, empty);  // nothing to assign, no datasets needed
}

TEST(DatasetIOPoolTest, SpectrumWithoutDatasetEndsTheRun) {
  const std::string message =
      ".Error.: The spectrum of run2.1.1.2 is not found in data sets!\n"
      "  Please check whether the name of each data set is prefix of spectral name!";
  EXPECT_EXIT(
      {
        dup2(2, 1);
        std::vector<CIdentifiedSpectrum> list = Named({"run1.1.1.2", "run2.1.1.2"});
        AssignDatasets({"run1."}, list);
      },
      testing::ExitedWithCode(1), message);
  EXPECT_EXIT(
      {
        dup2(2, 1);
        std::vector<CIdentifiedSpectrum> list = Named({"run2.1.1.2"});
        AssignDatasets({}, list);
      },
      testing::ExitedWithCode(1), message);
}

TEST(DatasetIOPoolTest, OpenPrintsTheDatasetsAndIndexesEach) {
  testutil::TempDir dir;
  testutil::WriteFile(dir / "a.mgf", "BEGIN IONS\nTITLE=a.1.1.2\nPEPMASS=300\n100 1\nEND IONS\n");
  testutil::WriteFile(dir / "b.2.2.1.dta", "500 1\n100 2\n");
  const std::vector<CDatasetFile> datasets = {
      {dir / "a.mgf", 2}, {dir / "b.2.2.1.dta", 1}, {dir / "missing.mgf", 2}};
  CDatasetIOPool pool;
  testing::internal::CaptureStdout();
  pool.Open(datasets);
  const std::string printed = testing::internal::GetCapturedStdout();
  EXPECT_EQ(printed, "\tPreparing the following 3 datasets:\n\t\t" + (dir / "a.mgf") + "\n\t\t" +
                         (dir / "b.2.2.1.dta") + "\n\t\t" + (dir / "missing.mgf") +
                         "\n\nCMulSpecIO error: failed to open spec file " + (dir / "missing.mgf") +
                         "\n");
  ASSERT_EQ(pool.ios.size(), 3u);
  EXPECT_EQ(pool.current, 0);
  EXPECT_EQ(pool.ios[0]->Count(), 1u);
  EXPECT_EQ(pool.ios[1]->Count(), 1u);
  EXPECT_EQ(pool.ios[2]->Count(), 0u);
  std::vector<CSpectrum> out;
  EXPECT_TRUE(pool.ios[0]->ReadByName("a.1.1.2", out));
  EXPECT_TRUE(pool.ios[1]->ReadByName(dir / "b.2.2.1.dta", out));
  ASSERT_EQ(out.size(), 2u);
  EXPECT_EQ(out[1].name, "b.2.2.1.dta");
}
