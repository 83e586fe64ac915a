#pragma once
#include <cstdint>
#include <string>
#include <vector>

// One modification: 1-based residue position (0 = N-terminus) and its name.
struct CModification {
  int32_t position = 0;
  std::string name;
  bool operator==(const CModification&) const = default;
};

// One marked glycosylation site: 1-based position and its sequon text ("NXT").
struct CGlycoSite {
  int32_t position = 0;
  std::string sequon;
  bool operator==(const CGlycoSite&) const = default;
};

// Sorts by position ascending, then name ascending (byte order).
void SortModifications(std::vector<CModification>& list);
// Text form: "-" for an empty list, else "%d,%s;" per entry.
std::string ModificationsToString(const std::vector<CModification>& list);
// Replaces `list` by the entries of `text`, sorted. "-" and "" give an empty list.
// Returns false (leaving the entries read before the fault) when an entry lacks
// its comma or closing semicolon.
bool ParseModifications(const std::string& text, std::vector<CModification>& list);

// Object form of the same operations, for callers that hold a list object.
class CModificationList {
 public:
  void AddModification(int32_t position, const std::string& name) {
    items.push_back({position, name});
  }
  bool ParseModifications(const std::string& text) { return ::ParseModifications(text, items); }
  std::string ModificationsToString() const { return ::ModificationsToString(items); }
  const CModification* GetModification(std::size_t index) const {
    return index < items.size() ? &items[index] : nullptr;
  }
  void SortModifications() { ::SortModifications(items); }

  std::vector<CModification> items;
};
