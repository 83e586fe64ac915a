#include "molecule/Modification.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace {
// An entry's printed text is held to the size of a line buffer less its terminator.
constexpr std::size_t kMaxEntryText = 8191;

// atoi of the C runtime: leading blanks, optional sign, digits; the long
// result is narrowed to 32 bits, as the runtime's own atoi does.
int32_t AtoiRange(const char* begin, const char* end) {
  std::string digits(begin, end);
  return static_cast<int32_t>(std::strtol(digits.c_str(), nullptr, 10));
}
}  // namespace

void SortModifications(std::vector<CModification>& list) {
  std::sort(list.begin(), list.end(), [](const CModification& a, const CModification& b) {
    if (a.position != b.position) return a.position < b.position;
    return a.name < b.name;
  });
}

std::string ModificationsToString(const std::vector<CModification>& list) {
  if (list.empty()) return "-";
  std::string text, entry;
  for (const CModification& mod : list) {
    entry = std::to_string(mod.position);
    entry += ',';
    entry += mod.name;
    entry += ';';
    if (entry.size() > kMaxEntryText) entry.resize(kMaxEntryText);
    text += entry;
  }
  return text;
}

bool ParseModifications(const std::string& text, std::vector<CModification>& list) {
  list.clear();
  if (text.empty() || text[0] == '-') return true;
  std::size_t at = 0;
  bool complete = true;
  while (at < text.size()) {
    // An entry without its comma or its closing semicolon isn't a modification:
    // parsing stops there, the entries before it are kept (sorted) and the
    // caller learns of the fault from the result.
    std::size_t comma = text.find(',', at);
    if (comma == std::string::npos) {
      complete = false;
      break;
    }
    std::size_t semicolon = text.find(';', comma + 1);
    if (semicolon == std::string::npos) {
      complete = false;
      break;
    }
    list.push_back({AtoiRange(text.data() + at, text.data() + comma),
                    text.substr(comma + 1, semicolon - comma - 1)});
    at = semicolon + 1;
  }
  SortModifications(list);
  return complete;
}
