// The command line end to end: the real binary, started from a folder of its
// own, on the generated demo with a configuration of relative paths.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "common/TestUtil.h"

namespace fs = std::filesystem;
using testutil::ReadFile;
using testutil::RunProgram;
using testutil::WriteFile;

namespace {

const std::string kProgram = QUORIN_BINARY;

bool Has(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

// The demo, generated once, and copies of it with relative paths.
class CommandLine : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    demo_ = new testutil::TempDir;
    ASSERT_EQ(testutil::GenerateDemo(demo_->path().string()).exitCode, 0);
  }
  static void TearDownTestSuite() { delete demo_; }

  // The demo's files in `dir`, and run.conf naming them relative to `dir`,
  // with keys replaced or added.
  static void CopyDemo(const testutil::TempDir& dir,
                       const std::vector<std::pair<std::string, std::string>>& keys = {}) {
    for (const auto& entry : fs::directory_iterator(demo_->path()))
      fs::copy_file(entry.path(), dir.path() / entry.path().filename());
    std::string conf = ReadFile(*demo_ / "demo.conf");
    const std::string prefix = demo_->path().string() + "/";
    for (std::size_t at; (at = conf.find(prefix)) != std::string::npos;)
      conf.erase(at, prefix.size());
    for (const auto& [key, value] : keys) {
      const std::size_t at = conf.find("\n" + key + " = ");
      if (at == std::string::npos) {
        // A new key goes to [search], or to [construction] when named "construction/key".
        if (key.rfind("construction/", 0) == 0)
          conf.insert(conf.find("[search]"), key.substr(13) + " = " + value + "\n");
        else
          conf += key + " = " + value + "\n";
      } else {
        conf.replace(at + 1, conf.find('\n', at + 1) - at - 1, key + " = " + value);
      }
    }
    WriteFile(dir / "run.conf", conf);
  }

  static testutil::TempDir* demo_;
  testutil::TempDir elsewhere_;  // the working directory of every run
};
testutil::TempDir* CommandLine::demo_ = nullptr;

// The table of exit statuses in the README, status by status (3 is the empty
// library's, tested below).
TEST_F(CommandLine, EveryExitStatusOfTheTable) {
  const std::string conf = *demo_ / "demo.conf";
  // A run stopped by Ctrl-C while it waits for its configuration's name (a
  // program that ignored it is killed, and ends the test with status 137).
  const std::string interrupt =
      "rm -f in.fifo; mkfifo in.fifo; \"$0\" < in.fifo & exec 3> in.fifo; sleep 0.5; "
      "kill -INT $!; sleep 0.2; kill -KILL $! 2>/dev/null; wait $!; s=$?; rm -f in.fifo; exit $s";
  const struct {
    std::vector<std::string> args;  // "sh" first: a shell runs the program
    int exitCode;
    std::string says;
  } cases[] = {
      {{"--version"}, 0, "QuorinGlyco 1.0\n"},
      {{"--help"}, 0, "130 Ctrl-C"},
      {{"run", "--help"}, 0, "--threads"},
      {{"fdr", "--out", *demo_ / "x.txt", conf}, 1, "its first line is not the header"},
      {{"frobnicate"}, 2, "frobnicate"},
      {{"run"}, 2, "CONFIG is required"},
      {{"run", conf, "--threads", "-1"}, 2, "--threads: expected a whole number from 0"},
      {{"run", conf, "--threads", "two"}, 2, "found \"two\"\nRun with --help"},
      {{"report", conf, "--top", "1e400"}, 2, "--top: expected a whole number from 0"},
      {{"fdr", "r.txt"}, 2, "--out is required"},
      {{"run", "missing.conf"}, 255, "missing.conf can't be read"},
      {{"report", "missing.conf"}, 255, "missing.conf can't be read"},
      {{"sh", "-c", interrupt, kProgram}, 130, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.args[0] + " " + (c.args.size() > 1 ? c.args[1] : ""));
    const bool shell = c.args[0] == "sh";
    // Standard input holds a configuration name that the classic interface
    // would run: with arguments it is never read.
    const auto result = RunProgram(shell ? "/bin/sh" : kProgram, conf + "\n",
                                   elsewhere_.path().string(),
                                   shell ? std::vector<std::string>(c.args.begin() + 1, c.args.end())
                                         : c.args);
    EXPECT_EQ(result.exitCode, c.exitCode) << result.output;
    EXPECT_TRUE(Has(result.output, c.says)) << result.output;
    EXPECT_FALSE(Has(result.output, ">> Constructing:"));
  }
}

TEST_F(CommandLine, RunTakesPathsFromTheConfigurationFolderAndGivesTheClassicFiles) {
  testutil::TempDir classic, native;
  CopyDemo(classic);
  // The q-values change no other output; they need the mass table the run chose.
  CopyDemo(native, {{"glycopeptide_fdr", "yes"}});
  const std::string installed = testutil::InstallProgram(classic.path().string());
  WriteFile(classic / "abs.conf", ReadFile(*demo_ / "demo.conf"));
  std::string conf = ReadFile(classic / "abs.conf");
  for (std::size_t at; (at = conf.find(demo_->path().string())) != std::string::npos;)
    conf.replace(at, demo_->path().string().size(), classic.path().string());
  WriteFile(classic / "abs.conf", conf);
  ASSERT_EQ(RunProgram(installed, classic / "abs.conf\n", elsewhere_.path().string()).exitCode, 0);

  const auto result = RunProgram(kProgram, "", elsewhere_.path().string(),
                                 {"run", native / "run.conf", "--threads", "2"});
  ASSERT_EQ(result.exitCode, 0) << result.output;
  for (const char* file : {"demo.quolib", "demo_libcomp.txt", "demo_result.txt"})
    EXPECT_TRUE(ReadFile(classic / file) == ReadFile(native / file)) << file;
  EXPECT_TRUE(fs::is_empty(elsewhere_.path()));
  EXPECT_TRUE(testutil::FileExists(native / "demo_result_qvalues.txt"));
  EXPECT_FALSE(testutil::FileExists(native / "demo_result.txt.tmp"));
  // Off a terminal the plain progress lines stay; the summary ends the run.
  EXPECT_TRUE(Has(result.output, "\t\tSpectra: "));
  for (const std::string& line : std::vector<std::string>{"    queries read                                400\n",
                                  "    result       " + (native / "demo_result.txt") + "\n",
                                  "    summary      " + (native / "demo_result_summary.json") + "\n"})
    EXPECT_TRUE(Has(result.output, line)) << line << result.output;
  EXPECT_TRUE(Has(ReadFile(native / "demo_result_summary.json"), "\"queries_read\":400"));
  // With q-values the summary leads with the target lines the q-value file passes at 1 %.
  std::size_t passing = 0;
  for (const std::string& line : testutil::ReadLines(native / "demo_result_qvalues.txt"))
    if (const auto f = testutil::Fields(line); f.size() > 9 && f[5] == "T" && std::atof(f[9].c_str()) <= 0.01) ++passing;
  char row[96];
  std::snprintf(row, sizeof row, "    %-34s %12zu\n", "targets at GlycopeptideQ <= 1 %", passing);
  EXPECT_TRUE(passing > 100 && Has(result.output, row)) << row << result.output;
  EXPECT_TRUE(Has(result.output, " (FDR column: the target-decoy estimate)\n"));
  // A run of a few hundred lines says below which q-value it can tell nothing.
  EXPECT_TRUE(Has(result.output, "too few lines and decoys to tell a GlycopeptideQ below 0.0"))
      << result.output;
  EXPECT_TRUE(Has(ReadFile(native / "demo_result_summary.json"), "\"lowest_glycopeptide_q\":"));
  // The report of the run lands beside its result.
  const auto report =
      RunProgram(kProgram, "", elsewhere_.path().string(), {"report", native / "run.conf", "--top", "5"});
  EXPECT_EQ(report.exitCode, 0) << report.output;
  EXPECT_TRUE(Has(ReadFile(native / "demo_result_report.html"), "</html>"));
  // A re-run stopped after it replaced the result: the run's other files are the
  // earlier run's, and the report refuses to combine them.
  const std::string ranked = ReadFile(native / "demo_result.txt");
  WriteFile(native / "demo_result.txt", ranked.substr(0, ranked.rfind('\n', ranked.size() - 2) + 1));
  const auto mixed =
      RunProgram(kProgram, "", elsewhere_.path().string(), {"report", native / "run.conf"});
  EXPECT_EQ(mixed.exitCode, 1);
  EXPECT_TRUE(Has(mixed.output, "the files come from different runs")) << mixed.output;
}

TEST_F(CommandLine, MissingInputsAreListedTogetherBeforeAnyWork) {
  testutil::TempDir dir;
  CopyDemo(dir, {{"identification_filename_1", "absent.txt"},
                 {"query_dataset_pathname_1", "sub/absent.mgf"}});
  const auto result =
      RunProgram(kProgram, "", elsewhere_.path().string(), {"run", dir / "run.conf"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_TRUE(Has(result.output, "[Error]: 2 inputs named in " + (dir / "run.conf") +
                                     " can't be read:\n\t\"identification_filename_1\" in section "
                                     "\"construction\": " +
                                     (dir / "absent.txt") +
                                     ": no such file\n\t\"query_dataset_pathname_1\""))
      << result.output;
  EXPECT_FALSE(testutil::FileExists(dir / "demo.quolib"));
}

TEST_F(CommandLine, FaultsSayWhatWasExpected) {
  const struct {
    std::pair<std::string, std::string> key;
    int exitCode;
    std::string says;
  } cases[] = {
      {{"query_product_ion_unit", "Da"},
       1,
       "Missing or invalid parameter \"query_product_ion_unit\" in section \"search\".\n"
       "\texpected: da or ppm, exactly in lower case; found \"Da\"\n"},
      {{"theta", "0.3x"},
       1,
       "\texpected: weight of the theoretical b/y ions in a library "
       "spectrum, from 0 to 1; found \"0.3x\"\n"},
      {{"library_dataset_format", "raw"}, 1, "mzml (also .mzML.gz) or mzxml (any case); found \"raw\""},
      {{"qurey_dataset_format", "mgf"},
       0,
       "[Warning]: The key \"qurey_dataset_format\" in section \"search\" is not one the "
       "program reads; it is ignored.\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.key.first);
    testutil::TempDir dir;
    CopyDemo(dir, {c.key});
    const auto result =
        RunProgram(kProgram, "", elsewhere_.path().string(), {"run", dir / "run.conf"});
    EXPECT_EQ(result.exitCode, c.exitCode) << result.output;
    EXPECT_TRUE(Has(result.output, c.says)) << result.output;
  }
}

TEST_F(CommandLine, PepXmlUpdatesATableBesideTheLibraryAndAnEmptyLibraryIsIncomplete) {
  testutil::TempDir dir;
  CopyDemo(dir, {{"identification_format", "pepxml"},
                 {"construction/probability_threshold", "0.5"},
                 {"identification_filename_1", "ids.pep.xml"}});
  WriteFile(dir / "ids.pep.xml",
            "<msms_pipeline_analysis><msms_run_summary><search_summary>"
            "<aminoacid_modification aminoacid=\"C\" massdiff=\"57.021464\" mass=\"160.030649\"/>"
            "</search_summary><spectrum_query spectrum=\"lib_run1.1.1.2\" assumed_charge=\"2\">"
            "<search_result><search_hit peptide=\"AANGTK\"><analysis_result>"
            "<peptideprophet_result probability=\"0.9\"/></analysis_result></search_hit>"
            "</search_result></spectrum_query></msms_run_summary></msms_pipeline_analysis>\n");
  const std::string table = fs::path(kProgram).parent_path() / "MassTable.ini";
  const std::string before = ReadFile(table);
  const auto result =
      RunProgram(kProgram, "", elsewhere_.path().string(), {"run", dir / "run.conf"});
  EXPECT_EQ(result.exitCode, 3) << result.output;
  EXPECT_TRUE(Has(result.output, "Incomplete: the library is empty; exit status 3."))
      << result.output;
  EXPECT_TRUE(ReadFile(table) == before);
  EXPECT_TRUE(Has(ReadFile(dir / "demo_MassTable.ini"), "[Glyco]"));
  EXPECT_TRUE(Has(result.output, "    mass table   " + (dir / "demo_MassTable.ini") + "\n"));
}

TEST_F(CommandLine, QueryDatasetsThatYieldNoSpectrumAreFailedInputs) {
  // An empty file; an mzML file whose only spectrum can't be decoded.
  const std::pair<const char*, const char*> cases[] = {
      {"mgf", ""},
      {"mzml", "<mzML><run><spectrumList><spectrum index=\"0\" id=\"scan=1\" defaultArrayLength=\"1\">"
               "<cvParam accession=\"MS:1000511\" value=\"2\"/><binaryDataArrayList>"
               "<binaryDataArray><cvParam accession=\"MS:1000514\"/><binary>@@@</binary></binaryDataArray>"
               "<binaryDataArray><cvParam accession=\"MS:1000515\"/><binary>AAAA</binary></binaryDataArray>"
               "</binaryDataArrayList></spectrum></spectrumList></run></mzML>\n"}};
  for (const auto& [format, content] : cases) {
    SCOPED_TRACE(format);
    testutil::TempDir dir;
    CopyDemo(dir, {{"query_dataset_format", format}, {"query_dataset_pathname_1", "queries"}});
    WriteFile(dir / "queries", content);
    const auto result = RunProgram(kProgram, "", elsewhere_.path().string(), {"run", dir / "run.conf"});
    EXPECT_EQ(result.exitCode, 3) << result.output;
    EXPECT_TRUE(Has(result.output, "[Warning]: not one spectrum could be read from " + (dir / "queries") + ".\n"))
        << result.output;
    EXPECT_TRUE(Has(result.output, "Incomplete: 1 input could not be read"));
    EXPECT_EQ(ReadFile(dir / "queries"), content);
  }
}

TEST_F(CommandLine, FdrOverShardsRanksAsOneRun) {
  testutil::TempDir dir;
  CopyDemo(dir);
  // The queries in two shards: the first 150 spectra and the rest.
  const std::string queries = ReadFile(dir / "glyco_run1.mgf");
  std::size_t cut = 0;
  for (int i = 0; i <= 150; ++i) cut = queries.find("BEGIN IONS", cut + 1);
  WriteFile(dir / "shard1.mgf", queries.substr(0, cut));
  WriteFile(dir / "shard2.mgf", queries.substr(cut));
  auto run = [&](const std::string& name, const std::string& datasets, const std::string& result) {
    std::string conf = ReadFile(dir / "run.conf");
    conf.replace(conf.find("query_dataset_number"),
                 conf.find("query_precursor") - conf.find("query_dataset_number"), datasets);
    conf.replace(conf.find("output_result_filename = "),
                 conf.find('\n', conf.find("output_result_filename = ")) -
                     conf.find("output_result_filename = "),
                 "output_result_filename = " + result);
    WriteFile(dir / name, conf);
    return RunProgram(kProgram, "", elsewhere_.path().string(), {"run", dir / name}).exitCode;
  };
  const std::string both =
      "query_dataset_number = 2\nquery_dataset_format = mgf\n"
      "query_dataset_pathname_1 = shard1.mgf\nquery_dataset_pathname_2 = shard2.mgf\n";
  ASSERT_EQ(run("one.conf", both, "one.txt"), 0);
  ASSERT_EQ(run("a.conf",
                "query_dataset_number = 1\nquery_dataset_format = mgf\nquery_dataset_pathname_1 = "
                "shard1.mgf\n",
                "a.txt"),
            0);
  ASSERT_EQ(run("b.conf",
                "query_dataset_number = 1\nquery_dataset_format = mgf\nquery_dataset_pathname_1 = "
                "shard2.mgf\n",
                "b.txt"),
            0);
  const auto merged =
      RunProgram(kProgram, "", elsewhere_.path().string(),
                 {"fdr", "--out", dir / "merged.txt", dir / "a.txt", dir / "b.txt"});
  ASSERT_EQ(merged.exitCode, 0) << merged.output;
  EXPECT_TRUE(ReadFile(dir / "merged.txt") == ReadFile(dir / "one.txt"));
  EXPECT_TRUE(Has(merged.output, "Target lines at FDR <= 1 %: ")) << merged.output;
  // Refused: not a result file, an output over an input, one file twice, lines
  // wider than their header, a result that its run's summary does not know.
  std::string wide = ReadFile(dir / "one.txt");
  wide.insert(wide.find('\n', wide.find('\n') + 1), std::string(12, '\t'));
  WriteFile(dir / "wide.txt", wide);
  const std::string b = ReadFile(dir / "b.txt");
  WriteFile(dir / "b.txt", b.substr(0, b.rfind('\n', b.size() - 2) + 1));
  const auto refused = RunProgram(
      kProgram, "", elsewhere_.path().string(),
      {"fdr", "--out", dir / "a.txt", dir / "a.txt", dir / "run.conf", dir / "wide.txt",
       dir / "./a.txt", dir / "b.txt"});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_TRUE(Has(refused.output, "run.conf can't be ranked: its first line is not the header"));
  EXPECT_TRUE(Has(refused.output, "is one of the result files to rank"));
  EXPECT_TRUE(Has(refused.output, "wide.txt can't be ranked: line 2 has 40 columns under a header of 28"));
  EXPECT_TRUE(Has(refused.output, "./a.txt and " + (dir / "a.txt") + " are the same file"));
  EXPECT_TRUE(Has(refused.output, "b.txt is not the result file that the run "));
}

TEST_F(CommandLine, TemplateNamesEveryKeyAndParses) {
  const auto result = RunProgram(kProgram, "", elsewhere_.path().string(), {"template"});
  ASSERT_EQ(result.exitCode, 0);
  for (const char* key : {"construction",
                          "modification_remove",
                          "identification_format",
                          "probability_threshold",
                          "identification_number",
                          "identification_filename_1",
                          "library_dataset_number",
                          "library_dataset_format",
                          "library_dataset_pathname_1",
                          "library_product_ion_unit",
                          "library_product_ion_tolerance",
                          "theta",
                          "output_speclib_filename",
                          "added_Y_ions",
                          "Y_ion_relative_intensity",
                          "N_glycan_motifs",
                          "protein_database",
                          "search",
                          "input_speclib_filename",
                          "query_dataset_number",
                          "query_dataset_format",
                          "query_dataset_pathname_1",
                          "query_precursor_ion_unit",
                          "query_precursor_ion_tolerance",
                          "query_product_ion_unit",
                          "query_product_ion_tolerance",
                          "output_result_filename",
                          "minimal_peptide_ions", "glycopeptide_fdr"}) {
    EXPECT_TRUE(Has(result.output, "\n" + std::string(key) + " = ")) << key;
  }
  testutil::TempDir dir;
  WriteFile(dir / "template.conf", result.output);
  const auto run =
      RunProgram(kProgram, "", elsewhere_.path().string(), {"run", dir / "template.conf"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_TRUE(Has(run.output, "can't be read:")) << run.output;
  EXPECT_FALSE(Has(run.output, "Missing or invalid") || Has(run.output, "[Warning]")) << run.output;
}

}  // namespace
