#pragma once
#include "spectrum/MulSpecIO.h"

// Mascot generic format: reader with persisting charge and precursor, and writer.
class CMgfIO : public CMulSpecIO {
 public:
  CMgfIO() { Init(); }
  void Init() override;
  bool WriteOne(CSpectrum& spectrum) override;

  double protonMass = 1.00727647012;

 protected:
  void BuildIndex() override;
  bool ParseAtCursor() override;
};
