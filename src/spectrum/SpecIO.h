#pragma once
#include <cstdint>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "spectrum/Spectrum.h"

// Abstract reader and writer of spectra. Usage: OpenRead, then any mix of Count,
// ReadNext, ReadAll, ReadByName, Rewind, then CloseRead; or OpenWrite,
// WriteRange/WriteOne, CloseWrite.
class CSpecIO {
 public:
  virtual ~CSpecIO() = default;
  virtual void OpenRead(const std::string& path) = 0;
  // Appends the next spectrum to `out`; false when none is left.
  virtual bool ReadNext(std::vector<CSpectrum>& out) = 0;
  // Appends all remaining spectra; returns how many were read successfully.
  virtual uint32_t ReadAll(std::vector<CSpectrum>& out) = 0;
  virtual void CloseRead() = 0;
  virtual bool ReadByName(const std::string& name, std::vector<CSpectrum>& out) = 0;
  virtual void Rewind() = 0;
  virtual uint32_t Count() = 0;
  virtual void OpenWrite(const std::string& path) = 0;
  virtual uint32_t WriteRange(std::vector<CSpectrum>& spectra, uint32_t first, uint32_t last) = 0;
  virtual void CloseWrite() = 0;
  virtual void Init() = 0;

  const std::string& Extension() const { return extension; }

 protected:
  CSpectrum work;    // persists between reads: formats overwrite only what they carry
  CPeak workPeak;
  std::string extension;
};

// Factory: 0 CQuolibIO, 1 CDtaIO, 2 CMgfIO, 3 CDtasIO, 4 CMzmlIO, 5 CMzxmlIO,
// anything else nullptr.
CSpecIO* CreateSpecIO(int32_t format);
