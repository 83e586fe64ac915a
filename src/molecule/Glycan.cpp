#include "molecule/Glycan.h"

#include <cstdlib>

#include "run/StringUtil.h"

namespace {
// The places of a composition key, in key order.
const char* const kMonosaccharides[5] = {"Hex", "HexNAc", "NeuAc", "NeuGc", "dHex"};
}  // namespace

CGlycan::CGlycan() {
  for (const char* name : kMonosaccharides) counts[name] = 0;
}

void CGlycan::ParseComposition() {
  if (name.empty()) return;
  // Each split takes one count off the front; the last place is read from
  // whatever remains, so text behind a fifth "-" is ignored by atoi.
  std::string rest = name, field;
  for (int place = 0; place < 4; ++place) {
    SplitFirst(rest, "-", field, rest);
    counts[kMonosaccharides[place]] = std::atoi(field.c_str());
  }
  counts[kMonosaccharides[4]] = std::atoi(rest.c_str());
}

CNGlycanFrag::CNGlycanFrag()
    : coreMasses{0.0, 203.0794, 406.1588, 568.2116, 730.2644, 892.3172} {}

CNGlycanFrag& CNGlycanFrag::GetInstance() {
  // Made at first access and never freed, so it outlives every user.
  static CNGlycanFrag* instance = new CNGlycanFrag();
  return *instance;
}

double CNGlycanFrag::GetCoreMass(uint32_t yIndex) const {
  if (yIndex >= coreMasses.size()) return -1.0;
  return coreMasses[yIndex];
}
