#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "molecule/MassTable.h"
#include "run/Param.h"
#include "search/GlycanLists.h"
#include "search/LibraryPeakTable.h"
#include "spectrum/SpecIO.h"
#include "spectrum/Spectrum.h"

// One row entry of the mass index.
struct CLibraryIndexEntry {
  double mass = 0.0;           // the spectrum's precursorMass
  uint32_t spectrumIndex = 0;  // index into CSpectralLibrary::spectra
};

// All library spectra of the search stage, prepared for matching, with a mass
// index per precursor charge and the glycan table.
// Prepares a library spectrum for matching: peaks that are not finite numbers
// dropped, m/z limited to [minMz, maxMz], annotated peaks counted, unit length.
void PrepareLibrarySpectrum(CSpectrum& spectrum, double minMz = 0.0, double maxMz = 2500.0);

class CSpectralLibrary {
 public:
  // Sets the members, reads the mass table and sorts its glycan table.
  void Init(const std::string& pathname, const std::string& massTablePath = kMassTableFilename);
  // Reads and prepares every spectrum, moves its peaks into peakTable, builds
  // massIndex.
  void Load();
  // Builds massIndex (and the look-up aids of SelectCandidates) from `spectra`
  // and the glycan table, and moves the peaks of spectra not yet in peakTable
  // there; Load ends with it.
  void BuildIndex();
  // Appends every library entry whose mass difference to the query fits a glycan
  // (NeuAc glycans only for a query with hasNeuAc), rows 1..maxCharge in order,
  // ascending mass within a row, with its fitting glycans in table order.
  // Writes only its arguments (and storage of the calling thread), so threads
  // may select at once.
  void SelectCandidates(const CSpectrum& query, std::vector<CSpectrum*>& candidates,
                        CGlycanLists& glycanLists);
  // The same selection by walking every lighter entry of every row, as the
  // rule reads; kept as the reference that the fast selection is tested and
  // measured against.
  void SelectCandidatesByWalk(const CSpectrum& query, std::vector<CSpectrum*>& candidates,
                              CGlycanLists& glycanLists);

  std::vector<CSpectrum> spectra;
  CSpecIO* reader = nullptr;  // set only during Load
  CDatasetFile file;
  double minMz = 0.0;
  double maxMz = 2500.0;
  uint32_t maxCharge = 8;
  std::vector<std::vector<CLibraryIndexEntry>> massIndex;
  CMassTable massTable;
  // The peaks of `spectra`, whose own peak lists are empty once loaded.
  CLibraryPeakTable peakTable;

 private:
  // Appends the entry as a candidate when a permitted glycan fits its delta.
  void TestEntry(const CSpectrum& query, double tolerance, const CLibraryIndexEntry& entry,
                 std::vector<CSpectrum*>& candidates, CGlycanLists& glycanLists);

  // The entries of rows 1..maxCharge by ascending mass, with their row and
  // place in it.
  struct MergedEntry {
    double mass;
    uint32_t row;
    uint32_t rank;
  };
  std::vector<MergedEntry> mergedIndex;
  // Distinct glycan masses, descending: of all glycans, and of those without
  // NeuAc; and the largest magnitude among them.
  std::vector<double> probesAll;
  std::vector<double> probesWithoutNeuAc;
  double largestGlycanMass = 0.0;
};
