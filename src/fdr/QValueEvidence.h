#pragma once
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "fdr/GlycopeptideHit.h"
#include "molecule/Glycan.h"

// What the q-value step learns of one result line from its spectrum (the
// glycan call, the Y ions of the glycan and of its decoy, the site call and
// the b and y ions of the sequence), as text: a search whose q-values are
// estimated later, over several searches, keeps it beside its result file.
// Each field is one tab-separated column, named in a header; adding a field is
// one entry of the table in the .cpp and a new shard format version.

// Glycans of the calls read back, by name; the pointers stay valid as long
// as the object.
class CGlycanNames {
 public:
  const CGlycan* Get(const std::string& name);

 private:
  std::map<std::string, CGlycan> byName;
};

// The column names, tab-separated, in the order of the fields.
std::string EvidenceHeader();

// Appends the evidence of `hit` in the columns of EvidenceHeader, without line end.
void AppendEvidence(const CGlycopeptideHit& hit, std::string& line);

// Reads one row written by AppendEvidence into `hit` (the query name and the
// spectrum evidence). False, with `why`, when it has the wrong number of
// columns or a field does not read.
bool ReadEvidence(std::string_view row, CGlycopeptideHit& hit, CGlycanNames& glycans,
                  std::string& why);

// Copies the spectrum evidence (not the line's own fields) from one hit to another.
void CopyEvidence(const CGlycopeptideHit& from, CGlycopeptideHit& to);
