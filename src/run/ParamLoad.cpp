// Loading and validation of the parameter set: every key of every enabled
// section is read here, in a fixed order, and the first faulty key ends the run
// before any stage has started.
#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string>

#include "run/ConfigKeys.h"
#include "run/Param.h"
#include "run/Process.h"
#include "run/StringUtil.h"

namespace {

const char* const kConstructionSection = "construction";
const char* const kSearchSection = "search";

// Room reserved from a number key is capped: the key is only a promise of how
// many names follow, and a huge value must end in the message about the first
// missing name, not in a failed allocation.
constexpr int kMaxReservedEntries = 4096;

// Reads the keys of one section and reports the first fault.
class CSectionReader {
 public:
  CSectionReader(CConfigFile& config, const char* section, bool explain)
      : config_(config), section_(section), explain_(explain) {}

  [[noreturn]] void Fault(const std::string& key) const {
    std::cout << "Missing or invalid parameter \"" << key << "\" in section \"" << section_
              << "\"." << std::endl;
    if (explain_) {
      const std::string value = config_.Get(section_, key);
      const CConfigKey* known = FindConfigKey(section_, key);
      std::cout << "\texpected: " << (known ? known->help : "a value") << "; found "
                << (value.empty() ? std::string("nothing") : "\"" + value + "\"") << std::endl;
    }
    ExitProgram(1);
  }

  std::string Value(const std::string& key) { return config_.Get(section_, key); }

  // The value folded to lower case, for the keywords that are compared folded.
  std::string FoldedValue(const std::string& key) {
    std::string value = Value(key);
    ToLower(value);
    return value;
  }

  // A required key: absent and empty are both a fault.
  std::string Required(const std::string& key) {
    std::string value = Value(key);
    if (value.empty()) Fault(key);
    return value;
  }

  // A required number. Read as atof and atoi read it; when faults are
  // explained, text that is not a number is one.
  double Number(const std::string& key) {
    std::string value = Required(key);
    if (explain_ && !IsNumberText(value, false)) Fault(key);
    return std::atof(value.c_str());
  }
  int Integer(const std::string& key) {
    std::string value = Required(key);
    if (explain_ && !IsNumberText(value, true)) Fault(key);
    return std::atoi(value.c_str());
  }

  // The on/off key that opens a section: only the word "no" switches it off.
  bool Enabled(const std::string& key) { return FoldedValue(key) != "no"; }

  // An optional yes/no key, folded; absent or empty means no, any other word is a fault.
  bool OptionalYesNo(const std::string& key) {
    std::string value = FoldedValue(key);
    if (value.empty() || value == "no") return false;
    if (value == "yes") return true;
    Fault(key);
  }

  // A required count of indexed keys, 0 or more.
  int Count(const std::string& key) {
    int count = Integer(key);
    if (count < 0) Fault(key);
    return count;
  }

  // A required number from lower to upper, both included.
  double InRange(const std::string& key, double lower, double upper) {
    double value = Number(key);
    if (value < lower || value > upper) Fault(key);
    return value;
  }

  // A required tolerance: as Da at m/z 1.0 it must not be negative.
  double Tolerance(const std::string& key, int32_t unit) {
    double value = Number(key);
    if (ToleranceInDa(value, unit, 1.0) < 0.0) Fault(key);
    return value;
  }

  // A unit: exactly "da" (0) or "ppm" (1), not folded.
  int32_t Unit(const std::string& key) {
    std::string value = Value(key);
    if (value == "da") return 0;
    if (value == "ppm") return 1;
    Fault(key);
  }

  // A dataset format keyword, folded: dta 1, mgf 2, dtas 3, mzml 4, mzxml 5.
  int32_t DatasetFormat(const std::string& key) {
    std::string value = FoldedValue(key);
    if (value == "dta") return 1;
    if (value == "mgf") return 2;
    if (value == "dtas") return 3;
    if (value == "mzml") return 4;
    if (value == "mzxml") return 5;
    Fault(key);
  }

  // An identification format keyword, folded; code 3 is not used.
  int32_t IdentificationFormat(const std::string& key) {
    std::string value = FoldedValue(key);
    if (value == "quorin") return 0;
    if (value == "pepxml") return 1;
    if (value == "lanvek") return 2;
    if (value == "mascot") return 4;
    if (value == "pilot") return 5;
    if (value == "maxquant") return 6;
    if (value == "tab-txt") return 7;
    Fault(key);
  }

  // The required paths prefix1 .. prefixN, N printed as a plain decimal.
  template <typename AppendPath>
  void IndexedPaths(const std::string& prefix, int count, AppendPath append) {
    for (int n = 1; n <= count; ++n) append(Required(prefix + std::to_string(n)));
  }

 private:
  CConfigFile& config_;
  const char* section_;
  bool explain_;
};

constexpr int kPepXmlFormat = 1;

void LoadIdentificationFiles(CSectionReader& reader, CConstructionParam& construction) {
  int32_t format = reader.IdentificationFormat("identification_format");
  double threshold = 0.0;  // other formats never read it
  if (format == kPepXmlFormat) threshold = reader.InRange("probability_threshold", 0.0, 1.0);
  int count = reader.Count("identification_number");
  construction.identification_files.reserve(
      static_cast<std::size_t>(std::min(count, kMaxReservedEntries)));
  reader.IndexedPaths("identification_filename_", count, [&](const std::string& path) {
    construction.identification_files.push_back(CIdentificationFile{path, threshold, format});
  });
}

// The number, format and indexed path keys of a list of spectrum datasets.
void LoadDatasets(CSectionReader& reader, const std::string& stem,
                  std::vector<CDatasetFile>& datasets) {
  int count = reader.Count(stem + "_number");
  int32_t format = reader.DatasetFormat(stem + "_format");
  datasets.reserve(static_cast<std::size_t>(std::min(count, kMaxReservedEntries)));
  reader.IndexedPaths(stem + "_pathname_", count, [&](const std::string& path) {
    datasets.push_back(CDatasetFile{path, format});
  });
}

void LoadConstruction(CConfigFile& config, CConstructionParam& construction, bool explain) {
  CSectionReader reader(config, kConstructionSection, explain);
  construction.enabled = reader.Enabled("construction");
  if (!construction.enabled) return;
  construction.library_source_kind = 0;
  construction.modification_remove = reader.Value("modification_remove");
  LoadIdentificationFiles(reader, construction);
  LoadDatasets(reader, "library_dataset", construction.library_datasets);
  construction.library_product_ion_unit = reader.Unit("library_product_ion_unit");
  construction.library_product_ion_tolerance =
      reader.Tolerance("library_product_ion_tolerance", construction.library_product_ion_unit);
  construction.theta = reader.InRange("theta", 0.0, 1.0);
  construction.output_speclib_filename = reader.Required("output_speclib_filename");
  construction.ParseAddedYIons(reader.Required("added_Y_ions"));
  construction.Y_ion_relative_intensity = reader.Number("Y_ion_relative_intensity");
  construction.ParseNGlycanMotifs(reader.Required("N_glycan_motifs"));
  construction.protein_database = reader.Required("protein_database");
  construction.motifs_across_cleavage = reader.OptionalYesNo("motifs_across_cleavage");
}

void LoadSearch(CConfigFile& config, CSearchParam& search, bool explain) {
  CSectionReader reader(config, kSearchSection, explain);
  search.enabled = reader.Enabled("search");
  if (!search.enabled) return;
  search.input_speclib_filename = reader.Required("input_speclib_filename");
  LoadDatasets(reader, "query_dataset", search.query_datasets);
  // The search units are required keys: an empty value is named like any other
  // value that is neither da nor ppm.
  search.query_precursor_ion_unit = reader.Unit("query_precursor_ion_unit");
  search.query_precursor_ion_tolerance =
      reader.Tolerance("query_precursor_ion_tolerance", search.query_precursor_ion_unit);
  search.query_product_ion_unit = reader.Unit("query_product_ion_unit");
  search.query_product_ion_tolerance =
      reader.Tolerance("query_product_ion_tolerance", search.query_product_ion_unit);
  search.output_result_filename = reader.Required("output_result_filename");
  search.minimal_peptide_ions = reader.Integer("minimal_peptide_ions");
  search.glycopeptide_fdr = reader.OptionalYesNo("glycopeptide_fdr");
}

}  // namespace

void CParam::Load() {
  // Start from the defaults so that a disabled section leaves every field at
  // its default, whatever an earlier load in the same process stored.
  construction = CConstructionParam();
  search = CSearchParam();
  config.Read(configure_filename);
  LoadConstruction(config, construction, explainFaults);
  LoadSearch(config, search, explainFaults);
}
