#pragma once
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fdr/GlycopeptideHit.h"
#include "molecule/Glycan.h"

// What the q-value step learns of the hits of a search from their spectra
// (the glycan call, the Y ions of the glycan and of its decoy, the site call
// and the b and y ions of the sequence), kept by a search whose q-values are
// estimated later, over several searches. Binary, because a merge reads
// hundreds of thousands of hits: numbers as their bytes (little-endian, IEEE
// 754), so that estimates over read-back evidence equal those over evidence
// just found; text as a 32-bit length and its bytes; a list as a 32-bit count
// and its values; flags (the ladder's ions found) as a 32-bit count and eight
// to a byte, the first in the lowest bit. The section is a table of the
// glycan names, then one record per hit, each a 32-bit length and that many
// bytes:
//   a result line: its query name and its evidence;
//   a next best candidate of the search: the fields the q-values read of its
//   line, then its evidence.
// Changing a record is a new shard format version.

// Glycans of the calls read back, by name; the pointers stay valid as long
// as the object.
class CGlycanNames {
 public:
  const CGlycan* Get(const std::string& name);

 private:
  std::map<std::string, CGlycan> byName;
};

class CShardEvidence {
 public:
  // Writing, in this order: the result lines, then the candidates; room for
  // `hits` records of a usual size first saves copying as they grow.
  void Reserve(std::size_t hits);
  void AddLine(const CGlycopeptideHit& hit);
  void AddCandidate(const CGlycopeptideHit& hit);
  // The section as the shard file keeps it: the glycan table, then the records.
  std::string Table() const;
  const std::string& Records() const { return bytes_; }

  // Reading a section of `lines` and `candidates` records. False, with `why`,
  // when its records do not add up to it; glycans are named in `glycans`.
  bool Load(std::string bytes, std::size_t lines, std::size_t candidates, CGlycanNames& glycans,
            std::string& why);
  std::size_t Lines() const { return lines_; }
  std::size_t Candidates() const { return candidates_; }
  // The query name of result line `i`.
  std::string_view LineQuery(std::size_t i) const;
  // The evidence of result line `i` into `hit`, whose own fields stay.
  bool ReadLine(std::size_t i, CGlycopeptideHit& hit) const;
  // Candidate `i` whole, with candidateRank 1.
  bool ReadCandidate(std::size_t i, CGlycopeptideHit& hit) const;

 private:
  void Add(const CGlycopeptideHit& hit, bool candidate);

  std::map<const CGlycan*, uint32_t> glycanIndex_;  // writing: 1-based, 0 for none
  std::vector<std::string> glycanNames_;
  std::string bytes_;  // the records
  // Reading: where in bytes_ the payload of each record lies, and its length.
  std::vector<std::pair<std::size_t, std::size_t>> records_;
  std::vector<const CGlycan*> glycans_;  // reading: by index, [0] null
  std::size_t lines_ = 0, candidates_ = 0;
};
