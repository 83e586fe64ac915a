#pragma once
#include "spectrum/MulSpecIO.h"

// Mascot generic format: reader (blocks named as CMgfBlockIndex says) and writer.
class CMgfIO : public CMulSpecIO {
 public:
  CMgfIO() { Init(); }
  void Init() override;
  void OpenRead(const std::string& path) override;
  bool WriteOne(CSpectrum& spectrum) override;

  double protonMass = 1.00727647012;

 protected:
  void BuildIndex() override;
  bool ParseAtCursor() override;

 private:
  std::string path;  // for the reader's report
};
