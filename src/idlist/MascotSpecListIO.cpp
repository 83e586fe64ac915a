#include "idlist/MascotSpecListIO.h"

#include <algorithm>
#include <iostream>
#include <map>

#include "idlist/ListFile.h"
#include "run/InputFailures.h"
#include "run/TextLine.h"

void ReplaceAll(std::string& text, const std::string& from, const std::string& to) {
  if (from.empty()) return;  // an empty pattern would occur for ever
  // Each replacement starts the search again from the front, as a new
  // occurrence can form across the replaced text.
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from))
    text.replace(at, from.size(), to);
}

void SplitCsvRow(const std::string& row, std::vector<std::string>& fields) {
  fields.clear();
  std::string current;
  for (char c : row) {
    if (c == '"') continue;
    if (c == ',') {
      fields.push_back(std::move(current));
      current.clear();
    } else {
      current.push_back(c);
    }
  }
  fields.push_back(std::move(current));
}

namespace {
bool IsIdentifierDigit(char c) { return c >= '1' && c <= '9'; }

const std::string& NameOf(const std::vector<std::string>& names, char digit) {
  static const std::string kNone;
  std::size_t id = static_cast<std::size_t>(digit - '0');
  return id < names.size() ? names[id] : kNone;
}
}  // namespace

std::string DecodeVarModPos(const std::vector<std::string>& names, const std::string& positions) {
  if (positions.empty()) return "-";
  std::string result;
  if (IsIdentifierDigit(positions[0])) {
    result += "0,";
    result += NameOf(names, positions[0]);
    result += ';';
  }
  for (std::size_t i = 1; i + 2 < positions.size(); ++i) {
    if (!IsIdentifierDigit(positions[i + 1])) continue;
    result += std::to_string(i);
    result += ',';
    result += NameOf(names, positions[i + 1]);
    result += ';';
  }
  return result;
}

void CMascotSpecListIO::Init(const CIdentificationFile& file) { path = file.path; }

namespace {

constexpr const char* kTitleColumn = "pep_scan_title";
constexpr const char* kSequenceColumn = "pep_seq";
constexpr const char* kPositionColumn = "pep_var_mod_pos";

// A file that ends before one of the section lines has no table to read; it
// gives no records and the run goes on with the next list.
void ReportMissing(const std::string& path, const std::string& what) {
  std::cout << "[Error]: The Mascot list \"" << path << "\" has no line with \"" << what
            << "\"! No result is read from it.\n";
  NoteInputFailure();
}

// Lines re-saved by a spreadsheet come wrapped in quotes ("2,Deamidated (N),...").
// A test of the very first character would find no modification row in such a
// file, and every record would lose its names; so the identifier is taken as
// the first character behind the leading quotes. SplitCsvRow drops the quotes.
char FirstUnquoted(const std::string& line) {
  std::size_t at = line.find_first_not_of('"');
  return at == std::string::npos ? '\0' : line[at];
}

}  // namespace

void CMascotSpecListIO::Read(std::vector<CIdentifiedSpectrum>& list) {
  std::ifstream in;
  if (!OpenListFile(path, in)) return;
  std::string line;
  auto skipTo = [&](const char* marker) {
    while (line.find(marker) == std::string::npos)
      if (!ReadLine(in, line)) return false;
    return true;
  };
  line.clear();
  if (!skipTo("Variable modifications")) return ReportMissing(path, "Variable modifications");
  if (!skipTo("Identifier")) return ReportMissing(path, "Identifier");

  std::vector<std::string> names(10);
  ReadLine(in, line);
  while (IsIdentifierDigit(FirstUnquoted(line))) {
    SplitCsvRow(line, fields);
    std::string name = fields.size() > 1 ? fields[1] : std::string();
    name.erase(std::remove(name.begin(), name.end(), ' '), name.end());
    ReplaceAll(name, "(", "[");
    ReplaceAll(name, ")", "]");
    int id = ParseInt(fields[0]);
    // Position strings hold one digit per residue: identifiers above 9 can't
    // stand in them, and the table has no place for them.
    if (id >= 0 && id <= 9) {
      names[static_cast<std::size_t>(id)] = name;
    } else {
      std::cout << "[Warning]: The modification " << name << " of \"" << path
                << "\" has the identifier " << id << ", above 9! It is ignored!\n";
    }
    if (!ReadLine(in, line)) line.clear();
  }
  if (!skipTo("Protein hits")) return ReportMissing(path, "Protein hits");

  std::string heading;
  if (!ReadLine(in, line) || !ReadLine(in, heading)) {
    std::cout << "[Error]: The Mascot list \"" << path
              << "\" has no heading row! The file is faulty and is skipped!\n";
    NoteInputFailure();
    return;
  }
  std::map<std::string, std::size_t> columns;
  SplitCsvRow(heading, fields);
  for (std::size_t i = 0; i < fields.size(); ++i) columns[fields[i]] = i;
  std::size_t index[3] = {0, 0, 0};
  const char* names3[3] = {kTitleColumn, kSequenceColumn, kPositionColumn};
  for (int c = 0; c < 3; ++c) {
    auto found = columns.find(names3[c]);
    if (found == columns.end()) {
      std::cout << "[Error]: The heading row of the Mascot list \"" << path
                << "\" has no column " << names3[c] << "! The file is faulty and is skipped!\n";
      NoteInputFailure();
      return;
    }
    index[c] = found->second;
  }
  const std::size_t needed = *std::max_element(index, index + 3) + 1;

  // Rows that don't reach the needed columns (blank lines, later sections) give
  // no record; they are counted and reported once.
  std::size_t shortRows = 0;
  bool tooLong = false;
  while (ReadLine(in, line, &tooLong) && !in.eof()) {
    SplitCsvRow(line, fields);
    if (fields.size() < needed) {
      ++shortRows;
    } else {
      const std::string& title = fields[index[0]];
      record.spectrumName.assign(title, 0, title.find(' '));
      // The charge is the token in front of the name's last full stop.
      std::string_view name = record.spectrumName;
      std::string_view front = name.substr(0, name.rfind('.'));
      std::size_t stop = front.rfind('.');
      record.charge = ParseInt(stop == std::string_view::npos ? front : front.substr(stop + 1));
      record.sequence = fields[index[1]];
      if (ParseRecordModifications(DecodeVarModPos(names, fields[index[2]]), record))
        AddIdentified(list, record, "00");
    }
    // An overlong row was cut to the line buffer; the table ends behind it.
    if (tooLong) break;
  }
  if (shortRows > 0)
    std::cout << "[Warning]: " << shortRows << " row(s) of \"" << path
              << "\" are shorter than the heading row and were skipped!\n";
}
