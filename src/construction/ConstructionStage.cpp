#include "construction/ConstructionStage.h"

#include "construction/LibraryBuilder.h"

void RunConstruction(const CConstructionParam& settings) {
  if (!settings.enabled) return;
  CLibraryBuilder builder;
  builder.param = settings;
  builder.Construct();
}
