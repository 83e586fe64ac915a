#pragma once
#include <memory>
#include <string>
#include <vector>

#include "idlist/PeptideIdentity.h"
#include "run/Param.h"
#include "spectrum/SpecIO.h"

// One open reader per dataset, for the whole construction run.
class CDatasetIOPool {
 public:
  virtual ~CDatasetIOPool() = default;
  // Copies the list, prints it, and opens (indexes or lists) every dataset.
  virtual void Open(const std::vector<CDatasetFile>& datasetList);

  std::vector<CDatasetFile> datasets;
  int32_t current = 0;
  std::vector<std::unique_ptr<CSpecIO>> ios;  // parallel to datasets; null where no reader exists
};

// Prefix of each dataset: its file name up to and including the last point.
void BuildDatasetPrefixes(const std::vector<CDatasetFile>& datasets,
                          std::vector<std::string>& prefixes);
// Gives each identified spectrum the index of the first dataset whose prefix
// begins its name; a spectrum without one ends the run with status 1.
void AssignDatasets(const std::vector<std::string>& prefixes,
                    std::vector<CIdentifiedSpectrum>& identified);
