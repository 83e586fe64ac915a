#include "cli/RunInputCheck.h"

#include "molecule/MassTable.h"
#include "spectrum/DatasetFormatCheck.h"

void CheckRunInputs(const CParam& param, const CRunPaths& paths) {
  CheckDatasetFormats(paths);
  // Both stages read the same table (a pepXML list may update it on the way,
  // with masses added, never removed).
  const bool construction = param.construction.enabled, search = param.search.enabled;
  if (construction || search)
    CheckMassTableFile(construction ? param.construction.mass_table_filename : param.search.mass_table_filename,
                       construction, search);
}
