#pragma once
#include <string>

#include "spectrum/MulSpecIO.h"

// The library file (".quolib"): entries of fixed lines, target then decoy.
class CQuolibIO : public CMulSpecIO {
 public:
  CQuolibIO() { Init(); }
  void Init() override;
  bool WriteOne(CSpectrum& spectrum) override;

  uint32_t entryCount = 0;

 protected:
  void BuildIndex() override;
  bool ParseAtCursor() override;

  std::string writeBuffer;  // one entry's text, reused
};
