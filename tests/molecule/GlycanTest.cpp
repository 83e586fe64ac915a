#include <gtest/gtest.h>

#include "molecule/Glycan.h"
#include "molecule/MassTable.h"

namespace {

CGlycan Parsed(const std::string& key) {
  CGlycan glycan;
  glycan.name = key;
  glycan.ParseComposition();
  return glycan;
}

void ExpectCounts(const CGlycan& g, int hex, int hexNAc, int neuAc, int neuGc, int dHex) {
  EXPECT_EQ(g.counts.size(), 5u) << g.name;
  EXPECT_EQ(g.counts.at("Hex"), hex) << g.name;
  EXPECT_EQ(g.counts.at("HexNAc"), hexNAc) << g.name;
  EXPECT_EQ(g.counts.at("NeuAc"), neuAc) << g.name;
  EXPECT_EQ(g.counts.at("NeuGc"), neuGc) << g.name;
  EXPECT_EQ(g.counts.at("dHex"), dHex) << g.name;
}

TEST(Glycan, NewGlycanHasFiveZeroCountsAndNoFlags) {
  CGlycan glycan;
  ExpectCounts(glycan, 0, 0, 0, 0, 0);
  EXPECT_EQ(glycan.mass, 0.0);
  EXPECT_FALSE(glycan.hasNeuAc);
  EXPECT_FALSE(glycan.hasNeuGc);
  glycan.ParseComposition();  // empty name leaves everything at 0
  ExpectCounts(glycan, 0, 0, 0, 0, 0);
}

TEST(Glycan, ParseCompositionReadsEachPlace) {
  ExpectCounts(Parsed("5-2-0-0-1"), 5, 2, 0, 0, 1);
  ExpectCounts(Parsed("5-4-2-0-1"), 5, 4, 2, 0, 1);
  ExpectCounts(Parsed("5-4-0-1-0"), 5, 4, 0, 1, 0);
  ExpectCounts(Parsed("10-12-3-4-11"), 10, 12, 3, 4, 11);
  // Missing places read as 0; text behind a fifth "-" is ignored by atoi.
  ExpectCounts(Parsed("5-2"), 5, 2, 0, 0, 0);
  ExpectCounts(Parsed("5"), 5, 0, 0, 0, 0);
  ExpectCounts(Parsed("1-2-3-4-5-6"), 1, 2, 3, 4, 5);
  ExpectCounts(Parsed("x-2-y-0-1"), 0, 2, 0, 0, 1);
}

TEST(Glycan, AddGlycanSetsNameMassAndSialicFlags) {
  CMassTable table;
  table.AddGlycan("5-2-0-0-1", 1.0);
  table.AddGlycan("5-4-2-0-1", 2.0);
  table.AddGlycan("5-4-0-1-0", 3.0);
  table.AddGlycan("05-2-0-0-0", 4.0);
  table.AddGlycan("5-2-0-0-0", 4.0);
  ASSERT_EQ(table.glycans.size(), 5u);
  EXPECT_EQ(table.glycans[0].name, "5-2-0-0-1");
  EXPECT_EQ(table.glycans[0].mass, 1.0);
  EXPECT_FALSE(table.glycans[0].hasNeuAc);
  EXPECT_FALSE(table.glycans[0].hasNeuGc);
  EXPECT_TRUE(table.glycans[1].hasNeuAc);
  EXPECT_FALSE(table.glycans[1].hasNeuGc);
  EXPECT_FALSE(table.glycans[2].hasNeuAc);
  EXPECT_TRUE(table.glycans[2].hasNeuGc);
  // Same counts, different text: two glycans under the names as written.
  EXPECT_EQ(table.glycans[3].name, "05-2-0-0-0");
  EXPECT_EQ(table.glycans[4].name, "5-2-0-0-0");
  EXPECT_EQ(table.glycans[3].counts, table.glycans[4].counts);
}

TEST(NGlycanFrag, CoreMassesOfY0ToY5) {
  const CNGlycanFrag& frag = CNGlycanFrag::GetInstance();
  EXPECT_EQ(&frag, &CNGlycanFrag::GetInstance());
  EXPECT_EQ(frag.GetCoreMass(0), 0.0);
  EXPECT_EQ(frag.GetCoreMass(1), 203.0794);
  EXPECT_EQ(frag.GetCoreMass(2), 406.1588);
  EXPECT_EQ(frag.GetCoreMass(3), 568.2116);
  EXPECT_EQ(frag.GetCoreMass(4), 730.2644);
  EXPECT_EQ(frag.GetCoreMass(5), 892.3172);
  EXPECT_EQ(frag.GetCoreMass(6), -1.0);
  EXPECT_EQ(frag.GetCoreMass(4000000000u), -1.0);
}

}  // namespace
