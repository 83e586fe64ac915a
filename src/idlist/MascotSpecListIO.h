#pragma once
#include <string>
#include <vector>

#include "idlist/SpecListIO.h"

// Reader of comma-separated Mascot exports.
class CMascotSpecListIO : public CSpecListIO {
 public:
  void Init(const CIdentificationFile& file) override;
  void Read(std::vector<CIdentifiedSpectrum>& list) override;

  std::vector<std::string> fields;  // the field list of the current row
};

// Replaces the first occurrence of `from` by `to` for as long as one is left.
void ReplaceAll(std::string& text, const std::string& from, const std::string& to);

// Removes every double quote, then splits at every comma: no quoting is known.
// The last field is the text behind the last comma, which may be empty.
void SplitCsvRow(const std::string& row, std::vector<std::string>& fields);

// "<n>.<one digit per residue>.<c>" -> the text form of a modification list;
// "-" for an empty string. `names` holds the names by identifier 0 to 9.
std::string DecodeVarModPos(const std::vector<std::string>& names, const std::string& positions);
