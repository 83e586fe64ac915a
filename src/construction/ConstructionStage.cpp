#include "construction/ConstructionStage.h"

void RunConstruction(const CConstructionParam& settings) {
  if (!settings.enabled) return;
}
