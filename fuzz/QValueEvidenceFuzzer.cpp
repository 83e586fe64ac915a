// The q-value evidence pass on damaged result lines and spectra: the lines
// before a line "PEAKS" are result lines, the "m/z intensity" lines after it
// the query spectrum that every line names. Each hit gets its glycan call and
// Y-ion evidence, its site call and b and y ladder from that spectrum, then
// the q-values are estimated.
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "fdr/FdrEstimator.h"
#include "fdr/GlycopeptideHit.h"
#include "fdr/GlycopeptideQValues.h"
#include "fdr/ResultLineScan.h"
#include "molecule/MassTable.h"
#include "search/QueryBatch.h"

namespace {

const CMassTable& Table() {
  static const CMassTable table = [] {
    CMassTable loaded;
    CMassTableFile file;
    file.filename = QUORIN_SOURCE_DIR "/data/MassTable.ini";
    file.Load(loaded);
    loaded.SortGlycans();
    return loaded;
  }();
  return table;
}

// The site call and the b and y ladder, with NXS and NXT sequons.
CSiteRules& Sites() {
  static CSiteRules sites = [] {
    CSiteRules rules;
    rules.calculator.massTable = Table();
    return rules;
  }();
  return sites;
}

CSearchParam Settings() {
  CSearchParam settings;
  settings.enabled = true;
  settings.query_precursor_ion_unit = 1;
  settings.query_precursor_ion_tolerance = 10.0;
  settings.query_product_ion_unit = 0;
  settings.query_product_ion_tolerance = 0.02;
  return settings;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
  std::vector<CFdrRecord> records;
  CSpectrum spectrum;
  bool peaks = false;
  for (std::string line; std::getline(in, line);) {
    if (!peaks && line == "PEAKS") {
      peaks = true;
    } else if (!peaks) {
      CFdrRecord& record = records.emplace_back();
      record.line = line;
      const CResultLineFields fields = ScanResultLine(line);
      record.charge = fields.charge;
      record.massShift = fields.massShift;
      record.score = fields.score;
      record.isDecoy = fields.hitKind == 'D';
    } else {
      CPeak peak;
      char* end = nullptr;
      peak.mz = std::strtod(line.c_str(), &end);
      peak.intensity = std::strtod(end, nullptr);
      spectrum.peaks.push_back(peak);
    }
  }
  const CSearchParam settings = Settings();
  CQueryBatch batch;
  batch.Init(settings);
  CQueryBatch::DropDamagedPeaks(spectrum);
  std::vector<CGlycopeptideHit> hits = ParseResultLines(records);
  if (!spectrum.peaks.empty() && batch.IsGlycoSpectrum(spectrum)) {
    batch.PrepareSpectrum(spectrum, true);
    for (CGlycopeptideHit& hit : hits) CallHit(hit, spectrum, settings, Table().glycans, &Sites());
  }
  EstimateGlycopeptideQValues(hits);
  return 0;
}
