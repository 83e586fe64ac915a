#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "molecule/Modification.h"

// The peptide as an identification list names it.
struct CPeptideIdentity {
  std::string sequence;
  int32_t charge = 0;
  std::vector<CModification> modifications;
  std::string proteinAC;
  int32_t startPosition = 0;
  std::vector<CGlycoSite> motifs;
  std::string prevAA;
  std::string lastAA;
};

// One record of an identification list.
struct CIdentifiedSpectrum : CPeptideIdentity {
  std::string spectrumName;
  int32_t datasetIndex = 0;
};

struct CSpectrumRef {
  std::string spectrumName;
  int32_t datasetIndex = 0;
};

// A non-redundant peptide ion with the spectra that identified it.
struct CIdentifiedPeptide : CPeptideIdentity {
  std::vector<CSpectrumRef> spectra;
};
