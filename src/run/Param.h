#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "run/ConfigFile.h"

// Program-wide constants.
inline const std::string kMassTableFilename = "MassTable.ini";
inline const std::string kDecoyPrefix = "Decoy_";
inline const std::string kVersion = "1.0";

// One input file of spectra. Format codes: 0 library, 1 DTA, 2 MGF, 3 DTAS, 4 mzML, 5 mzXML.
struct CDatasetFile {
  std::string pathname;
  int32_t format = 0;
};

// One identification list. Format codes: 0 quorin, 1 pepxml, 2 lanvek, 4 mascot,
// 5 pilot, 6 maxquant, 7 tab-txt.
struct CIdentificationFile {
  std::string path;
  double probability_threshold = 0.0;
  int32_t format = 0;
};

// Motif codes of N_glycan_motifs: NXS 0, NXT 1, NXC 2, NXV 3.
struct CConstructionParam {
  bool enabled = false;
  int32_t library_source_kind = 0;
  std::string output_speclib_filename;
  std::string mass_table_filename = kMassTableFilename;
  // Where a pepXML list writes the table it updated; empty: over the table read.
  std::string mass_table_update_filename;
  std::string modification_remove;
  bool pauseAtStart = true;  // no key: the classic stage waits a second before it starts
  std::vector<CDatasetFile> library_datasets;
  std::vector<CIdentificationFile> identification_files;
  double theta = 0.0;
  int32_t library_product_ion_unit = 0;  // 0 Da, 1 ppm
  std::string protein_database;
  // Optional: lists that don't give the residues behind a peptide get them from
  // protein_database, so that a sequon completed after the peptide is a site.
  bool motifs_across_cleavage = false;
  double library_product_ion_tolerance = 0.0;
  std::vector<int32_t> N_glycan_motifs;
  std::vector<uint32_t> added_Y_ions;
  double Y_ion_relative_intensity = 0.0;

  // Parsers of the two list keys; both may end the program with status 1.
  void ParseNGlycanMotifs(const std::string& value);
  void ParseAddedYIons(const std::string& value);
  // "[NJ][^P][" + acceptor letters + "$]"
  std::string GetMotifRegex() const;
  // "[" + acceptor letters + "][^P][NJ]"
  std::string GetReverseMotifRegex() const;
};

struct CSearchParam {
  bool enabled = false;
  std::string input_speclib_filename;
  int32_t query_product_ion_unit = 0;
  int32_t query_precursor_ion_unit = 0;
  int32_t minimal_peptide_ions = 0;
  std::string output_result_filename;
  std::vector<CDatasetFile> query_datasets;
  int32_t top_peak_limit = 12;
  int32_t spectra_per_batch = 100;
  double query_product_ion_tolerance = 0.0;
  double query_precursor_ion_tolerance = 0.0;
  std::string mass_table_filename = kMassTableFilename;  // no key
  // Threads that match queries: 0 all the hardware has, 1 the plain loop. No
  // configuration key: the classic interface keeps its keys.
  uint32_t threads = 0;
  // Optional: the FDR stage also writes peptide, glycan and glycopeptide q-values.
  bool glycopeptide_fdr = false;
};

// A tolerance in Da at the given m/z: unit 0 (Da) the value itself, unit 1 (ppm)
// value * mz / 1e6, any other unit -1.0.
double ToleranceInDa(double value, int32_t unit, double mz);

// Whether a product ion tolerance counts as high resolution: at most 25 ppm
// (unit 1) or 0.025 Da (any other unit), the limit included. Close peaks are
// collapsed only then.
bool IsHighResolution(double tolerance, int32_t unit);

// The parameter singleton: created at first access, loaded once, read-only after.
class CParam {
 public:
  static CParam& GetInstance();
  // Reads configure_filename and validates every key of every enabled section;
  // returns only when all is valid, otherwise ends the program.
  void Load();

  CConstructionParam construction;
  CSearchParam search;
  std::string configure_filename;
  CConfigFile config;
  // Set by the command-line interface: a faulty key is explained (what was
  // expected, what was found) and numbers must be numbers. The classic
  // interface keeps its one-line messages and reads numbers leniently.
  bool explainFaults = false;

  // Tolerances in Da at a given m/z, from the loaded settings.
  double LibraryProductTolerance(double mz) const {
    return ToleranceInDa(construction.library_product_ion_tolerance,
                         construction.library_product_ion_unit, mz);
  }
  double QueryProductTolerance(double mz) const {
    return ToleranceInDa(search.query_product_ion_tolerance, search.query_product_ion_unit, mz);
  }
  double QueryPrecursorTolerance(double mz) const {
    return ToleranceInDa(search.query_precursor_ion_tolerance, search.query_precursor_ion_unit,
                         mz);
  }

 private:
  CParam() = default;
};
