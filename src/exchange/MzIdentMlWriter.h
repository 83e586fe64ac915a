#pragma once
#include <ostream>

#include "exchange/ExchangeSettings.h"
#include "exchange/ExportedRun.h"

// Writes the run's identifications as mzIdentML 1.1: one spectrum
// identification result per result line, its peptide with every modification
// and the glycan as a modification of the site asparagine (monoisotopic mass;
// the composition as a user parameter of the item, since no controlled terms
// for glycans exist yet), target/decoy, scores, FDR and q-values.
void WriteMzIdentMl(const CExportedRun& run, const CExchangeSettings& settings, std::ostream& out);
