#pragma once
#include <cstddef>
#include <string>

#include "exchange/MspWriter.h"
#include "run/Param.h"

// What a conversion from MSP saw.
struct CMspImportCounts {
  std::size_t records = 0;      // sound records read
  std::size_t faulty = 0;       // records reported and skipped
  std::size_t decoys = 0;       // decoy records skipped: each target gets its decoy anew
  std::size_t noSite = 0;       // without the site mark on a sequon
  std::size_t unknownModification = 0;
  std::size_t entries = 0;      // entries written, targets and decoys
};

// .quolib to MSP: one record per entry, in the order of the file.
// False, after a message, when the output can't be written.
bool ConvertQuolibToMsp(const std::string& in, const std::string& out, const CSiteMark& mark,
                        const CMassTable& table);

// MSP to .quolib: records of deglycosylated peptides whose Mods= carry the site
// mark on a sequon become entries as the construction stage makes them, with
// `settings` (theta, tolerance, motifs, Y ions; modification_remove is the
// mark's table name) and a decoy after each target. Records this program
// wrote hold finished library peaks and are not annotated again; others are
// spectra, cleaned and annotated as a consensus of one. False, after a
// message, when the input can't be read or the output written.
bool ConvertMspToQuolib(const std::string& in, const std::string& out,
                        const CConstructionParam& settings, const CSiteMark& mark,
                        CMspImportCounts& counts);
