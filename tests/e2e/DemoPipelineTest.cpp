// The whole pipeline on a generated dataset: construction from a tab-txt list and
// MGF library spectra, search of intact glycopeptide queries, FDR. The
// generator's truth.tsv says what every query really is, so the ranking can be
// judged: true glycopeptides on top as targets, chance hits and decoys below.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "common/TestUtil.h"

namespace {

using testutil::ReadLines;
using testutil::TempDir;

// Tab-separated fields, empty ones included.
std::vector<std::string> Fields(const std::string& line) {
  std::vector<std::string> fields(1);
  for (char c : line) c == '\t' ? void(fields.emplace_back()) : fields.back().push_back(c);
  return fields;
}

struct CTruth {
  std::string kind;  // glyco, absent, no_marker, weak_marker
  std::string peptide, glycan;
  double glycanMass = 0.0;
  std::string site;
};

struct CHit {
  std::string query, sequence, glycan;
  double glycanMass;
  std::string site;
  double score;
  bool decoy;
  double fdr;
};

// Generates the demo into one folder, installs the program into another and runs
// both stages once for all tests of this file.
class DemoPipelineTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    dir_ = new TempDir();
    std::string bin = *dir_ / "bin";
    std::string data = *dir_ / "data";
    std::filesystem::create_directories(bin);
    std::string exe = testutil::InstallProgram(bin);
    generator_ = new testutil::RunResult(testutil::RunProgram(
        QUORIN_DATAGEN, "", ".", {"demo", data, "--masstable", bin + "/MassTable.ini"}));
    run_ = new testutil::RunResult(testutil::RunProgram(exe, data + "/demo.conf\n"));
  }
  static void TearDownTestSuite() { delete run_; delete generator_; delete dir_; }

  static std::string Data(const std::string& name) { return *dir_ / ("data/" + name); }

  static std::map<std::string, CTruth> Truth() {
    std::map<std::string, CTruth> truth;
    for (const auto& line : ReadLines(Data("truth.tsv")))  // the heading adds a harmless entry
      if (auto f = Fields(line); f.size() >= 9) truth[f[0]] = {f[1], f[2], f[4], std::atof(f[5].c_str()), f[6]};
    return truth;
  }

  static std::vector<CHit> Hits() {
    std::vector<CHit> hits;
    auto lines = ReadLines(Data("demo_result.txt"));
    for (std::size_t i = 1; i < lines.size(); ++i) {
      auto f = Fields(lines[i]);
      if (f.size() != 28) continue;
      std::string sequence = f[5];
      std::replace(sequence.begin(), sequence.end(), 'J', 'N');
      hits.push_back({f[0], sequence, f[9], std::atof(f[8].c_str()), f[10], std::atof(f[19].c_str()),
                      f[20] == "D", std::atof(f[27].c_str())});
    }
    return hits;
  }

  static bool IsCorrect(const CHit& hit, const std::map<std::string, CTruth>& truth) {
    auto it = truth.find(hit.query);
    return it != truth.end() && it->second.kind == "glyco" && !hit.decoy &&
           hit.sequence == it->second.peptide && hit.site == it->second.site;
  }

  static TempDir* dir_;
  static testutil::RunResult* generator_;
  static testutil::RunResult* run_;
};

TempDir* DemoPipelineTest::dir_ = nullptr;
testutil::RunResult *DemoPipelineTest::generator_ = nullptr, *DemoPipelineTest::run_ = nullptr;

TEST_F(DemoPipelineTest, RunsBothStagesAndDropsUnmarkedIdentifications) {
  ASSERT_EQ(generator_->exitCode, 0) << generator_->output;
  ASSERT_EQ(run_->exitCode, 0) << run_->output;
  for (const char* line : {">> Constructing:", ">> Searching:", ">> Estimating FDR.", "Finish!"})
    EXPECT_NE(run_->output.find(line), std::string::npos) << line;
  EXPECT_TRUE(testutil::FileExists(Data("demo_libcomp.txt")));

  // The generator mixes in lines without the mark and lines with a deamidation
  // off the sequon: the reader keeps some of the records, not all.
  std::size_t records = 0;
  for (const auto& line : ReadLines(Data("lib_ids.txt"))) records += !line.empty();
  const std::size_t at = run_->output.find(" identified spectra.");
  ASSERT_NE(at, std::string::npos);
  const std::size_t kept = std::stoul(run_->output.substr(run_->output.rfind('\t', at) + 1));
  EXPECT_GT(kept, 0u);
  EXPECT_LT(kept, records - 1);  // the heading is no record
}

TEST_F(DemoPipelineTest, LibraryHoldsTargetDecoyPairs) {
  // Name, sequence, mass and charge of each entry, in file order.
  std::vector<std::vector<std::string>> entries;
  for (const auto& line : ReadLines(Data("demo.quolib"))) {
    if (line.rfind("SpectrumName=", 0) == 0) entries.emplace_back(1, line.substr(13));
    for (const char* key : {"Sequence=", "PrecursorIonMass=", "Charge="})
      if (!entries.empty() && line.rfind(key, 0) == 0) entries.back().push_back(line.substr(std::string(key).size()));
  }
  // 200 peptide ions, a few of them with two sites and so two entries.
  ASSERT_GE(entries.size(), 400u);
  ASSERT_EQ(entries.size() % 2, 0u);
  for (std::size_t i = 0; i + 1 < entries.size(); i += 2) {
    const auto &target = entries[i], &decoy = entries[i + 1];
    ASSERT_EQ(target.size(), 4u);
    EXPECT_EQ(decoy, (std::vector<std::string>{"Decoy_" + target[0], decoy[1], target[2], target[3]}));
    EXPECT_EQ(std::count(target[1].begin(), target[1].end(), 'J'), 1) << target[1];
    EXPECT_EQ(std::count(decoy[1].begin(), decoy[1].end(), 'J'), 1) << decoy[1];
    EXPECT_NE(decoy[1], target[1]);
  }
}

TEST_F(DemoPipelineTest, TrueGlycopeptidesRankOnTopWithTheirGlycan) {
  auto truth = Truth();
  auto hits = Hits();
  ASSERT_FALSE(hits.empty());
  // Every line has the FDR column, and the lines are ordered by ascending FDR.
  const auto lines = ReadLines(Data("demo_result.txt"));
  EXPECT_EQ(hits.size() + 1, lines.size());
  EXPECT_EQ(Fields(lines[0]).size(), 28u);
  EXPECT_EQ(Fields(lines[0])[27], "FDR");
  for (std::size_t i = 1; i < hits.size(); ++i) EXPECT_GE(hits[i].fdr, hits[i - 1].fdr) << i;

  std::size_t glycoQueries = 0;
  for (const auto& [name, t] : truth) glycoQueries += t.kind == "glyco";
  ASSERT_GT(glycoQueries, 100u);

  // Nearly every true glycopeptide is found with its peptide and site (a few
  // lose their sialic acid marker to a stronger neighbour peak and find no
  // candidate for their glycan).
  std::size_t correct = 0;
  double weakestCorrect = 1e300;
  for (const auto& h : hits) {
    if (!IsCorrect(h, truth)) continue;
    ++correct;
    weakestCorrect = std::min(weakestCorrect, h.score);
    EXPECT_LE(h.fdr, 0.05) << h.query;
    // Isobaric compositions (NeuGc + dHex against Hex + NeuAc) can't be told apart.
    const CTruth& t = truth.at(h.query);
    EXPECT_TRUE(h.glycan == t.glycan || std::fabs(h.glycanMass - t.glycanMass) < 0.01)
        << h.query << " reported " << h.glycan << ", generated " << t.glycan;
  }
  EXPECT_GE(correct, glycoQueries * 95 / 100);

  // The top 80 % of the lines are all correct target hits with a low FDR.
  for (std::size_t i = 0; i < hits.size() * 8 / 10; ++i) {
    EXPECT_TRUE(IsCorrect(hits[i], truth)) << "line " << i + 1 << ": " << hits[i].query;
    EXPECT_LE(hits[i].fdr, 0.05);
  }

  // Decoy hits and hits of queries whose peptide isn't in the library exist
  // (chance matches), but all score below every correct identification.
  std::size_t decoys = 0;
  for (const auto& h : hits) {
    const CTruth& t = truth.at(h.query);
    EXPECT_TRUE(t.kind == "glyco" || t.kind == "absent") << "rejected query reported: " << h.query;
    if (h.decoy) ++decoys;
    if (h.decoy || t.kind == "absent") { EXPECT_LT(h.score, weakestCorrect) << h.query; }
  }
  EXPECT_GT(decoys, 0u);
}

}  // namespace
