#pragma once
#include <ostream>
#include <string>

#include "molecule/MassTable.h"
#include "spectrum/Spectrum.h"

// The modification that marks a former site asparagine, by its two names.
struct CSiteMark {
  std::string mspName;    // in Mods=, e.g. "Deamidated"
  std::string tableName;  // in the mass table and the lists, e.g. "Deamidated[N]"
  double mass = 0.0;
};

// Writes one library entry as a NIST MSP record of the deglycosylated peptide:
// each site J as an N carrying the site mark, whose mass goes back into MW,
// Parent and the b and y ions that hold the site. The Y ions are left out
// (the peptide without its glycan has none; reading adds them again from the
// settings). Peaks carry their annotation and "count/frequency" as NIST's
// replicate statistic; the Comment keeps what .quolib holds beside.
// Intensities are scaled to whole numbers (kMspIntensityScale).
void WriteMspRecord(const CSpectrum& entry, const CSiteMark& mark, const CMassTable& table,
                    std::ostream& out);

// Comment key of the records this program writes: their peaks are already
// annotated library peaks.
inline const std::string kMspOriginKey = "Origin";
inline const std::string kMspOrigin = "QuorinGlyco";

// Library intensities (0 to 1, four decimals in .quolib) are written as whole
// numbers up to 10,000, as MSP libraries give them: readers such as OpenMS drop
// peaks below 2 as noise.
constexpr double kMspIntensityScale = 10000.0;
