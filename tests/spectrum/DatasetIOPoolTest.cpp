#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/TestUtil.h"
#include "spectrum/DatasetIOPool.h"

namespace {
// Dataset index of each name after assignment.
std::vector<int32_t> Assigned(const std::vector<std::string>& prefixes,
                              const std::vector<std::string>& names) {
  std::vector<CIdentifiedSpectrum> list(names.size());
  for (std::size_t i = 0; i < names.size(); ++i) list[i].spectrumName = names[i];
  AssignDatasets(prefixes, list);
  std::vector<int32_t> indices;
  for (const CIdentifiedSpectrum& s : list) indices.push_back(s.datasetIndex);
  return indices;
}
}  // namespace

TEST(DatasetIOPoolTest, PrefixesEndAtTheLastPointOfTheFileName) {
  std::vector<std::string> prefixes = {"stale"};
  BuildDatasetPrefixes({{"/data/run1.mgf", 2}, {"C:\\data\\run10.mgf", 2},
                        {"/data/dir.v2/spectra", 1}, {"plain.x.mgf", 2}, {"/mixed\\sep/a.b", 2},
                        {"/data/run2.mzML.gz", 4}, {"run3.mzXML.GZ", 5}, {"run4.mgf.gz", 2}},
                       prefixes);
  EXPECT_EQ(prefixes, (std::vector<std::string>{"run1.", "run10.", "", "plain.x.", "a.", "run2.",
                                                "run3.", "run4.mgf."}));
  // run10.3.3.2 goes to run10. because of the point; the empty prefix takes
  // what no earlier prefix took; of two equal prefixes the first takes all.
  EXPECT_EQ(Assigned(prefixes, {"run10.3.3.2", "run1.5.5.2", "other.1.1.1"}),
            (std::vector<int32_t>{1, 0, 2}));
  EXPECT_EQ(Assigned({"run.", "run."}, {"run.1.1.2", "run.2.2.2"}), (std::vector<int32_t>{0, 0}));
  EXPECT_TRUE(Assigned({}, {}).empty());  // nothing to assign, no datasets needed

  const std::string message =
      "^\\[Error\\]: The spectrum of run2.1.1.2 is not found in data sets!\n"
      "  Please check whether the name of each data set is prefix of spectral name!\n$";
  EXPECT_EXIT((testutil::PrintToStderr(), Assigned({"run1."}, {"run1.1.1.2", "run2.1.1.2"})),
              testing::ExitedWithCode(1), message);
  EXPECT_EXIT((testutil::PrintToStderr(), Assigned({}, {"run2.1.1.2"})), testing::ExitedWithCode(1), message);
}

TEST(DatasetIOPoolTest, OpenPrintsTheDatasetsAndIndexesEach) {
  testutil::TempDir dir;
  testutil::WriteFile(dir / "a.mgf", "BEGIN IONS\nTITLE=a.1.1.2\nCHARGE=2+\nPEPMASS=300\n100 1\nEND IONS\n");
  testutil::WriteFile(dir / "b.2.2.1.dta", "500 1\n100 2\n");
  CDatasetIOPool pool;
  testing::internal::CaptureStdout();
  pool.Open({{dir / "a.mgf", 2}, {dir / "b.2.2.1.dta", 1}, {dir / "missing.mgf", 2}});
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "\tPreparing the following 3 datasets:\n\t\t" + (dir / "a.mgf") + "\n\t\t" +
                (dir / "b.2.2.1.dta") + "\n\t\t" + (dir / "missing.mgf") +
                "\n\nCMulSpecIO error: failed to open spec file " + (dir / "missing.mgf") + "\n");
  ASSERT_EQ(pool.ios.size(), 3u);
  EXPECT_EQ(pool.ios[0]->Count() * 100 + pool.ios[1]->Count() * 10 + pool.ios[2]->Count(), 110u);
  std::vector<CSpectrum> out;
  EXPECT_TRUE(pool.ios[0]->ReadByName("a.1.1.2", out));
  EXPECT_TRUE(pool.ios[1]->ReadByName(dir / "b.2.2.1.dta", out));
  EXPECT_EQ(out.at(1).name, "b.2.2.1.dta");
  // The dataset that did not open reads as empty, and the run goes on.
  testing::internal::CaptureStdout();
  EXPECT_FALSE(pool.ios[2]->ReadNext(out) || pool.ios[2]->ReadByName("a.1.1.2", out));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "\n[Warning]: Unable to load spectrum a.1.1.2\n");
  EXPECT_EQ(out.size(), 2u);
}
