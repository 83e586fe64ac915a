#pragma once
#include <string>

#include "molecule/MassTable.h"
#include "run/Param.h"

// What the writers of the exchange formats read besides the identifications:
// the run's settings and its mass table (glycan table, residue and
// modification masses).
struct CExchangeSettings {
  const CParam* param = nullptr;
  CMassTable massTable;
  std::string creationDate;  // xsd:dateTime, e.g. 2026-11-24T20:00:00
};

// The current time in xsd:dateTime form (UTC).
std::string CurrentDateTime();

// Shortest text that reads back as the same double.
std::string NumberText(double value);
