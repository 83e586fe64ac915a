#pragma once
#include <string>
#include <vector>

#include "spectrum/LineReader.h"
#include "spectrum/SpecIO.h"

// One DTA file, or a directory of ".dta" files listed in name order. Read-only.
class CDtaIO : public CSpecIO {
 public:
  CDtaIO() { Init(); }
  void Init() override;
  void OpenRead(const std::string& path) override;
  bool ReadNext(std::vector<CSpectrum>& out) override;
  uint32_t ReadAll(std::vector<CSpectrum>& out) override;
  void CloseRead() override;
  bool ReadByName(const std::string& name, std::vector<CSpectrum>& out) override;
  void Rewind() override;
  uint32_t Count() override;
  void OpenWrite(const std::string&) override {}
  uint32_t WriteRange(std::vector<CSpectrum>&, uint32_t, uint32_t) override { return 0; }
  void CloseWrite() override {}

 protected:
  std::string path;  // directory prefix ending in a separator, or empty
  std::vector<std::string> files;
  uint32_t cursor = 0;
  CLineReader input;  // open only within one ReadByName
};
