// The search on several threads against the plain loop of one thread: the same
// result file to the byte, the same console text and the same counts, on a
// generated dataset searched in small batches so that many are in flight.
#include <gtest/gtest.h>

#include <filesystem>
#include <iostream>
#include <sstream>

#include "common/TestUtil.h"
#include "run/Param.h"
#include "search/SearchStage.h"

namespace {

struct Outcome {
  std::string result;
  std::string console;
  CSearchCounts counts;
};

class ThreadedSearch : public ::testing::Test {
 protected:
  // The demo dataset and its library, made once by the generator and the
  // program's construction stage.
  static void SetUpTestSuite() {
    dir_ = new testutil::TempDir();
    const std::string bin = *dir_ / "bin";
    std::filesystem::create_directories(bin);
    const std::string exe = testutil::InstallProgram(bin);
    testutil::RunProgram(QUORIN_DATAGEN, "", ".",
                         {"demo", *dir_ / "data", "--masstable", bin + "/MassTable.ini"});
    testutil::RunProgram(exe, *dir_ / "data/demo.conf" + "\n");
  }
  static void TearDownTestSuite() { delete dir_; }

  // Searches the demo queries in-process on `threads` threads.
  static Outcome Search(uint32_t threads) {
    CSearchParam& search = CParam::GetInstance().search;
    search.enabled = true;
    search.input_speclib_filename = *dir_ / "data/demo.quolib";
    search.query_datasets = {{*dir_ / "data/glyco_run1.mgf", 2}};  // MGF
    search.query_precursor_ion_unit = 1;  // ppm
    search.query_precursor_ion_tolerance = 10;
    search.query_product_ion_unit = 0;  // Da
    search.query_product_ion_tolerance = 0.02;
    search.minimal_peptide_ions = 2;
    search.spectra_per_batch = 7;
    search.output_result_filename = *dir_ / ("result" + std::to_string(threads) + ".txt");
    search.threads = threads;
    // The mass table is read from the working folder, as the program reads it
    // from its own.
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(*dir_ / "bin");
    std::ostringstream console;
    std::streambuf* const saved = std::cout.rdbuf(console.rdbuf());
    Outcome outcome;
    outcome.counts = RunSearch(search);
    std::cout.rdbuf(saved);
    std::filesystem::current_path(before);
    outcome.console = console.str();
    outcome.result = testutil::ReadFile(search.output_result_filename);
    return outcome;
  }

  static testutil::TempDir* dir_;
};
testutil::TempDir* ThreadedSearch::dir_ = nullptr;

TEST_F(ThreadedSearch, EveryThreadCountGivesThePlainLoopsResult) {
  const Outcome plain = Search(1);
  ASSERT_TRUE(testutil::FileExists(*dir_ / "data/demo.quolib"));
  // The demo gives hits, and its batches of 7 leave a last batch that is not full.
  ASSERT_GT(plain.counts.resultLines, 50u) << plain.console;
  ASSERT_NE(plain.counts.queriesAccepted % 7, 0u);
  for (uint32_t threads : {2u, 3u, 7u}) {
    SCOPED_TRACE(threads);
    const Outcome parallel = Search(threads);
    EXPECT_TRUE(parallel.result == plain.result);  // not printed: thousands of lines
    EXPECT_EQ(parallel.console, plain.console);
    const CSearchCounts& a = parallel.counts;
    const CSearchCounts& b = plain.counts;
    EXPECT_EQ(std::tuple(a.queriesRead, a.queriesAccepted, a.withCandidates, a.resultLines,
                         a.targets, a.decoys),
              std::tuple(b.queriesRead, b.queriesAccepted, b.withCandidates, b.resultLines,
                         b.targets, b.decoys));
  }
}

}  // namespace
