// Merging the result files of separate searches (shards): what one search
// over all their datasets would have shown, or a refusal that writes nothing.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "common/TestUtil.h"
#include "fdr/ShardFile.h"
#include "fdr/ShardMerge.h"
#include "search/LibrarySearcher.h"

namespace {

using testutil::Fields;
using testutil::ReadLines;
using testutil::TempDir;

// A search result line of 27 columns.
std::string Line(const std::string& query, const std::string& entry, const std::string& motif,
                 const std::string& score, const std::string& hitKind) {
  return query + '\t' + entry + "\t2000.0\t1000.0\t2\tPEJTK\t-\t1000.0\t1000.0\t5-4-0-0-0\t3\t" + motif +
         "\t4\t2\t0.1\t5\t0.4\t0.5\t3.0\t" + score + '\t' + hitKind + "\tb3+;\ty3+;\tP1\tK\tA\t10";
}

// Writes a result file and its shard file as `run --no-fdr` would; `change`
// may alter the shard before it is written.
std::string MakeShard(const TempDir& dir, const std::string& name, const std::vector<std::string>& lines,
                      std::vector<CMotifNarrowing> narrowings = {},
                      const std::function<void(CShardFile&)>& change = nullptr) {
  const std::string result = dir / (name + ".txt");
  std::string text = std::string(kSearchResultHeader) + '\n';
  for (const std::string& line : lines) text += line + '\n';
  testutil::WriteFile(result, text);
  CShardFile shard;
  shard.library = "study.quolib";
  shard.libraryIdentity = {4096, 0x1234abcd};
  shard.settings = {{"query_precursor_ion_tolerance", "10"}, {"minimal_peptide_ions", "2"}};
  shard.result = result;
  shard.resultLines = lines.size();
  EXPECT_TRUE(IdentifyFile(result, shard.resultIdentity, false));
  shard.narrowings = std::move(narrowings);
  if (change) change(shard);
  EXPECT_TRUE(WriteShardFile(shard, ShardPath(result)));
  return result;
}

// Gives a shard of the line "b.1" the spectrum evidence of that line.
void WithEvidence(CShardFile& shard) {
  shard.glycopeptideFdr = true;
  CGlycopeptideHit hit;
  hit.query = "b.1";
  hit.ladder.masses = {147.11f, 248.16f};
  shard.evidence.AddLine(hit);
}

std::string Column(const std::vector<std::string>& lines, const std::string& query, std::size_t column) {
  for (const std::string& line : lines)
    if (Fields(line)[0] == query) return Fields(line)[column];
  return "(no line)";
}

TEST(ShardMerge, LinesOfAnEntryShowTheSequonThatAnEarlierShardNarrowedItTo) {
  TempDir dir;
  // Entry 7 has two sites: shard a reported NXT first, so in one search the
  // later lines of entry 7 show NXT; shard b alone did not know.
  const std::string a = MakeShard(dir, "a", {Line("a.1", "7", "NXT", "9.0", "T"), Line("a.2", "8", "NXS", "8.0", "T")},
                                  {{"7", "NXT"}});
  const std::string b = MakeShard(dir, "b", {Line("b.1", "7", "NXS", "7.0", "T"), Line("b.2", "Decoy_7", "NXS", "1.0", "D")},
                                  {{"8", "NXT"}});
  CShardMerge merged;
  ASSERT_TRUE(MergeShards(dir / "all.txt", {a, b}, merged));
  const std::vector<std::string> lines = ReadLines(dir / "all.txt");
  ASSERT_EQ(lines.size(), 5u);
  EXPECT_EQ(Column(lines, "b.1", 11), "NXT");
  // A narrowing of a later shard does not reach back; other entries stay.
  EXPECT_EQ(Column(lines, "a.2", 11), "NXS");
  EXPECT_EQ(Column(lines, "b.2", 11), "NXS");
  // Ranked by score over both shards, with the FDR column.
  EXPECT_EQ(Fields(lines[1])[0], "a.1");
  EXPECT_EQ(Fields(lines[3])[0], "b.1");
  EXPECT_EQ(merged.shards, 2u);
  EXPECT_EQ(merged.lines, 4u);
  EXPECT_EQ(merged.ranked.targets, 3u);
}

TEST(ShardMerge, RefusesShardsThatDoNotBelongTogetherAndWritesNothing) {
  const std::vector<std::string> firstLines = {Line("a.1", "7", "NXT", "9.0", "T")};
  const std::vector<std::string> secondLines = {Line("b.1", "8", "NXS", "7.0", "T")};
  struct Case {
    const char* what;
    std::function<void(CShardFile&)> change;  // of the second shard
    std::function<void(const std::string& result)> damage;  // of its files, once written
    std::vector<std::string> lines;
    std::string message;
  };
  const std::vector<Case> cases = {
      {"shard file missing", nullptr,
       [](const std::string& result) { std::filesystem::remove(ShardPath(result)); }, secondLines,
       "it is not there"},
      {"shard file cut short", nullptr,
       [](const std::string& result) {
         std::string text = testutil::ReadFile(ShardPath(result));
         testutil::WriteFile(ShardPath(result), text.substr(0, text.rfind("end")));
       },
       secondLines, "cut short"},
      {"older format version", nullptr,
       [](const std::string& result) {
         std::string text = testutil::ReadFile(ShardPath(result));
         testutil::WriteFile(ShardPath(result), text.replace(text.find("\t2\n"), 3, "\t1\n"));
       },
       secondLines, "format version 1"},
      {"format version 1, kept as text under its old name", nullptr,
       [](const std::string& result) { std::filesystem::rename(ShardPath(result), TextShardPath(result)); },
       secondLines, "_shard.tsv has format version 1"},
      {"evidence cut short", WithEvidence,
       [](const std::string& result) {
         std::string text = testutil::ReadFile(ShardPath(result));
         testutil::WriteFile(ShardPath(result), text.substr(0, text.size() - 1));
       },
       secondLines, "its evidence lacks 1 bytes"},
      {"evidence damaged", WithEvidence,
       [](const std::string& result) {
         std::string text = testutil::ReadFile(ShardPath(result));
         text.back() ^= 0x40;
         testutil::WriteFile(ShardPath(result), text);
       },
       secondLines, "its evidence is damaged (its CRC-32"},
      {"another library", [](CShardFile& s) { s.libraryIdentity.crc ^= 1; }, nullptr, secondLines,
       "another library"},
      {"other settings", [](CShardFile& s) { s.settings[1].second = "3"; }, nullptr, secondLines,
       "minimal_peptide_ions = 3"},
      {"a query name of the first shard", nullptr, nullptr, {Line("a.1", "8", "NXS", "7.0", "T")},
       "the query a.1 is also in"},
      {"result file cut after its search", nullptr,
       [](const std::string& result) {
         std::string text = testutil::ReadFile(result);
         testutil::WriteFile(result, text.substr(0, text.size() - 5));
       },
       secondLines, "not the file its search wrote"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    TempDir dir;
    const std::string a = MakeShard(dir, "a", firstLines);
    const std::string b = MakeShard(dir, "b", c.lines, {}, c.change);
    if (c.damage) c.damage(b);
    CShardMerge merged;
    testing::internal::CaptureStdout();
    EXPECT_FALSE(MergeShards(dir / "all.txt", {a, b}, merged));
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_NE(printed.find(c.message), std::string::npos) << printed;
    EXPECT_FALSE(testutil::FileExists(dir / "all.txt"));
  }
}

}  // namespace
