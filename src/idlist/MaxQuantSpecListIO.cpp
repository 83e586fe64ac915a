#include "idlist/MaxQuantSpecListIO.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <string_view>

#include "idlist/ListCounts.h"
#include "run/InputFailures.h"
#include "run/Process.h"
#include "run/StringUtil.h"

void CMaxQuantSpecListIO::Init(const CIdentificationFile& file) {
  path = file.path;
  format = 6;
  CMassTableFile tableFile;
  tableFile.filename = CParam::GetInstance().construction.mass_table_filename;
  tableFile.Load(massTable);
}

namespace {

const std::string kCarbamidomethyl = "Carbamidomethyl[C]";
const std::string kLys6 = "Lys6[K]";
const std::string kArg10 = "Arg10[R]";

// Next line without its line end (LF or CRLF), of any length: the line ends of
// ReadLine, through getline, which scans the long rows of msms tables faster.
bool NextLine(std::istream& in, std::string& line) {
  if (!std::getline(in, line)) return false;
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return true;
}

// The fields of one row as views into the line. A field index past the end
// of the row reads as an empty field: MaxQuant writes rows one field shorter
// than the heading when the last field is empty.
class RowFields {
 public:
  void Assign(const std::string& line) {
    text = line;
    starts.clear();
    starts.push_back(0);
    for (std::size_t at = text.find('\t'); at != std::string_view::npos;
         at = text.find('\t', at + 1)) {
      starts.push_back(at + 1);
    }
  }
  std::size_t Count() const { return starts.size(); }
  std::string_view operator[](std::size_t index) const {
    if (index >= starts.size()) return {};
    std::size_t begin = starts[index];
    std::size_t end = index + 1 < starts.size() ? starts[index + 1] - 1 : text.size();
    return text.substr(begin, end - begin);
  }

 private:
  std::string_view text;
  std::vector<std::size_t> starts;
};

// A modification code of the modified sequence with its name and mass.
struct CodeEntry {
  std::string code;
  std::string name;
  double mass = 0.0;
};

void Report(const std::string& path, const std::string& problem) {
  std::cout << "[Warning]: \"" << path << "\" is not a readable MaxQuant table: " << problem
            << "; the file is skipped." << std::endl;
  NoteInputFailure();
}

}  // namespace

void CMaxQuantSpecListIO::Read(std::vector<CIdentifiedSpectrum>& list) {
  std::ifstream in;
  if (GetPathKind(path) == PathKind::File) in.open(path, std::ios::binary);
  if (!in.is_open()) {
    std::cout << "Error when opening \"" << path << "\"." << std::endl;
    NoteInputFailure();
    return;
  }

  std::string line;
  NextLine(in, line);
  if (line.compare(0, 3, "\xEF\xBB\xBF") == 0) line.erase(0, 3);  // byte-order mark
  std::vector<std::string> heads;
  Split(line, "\t", heads);
  std::map<std::string, std::size_t> columnMap;
  for (std::size_t i = 0; i < heads.size(); ++i) columnMap[heads[i]] = i;
  // Columns are resolved once; a name that the heading lacks means column 0.
  auto column = [&columnMap](const std::string& name) -> std::size_t {
    auto found = columnMap.find(name);
    return found == columnMap.end() ? 0 : found->second;
  };
  const std::size_t rawFileColumn = column("Raw file");
  const std::size_t scanColumn = column("Scan number");
  const std::size_t sequenceColumn = column("Sequence");
  const std::size_t chargeColumn = column("Charge");
  const std::size_t modifiedColumn = column("Modified sequence");
  const std::size_t proteinsColumn = column("Proteins");
  const std::size_t massColumn = column("Mass");

  // The modification columns lie between "Modified sequence" and "Proteins";
  // without that order the table has no sound reading, and the file is skipped.
  if (modifiedColumn >= proteinsColumn) {
    Report(path, "its column \"Modified sequence\" doesn't stand before \"Proteins\"");
    return;
  }
  const std::size_t groupSize = (proteinsColumn - modifiedColumn - 1) / 3;
  std::vector<CodeEntry> codes;
  for (std::size_t i = modifiedColumn + 1 + 2 * groupSize; i < proteinsColumn; ++i) {
    std::string name = heads[i];
    std::size_t open = name.find(" (");
    if (open != std::string::npos) {
      name.replace(open, 2, "[");
      std::size_t close = name.find(')');
      // A head with " (" and no ")" names no residue: the file is skipped.
      if (close == std::string::npos) {
        Report(path, "the column head \"" + heads[i] + "\" has \" (\" without \")\"");
        return;
      }
      name[close] = ']';
    }
    std::string code = name.substr(0, 2);
    ToLower(code);
    bool known = false;
    for (const CodeEntry& entry : codes) known = known || entry.code == code;
    if (!known) codes.push_back({code, name, massTable.Modification(name)});
  }
  const CodeEntry unknownCode{"", "", massTable.Modification("")};
  const double carbamidomethylMass = massTable.Modification(kCarbamidomethyl);
  const double waterMass = massTable.Molecule("H2O");

  // A row that ends before a column the reader needs has no sound reading and
  // makes the whole file faulty; a row that only leaves off an empty last
  // field, as MaxQuant writes them, is read with that field empty.
  const std::size_t neededFields =
      1 + std::max({rawFileColumn, scanColumn, sequenceColumn, chargeColumn, modifiedColumn,
                    massColumn});
  const std::size_t firstRecord = list.size();

  RowFields fields;
  std::vector<double> modificationMasses;  // in step with record.modifications
  long rows = 0;
  while (NextLine(in, line)) {
    if (line.empty()) continue;
    fields.Assign(line);
    if (fields.Count() < neededFields && fields.Count() + 1 < heads.size()) {
      ListCounts().kept -= list.size() - firstRecord;
      list.resize(firstRecord);
      Report(path, "row " + std::to_string(rows + 1) + " ends after " +
                       std::to_string(fields.Count()) + " of its " +
                       std::to_string(heads.size()) + " fields");
      return;
    }
    record.sequence.assign(fields[sequenceColumn]);
    const std::string_view chargeText = fields[chargeColumn];
    record.charge = std::atoi(std::string(chargeText).c_str());
    const std::string_view scan = fields[scanColumn];
    record.spectrumName.assign(fields[rawFileColumn]);
    record.spectrumName.append(".").append(scan).append(".").append(scan).append(".");
    record.spectrumName.append(chargeText);

    // "(xx)" codes: a code behind residue k has position k; each code seen
    // takes its four characters off the offsets behind it, the "_" one more.
    record.modifications.clear();
    modificationMasses.clear();
    const std::string_view modified = fields[modifiedColumn];
    long shift = 1;
    for (std::size_t i = modified.find('('); i != std::string_view::npos;
         i = modified.find('(', i + 1)) {
      const std::string_view code = modified.substr(i + 1, 2);
      const CodeEntry* entry = &unknownCode;
      for (const CodeEntry& candidate : codes) {
        if (candidate.code == code) {
          entry = &candidate;
          break;
        }
      }
      record.modifications.push_back({static_cast<int32_t>(static_cast<long>(i) - shift), entry->name});
      modificationMasses.push_back(entry->mass);
      shift += 4;
    }
    for (std::size_t i = 0; i < record.sequence.size(); ++i) {
      if (record.sequence[i] == 'C') {
        record.modifications.push_back({static_cast<int32_t>(i + 1), kCarbamidomethyl});
        modificationMasses.push_back(carbamidomethylMass);
      }
    }

    // RecoverLabels with the masses looked up once per code.
    double theoretical = 0.0;
    for (char residue : record.sequence) theoretical += massTable.AminoAcid(residue);
    theoretical += waterMass;
    for (double mass : modificationMasses) theoretical += mass;
    const double difference = std::atof(std::string(fields[massColumn]).c_str()) - theoretical;
    if (std::fabs(difference) >= 1.0) AddLabels(record, difference);

    SortModifications(record.modifications);
    AddIdentified(list, record, "00");
    ++rows;
    if (rows % 200 == 0) std::cout << "\t\t" << rows << std::endl;
  }
}

void CMaxQuantSpecListIO::RecoverLabels(CIdentifiedSpectrum& record, double mass) const {
  double theoretical = 0.0;
  for (char residue : record.sequence) theoretical += massTable.AminoAcid(residue);
  theoretical += massTable.Molecule("H2O");
  for (const CModification& modification : record.modifications) {
    theoretical += massTable.Modification(modification.name);
  }
  const double difference = mass - theoretical;
  if (std::fabs(difference) >= 1.0) AddLabels(record, difference);
}

void CMaxQuantSpecListIO::AddLabels(CIdentifiedSpectrum& record, double difference) const {
  std::vector<int32_t> lysines;
  std::vector<int32_t> arginines;
  for (std::size_t i = 0; i < record.sequence.size(); ++i) {
    if (record.sequence[i] == 'K') lysines.push_back(static_cast<int32_t>(i + 1));
    if (record.sequence[i] == 'R') arginines.push_back(static_cast<int32_t>(i + 1));
  }
  const double lysineLabel = massTable.Modification(kLys6);
  const double arginineLabel = massTable.Modification(kArg10);
  // The greatest lysine count that fits wins, with its smallest arginine count.
  std::size_t labelledK = 0;
  std::size_t labelledR = 0;
  for (std::size_t i = 0; i <= lysines.size(); ++i) {
    for (std::size_t j = 0; j <= arginines.size(); ++j) {
      if (std::fabs(difference - static_cast<double>(i) * lysineLabel -
                    static_cast<double>(j) * arginineLabel) < 1.0) {
        labelledK = i;
        labelledR = j;
        break;
      }
    }
  }
  for (std::size_t i = 0; i < labelledK; ++i) record.modifications.push_back({lysines[i], kLys6});
  for (std::size_t j = 0; j < labelledR; ++j) record.modifications.push_back({arginines[j], kArg10});
}
