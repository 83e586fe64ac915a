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
    std::string first = ReadFile(a / ("out/" + name));
    EXPECT_FALSE(first.empty()) << name;
    EXPECT_EQ(first, ReadFile(b / ("out/" + name))) << name;
  }
  EXPECT_NE(ReadFile(a / "out/glyco_run1.mgf"), ReadFile(c / "out/glyco_run1.mgf"));
}

TEST(DatagenTest, FilesFollowTheFormatsTheProgramReads) {
  TempDir dir;
  ASSERT_EQ(Generate(dir / "out", "1").exitCode, 0);

  // tab-txt: a heading, records of exactly three tabs, an empty line at the end.
  auto list = testutil::ReadLines(dir / "out/lib_ids.txt");
  ASSERT_GE(list.size(), 3u);
  EXPECT_TRUE(list.back().empty());
  for (std::size_t i = 0; i + 1 < list.size(); ++i)
    EXPECT_EQ(std::count(list[i].begin(), list[i].end(), '\t'), 3) << list[i];
  // Every listed spectrum is in the dataset its name starts with.
  std::string run1 = ReadFile(dir / "out/lib_run1.mgf");
  std::string run2 = ReadFile(dir / "out/lib_run2.mgf");
  for (std::size_t i = 1; i + 1 < list.size(); ++i) {
    std::string name = list[i].substr(0, list[i].find('\t'));
    const std::string& mgf = name.rfind("lib_run1.", 0) == 0 ? run1 : run2;
    EXPECT_NE(mgf.find("TITLE=" + name + "\n"), std::string::npos) << name;
  }

  // The configuration names every file by its absolute path.
  std::string conf = ReadFile(dir / "out/demo.conf");
  EXPECT_NE(conf.find("identification_filename_1 = " + (dir / "out/lib_ids.txt") + "\n"),
            std::string::npos);
  EXPECT_NE(conf.find("query_dataset_pathname_1 = " + (dir / "out/glyco_run1.mgf") + "\n"),
            std::string::npos);
  EXPECT_NE(conf.find("modification_remove = Deamidated[N]\n"), std::string::npos);

  // Bad arguments end with a usage message, not with files.
  auto bad = RunProgram(QUORIN_DATAGEN, "", ".", {"nonsense", dir / "x"});
  EXPECT_NE(bad.exitCode, 0);
  EXPECT_NE(bad.output.find("Usage"), std::string::npos);
  EXPECT_FALSE(testutil::FileExists(dir / "x"));
}

}  // namespace
