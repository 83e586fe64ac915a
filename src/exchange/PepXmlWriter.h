#pragma once
#include <ostream>
#include <string>

#include "exchange/ExchangeSettings.h"
#include "exchange/ExportedRun.h"

// Writes the run's identifications as pepXML for TPP-style tools: one
// msms_run_summary per query file, one spectrum_query per result line, its
// hit with flanking residues, the glycan mass on the site in
// modification_info, and the composition and scores as search_score elements.
// Decoys carry the TPP's decoy prefix on their protein.
void WritePepXml(const CExportedRun& run, const CExchangeSettings& settings,
                 const std::string& outPath, std::ostream& out);

// The protein name pepXML gets: a decoy's "Decoy_" becomes "DECOY_", the prefix
// the TPP looks for.
std::string PepXmlProtein(const CExportedHit& hit);
