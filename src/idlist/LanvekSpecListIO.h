#pragma once
#include "idlist/SpecListIO.h"

// Reader of Lanvek engine result lists, with flanking residues from the FASTA database.
class CLanvekSpecListIO : public CSpecListIO {
 public:
  void Init(const CIdentificationFile& file) override;
  void Read(std::vector<CIdentifiedSpectrum>& list) override;
};
