// The open datasets of a construction run, and the name-prefix rule that
// tells which dataset holds an identified spectrum.
#include "spectrum/DatasetIOPool.h"

#include <iostream>

#include "run/InputFailures.h"
#include "run/Process.h"
#include "spectrum/MzSpectrumName.h"

void CDatasetIOPool::Open(const std::vector<CDatasetFile>& datasetList) {
  datasets = datasetList;
  ios.clear();
  ios.reserve(datasets.size());
  std::cout << "\tPreparing the following " << datasets.size() << " datasets:" << std::endl;
  for (const CDatasetFile& dataset : datasets) {
    std::cout << "\t\t" << dataset.pathname << std::endl;
    std::unique_ptr<CSpecIO> io(CreateSpecIO(dataset.format));
    const uint64_t failuresBefore = InputFailureCount();
    if (io) io->OpenRead(dataset.pathname);
    // A file that holds no spectrum at all is a failed input; a DTA folder
    // is listed on demand and not counted here.
    if (io && dataset.format != 1 && io->Count() == 0 && InputFailureCount() == failuresBefore) {
      std::cout << "\t\t[Warning]: not one spectrum could be read from " << dataset.pathname << '.'
                << std::endl;
      NoteInputFailure();
    }
    ios.push_back(std::move(io));
  }
  current = 0;
}

void BuildDatasetPrefixes(const std::vector<CDatasetFile>& datasets,
                          std::vector<std::string>& prefixes) {
  prefixes.clear();
  prefixes.reserve(datasets.size());
  for (const CDatasetFile& dataset : datasets) {
    const std::string& pathname = dataset.pathname;
    const std::size_t separator = LastSeparator(pathname);
    std::string base = separator == std::string::npos ? pathname : pathname.substr(separator + 1);
    // An mzML or mzXML file may be gzipped; its spectra are named by what it
    // holds, "run.mzML.gz" as "run.mzML", so its prefix is "run." as well.
    if (dataset.format == 4 || dataset.format == 5)
      base = CompressedFileBase(pathname);
    const std::size_t point = base.rfind('.');
    prefixes.push_back(point == std::string::npos ? std::string() : base.substr(0, point + 1));
  }
}

void AssignDatasets(const std::vector<std::string>& prefixes,
                    std::vector<CIdentifiedSpectrum>& identified) {
  for (CIdentifiedSpectrum& record : identified) {
    const std::string& name = record.spectrumName;
    std::size_t match = 0;
    while (match < prefixes.size() && name.compare(0, prefixes[match].size(), prefixes[match]) != 0) {
      ++match;
    }
    if (match == prefixes.size()) {
      std::cout << "[Error]: The spectrum of " << name << " is not found in data sets!\n"
                << "  Please check whether the name of each data set is prefix of spectral name!"
                << std::endl;
      ExitProgram(1);
    }
    record.datasetIndex = static_cast<int32_t>(match);
  }
}
