#include "fdr/QValueCounts.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <vector>

#include "run/StringUtil.h"
#include "run/TextLine.h"

CQValueCounts CountQValueTargets(const std::string& path) {
  CQValueCounts counts;
  std::ifstream in(path, std::ios::binary);
  std::string line;
  if (!in.is_open() || !ReadLine(in, line, nullptr, 1 << 20)) return counts;
  std::vector<std::string> fields;
  Split(line, "\t", fields);
  const auto column = [&fields](const char* name) {
    return static_cast<std::size_t>(std::find(fields.begin(), fields.end(), name) - fields.begin());
  };
  const std::size_t q = column("GlycopeptideQ"), td = column("Target/DecoyHit");
  if (q >= fields.size() || td >= fields.size()) return counts;
  counts.read = true;
  const std::size_t needed = std::max(q, td) + 1;
  while (ReadLine(in, line, nullptr, 1 << 20)) {
    fields.clear();
    Split(line, "\t", fields);
    if (fields.size() < needed || fields[td] != "T") continue;
    const double value = std::strtod(fields[q].c_str(), nullptr);
    counts.targetsAt1 += value <= 0.01;
    counts.targetsAt5 += value <= 0.05;
  }
  return counts;
}
