#pragma once
#include <string>

#include "cli/RunSetup.h"

// What `convert-library` was asked for.
struct CConvertOptions {
  std::string in, out;
  std::string config;    // construction settings; required to read MSP
  std::string massTable;
  std::string siteMark;  // MSP name of the site mark; default Deamidated
};

// `QuorinGlyco convert-library IN OUT`: .quolib to NIST MSP or back, by the
// extensions. Returns the exit status.
int ConvertLibraryCommand(const CConvertOptions& options);
