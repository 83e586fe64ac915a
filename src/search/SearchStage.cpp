#include "search/SearchStage.h"

#include <memory>

#include "search/LibrarySearcher.h"

CSearchCounts RunSearch(const CSearchParam& settings) {
  if (!settings.enabled) return {};
  auto searcher = std::make_unique<CLibrarySearcher>();
  searcher->Init(settings);
  searcher->Run();
  // The result file is complete and in place before the next stage starts.
  searcher->Finish();
  return searcher->counts;
}
