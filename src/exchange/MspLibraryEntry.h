#pragma once
#include <map>
#include <string>

#include "construction/LibraryBuilder.h"
#include "exchange/MspReader.h"
#include "idlist/PeptideIdentity.h"

// Rebuilds the library entry of an MSP record this program wrote, target or
// decoy: its peaks are finished library peaks, so they are not annotated
// again. Annotated b and y ions get the m/z the construction stage computes
// (the record's m/z carry the site mark and only four decimals), the site
// mark comes off as construction takes it off, and the Y ions are added from
// the settings. `peptide` is the record's peptide with the site mark on an N;
// `targetMasses` holds the masses of the targets rebuilt so far, which their
// decoys share. False when the record names no site.
bool RebuildLibraryEntry(const CMspRecord& record, const CIdentifiedSpectrum& peptide,
                         CLibraryBuilder& builder, std::map<std::string, double>& targetMasses,
                         CSpectrum& entry);
