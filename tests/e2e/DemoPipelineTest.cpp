// The whole pipeline on a generated dataset: construction from a tab-txt list and
// MGF library spectra, search of intact glycopeptide queries, FDR. The
// generator's truth.tsv says what every query really is, so the ranking can be
// judged: true glycopeptides on top as targets, chance hits and decoys below.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "common/TestUtil.h"
#include "run/StringUtil.h"

namespace {

using testutil::ReadLines;
using testutil::TempDir;

std::vector<std::string> Fields(const std::string& line) {
  std::vector<std::string> fields;
  std::size_t start = 0;
  while (true) {
    std::size_t tab = line.find('\t', start);
    fields.push_back(line.substr(start, tab == std::string::npos ? std::string::npos : tab - start));
    if (tab == std::string::npos) break;
    start = tab + 1;
  }
  return fields;
}

struct CTruth {
  std::string kind;  // glyco, absent, no_marker, weak_marker
  std::string peptide;
  std::string glycan;
  double glycanMass = 0.0;
  std::string site;
};

struct CHit {
  std::string query;
  std::string sequence;
  std::string glycan;
  double glycanMass;
  std::string site;
  double score;
  bool decoy;
  double fdr;
};

struct CLibraryEntry {
  std::string name, sequence, mass, charge;
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
  static void TearDownTestSuite() {
    delete run_;
    delete generator_;
    delete dir_;
  }

  static std::string Data(const std::string& name) { return *dir_ / ("data/" + name); }

  static std::map<std::string, CTruth> Truth() {
    std::map<std::string, CTruth> truth;
    auto lines = ReadLines(Data("truth.tsv"));
    for (std::size_t i = 1; i < lines.size(); ++i) {
      auto f = Fields(lines[i]);
      if (f.size() < 9) continue;
      truth[f[0]] = {f[1], f[2], f[4], std::atof(f[5].c_str()), f[6]};
    }
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
testutil::RunResult* DemoPipelineTest::generator_ = nullptr;
testutil::RunResult* DemoPipelineTest::run_ = nullptr;

TEST_F(DemoPipelineTest, RunsBothStagesAndDropsUnmarkedIdentifications) {
  ASSERT_EQ(generator_->exitCode, 0) << generator_->output;
  ASSERT_EQ(run_->exitCode, 0) << run_->output;
  EXPECT_NE(run_->output.find(">> Constructing:"), std::string::npos);
  EXPECT_NE(run_->output.find(">> Searching:"), std::string::npos);
  EXPECT_NE(run_->output.find(">> Estimating FDR."), std::string::npos);
  EXPECT_NE(run_->output.find("Finish!"), std::string::npos);
  EXPECT_TRUE(testutil::FileExists(Data("demo_libcomp.txt")));

  // The list reader keeps a line only when Deamidated[N] stands on the N of an
  // N-X-S/T sequon; the generator mixes in lines without the mark and lines with
  // a deamidation elsewhere.
  auto lines = ReadLines(Data("lib_ids.txt"));
  int kept = 0, dropped = 0;
  for (std::size_t i = 1; i < lines.size() && !lines[i].empty(); ++i) {
    auto f = Fields(lines[i]);
    ASSERT_EQ(f.size(), 4u) << lines[i];
    const std::string& seq = f[2];
    bool marked = false;
    std::vector<std::string> mods;
    Split(f[3], ";", mods);
    for (const auto& m : mods) {
      if (m.find("(Deamidated[N])") == std::string::npos) continue;
      std::size_t p = static_cast<std::size_t>(std::atoi(m.c_str()));
      if (p >= 1 && p + 2 <= seq.size() && seq[p - 1] == 'N' && seq[p] != 'P' &&
          (seq[p + 1] == 'S' || seq[p + 1] == 'T'))
        marked = true;
    }
    (marked ? kept : dropped) += 1;
  }
  EXPECT_GT(dropped, 0);
  EXPECT_NE(run_->output.find("\t\t" + std::to_string(kept) + " identified spectra."), std::string::npos)
      << run_->output;
}

TEST_F(DemoPipelineTest, LibraryHoldsTargetDecoyPairs) {
  std::vector<CLibraryEntry> entries;
  for (const auto& line : ReadLines(Data("demo.quolib"))) {
    if (line.rfind("SpectrumName=", 0) == 0) entries.push_back({line.substr(13), "", "", ""});
    else if (entries.empty()) continue;
    else if (line.rfind("Sequence=", 0) == 0) entries.back().sequence = line.substr(9);
    else if (line.rfind("PrecursorIonMass=", 0) == 0) entries.back().mass = line.substr(17);
    else if (line.rfind("Charge=", 0) == 0) entries.back().charge = line.substr(7);
  }
  // 200 peptide ions, a few of them with two sites and so two entries.
  ASSERT_GE(entries.size(), 400u);
  ASSERT_EQ(entries.size() % 2, 0u);
  for (std::size_t i = 0; i + 1 < entries.size(); i += 2) {
    const auto& target = entries[i];
    const auto& decoy = entries[i + 1];
    EXPECT_EQ(decoy.name, "Decoy_" + target.name);
    EXPECT_EQ(decoy.mass, target.mass);
    EXPECT_EQ(decoy.charge, target.charge);
    EXPECT_EQ(std::count(target.sequence.begin(), target.sequence.end(), 'J'), 1) << target.sequence;
    EXPECT_EQ(std::count(decoy.sequence.begin(), decoy.sequence.end(), 'J'), 1) << decoy.sequence;
    EXPECT_NE(decoy.sequence, target.sequence);
  }
}

TEST_F(DemoPipelineTest, ResultFileHasTheFdrHeaderAndRanking) {
  auto lines = ReadLines(Data("demo_result.txt"));
  ASSERT_GE(lines.size(), 2u);
  auto header = Fields(lines[0]);
  ASSERT_EQ(header.size(), 28u);
  EXPECT_EQ(header[24], "PreviousAminoAcid");
  EXPECT_EQ(header[27], "FDR");
  double previous = -1.0;
  for (std::size_t i = 1; i < lines.size(); ++i) {
    auto f = Fields(lines[i]);
    ASSERT_EQ(f.size(), 28u) << lines[i];
    double fdr = std::atof(f[27].c_str());
    EXPECT_GE(fdr, previous) << "lines are ordered by ascending FDR";
    previous = fdr;
  }
}

TEST_F(DemoPipelineTest, TrueGlycopeptidesRankOnTopWithTheirGlycan) {
  auto truth = Truth();
  auto hits = Hits();
  ASSERT_FALSE(hits.empty());

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
  std::size_t top = hits.size() * 8 / 10;
  for (std::size_t i = 0; i < top; ++i) {
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
    if (h.decoy || t.kind == "absent") {
      EXPECT_LT(h.score, weakestCorrect) << h.query;
    }
  }
  EXPECT_GT(decoys, 0u);
}

}  // namespace
