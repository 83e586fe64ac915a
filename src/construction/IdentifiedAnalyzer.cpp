#include "construction/IdentifiedAnalyzer.h"

#include <iostream>
#include <memory>

#include "idlist/PepXmlSpecListIO.h"
#include "idlist/SpecListIO.h"
#include "run/Process.h"

namespace {

// The format keyword of a code, for messages.
std::string FormatName(int32_t format) {
  return format == 5 ? std::string("pilot") : std::to_string(format);
}

}  // namespace

void CIdentifiedAnalyzer::Init(const CConstructionParam& settings) {
  param = settings;
  // Identifications always come from the lists: library_source_kind is 0 after
  // loading, and the path that reloads existing libraries is not provided.
  pool = std::make_unique<CDatasetIOPool>();
  pool->Open(param.library_datasets);
}

void CIdentifiedAnalyzer::LoadIdentified() {
  std::cout << "\tLoading Spectral list: " << std::endl;
  std::vector<CIdentifiedSpectrum> identified;
  for (const CIdentificationFile& file : param.identification_files) {
    std::unique_ptr<CSpecListIO> reader(CreateSpecListIO(file.format));
    if (!reader) {
      // pilot passes the configuration check but has no reader. Going on would
      // silently build an empty library, so the run stops with a clear reason
      // before any spectrum is read.
      std::cout << "[Error]: The identification format " << FormatName(file.format)
                << " has no reader." << std::endl;
      ExitProgram(1);
    }
    reader->Init(file);
    auto* pepXml = dynamic_cast<CPepXmlSpecListIO*>(reader.get());
    if (pepXml) {
      pepXml->massTablePath = param.mass_table_filename;
      pepXml->massTableUpdatePath = param.mass_table_update_filename;
    }
    reader->Read(identified);
    // A table updated into a file of its own is the table of the rest of the
    // run: of the later lists and of the search.
    if (pepXml && pepXml->massTableWritten && !param.mass_table_update_filename.empty()) {
      param.mass_table_filename = param.mass_table_update_filename;
      CParam& global = CParam::GetInstance();
      global.construction.mass_table_filename = param.mass_table_update_filename;
      global.search.mass_table_filename = param.mass_table_update_filename;
    }
  }

  std::vector<std::string> prefixes;
  BuildDatasetPrefixes(param.library_datasets, prefixes);
  AssignDatasets(prefixes, identified);
  std::cout << "\t\t" << identified.size() << " identified spectra." << std::endl;

  std::cout << "\tAnalyzing Identified Spectral list: " << std::endl;
  BuildPeptideList(identified);
  std::cout << "\t\t" << peptides.size() << " non-redundant spectra" << std::endl;
}

void CIdentifiedAnalyzer::ClosePool() {
  if (!pool) return;
  for (auto& io : pool->ios) io.reset();
  pool->ios.clear();
  pool.reset();
}
