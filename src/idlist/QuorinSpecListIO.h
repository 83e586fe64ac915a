#pragma once
#include "idlist/SpecListIO.h"

// Reader of the system's own list format (reader and writer).
class CQuorinSpecListIO : public CSpecListIO {
 public:
  void Init(const CIdentificationFile& file) override;
  void Read(std::vector<CIdentifiedSpectrum>& list) override;
  // Writes the list in the quorin format to `path`; ends the program with -1
  // when the file can't be opened.
  virtual void WriteList(const std::vector<CIdentifiedSpectrum>& list);
};
