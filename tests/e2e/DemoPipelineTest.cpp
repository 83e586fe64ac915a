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

using testutil::Fields;

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

std::map<std::string, CTruth> Truth(const std::string& path) {
  std::map<std::string, CTruth> truth;
  for (const auto& line : ReadLines(path))  // the heading adds a harmless entry
    if (auto f = Fields(line); f.size() >= 9) truth[f[0]] = {f[1], f[2], f[4], std::atof(f[5].c_str()), f[6]};
  return truth;
}

std::vector<CHit> Hits(const std::vector<std::string>& lines) {
  std::vector<CHit> hits;
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

bool IsCorrect(const CHit& hit, const std::map<std::string, CTruth>& truth) {
  auto it = truth.find(hit.query);
  return it != truth.end() && it->second.kind == "glyco" && !hit.decoy &&
         hit.sequence == it->second.peptide && hit.site == it->second.site;
}

// Generates the demo into one folder, installs the program into another and
// runs all three stages.
TEST(DemoPipelineTest, TrueGlycopeptidesRankOnTopWithTheirGlycan) {
  TempDir dir;
  const std::string bin = dir / "bin", data = dir / "data";
  std::filesystem::create_directories(bin);
  const std::string exe = testutil::InstallProgram(bin);
  const auto generator = testutil::RunProgram(QUORIN_DATAGEN, "", ".",
                                              {"demo", data, "--masstable", bin + "/MassTable.ini"});
  ASSERT_EQ(generator.exitCode, 0) << generator.output;
  const auto run = testutil::RunProgram(exe, data + "/demo.conf\n");
  ASSERT_EQ(run.exitCode, 0) << run.output;
  const auto truth = Truth(data + "/truth.tsv");
  const auto lines = ReadLines(data + "/demo_result.txt");
  const auto hits = Hits(lines);
  ASSERT_FALSE(hits.empty());
  // Every line has the FDR column, and the lines are ordered by ascending FDR.
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
