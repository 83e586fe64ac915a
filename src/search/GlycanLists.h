#pragma once
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "molecule/Glycan.h"

// The glycans that fit each candidate of a query: list i belongs to candidate i
// and holds glycan table records in table order (ascending mass). The records
// live in the library's mass table for the whole stage, so the lists hold
// pointers to them, packed into one flat array: refilling for every query then
// costs no allocation once the room has grown.
class CGlycanLists {
 public:
  CGlycanLists() { starts.push_back(0); }

  void clear() {
    items.clear();
    starts.resize(1);
  }
  void reserve(std::size_t lists, std::size_t glycans) {
    starts.reserve(lists + 1);
    items.reserve(glycans);
  }
  std::size_t size() const { return starts.size() - 1; }
  bool empty() const { return size() == 0; }
  std::span<const CGlycan* const> operator[](std::size_t i) const {
    return {items.data() + starts[i], items.data() + starts[i + 1]};
  }

  // Building a list: Add its glycans, then Close it. An empty list can be
  // abandoned with Discard.
  void Add(const CGlycan* glycan) { items.push_back(glycan); }
  bool OpenListEmpty() const { return items.size() == starts.back(); }
  void Close() { starts.push_back(static_cast<uint32_t>(items.size())); }
  void Discard() { items.resize(starts.back()); }

 private:
  std::vector<const CGlycan*> items;
  std::vector<uint32_t> starts;  // list i is items[starts[i] .. starts[i + 1])
};
