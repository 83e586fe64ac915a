#include "report/RankedResults.h"

#include <charconv>
#include <fstream>

#include "run/TextLine.h"

namespace {
constexpr double kDefaultFdrCut = 0.01;
// Ion lists of long peptides make long lines; nothing legitimate comes near this.
constexpr std::size_t kLongestLine = 1 << 20;

void SplitTabs(const std::string& line, std::vector<std::string>& fields) {
  fields.clear();
  std::size_t start = 0;
  while (true) {
    const std::size_t tab = line.find('\t', start);
    fields.push_back(line.substr(start, tab == std::string::npos ? std::string::npos : tab - start));
    if (tab == std::string::npos) break;
    start = tab + 1;
  }
}

bool ToDouble(const std::string& text, double& value) {
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  return result.ec == std::errc() && result.ptr == text.data() + text.size();
}
}  // namespace

bool CRankedResults::Read(const std::string& path, std::size_t topN, std::string& error,
                          const std::map<std::string, double>* glycopeptideQ) {
  shown.clear();
  all.clear();
  malformedLines = 0;
  std::ifstream in(path, std::ios::binary);
  if (!in.is_open()) {
    error = "cannot read the result file " + path;
    return false;
  }
  std::string line;
  std::vector<std::string> fields;
  if (!ReadLine(in, line, nullptr, kLongestLine)) {
    error = "the result file " + path + " is empty";
    return false;
  }
  SplitTabs(line, fields);
  if (fields.size() != resultcol::kCount || fields[resultcol::kFdr] != "FDR") {
    error = "the result file " + path +
            " has no FDR column: it is not ranked yet (run the FDR stage first)";
    return false;
  }
  while (ReadLine(in, line, nullptr, kLongestLine)) {
    if (line.empty()) continue;
    SplitTabs(line, fields);
    CScorePoint point;
    if (fields.size() != resultcol::kCount || !ToDouble(fields[resultcol::kScore], point.score) ||
        !ToDouble(fields[resultcol::kFdr], point.fdr)) {
      ++malformedLines;
      continue;
    }
    point.decoy = fields[resultcol::kTargetDecoy] == "D";
    all.push_back(point);
    bool keep = topN > 0 ? all.size() <= topN : point.fdr <= kDefaultFdrCut;
    if (topN == 0 && glycopeptideQ != nullptr) {
      const auto found = glycopeptideQ->find(fields[resultcol::kQuery]);
      keep = found != glycopeptideQ->end() && found->second <= kDefaultFdrCut;
    }
    if (keep) shown.push_back({all.size(), fields, point.score, point.fdr, point.decoy});
  }
  return true;
}
