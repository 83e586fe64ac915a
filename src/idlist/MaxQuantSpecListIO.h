#pragma once
#include "idlist/SpecListIO.h"
#include "molecule/MassTable.h"

// Reader of MaxQuant msms tables, with modification codes from the column
// heads and label recovery from the row's mass.
class CMaxQuantSpecListIO : public CSpecListIO {
 public:
  void Init(const CIdentificationFile& file) override;
  void Read(std::vector<CIdentifiedSpectrum>& list) override;
  // Adds Lys6[K] / Arg10[R] labels that explain the difference to `mass`.
  void RecoverLabels(CIdentifiedSpectrum& record, double mass) const;

  CMassTable massTable;

 private:
  // Adds the labels for a difference `difference` between the row's mass and
  // the mass of the peptide as known so far (|difference| >= 1.0).
  void AddLabels(CIdentifiedSpectrum& record, double difference) const;
};
