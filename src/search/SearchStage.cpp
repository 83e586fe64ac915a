#include "search/SearchStage.h"

#include <cstdlib>
#include <memory>
#include <string>

#include "search/LibrarySearcher.h"

namespace {
// QUORIN_THREADS=N sets the thread count of a search left at "all threads";
// the classic interface has no key for it, and benchmarks need to choose.
// Anything but a whole number from 1 up is ignored.
uint32_t ThreadsFromEnvironment(uint32_t threads) {
  const char* text = std::getenv("QUORIN_THREADS");
  if (threads != 0 || text == nullptr) return threads;
  const std::string value = text;
  if (value.empty() || value.size() > 6 || value.find_first_not_of("0123456789") != std::string::npos)
    return threads;
  return static_cast<uint32_t>(std::stoul(value));
}
}  // namespace

CSearchCounts RunSearch(const CSearchParam& settings) {
  if (!settings.enabled) return {};
  CSearchParam chosen = settings;
  chosen.threads = ThreadsFromEnvironment(settings.threads);
  auto searcher = std::make_unique<CLibrarySearcher>();
  searcher->Init(chosen);
  searcher->Run();
  // The result file is complete and in place before the next stage starts.
  searcher->Finish();
  return searcher->counts;
}
