// The binary evidence of a shard file: any bytes either load or are refused,
// and every record of a section that loads either reads or is refused,
// never read past. The first byte says how many records are result lines.
#include <cstdint>
#include <string>

#include "fdr/ShardEvidence.h"
#include "FuzzFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  CGlycanNames glycans;
  CShardEvidence evidence;
  std::string why;
  // The records a section holds are named beside it; try the counts a
  // section this small can hold.
  bool loaded = false;
  for (std::size_t candidates = 0; candidates <= bytes.size() / 4 && !loaded; ++candidates)
    loaded = evidence.Load(bytes, data[0] % 8, candidates, glycans, why);
  if (!loaded) return 0;
  CGlycopeptideHit hit;
  for (std::size_t i = 0; i < evidence.Lines(); ++i) {
    if (evidence.LineQuery(i).size() > bytes.size()) std::abort();
    evidence.ReadLine(i, hit);
  }
  for (std::size_t i = 0; i < evidence.Candidates(); ++i) evidence.ReadCandidate(i, hit);
  return 0;
}
