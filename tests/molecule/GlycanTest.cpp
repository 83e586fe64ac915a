#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "molecule/Glycan.h"
#include "molecule/MassTable.h"

namespace {

// Hex, HexNAc, NeuAc, NeuGc, dHex of a parsed composition key.
std::vector<int> Counts(const std::string& key) {
  CGlycan glycan;
  glycan.name = key;
  glycan.ParseComposition();
  EXPECT_EQ(glycan.counts.size(), 5u) << key;
  std::vector<int> counts;
  for (const char* name : {"Hex", "HexNAc", "NeuAc", "NeuGc", "dHex"})
    counts.push_back(glycan.counts.at(name));
  return counts;
}

TEST(Glycan, ParseCompositionReadsEachPlace) {
  using V = std::vector<int>;
  EXPECT_EQ(Counts(""), (V{0, 0, 0, 0, 0}));
  EXPECT_EQ(Counts("5-2-0-0-1"), (V{5, 2, 0, 0, 1}));
  EXPECT_EQ(Counts("10-12-3-4-11"), (V{10, 12, 3, 4, 11}));
  // Missing places read as 0; text behind a fifth "-" is ignored by atoi.
  EXPECT_EQ(Counts("5-2"), (V{5, 2, 0, 0, 0}));
  EXPECT_EQ(Counts("1-2-3-4-5-6"), (V{1, 2, 3, 4, 5}));
  EXPECT_EQ(Counts("x-2-y-0-1"), (V{0, 2, 0, 0, 1}));
}

TEST(Glycan, AddGlycanSetsNameMassAndSialicFlags) {
  CMassTable table;
  for (const char* key : {"5-2-0-0-1", "5-4-2-0-1", "5-4-0-1-0", "05-2-0-0-0", "5-2-0-0-0"})
    table.AddGlycan(key, 4.0);
  ASSERT_EQ(table.glycans.size(), 5u);
  EXPECT_EQ(table.glycans[0].mass, 4.0);
  std::string flags;
  for (const CGlycan& g : table.glycans) {
    flags += g.hasNeuAc ? 'A' : '-';
    flags += g.hasNeuGc ? 'G' : '-';
  }
  EXPECT_EQ(flags, "--A--G----");
  // Same counts, different text: two glycans under the names as written.
  EXPECT_EQ(table.glycans[3].name, "05-2-0-0-0");
  EXPECT_EQ(table.glycans[3].counts, table.glycans[4].counts);
}

}  // namespace
