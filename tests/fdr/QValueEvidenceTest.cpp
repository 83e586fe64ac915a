// The spectrum evidence of a q-value line as a shard keeps it: read back, it
// gives the same estimate, so every field must come back exactly.
#include <gtest/gtest.h>

#include <string>

#include "fdr/QValueEvidence.h"

TEST(QValueEvidence, EveryFieldReadsBackExactlyAndDamagedRowsAreNamed) {
  CGlycanNames glycans;
  CGlycopeptideHit hit;
  hit.query = "run.17.17.3";
  hit.call.glycan = glycans.Get("5-4-1-0-0");
  hit.call.isobaric = {glycans.Get("4-4-0-1-1"), glycans.Get("6-4-0-0-1")};
  hit.call.isotope = 1;
  hit.call.massErrorPpm = -1.0 / 3.0;
  hit.yIons = {4, 0.123456789012345};
  hit.fragmentIons = 7;
  hit.site.candidates = {3, 9};
  hit.site.probability = {0.7, 0.30000000000000004};
  hit.site.reported = 3;
  hit.site.group = {};
  hit.ladder.masses = {147.11281f, 1024.5f};
  hit.ladder.found = {1, 0};
  hit.ladder.chance = 0.0125f;

  std::string row;
  AppendEvidence(hit, row);
  CGlycopeptideHit back;
  std::string why;
  ASSERT_TRUE(ReadEvidence(row, back, glycans, why)) << why;
  EXPECT_EQ(back.query, hit.query);
  EXPECT_EQ(back.call.glycan, hit.call.glycan);
  EXPECT_EQ(back.call.isobaric, hit.call.isobaric);
  EXPECT_EQ(back.call.massErrorPpm, hit.call.massErrorPpm);
  EXPECT_EQ(back.yIons.intensity, hit.yIons.intensity);
  EXPECT_EQ(back.fragmentIons, 7);
  EXPECT_EQ(back.site.candidates, hit.site.candidates);
  EXPECT_EQ(back.site.probability, hit.site.probability);
  EXPECT_EQ(back.site.reported, 3);
  EXPECT_TRUE(back.site.group.empty());
  EXPECT_EQ(back.ladder.masses, hit.ladder.masses);
  EXPECT_EQ(back.ladder.found, hit.ladder.found);
  EXPECT_EQ(back.ladder.chance, hit.ladder.chance);
  std::string again;
  AppendEvidence(back, again);
  EXPECT_EQ(again, row);

  // A list entry that is no number, and a row cut short.
  const std::size_t site = row.find("\t3;9\t");
  ASSERT_NE(site, std::string::npos);
  std::string damaged = row;
  damaged.replace(site, 5, "\t3;x\t");
  EXPECT_FALSE(ReadEvidence(damaged, back, glycans, why));
  EXPECT_NE(why.find("siteCandidates"), std::string::npos) << why;
  EXPECT_FALSE(ReadEvidence(row.substr(0, site), back, glycans, why));
  EXPECT_NE(why.find("columns"), std::string::npos) << why;
}
