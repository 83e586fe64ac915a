// Glycopeptide q-values end to end: a generated dataset holding every kind of
// query that can be misidentified (isotope errors, isobaric glycans, peptide
// forms the library lacks, noise that passes the marker test) is searched with
// glycopeptide_fdr on and off, and the q-values are judged against the
// generator's truth table.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "common/TestUtil.h"

namespace {

using testutil::Fields;
using testutil::ReadFile;
using testutil::ReadLines;
using testutil::TempDir;

struct CJudged {
  int kept = 0;           // target lines at or below the cut
  int right = 0;          // of them, right peptide form and glycan
  int rightWithSite = 0;  // and the site, or a site group holding it
  int siteGroups = 0;     // lines that name a site group
};

// Judges the target lines of a file whose q column is `qColumn` at `cut`.
CJudged Judge(const std::string& path, const std::string& qColumn, double cut,
              const std::map<std::string, std::vector<std::string>>& truth) {
  const std::vector<std::string> lines = ReadLines(path);
  std::map<std::string, std::size_t> column;
  const std::vector<std::string> header = Fields(lines.at(0));
  for (std::size_t i = 0; i < header.size(); ++i) column[header[i]] = i;
  CJudged judged;
  for (std::size_t n = 1; n < lines.size(); ++n) {
    const std::vector<std::string> f = Fields(lines[n]);
    if (f.size() != header.size() || f[column.at("Target/DecoyHit")] != "T" ||
        std::atof(f[column.at(qColumn)].c_str()) > cut)
      continue;
    ++judged.kept;
    const auto& t = truth.at(f[column.at("QuerySpecName")]);  // Kind Peptide Charge Glycan ... Modification
    std::string sequence = f[column.at("Sequence")];
    std::replace(sequence.begin(), sequence.end(), 'J', 'N');
    std::string glycans = f[column.at("GlycanName")];
    if (column.count("IsobaricGlycans")) glycans += ";" + f[column.at("IsobaricGlycans")];
    bool glycanRight = false;
    std::istringstream names(glycans);
    for (std::string name; std::getline(names, name, ';');) glycanRight |= name == t[4];
    const bool right = sequence == t[2] && f[column.at("Modification")] == t[7] && glycanRight;
    judged.right += right;
    std::string sites = f[column.at("GlycoLoc")];
    if (column.count("SiteCandidates")) {
      judged.siteGroups += !f[column.at("SiteCandidates")].empty();
      sites += ";" + f[column.at("SiteCandidates")];
    }
    bool siteRight = false;
    std::istringstream positions(sites);
    for (std::string position; std::getline(positions, position, ';');) siteRight |= position == t[6];
    judged.rightWithSite += right && siteRight;
  }
  return judged;
}

// The program installed in `dir`/bin and a generated dataset of `mode` in
// `dir`/data (seed 11), run once through the classic interface.
struct CGeneratedRun {
  std::string exe, data;
  testutil::RunResult run;
};
CGeneratedRun GenerateAndRun(const TempDir& dir, const std::string& mode, const std::string& peptides,
                             const std::string& queries) {
  CGeneratedRun generated;
  const std::string bin = dir / "bin";
  generated.data = dir / "data";
  std::filesystem::create_directories(bin);
  generated.exe = testutil::InstallProgram(bin);
  const testutil::RunResult made = testutil::RunProgram(
      QUORIN_DATAGEN, "", ".",
      {mode, generated.data, "--peptides", peptides, "--queries", queries, "--seed", "11", "--masstable",
       bin + "/MassTable.ini"});
  EXPECT_EQ(made.exitCode, 0) << made.output;
  generated.run = testutil::RunProgram(generated.exe, generated.data + "/" + mode + ".conf\n");
  return generated;
}

TEST(GlycopeptideQValuesEndToEnd, FalseShareAtOnePercentStaysWithinTheGoalAndPlainOutputsStay) {
  TempDir dir;
  const auto [exe, data, on] = GenerateAndRun(dir, "quality", "400", "4000");
  ASSERT_EQ(on.exitCode, 0) << on.output;

  // The same run without the key (and YES folded) leaves the same result file.
  std::string conf = ReadFile(data + "/quality.conf");
  const std::string key = "glycopeptide_fdr = yes\n";
  conf.replace(conf.find(key), key.size(), "");
  conf.replace(conf.find("quality_result.txt"), 18, "plain_result.txt");
  conf.replace(conf.find("construction = yes"), 18, "construction = no");
  testutil::WriteFile(data + "/plain.conf", conf);
  const testutil::RunResult off = testutil::RunProgram(exe, data + "/plain.conf\n");
  ASSERT_EQ(off.exitCode, 0) << off.output;
  EXPECT_EQ(ReadFile(data + "/plain_result.txt"), ReadFile(data + "/quality_result.txt"));
  EXPECT_FALSE(testutil::FileExists(data + "/plain_result_qvalues.txt"));
  EXPECT_EQ(off.output.find("glycopeptide"), std::string::npos);

  // The spectrum evidence is found on every thread; one thread gives the same q-values.
  conf = ReadFile(data + "/quality.conf");
  conf.replace(conf.find("quality_result.txt"), 18, "single_result.txt");
  conf.replace(conf.find("construction = yes"), 18, "construction = no");
  testutil::WriteFile(data + "/single.conf", conf);
  const testutil::RunResult single =
      testutil::RunProgram(exe, "", ".", {"run", data + "/single.conf", "--threads", "1"});
  ASSERT_EQ(single.exitCode, 0) << single.output;
  EXPECT_EQ(ReadFile(data + "/single_result_qvalues.txt"), ReadFile(data + "/quality_result_qvalues.txt"));

  // A q-value line for every query of the result file, and for some that it
  // lacks, found only with the precursor one isotope lower.
  const std::string qvalues = data + "/quality_result_qvalues.txt";
  std::set<std::string> withQ;
  for (const std::string& line : ReadLines(qvalues)) withQ.insert(Fields(line)[0]);
  std::set<std::string> withLine;
  for (const std::string& line : ReadLines(data + "/quality_result.txt")) withLine.insert(Fields(line)[0]);
  EXPECT_TRUE(std::includes(withQ.begin(), withQ.end(), withLine.begin(), withLine.end()));
  EXPECT_GT(withQ.size(), withLine.size());
  EXPECT_TRUE(testutil::FileExists(data + "/quality_result_qvalues.pin"));

  std::map<std::string, std::vector<std::string>> truth;
  for (const std::string& line : ReadLines(data + "/truth.tsv"))
    if (auto f = Fields(line); f.size() >= 9) truth[f[0]] = f;
  // Goal: at 1 % at most 2 % of the target lines wrong, and at least as many
  // right ones as the FDR column keeps at 1 %.
  const CJudged classic = Judge(data + "/quality_result.txt", "FDR", 0.01, truth);
  const CJudged q = Judge(qvalues, "GlycopeptideQ", 0.01, truth);
  EXPECT_GT(classic.kept - classic.right, classic.kept / 10);  // peptide decoys alone miss these
  EXPECT_LE((q.kept - q.right) * 50, q.kept) << q.right << " of " << q.kept << " right";
  EXPECT_GE(q.right, classic.right);
  const CJudged loose = Judge(qvalues, "GlycopeptideQ", 0.05, truth);
  EXPECT_LE((loose.kept - loose.right) * 20, loose.kept * 2);  // 5 %: within twice the estimate
}

TEST(GlycopeptideQValuesEndToEnd, CountingTheSiteTheFalseShareAtOnePercentStaysWithinTheGoal) {
  // Peptides of several sequons marked in part, neighbours of the same mass,
  // isotope errors: the q-values name the site the spectrum supports, or a
  // group of sites, and count a wrong one as a wrong line.
  TempDir dir;
  const auto [exe, data, run] = GenerateAndRun(dir, "sites", "1000", "10000");
  ASSERT_EQ(run.exitCode, 0) << run.output;
  const std::string qvalues = data + "/sites_result_qvalues.txt";
  EXPECT_FALSE(testutil::FileExists(data + "/sites_result_qvalues.candidates"));

  std::map<std::string, std::vector<std::string>> truth;
  for (const std::string& line : ReadLines(data + "/truth.tsv"))
    if (auto f = Fields(line); f.size() >= 9) truth[f[0]] = f;
  const CJudged classic = Judge(data + "/sites_result.txt", "FDR", 0.01, truth);
  EXPECT_GT(classic.right - classic.rightWithSite, classic.kept / 20);  // the search's wrong sites
  const CJudged q = Judge(qvalues, "GlycopeptideQ", 0.01, truth);
  // Goal: at most 1.5 % wrong counting the site, at most 5 % with a site group.
  EXPECT_LE((q.kept - q.rightWithSite) * 1000, q.kept * 15) << q.rightWithSite << " of " << q.kept;
  EXPECT_LE(q.siteGroups * 20, q.kept) << q.siteGroups << " of " << q.kept;
  EXPECT_GE(q.rightWithSite, classic.rightWithSite);
}

TEST(GlycopeptideQValuesEndToEnd, ChanceHitsOfRealSpectraWithoutDecoysAreNotCalledSure) {
  SKIP_WITHOUT_REALDATA();
  const std::vector<std::string> queries = {testutil::RealData("MetaMorpheus/Glyco_3383.mgf"),
                                            testutil::RealData("MetaMorpheus/yeast_glycan_25170.mgf"),
                                            testutil::RealData("glycopeptide_feature_learning/test1.mgf")};
  TempDir dir;
  const std::string bin = dir / "bin", data = dir / "data";
  std::filesystem::create_directories(bin);
  const std::string exe = testutil::InstallProgram(bin);
  ASSERT_EQ(testutil::RunProgram(QUORIN_DATAGEN, "", ".",
                                 {"demo", data, "--masstable", bin + "/MassTable.ini"}).exitCode, 0);
  // The demo library, searched with real glycopeptide spectra of other peptides.
  std::string conf = ReadFile(data + "/demo.conf");
  const std::string first = "query_dataset_number = 1\nquery_dataset_format = mgf\n";
  const std::size_t at = conf.find(first);
  ASSERT_NE(at, std::string::npos);
  conf.replace(at, conf.find('\n', at + first.size()) + 1 - at,
               "query_dataset_number = 3\nquery_dataset_format = mgf\nquery_dataset_pathname_1 = " +
                   queries[0] + "\nquery_dataset_pathname_2 = " + queries[1] +
                   "\nquery_dataset_pathname_3 = " + queries[2] + "\n");
  testutil::WriteFile(data + "/real.conf", conf + "glycopeptide_fdr = YES\n");
  const testutil::RunResult run = testutil::RunProgram(exe, data + "/real.conf\n");
  ASSERT_EQ(run.exitCode, 0) << run.output;

  // Every line is a chance hit on a target and no decoy is there to count:
  // the FDR column says 0, the q-values say nothing is sure.
  const std::vector<std::string> result = ReadLines(data + "/demo_result.txt");
  ASSERT_GE(result.size(), 2u);
  for (std::size_t n = 1; n < result.size(); ++n) EXPECT_EQ(Fields(result[n]).back(), "0.000");
  const std::vector<std::string> qvalues = ReadLines(data + "/demo_result_qvalues.txt");
  ASSERT_EQ(qvalues.size(), result.size());
  for (std::size_t n = 1; n < qvalues.size(); ++n)
    EXPECT_GE(std::atof(Fields(qvalues[n])[9].c_str()), 0.5) << qvalues[n];
}

}  // namespace
