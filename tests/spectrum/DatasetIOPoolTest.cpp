#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "common/TestUtil.h"
#include "spectrum/DatasetIOPool.h"
#include "spectrum/DtaIO.h"
#include "spectrum/MgfIO.h"
#include "spectrum/MzSpecIO.h"
#include "spectrum/QuolibIO.h"

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

TEST(DatasetIOPoolTest, FactoryMakesOneReaderPerFormatCode) {
  std::unique_ptr<CSpecIO> ios[4] = {std::unique_ptr<CSpecIO>(CreateSpecIO(0)),
                                     std::unique_ptr<CSpecIO>(CreateSpecIO(1)),
                                     std::unique_ptr<CSpecIO>(CreateSpecIO(2)),
                                     std::unique_ptr<CSpecIO>(CreateSpecIO(3))};
  EXPECT_NE(dynamic_cast<CQuolibIO*>(ios[0].get()), nullptr);
  EXPECT_NE(dynamic_cast<CDtaIO*>(ios[1].get()), nullptr);
  EXPECT_NE(dynamic_cast<CMgfIO*>(ios[2].get()), nullptr);
  EXPECT_EQ(ios[0]->Extension() + ios[1]->Extension() + ios[2]->Extension() + ios[3]->Extension(),
            ".quolib.dta.mgf.dta");
  for (int32_t code : {4, 5}) {
    const std::unique_ptr<CSpecIO> io(CreateSpecIO(code));
    EXPECT_NE(dynamic_cast<CMzSpecIO*>(io.get()), nullptr) << code;
  }
  EXPECT_EQ(CreateSpecIO(6), nullptr);
  EXPECT_EQ(CreateSpecIO(-1), nullptr);
}

TEST(DatasetIOPoolTest, PrefixesEndAtTheLastPointOfTheFileName) {
  std::vector<std::string> prefixes = {"stale"};
  BuildDatasetPrefixes({{"/data/run1.mgf", 2}, {"C:\\data\\run10.mgf", 2},
                        {"/data/dir.v2/spectra", 1}, {"plain.x.mgf", 2}, {"/mixed\\sep/a.b", 2}},
                       prefixes);
  EXPECT_EQ(prefixes, (std::vector<std::string>{"run1.", "run10.", "", "plain.x.", "a."}));
  // run10.3.3.2 goes to run10. because of the point; the empty prefix takes
  // what no earlier prefix took; of two equal prefixes the first takes all.
  EXPECT_EQ(Assigned(prefixes, {"run10.3.3.2", "run1.5.5.2", "other.1.1.1"}),
            (std::vector<int32_t>{1, 0, 2}));
  EXPECT_EQ(Assigned({"run.", "run."}, {"run.1.1.2", "run.2.2.2"}), (std::vector<int32_t>{0, 0}));
  EXPECT_TRUE(Assigned({}, {}).empty());  // nothing to assign, no datasets needed

  const std::string message =
      "^\\[Error\\]: The spectrum of run2.1.1.2 is not found in data sets!\n"
      "  Please check whether the name of each data set is prefix of spectral name!\n$";
  EXPECT_EXIT((dup2(2, 1), Assigned({"run1."}, {"run1.1.1.2", "run2.1.1.2"})),
              testing::ExitedWithCode(1), message);
  EXPECT_EXIT((dup2(2, 1), Assigned({}, {"run2.1.1.2"})), testing::ExitedWithCode(1), message);
}

TEST(DatasetIOPoolTest, OpenPrintsTheDatasetsAndIndexesEach) {
  testutil::TempDir dir;
  testutil::WriteFile(dir / "a.mgf", "BEGIN IONS\nTITLE=a.1.1.2\nPEPMASS=300\n100 1\nEND IONS\n");
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
}
