#pragma once
#include <cstdint>
#include <string>

#include "run/RunPaths.h"

// What the start of a spectrum file shows it to be, when that plainly differs
// from the format the configuration declares (an mzML file given as MGF, an
// image given as MGF, an MGF given as mzML): a short description such as
// "it is an mzML file", or empty when the file may well be of that format
// (an empty or unreadable file is left to the reader, which reports it).
std::string FormatMismatch(const std::string& path, int32_t format);

// Refuses, before any file is read, a run whose spectrum datasets are plainly
// not of their declared format: prints what each file is, naming the
// settings, and ends the program with status 1.
void CheckDatasetFormats(const CRunPaths& paths);
