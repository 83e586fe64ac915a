// A study of three query files searched one file at a time (shards) and
// merged by `fdr`, by hand and through the Snakemake workflow, against one
// `run` over all three: the ranked file and the q-value files byte for byte.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "common/TestUtil.h"

namespace fs = std::filesystem;

namespace {

using testutil::ReadFile;
using testutil::RunProgram;
using testutil::RunResult;

class ShardedStudy : public testing::Test {
 protected:
  // The quality dataset with its queries split into three files, a
  // configuration naming them relative to its folder, and one run of it.
  static void SetUpTestSuite() {
    dir = new testutil::TempDir;
    const std::string bin = *dir / "bin";
    fs::create_directories(bin);
    exe = testutil::InstallProgram(bin);
    data = *dir / "data";
    ASSERT_EQ(RunProgram(QUORIN_DATAGEN, "", ".",
                         {"quality", data, "--peptides", "200", "--queries", "1500", "--seed", "3",
                          "--masstable", bin + "/MassTable.ini"})
                  .exitCode, 0);
    const std::string mgf = ReadFile(data + "/glyco_run1.mgf");
    std::vector<std::size_t> starts;
    for (std::size_t at = mgf.find("BEGIN IONS"); at != std::string::npos; at = mgf.find("BEGIN IONS", at + 1))
      starts.push_back(at);
    starts.push_back(mgf.size());
    const std::size_t n = starts.size() - 1;
    for (int part = 0; part < 3; ++part)
      testutil::WriteFile(data + "/q" + std::to_string(part + 1) + ".mgf",
                          mgf.substr(starts[n * part / 3], starts[n * (part + 1) / 3] - starts[n * part / 3]));
    std::string conf = ReadFile(data + "/quality.conf");
    const std::string one = "query_dataset_number = 1\nquery_dataset_format = mgf\nquery_dataset_pathname_1 = " +
                            data + "/glyco_run1.mgf\n";
    ASSERT_NE(conf.find(one), std::string::npos);
    conf.replace(conf.find(one), one.size(),
                 "query_dataset_number = 3\nquery_dataset_format = mgf\nquery_dataset_pathname_1 = q1.mgf\n"
                 "query_dataset_pathname_2 = q2.mgf\nquery_dataset_pathname_3 = q3.mgf\n");
    testutil::WriteFile(data + "/quality.conf", conf);
    const RunResult single = RunProgram(exe, "", ".", {"run", data + "/quality.conf", "--threads", "2"});
    ASSERT_EQ(single.exitCode, 0) << single.output;
  }
  static void TearDownTestSuite() { delete dir; }

  // The outputs of the one run, to compare with.
  static std::string Single(const std::string& suffix) { return ReadFile(data + "/quality_result" + suffix); }

  static testutil::TempDir* dir;
  static std::string exe, data;
};
testutil::TempDir* ShardedStudy::dir = nullptr;
std::string ShardedStudy::exe, ShardedStudy::data;

TEST_F(ShardedStudy, ShardsMergedByFdrGiveTheFilesOfOneRunAndTheReportSaysWhatWasMerged) {
  const std::string shards = *dir / "shards";
  fs::create_directories(shards);
  std::vector<std::string> merge = {"fdr", "--out", shards + "/merged.txt"};
  for (const std::string n : {"1", "2", "3"}) {
    // By number, or by the path as the configuration writes it.
    const RunResult shard = RunProgram(exe, "", ".",
                                       {"run", data + "/quality.conf", "--only", "search", "--query-dataset",
                                        n == "2" ? "q2.mgf" : n, "--result", shards + "/q" + n + ".txt",
                                        "--no-fdr", "--threads", "1"});
    ASSERT_EQ(shard.exitCode, 0) << shard.output;
    merge.push_back(shards + "/q" + n + ".txt");
  }
  const RunResult merged = RunProgram(exe, "", ".", merge);
  ASSERT_EQ(merged.exitCode, 0) << merged.output;
  EXPECT_EQ(ReadFile(shards + "/merged.txt"), Single(".txt"));
  EXPECT_EQ(ReadFile(shards + "/merged_qvalues.txt"), Single("_qvalues.txt"));
  EXPECT_EQ(ReadFile(shards + "/merged_qvalues.pin"), Single("_qvalues.pin"));
  const std::string summary = ReadFile(shards + "/merged_summary.json");
  const std::size_t lines = testutil::ReadLines(shards + "/merged.txt").size() - 1;
  EXPECT_NE(summary.find("\"merge\":{\"shards\":3,\"lines\":" + std::to_string(lines) + "}"), std::string::npos)
      << summary;

  // The report of a configuration whose result is the merged file reads it.
  std::string conf = ReadFile(data + "/quality.conf");
  const std::string result = data + "/quality_result.txt";
  conf.replace(conf.find(result), result.size(), shards + "/merged.txt");
  testutil::WriteFile(shards + "/merged.conf", conf);
  ASSERT_EQ(RunProgram(exe, "", ".", {"report", shards + "/merged.conf"}).exitCode, 0);
  EXPECT_NE(ReadFile(shards + "/merged_report.html").find("shards merged"), std::string::npos);

  // A dataset the configuration does not have is refused before any work.
  for (const std::string d : {"4", "99999999999999999999999", "q9.mgf"}) {
    const RunResult wrong = RunProgram(exe, "", ".", {"run", data + "/quality.conf", "--query-dataset", d, "--no-fdr"});
    EXPECT_EQ(wrong.exitCode, 1) << d;
    EXPECT_NE(wrong.output.find("expected a number from 1 to 3"), std::string::npos) << wrong.output;
  }
}

TEST_F(ShardedStudy, SnakemakeWorkflowGivesTheFilesOfOneRunAndSearchesOnlyAnAddedDataset) {
  if (std::system("snakemake --version > /dev/null 2>&1") != 0)
    GTEST_SKIP() << "snakemake is not installed (Debian package snakemake; scripts/setup.sh installs it)";
  const std::string study = *dir / "study";
  fs::create_directories(study);
  for (const std::string name : {"q1.mgf", "q2.mgf", "q3.mgf", "quality.conf"})
    fs::copy_file(data + "/" + name, study + "/" + name);
  // The library too is built by the workflow, into the study's folder.
  std::string conf = ReadFile(study + "/quality.conf");
  const std::string result = data + "/quality_result.txt", library = data + "/quality.quolib";
  conf.replace(conf.find(result), result.size(), study + "/out/study.txt");
  for (std::size_t at; (at = conf.find(library)) != std::string::npos;)
    conf.replace(at, library.size(), study + "/out/study.quolib");
  testutil::WriteFile(study + "/quality.conf", conf);
  const std::vector<std::string> snakemake = {
      "--snakefile", std::string(QUORIN_SOURCE_DIR) + "/workflow/Snakefile", "--cores", "2", "--quiet",
      "--config", "conf=" + study + "/quality.conf", "quoringlyco=" + exe};
  const RunResult first = RunProgram("snakemake", "", study, snakemake);
  ASSERT_EQ(first.exitCode, 0) << first.output;
  EXPECT_EQ(ReadFile(study + "/out/study.txt"), Single(".txt"));
  EXPECT_EQ(ReadFile(study + "/out/study_qvalues.txt"), Single("_qvalues.txt"));
  EXPECT_EQ(ReadFile(study + "/out/study_qvalues.pin"), Single("_qvalues.pin"));
  EXPECT_EQ(ReadFile(study + "/out/study.quolib"), ReadFile(library));
  EXPECT_TRUE(testutil::FileExists(study + "/out/study_report.html"));
  EXPECT_NE(ReadFile(study + "/out/study_summary.json").find("\"shards\":3"), std::string::npos);

  // A fourth file (the first one's spectra under other names) is searched
  // alone; the other shards stay as they were.
  std::string extra = ReadFile(study + "/q1.mgf");
  for (std::size_t at = extra.find("TITLE="); at != std::string::npos; at = extra.find("TITLE=", at + 1))
    extra.insert(at + 6, "extra_");
  testutil::WriteFile(study + "/q4.mgf", extra);
  conf.replace(conf.find("query_dataset_number = 3"), 24, "query_dataset_number = 4");
  conf.replace(conf.find("query_dataset_pathname_3 = q3.mgf\n"), 33,
               "query_dataset_pathname_3 = q3.mgf\nquery_dataset_pathname_4 = q4.mgf\n");
  testutil::WriteFile(study + "/quality.conf", conf);
  const auto shardTime = [&](const std::string& name) {
    return fs::last_write_time(study + "/out/study_shards/" + name + "_result.txt");
  };
  const auto libraryTime = fs::last_write_time(study + "/out/study.quolib");
  std::vector<fs::file_time_type> before;
  for (const std::string name : {"q1", "q2", "q3"}) before.push_back(shardTime(name));
  const RunResult second = RunProgram("snakemake", "", study, snakemake);
  ASSERT_EQ(second.exitCode, 0) << second.output;
  EXPECT_EQ(fs::last_write_time(study + "/out/study.quolib"), libraryTime);
  EXPECT_EQ((std::vector<fs::file_time_type>{shardTime("q1"), shardTime("q2"), shardTime("q3")}), before);
  EXPECT_TRUE(testutil::FileExists(study + "/out/study_shards/q4_result.txt"));
  EXPECT_NE(ReadFile(study + "/out/study_summary.json").find("\"shards\":4"), std::string::npos);
}

}  // namespace
