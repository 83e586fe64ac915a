// The dataset generator: same arguments, same bytes; and the files hold what the
// program's readers expect.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "common/TestUtil.h"

namespace {

using testutil::ReadFile;
using testutil::RunProgram;
using testutil::TempDir;

const std::string kMassTable = std::string(QUORIN_SOURCE_DIR) + "/data/MassTable.ini";
const std::vector<std::string> kFiles = {"lib_ids.txt", "lib_run1.mgf", "lib_run2.mgf",
                                         "glyco_run1.mgf", "truth.tsv", "demo_proteins.fasta"};

testutil::RunResult Generate(const std::string& dir, const std::string& seed) {
  return RunProgram(QUORIN_DATAGEN, "", ".",
                    {"demo", dir, "--peptides", "40", "--queries", "60", "--seed", seed,
                     "--masstable", kMassTable});
}

TEST(DatagenTest, SameArgumentsGiveIdenticalFilesAndAnotherSeedOthers) {
  TempDir a, b, c;
  ASSERT_EQ(Generate(a / "out", "7").exitCode, 0);
  ASSERT_EQ(Generate(b / "out", "7").exitCode, 0);
  ASSERT_EQ(Generate(c / "out", "8").exitCode, 0);
  for (const auto& name : kFiles) {
    const std::string first = ReadFile(a / ("out/" + name));
    EXPECT_FALSE(first.empty()) << name;
    EXPECT_EQ(first, ReadFile(b / ("out/" + name))) << name;
  }
  EXPECT_NE(ReadFile(a / "out/glyco_run1.mgf"), ReadFile(c / "out/glyco_run1.mgf"));

  // tab-txt: a heading, records of exactly three tabs, an empty line at the end;
  // every listed spectrum is in the dataset its name starts with.
  auto list = testutil::ReadLines(a / "out/lib_ids.txt");
  ASSERT_GE(list.size(), 3u);
  EXPECT_TRUE(list.back().empty());
  const std::string run1 = ReadFile(a / "out/lib_run1.mgf"), run2 = ReadFile(a / "out/lib_run2.mgf");
  for (std::size_t i = 1; i + 1 < list.size(); ++i) {
    EXPECT_EQ(std::count(list[i].begin(), list[i].end(), '\t'), 3) << list[i];
    const std::string name = list[i].substr(0, list[i].find('\t'));
    EXPECT_NE((name.rfind("lib_run1.", 0) == 0 ? run1 : run2).find("TITLE=" + name + "\n"),
              std::string::npos) << name;
  }
  // The configuration names every file by its absolute path.
  const std::string conf = ReadFile(a / "out/demo.conf");
  EXPECT_NE(conf.find("identification_filename_1 = " + (a / "out/lib_ids.txt") + "\n"), std::string::npos);
  EXPECT_NE(conf.find("query_dataset_pathname_1 = " + (a / "out/glyco_run1.mgf") + "\n"),
            std::string::npos);

  // Bad arguments end with a usage message, not with files.
  auto bad = RunProgram(QUORIN_DATAGEN, "", ".", {"nonsense", c / "x"});
  EXPECT_NE(bad.exitCode, 0);
  EXPECT_NE(bad.output.find("Usage"), std::string::npos);
  EXPECT_FALSE(testutil::FileExists(c / "x"));
}

TEST(DatagenTest, QualityModeIsReproducibleAndHoldsEveryKindOfQuery) {
  TempDir a, b;
  auto generate = [](const std::string& dir) {
    return RunProgram(QUORIN_DATAGEN, "", ".",
                      {"quality", dir, "--peptides", "60", "--queries", "300", "--seed", "5",
                       "--masstable", kMassTable}).exitCode;
  };
  ASSERT_EQ(generate(a / "out"), 0);
  ASSERT_EQ(generate(b / "out"), 0);
  for (const std::string name : {"glyco_run1.mgf", "truth.tsv", "lib_ids.txt"})
    EXPECT_EQ(ReadFile(a / ("out/" + name)), ReadFile(b / ("out/" + name))) << name;
  const std::string truth = ReadFile(a / "out/truth.tsv");
  for (const char* kind : {"\tglyco\t", "\tisotope\t", "\tisobaric\t", "\toxidised_form\t",
                           "\tmissed_cleavage\t", "\tabsent\t", "\tnoise\t", "\tno_marker\t",
                           "\tweak_marker\t"})
    EXPECT_NE(truth.find(kind), std::string::npos) << kind;
  EXPECT_NE(ReadFile(a / "out/quality.conf").find("\nglycopeptide_fdr = yes\n"), std::string::npos);
}

}  // namespace
