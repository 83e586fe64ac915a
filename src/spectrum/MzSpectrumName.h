#pragma once
#include <string>

#include "spectrum/MzRecord.h"

// Name of a spectrum of an mzML or mzXML file: its title up to the first blank,
// as an MGF TITLE gives it; without a title <stem>.<scan>.<scan>.<charge>, where
// the stem is the file name up to its last point, as search engines name spectra
// in their identification lists.
std::string MzSpectrumName(const CMzRecord& record, const std::string& stem);

// Scan number of a native ID: the value of scan=, scanId=, index= plus one,
// or spectrum=, in that preference; empty when the ID has none of them.
std::string ScanOfNativeId(const std::string& nativeId);

// File name without folder and without a final ".gz": a compressed file is
// named by what it holds ("run.mzML.gz" as "run.mzML").
std::string CompressedFileBase(const std::string& path);

// That name up to (not including) its last point: "run" for "run.mzML.gz".
std::string FileStem(const std::string& path);
