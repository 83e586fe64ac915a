#pragma once
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "spectrum/Spectrum.h"

// What the search knows about one query and one library spectrum. Owns its
// strings and lists; only points at its spectra, so it must not outlive the batch.
struct CSpectralMatch {
  CSpectrum* query = nullptr;
  CSpectrum* library = nullptr;  // null when the query had no candidate
  std::string glycanName;
  double glycanMass = 0.0;
  int32_t libraryPeakCount = 0;     // annotated peaks of the library spectrum
  int32_t matchedTopPeakCount = 0;  // query top peaks that found a library peak
  double dps = 0.0;
  double ps = 0.0;
  double score = 0.0;  // ps * dps; -1.0 when no candidate had enough peptide ions
  std::string glycoLoc;
  std::string dpsIons;
  std::string psIons;
  double matchedYIonIntensity = 0.0;
  double matchedPeptideIonIntensity = 0.0;
  int32_t matchedYIonCount = 0;
  int32_t matchedPeptideIonCount = 0;
  int32_t candidateCount = 0;
  // (query peak index, library peak index) of all matches / of top-peak matches.
  std::vector<std::pair<uint32_t, uint32_t>> dpsPairs;
  std::vector<std::pair<uint32_t, uint32_t>> psPairs;
  int32_t site = 0;  // the residue glycoLoc names when it picks one of the J sites, else 0
  // With glycopeptide q-values: the next best candidates, best first, each
  // complete as a result of its own (ion names and site), for the rescoring
  // to choose among. Empty otherwise; never part of the result file.
  std::vector<CSpectralMatch> alternatives = {};

  // Back to the empty state; keeps the room of strings and lists.
  void Reset() {
    query = nullptr;
    library = nullptr;
    glycanName.clear();
    glycanMass = 0.0;
    libraryPeakCount = 0;
    matchedTopPeakCount = 0;
    dps = ps = score = 0.0;
    glycoLoc.clear();
    site = 0;
    dpsIons.clear();
    psIons.clear();
    matchedYIonIntensity = matchedPeptideIonIntensity = 0.0;
    matchedYIonCount = matchedPeptideIonCount = candidateCount = 0;
    dpsPairs.clear();
    psPairs.clear();
    alternatives.clear();
  }
};
