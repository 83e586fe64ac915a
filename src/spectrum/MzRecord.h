#pragma once
#include <cstdint>
#include <string>

#include "spectrum/BinaryArray.h"

// What the first pass over an mzML or mzXML file learns of one spectrum:
// everything but the peaks, which stay in the file until the spectrum is read.
struct CMzRecord {
  std::string nativeId;     // mzML id
  std::string title;        // mzML spectrum title, as written
  int64_t position = -1;    // mzML index attribute, or order of appearance
  int64_t scanNumber = -1;  // mzXML num
  int msLevel = 0;
  bool profile = false;
  double precursorMz = 0.0;
  int64_t charge = 0;       // 0 when the file gives none; as written, however large
  bool interleaved = false; // mzXML: m/z and intensity alternate in `mz`
  CArrayText mz, intensity;
};
