#include "search/SearchStage.h"

void RunSearch(const CSearchParam& settings) {
  if (!settings.enabled) return;
}
