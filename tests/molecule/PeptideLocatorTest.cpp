#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>

#include "molecule/PeptideLocator.h"

namespace {

using Outcome = CPeptideLocator::Outcome;

std::string Answer(Outcome outcome, const std::string& after) {
  switch (outcome) {
    case Outcome::Unique: return after;
    case Outcome::Differing: return "differing";
    case Outcome::Missing: return "missing";
  }
  return "?";
}

std::string Locate(const CPeptideLocator& locator, const std::string& peptide) {
  std::string after;
  return Answer(locator.ResiduesAfter(peptide, after), after);
}

}  // namespace

TEST(PeptideLocator, ResiduesAfterEveryPlace) {
  const std::map<std::string, std::string> proteins = {
      {"P1", "MSTRLAGVENKSAEQRVVDGYNRT"}, {"P2", "MKVVDGYNRAAGNK"}, {"P3", "AGNKSLAGVENKSAWW"}};
  const CPeptideLocator locator(proteins);
  EXPECT_EQ(Locate(locator, "LAGVENK"), "SA");        // two places, the same residues after
  EXPECT_EQ(Locate(locator, "VVDGYNR"), "differing");  // T at the end of P1, A in P2
  EXPECT_EQ(Locate(locator, "QRVVDGYNR"), "T-");       // one residue before the end
  EXPECT_EQ(Locate(locator, "AAGNK"), "--");           // at the very end
  EXPECT_EQ(Locate(locator, "GNK"), "differing");      // shorter than a word: "--" in P2, "SL" in P3
  EXPECT_EQ(Locate(locator, "NKSAEQ"), "RV");
  EXPECT_EQ(Locate(locator, "FFQDNK"), "missing");
  EXPECT_EQ(Locate(locator, "NRTMK"), "missing");  // never across two proteins
  EXPECT_EQ(Locate(locator, "lagvenk"), "missing");
  EXPECT_EQ(Locate(locator, ""), "missing");
}

TEST(PeptideLocator, AgreesWithTheScanOfEveryProtein) {
  // A small alphabet makes repeats, so that all three outcomes occur often.
  std::mt19937 random(7);
  auto letters = [&](std::size_t n) {
    std::string s;
    for (std::size_t i = 0; i < n; ++i) s += "AGNKST"[random() % 6];
    return s;
  };
  std::map<std::string, std::string> proteins;
  for (int p = 0; p < 40; ++p) proteins["P" + std::to_string(p)] = letters(20 + random() % 80);
  const CPeptideLocator locator(proteins);
  int outcomes[3] = {0, 0, 0};
  for (int i = 0; i < 4000; ++i) {
    const std::string peptide = letters(1 + random() % 9);
    std::string scanned;
    const Outcome byScan = ResiduesAfterByScan(proteins, peptide, scanned);
    ++outcomes[static_cast<int>(byScan)];
    EXPECT_EQ(Locate(locator, peptide), Answer(byScan, scanned)) << peptide;
  }
  for (int count : outcomes) EXPECT_GT(count, 100);
}
