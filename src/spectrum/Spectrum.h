#pragma once
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "molecule/Modification.h"
#include "spectrum/Peak.h"

// The one spectrum record of the system: raw spectrum, consensus, library entry or query.
class CSpectrum {
 public:
  std::string name;
  double precursorMass = 0.0;  // [M+H]+ in Da
  uint32_t charge = 0;
  uint32_t frequency = 1;
  std::string sequence;        // J marks a glycosylation-site asparagine
  uint32_t topPeakCount = 0;
  std::vector<CModification> modifications;
  std::vector<CPeak> peaks;
  std::vector<CPeak> diagnosticPeaks;
  bool hasNeuAc = false;
  bool hasNeuGc = false;
  std::string proteinAC;
  int32_t startPosition = 0;
  std::vector<CGlycoSite> motifs;
  std::string prevAA;
  std::string lastAA;
  std::vector<int32_t> mzIndex;
  std::vector<uint32_t> peakUsed;

  void SortPeaksByMz();
  void SortPeaksByIntensity();
  void SortPeaksByCount();

  // --- peak look-ups shared by construction and search (Spectrum.cpp)
  // Requires peaks sorted by m/z: mzIndex[v] = first peak with trunc(mz) >= v.
  void BuildMzIndex();
  // peakUsed := as many zeros as peaks.
  void ResetPeakUsed();
  // Most intense unused peak within [mz - tol, mz + tol]; marks it used. -1 if none.
  int FindPeak(double mz, double tolerance);

  // --- filters shared by both stages (SpectrumFilters.cpp)
  // Sorts by m/z, drops peaks above `high` from the end (never the first peak),
  // then drops peaks below `low`.
  void TrimMzRange(double low, double high);
  // Collapses close peaks at high resolution (cluster width 1.1, start 100, apex limit 400).
  void CollapsePeakClusters();
  // Moves oxonium ions into diagnosticPeaks and sets hasNeuAc / hasNeuGc.
  void ExtractDiagnosticPeaks();
  // Keeps the `limit` most intense unannotated peaks per m/z bin of `width`;
  // annotated peaks always stay. Ends sorted by m/z.
  void KeepTopPeaksPerBin(uint32_t limit, uint32_t width);
  // Direct or charge-shifted look-up of the search; marks the peak 1 or 2 in peakUsed.
  int FindShiftedPeak(double mz, double tolerance, uint32_t highestCharge, double shift);
  // The same with the marks kept outside the spectrum (one per peak), so that
  // threads can search one spectrum at once.
  int FindShiftedPeak(double mz, double tolerance, uint32_t highestCharge, double shift,
                      std::span<uint32_t> marks) const;

  // --- consensus building of the construction stage (SpectrumMerge.cpp)
  void NormalizeToBasePeak();
  void MergeSpectrum(const CSpectrum& other);
  void PowerTransform(double exponent);
  void MergeTheoretical(CSpectrum& theoretical, double theta);
};
