// The spectrum evidence of q-value lines as a shard keeps it: read back, it
// gives the same estimate, so every field must come back exactly; damaged
// bytes are refused, never read past.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>

#include "fdr/ShardEvidence.h"

namespace {

CGlycopeptideHit Hit(CGlycanNames& glycans) {
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
  hit.ladder.masses = {147.11281f, 1024.5f};
  hit.ladder.found = {1, 0, 0, 1, 0, 0, 0, 0, 1};  // more than a byte of flags
  hit.ladder.chance = 0.0125f;
  return hit;
}

void ExpectSameEvidence(const CGlycopeptideHit& back, const CGlycopeptideHit& hit) {
  EXPECT_EQ(back.call.glycan->name, hit.call.glycan->name);
  ASSERT_EQ(back.call.isobaric.size(), 2u);
  EXPECT_EQ(back.call.isobaric[1]->name, "6-4-0-0-1");
  EXPECT_EQ(back.call.isotope, 1);
  EXPECT_EQ(back.call.massErrorPpm, hit.call.massErrorPpm);
  EXPECT_EQ(std::isnan(back.call.rivalErrorPpm), std::isnan(hit.call.rivalErrorPpm));
  EXPECT_EQ(back.yIons.intensity, hit.yIons.intensity);
  EXPECT_EQ(back.fragmentIons, 7);
  EXPECT_EQ(back.site.candidates, hit.site.candidates);
  EXPECT_EQ(back.site.probability, hit.site.probability);
  EXPECT_EQ(back.site.reported, 3);
  EXPECT_TRUE(back.site.group.empty());
  EXPECT_EQ(back.ladder.masses, hit.ladder.masses);
  EXPECT_EQ(back.ladder.found, hit.ladder.found);
  EXPECT_EQ(back.ladder.chance, hit.ladder.chance);
}

TEST(ShardEvidence, LinesAndCandidatesReadBackExactly) {
  CGlycanNames glycans;
  const CGlycopeptideHit line = Hit(glycans);
  CGlycopeptideHit candidate = Hit(glycans);
  candidate.call.glycan = nullptr;  // no composition fits
  candidate.call.isobaric = {candidate.call.isobaric[1]};
  candidate.sequence = "LTGJSSVIEK";
  candidate.modification = "9,Carbamidomethyl[C];";
  candidate.glycoLoc = "4";
  candidate.decoy = true;
  candidate.queryMH = 4220.8842;
  candidate.charge = 3;
  candidate.proteinStart = 124;
  candidate.lineFeatures = {1.5, 0.25, std::log1p(3.0)};
  CShardEvidence written;
  written.AddLine(line);
  written.AddCandidate(candidate);

  CGlycanNames names;  // the merge's own table
  CShardEvidence read;
  std::string why;
  ASSERT_TRUE(read.Load(written.Table() + written.Records(), 1, 1, names, why)) << why;
  EXPECT_EQ(read.LineQuery(0), "run.17.17.3");
  CGlycopeptideHit back;
  back.sequence = "PEPTIDE";  // the result line's own fields stay
  ASSERT_TRUE(read.ReadLine(0, back));
  EXPECT_EQ(back.sequence, "PEPTIDE");
  ExpectSameEvidence(back, line);
  // Glycans of equal names are one object of the merge's table.
  EXPECT_EQ(back.call.glycan, names.Get("5-4-1-0-0"));

  CGlycopeptideHit other;
  ASSERT_TRUE(read.ReadCandidate(0, other));
  EXPECT_EQ(other.candidateRank, 1);
  EXPECT_EQ(other.query, "run.17.17.3");
  EXPECT_EQ(other.sequence, candidate.sequence);
  EXPECT_EQ(other.modification, candidate.modification);
  EXPECT_EQ(other.glycoLoc, "4");
  EXPECT_TRUE(other.decoy);
  EXPECT_EQ(other.queryMH, candidate.queryMH);
  EXPECT_EQ(other.charge, 3u);
  EXPECT_EQ(other.proteinStart, 124);
  EXPECT_EQ(other.lineFeatures, candidate.lineFeatures);
  EXPECT_EQ(other.call.glycan, nullptr);
  ASSERT_EQ(other.call.isobaric.size(), 1u);
  EXPECT_EQ(other.call.isobaric[0], names.Get("6-4-0-0-1"));
}

TEST(ShardEvidence, DamagedSectionsAreRefusedAndDamagedRecordsDoNotRead) {
  CGlycanNames glycans;
  CShardEvidence written;
  written.AddLine(Hit(glycans));
  written.AddCandidate(Hit(glycans));
  const std::string bytes = written.Table() + written.Records();
  CShardEvidence read;
  std::string why;
  // Records that do not add up to the section: one missing, one cut short,
  // bytes left over.
  EXPECT_FALSE(read.Load(bytes, 1, 2, glycans, why));
  EXPECT_NE(why.find("2 whole records, not the 3"), std::string::npos) << why;
  EXPECT_FALSE(read.Load(bytes.substr(0, bytes.size() - 1), 1, 1, glycans, why));
  EXPECT_FALSE(read.Load(bytes + '\0', 1, 1, glycans, why));
  EXPECT_FALSE(read.Load(bytes.substr(0, 6), 0, 0, glycans, why));
  EXPECT_NE(why.find("table of glycans"), std::string::npos) << why;

  // A record of the right length whose glycan number the table lacks, and
  // one whose list claims more values than the record holds.
  const std::size_t glycan = bytes.find("run.17.17.3") + 11;  // the line's glycan number
  std::string damaged = bytes;
  damaged[glycan] = 9;
  ASSERT_TRUE(read.Load(damaged, 1, 1, glycans, why)) << why;
  CGlycopeptideHit back;
  EXPECT_FALSE(read.ReadLine(0, back));
  EXPECT_TRUE(read.ReadCandidate(0, back));
  const uint32_t huge = 0xffffffff;
  damaged = bytes;
  std::memcpy(damaged.data() + glycan + 4 + 4 + 8 + 4, &huge, sizeof huge);  // the isobaric count
  ASSERT_TRUE(read.Load(damaged, 1, 1, glycans, why)) << why;
  EXPECT_FALSE(read.ReadLine(0, back));
}

}  // namespace
