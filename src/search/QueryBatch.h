#pragma once
#include <cstdint>
#include <vector>

#include "run/Param.h"
#include "spectrum/SpecIO.h"
#include "spectrum/Spectrum.h"

// The query spectra of the current batch, the datasets, the open reader and
// the constants of query preparation.
class CQueryBatch {
 public:
  // Copies the datasets and the batch settings; reserves the batch.
  void Init(const CSearchParam& param);
  // Removes the peaks a damaged file can hold: an m/z or intensity that is not
  // a finite number, or a negative intensity. Returns how many were removed.
  // Done before the marker test, so that one "inf" can't become the base peak.
  static std::size_t DropDamagedPeaks(CSpectrum& spectrum);
  // A raw spectrum shows a glycopeptide when a peak within the product tolerance
  // of 138.054953 exceeds 0.3 of the base peak.
  bool IsGlycoSpectrum(const CSpectrum& spectrum) const;
  // Prepares all spectra in place: after it the peaks of each are in descending
  // intensity, the first topPeakCount are its top peaks, and it has unit length.
  void Prepare();
  // The preparation of one spectrum; Prepare applies it to each.
  void PrepareSpectrum(CSpectrum& spectrum, bool highResolution) const;

  std::vector<CSpectrum> spectra;
  std::vector<CDatasetFile> datasets;
  CSpecIO* reader = nullptr;
  uint32_t batchSize = 100;
  double topPeakRatio = 0.05;
  int32_t topPeakLimit = 12;
  uint32_t binPeakLimit = 10;
  uint32_t binWidth = 100;
  double intensityExponent = 0.5;
};
