#include "fdr/FdrStage.h"

void RunFdr(const CSearchParam& settings) {
  if (!settings.enabled) return;
}
