#pragma once
#include "idlist/SpecListIO.h"

// Reader of pepXML lists with PeptideProphet results. Adds the file's
// modifications to the mass table and writes the table back.
class CPepXmlSpecListIO : public CSpecListIO {
 public:
  void Init(const CIdentificationFile& file) override;
  void Read(std::vector<CIdentifiedSpectrum>& list) override;

  double probability_threshold = 0.0;
  std::string massTablePath;        // set by the caller before Read
  std::string massTableUpdatePath;  // where the updated table goes; empty: massTablePath
  bool massTableWritten = false;    // set by Read once the table was written
};

// "N" + "115.02" -> "N[115]": the mass text is cut at its point, nothing rounded.
std::string MakePepXmlModName(const std::string& residue, const std::string& massText);
