#pragma once
#include "idlist/SpecListIO.h"

// Reader of comma-separated Mascot exports.
class CMascotSpecListIO : public CSpecListIO {
 public:
  void Init(const CIdentificationFile& file) override;
  void Read(std::vector<CIdentifiedSpectrum>& list) override;
};
