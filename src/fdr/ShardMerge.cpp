#include "fdr/ShardMerge.h"

#include <iostream>
#include <unordered_map>

#include "fdr/GlycopeptideQValues.h"
#include "fdr/QValueFiles.h"
#include "fdr/ShardFile.h"
#include "run/Process.h"

namespace {

constexpr std::size_t kLibSpecNameColumn = 1;
constexpr std::size_t kMotifColumn = 11;

// Begin and end of a tab-separated column of a line (the end of the line when
// the line has fewer columns).
std::pair<std::size_t, std::size_t> Column(const std::string& line, std::size_t column) {
  std::size_t begin = 0;
  for (std::size_t i = 0; i < column && begin != std::string::npos; ++i) {
    begin = line.find('\t', begin);
    if (begin != std::string::npos) ++begin;
  }
  if (begin == std::string::npos) return {line.size(), line.size()};
  return {begin, std::min(line.find('\t', begin), line.size())};
}

std::string ColumnText(const std::string& line, std::size_t column) {
  const auto [begin, end] = Column(line, column);
  return line.substr(begin, end - begin);
}

void Refuse(const std::string& path, const std::string& why) {
  std::cout << "[Error]: " << path << " can't be merged: " << why << "." << std::endl;
}

std::string Describe(const CFileIdentity& identity) {
  char crc[16];
  std::snprintf(crc, sizeof crc, "%08x", identity.crc);
  return std::to_string(identity.size) + " bytes, CRC-32 " + crc;
}

}  // namespace

bool AnyShardFile(const std::vector<std::string>& results) {
  for (const std::string& path : results)
    for (const std::string& shard : {ShardPath(path), TextShardPath(path)})
      if (GetPathKind(shard) != PathKind::Missing) return true;
  return false;
}

bool MergeShards(const std::string& out, const std::vector<std::string>& results, CShardMerge& merged) {
  std::vector<CShardFile> shards(results.size());
  CGlycanNames glycans;
  bool ok = true;
  for (std::size_t k = 0; k < results.size(); ++k) {
    std::string why;
    CFileIdentity actual;
    if (GetPathKind(ShardPath(results[k])) == PathKind::Missing &&
        GetPathKind(TextShardPath(results[k])) != PathKind::Missing) {
      Refuse(results[k], "its shard file " + TextShardPath(results[k]) +
                             " has format version 1, this program reads version " +
                             std::to_string(kShardFormatVersion) + " (" + ShardPath(results[k]) +
                             "); search its datasets again with this version");
      ok = false;
    } else if (!ReadShardFile(ShardPath(results[k]), shards[k], glycans, why)) {
      Refuse(results[k], "its shard file " + ShardPath(results[k]) + " can't be used: " + why);
      ok = false;
    } else if (!IdentifyFile(results[k], actual, false) || !(actual == shards[k].resultIdentity)) {
      Refuse(results[k], "it is not the file its search wrote (" + Describe(actual) + ", the search wrote " +
                             Describe(shards[k].resultIdentity) + "): changed or cut short since");
      ok = false;
    }
  }
  if (!ok) return false;
  const CShardFile& first = shards.front();
  for (std::size_t k = 1; k < shards.size(); ++k) {
    if (!(shards[k].libraryIdentity == first.libraryIdentity)) {
      Refuse(results[k], "it was searched in another library (" + shards[k].library + ", " +
                             Describe(shards[k].libraryIdentity) + ") than " + results[0] + " (" +
                             first.library + ", " + Describe(first.libraryIdentity) + ")");
      ok = false;
    }
    for (std::size_t i = 0; i < first.settings.size() || i < shards[k].settings.size(); ++i) {
      const auto none = std::make_pair(std::string("?"), std::string("(none)"));
      const auto& mine = i < shards[k].settings.size() ? shards[k].settings[i] : none;
      const auto& theirs = i < first.settings.size() ? first.settings[i] : none;
      if (mine == theirs) continue;
      Refuse(results[k], "it was searched with " + mine.first + " = " + mine.second + ", " + results[0] +
                             " with " + theirs.first + " = " + theirs.second +
                             "; one estimate needs the same settings");
      ok = false;
    }
  }
  if (!ok) return false;

  CFdrEstimator estimator("", out, 1);
  std::vector<std::pair<std::size_t, std::size_t>> lineOf;  // of each line in load order: shard, line
  std::unordered_map<std::string, std::size_t> owner;  // query name: shard
  std::unordered_map<std::string, std::string> narrowed;  // entry: sequon, by earlier shards
  for (std::size_t k = 0; k < shards.size(); ++k) {
    const std::size_t begin = estimator.records.size();
    estimator.LoadFile(results[k], true);
    const std::size_t count = estimator.records.size() - begin;
    if (count != shards[k].resultLines ||
        (first.glycopeptideFdr && shards[k].evidence.Lines() != count)) {
      Refuse(results[k], "it holds " + std::to_string(count) + " lines, its shard file " +
                             std::to_string(shards[k].resultLines));
      return false;
    }
    for (std::size_t i = begin; i < estimator.records.size(); ++i) {
      std::string& line = estimator.records[i].line;
      const std::string query = ColumnText(line, 0);
      const auto [it, added] = owner.emplace(query, k);
      if (!added && it->second != k) {
        Refuse(results[k], "the query " + query + " is also in " + results[it->second] +
                               "; a query dataset was searched twice, or two hold the same names");
        return false;
      }
      if (first.glycopeptideFdr && shards[k].evidence.LineQuery(i - begin) != query) {
        Refuse(results[k], "its line " + std::to_string(i - begin + 1) + " (" + query +
                               ") is not the one its shard file describes");
        return false;
      }
      // An entry that an earlier dataset narrowed to one sequon shows that
      // sequon on every later line, as in one search over all datasets.
      const auto motif = narrowed.find(ColumnText(line, kLibSpecNameColumn));
      if (motif != narrowed.end()) {
        const auto [from, to] = Column(line, kMotifColumn);
        line.replace(from, to - from, motif->second);
      }
    }
    for (const CMotifNarrowing& n : shards[k].narrowings) narrowed.emplace(n.entry, n.sequon);
    for (std::size_t i = 0; i < count; ++i) lineOf.emplace_back(k, i);
    merged.searched.librarySpectra = shards[k].counts.librarySpectra;
    for (auto member : {&CSearchCounts::queriesRead, &CSearchCounts::queriesAccepted,
                        &CSearchCounts::withCandidates, &CSearchCounts::resultLines, &CSearchCounts::targets,
                        &CSearchCounts::decoys, &CSearchCounts::damagedPeaks, &CSearchCounts::damagedSpectra})
      merged.searched.*member += shards[k].counts.*member;
    merged.searchSeconds += shards[k].searchSeconds;
  }
  estimator.Rank();
  // The hits are read whole before anything is written: a record that does
  // not read refuses the merge.
  std::vector<CGlycopeptideHit> hits;
  if (first.glycopeptideFdr) {
    hits = ParseResultLines(estimator.records);
    std::size_t candidates = 0;
    for (const CShardFile& shard : shards) candidates += shard.evidence.Candidates();
    hits.reserve(hits.size() + candidates);
    for (std::size_t i = 0; i < hits.size(); ++i) {
      const auto [k, line] = lineOf[estimator.records[i].order];
      if (!shards[k].evidence.ReadLine(line, hits[i])) {
        Refuse(results[k], "the evidence of its line " + std::to_string(line + 1) + " is damaged");
        return false;
      }
    }
    // The candidates follow the lines, shard by shard, as a whole run's
    // search writes them dataset by dataset.
    for (std::size_t k = 0; k < shards.size(); ++k) {
      const CShardEvidence& evidence = shards[k].evidence;
      for (std::size_t i = 0; i < evidence.Candidates(); ++i) {
        if (!evidence.ReadCandidate(i, hits.emplace_back())) {
          Refuse(results[k], "the evidence of its candidate " + std::to_string(i + 1) + " is damaged");
          return false;
        }
      }
      shards[k].evidence = CShardEvidence{};  // read whole; its bytes are not needed again
    }
  }
  estimator.Write();
  merged.shards = shards.size();
  merged.lines = estimator.records.size();
  merged.ranked = estimator.Counts();
  merged.massTable = first.massTable;
  if (first.glycopeptideFdr) {
    std::cout << ">> Estimating glycopeptide q-values." << std::endl;
    merged.ranked.lowestGlycopeptideQ = FinishGlycopeptideQValues(hits, out);
    merged.qvalues = QValuePath(out);
    merged.features = QValuePath(out, ".pin");
  }
  return true;
}
