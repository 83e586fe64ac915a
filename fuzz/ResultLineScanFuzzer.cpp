// The result-line scanner: the fast reading of plainly formed lines must give
// what the scan format gives, for any line at all.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fdr/ResultLineScan.h"

namespace {

bool SameReal(double a, double b) {
  return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string line(reinterpret_cast<const char*>(data), size);
  const CResultLineFields fast = ScanResultLine(line);
  const CResultLineFields plain = ScanResultLineWithFormat(line);
  if (fast.charge != plain.charge || fast.hitKind != plain.hitKind ||
      !SameReal(fast.massShift, plain.massShift) || !SameReal(fast.score, plain.score))
    std::abort();
  return 0;
}
