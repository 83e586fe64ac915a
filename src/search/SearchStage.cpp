#include "search/SearchStage.h"

#include <memory>
#include <utility>

#include "search/LibrarySearcher.h"

CSearchCounts RunSearch(const CSearchParam& settings, std::vector<CMotifNarrowing>* narrowings) {
  if (!settings.enabled) return {};
  auto searcher = std::make_unique<CLibrarySearcher>();
  searcher->Init(settings);
  searcher->Run();
  // The result file is complete and in place before the next stage starts.
  searcher->Finish();
  if (narrowings != nullptr) *narrowings = std::move(searcher->narrowings);
  return searcher->counts;
}
