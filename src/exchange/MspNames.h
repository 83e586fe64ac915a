#pragma once
#include <string>

#include "molecule/MassTable.h"

// Modification names between the mass table ("Oxidation[M]", "N[115]") and
// NIST MSP ("Oxidation", "CAM").

// The MSP name of a table name: the name without its residue, "Carbamidomethyl"
// for the carbamidomethyl mark; a name of another form stays as it is.
std::string MspModificationName(const std::string& tableName);

// The table name of an MSP name on a residue: "<name>[<residue>]" or the name
// itself, whichever the table knows (NIST's CAM as Carbamidomethyl); empty
// when it knows neither.
std::string TableModificationName(const CMassTable& table, const std::string& mspName, char residue);
