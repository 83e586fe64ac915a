// The same spectra as MGF, mzML, gzipped mzML and mzXML (written by msconvert,
// 64-bit, zlib) must give the same library and the same result file.
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "e2e/FormatWriters.h"

namespace {

using testutil::TempDir;
using xfmt::CMgfBlock;

class MzFormatsEndToEndTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    if (std::system("command -v msconvert >/dev/null 2>&1") != 0) return;
    dir_ = new TempDir();
    const std::string data = *dir_ / "data";
    const auto made = testutil::RunProgram(QUORIN_DATAGEN, "", ".",
                                           {"demo", data, "--peptides", "6", "--queries", "10", "--masstable",
                                            std::string(QUORIN_SOURCE_DIR) + "/data/MassTable.ini"});
    if (made.exitCode != 0) return;
    // mzXML has no titles: the MGF titles take the names the converted files
    // get from their scan numbers, so that every format names alike.
    std::map<std::string, std::string> renamed;
    for (const std::string run : {"lib_run1", "lib_run2", "glyco_run1"}) {
      std::vector<CMgfBlock> blocks = xfmt::ReadMgf(data + "/" + run + ".mgf");
      for (std::size_t i = 0; i < blocks.size(); ++i) {
        const std::string scan = std::to_string(i + 1);
        const std::string name = run + "." + scan + "." + scan + "." + std::to_string(blocks[i].charge);
        renamed[blocks[i].title] = name;
        blocks[i].title = name;
      }
      xfmt::WriteMgf(blocks, "", *dir_ / (run + ".mgf"));
      for (const char* format : {"--mzML", "--mzXML"})
        if (std::system(("msconvert --64 --zlib " + std::string(format) + " -o " + dir_->path().string() + " " +
                         (*dir_ / (run + ".mgf")) + " >/dev/null 2>&1").c_str()) != 0)
          return;
    }
    for (const std::string run : {"lib_run1", "lib_run2", "glyco_run1"})
      if (std::system(("gzip -n -k " + (*dir_ / (run + ".mzML"))).c_str()) != 0) return;
    std::string ids;
    for (const std::string& line : testutil::ReadLines(data + "/lib_ids.txt")) {
      const std::size_t tab = line.find('\t');
      const auto found = renamed.find(line.substr(0, tab));
      ids += (found == renamed.end() ? line : found->second + line.substr(tab)) + "\n";
    }
    testutil::WriteFile(*dir_ / "ids.txt", ids);
    ready_ = true;
  }
  static void TearDownTestSuite() { delete dir_; }

  void SetUp() override {
    if (dir_ == nullptr) GTEST_SKIP() << "msconvert (libpwiz-tools) is not installed";
    ASSERT_TRUE(ready_) << "the demo data could not be generated or converted";
  }

  struct CRun {
    testutil::RunResult run;
    std::string output;  // the library or the result file
  };

  // Runs construction (library datasets) or search (one query dataset) in one format.
  static CRun Run(bool construction, const std::string& format, const std::string& extension) {
    TempDir install;
    const std::string program = testutil::InstallProgram(install.path().string());
    const std::string data = *dir_ / "data";
    const std::string out = install / (construction ? "out.quolib" : "result.txt");
    std::string config;
    if (construction)
      config = "[construction]\nconstruction = yes\nmodification_remove = Deamidated[N]\n"
               "identification_format = tab-txt\nidentification_number = 1\nidentification_filename_1 = " +
               (*dir_ / "ids.txt") + "\nlibrary_dataset_number = 2\nlibrary_dataset_format = " + format +
               "\nlibrary_dataset_pathname_1 = " + (*dir_ / ("lib_run1" + extension)) +
               "\nlibrary_dataset_pathname_2 = " + (*dir_ / ("lib_run2" + extension)) +
               "\nlibrary_product_ion_unit = da\nlibrary_product_ion_tolerance = 0.02\ntheta = 0.3\n"
               "output_speclib_filename = " + out + "\nadded_Y_ions = Y0,Y1,Y2,Y3,Y4,Y5\n"
               "Y_ion_relative_intensity = 0.5\nN_glycan_motifs = NXS,NXT\nprotein_database = " +
               data + "/demo_proteins.fasta\n[search]\nsearch = no\n";
    else
      config = "[construction]\nconstruction = no\n[search]\nsearch = yes\ninput_speclib_filename = " +
               (*dir_ / "lib.quolib") + "\nquery_dataset_number = 1\nquery_dataset_format = " + format +
               "\nquery_dataset_pathname_1 = " + (*dir_ / ("glyco_run1" + extension)) +
               "\nquery_precursor_ion_unit = ppm\nquery_precursor_ion_tolerance = 10\n"
               "query_product_ion_unit = da\nquery_product_ion_tolerance = 0.02\noutput_result_filename = " +
               out + "\nminimal_peptide_ions = 2\n";
    testutil::WriteFile(install / "run.ini", config);
    CRun result;
    result.run = testutil::RunProgram("timeout", "run.ini\n", install.path().string(), {"120", program});
    if (testutil::FileExists(out)) result.output = testutil::ReadFile(out);
    return result;
  }

  static TempDir* dir_;
  static bool ready_;
};

TempDir* MzFormatsEndToEndTest::dir_ = nullptr;
bool MzFormatsEndToEndTest::ready_ = false;

TEST_F(MzFormatsEndToEndTest, LibraryAndResultsAgreeWithMgf) {
  const CRun library = Run(true, "mgf", ".mgf");
  ASSERT_EQ(library.run.exitCode, 0) << library.run.output;
  ASSERT_NE(library.output.find("SpectrumName=Decoy_"), std::string::npos) << library.run.output;
  testutil::WriteFile(*dir_ / "lib.quolib", library.output);
  const CRun results = Run(false, "mgf", ".mgf");
  ASSERT_EQ(results.run.exitCode, 0) << results.run.output;
  EXPECT_GE(xfmt::Cut(results.output, '\n').size(), 6u) << results.output;
  struct CFormat {
    std::string keyword, extension;
  };
  // A gzipped file is named by what it holds: "run.mzML.gz" serves the list's "run." names.
  const CFormat formats[] = {{"MzML", ".mzML"}, {"mzxml", ".mzXML"}, {"mzml", ".mzML.gz"}};
  for (const CFormat& format : formats) {
    SCOPED_TRACE(format.keyword + format.extension);
    const CRun built = Run(true, format.keyword, format.extension);
    ASSERT_EQ(built.run.exitCode, 0) << built.run.output;
    EXPECT_EQ(built.run.output.find("Warning"), std::string::npos) << built.run.output;
    EXPECT_EQ(built.output, library.output);
    const CRun searched = Run(false, format.keyword, format.extension);
    ASSERT_EQ(searched.run.exitCode, 0) << searched.run.output;
    EXPECT_EQ(searched.output, results.output);
  }
}

}  // namespace
