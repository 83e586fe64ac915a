#include "search/SearchStage.h"

#include <memory>

#include "search/LibrarySearcher.h"

void RunSearch(const CSearchParam& settings) {
  if (!settings.enabled) return;
  auto searcher = std::make_unique<CLibrarySearcher>();
  searcher->Init(settings);
  searcher->Run();
  // The searcher's destructor closes the result file before the next stage.
}
