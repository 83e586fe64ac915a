#pragma once
#include "spectrum/MulSpecIO.h"

// DTAS container: many DTA bodies under ".dta" name lines. Read-only.
class CDtasIO : public CMulSpecIO {
 public:
  CDtasIO() { Init(); }
  void Init() override;
  bool WriteOne(CSpectrum& spectrum) override;  // does nothing, false

 protected:
  void BuildIndex() override;
  bool ParseAtCursor() override;
};
