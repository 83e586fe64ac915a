#include "construction/ConstructionStage.h"

#include "construction/LibraryBuilder.h"

CConstructionCounts RunConstruction(const CConstructionParam& settings) {
  if (!settings.enabled) return {};
  CLibraryBuilder builder;
  builder.param = settings;
  builder.Construct();
  return builder.counts;
}
