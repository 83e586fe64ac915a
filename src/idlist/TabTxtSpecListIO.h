#pragma once
#include "idlist/SpecListIO.h"

// Reader of tab-txt lists: one record a line, four tab-separated fields.
class CTabTxtSpecListIO : public CSpecListIO {
 public:
  void Init(const CIdentificationFile& file) override;
  void Read(std::vector<CIdentifiedSpectrum>& list) override;
};
