#pragma once
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "spectrum/InflatedFile.h"
#include "spectrum/MzHandler.h"
#include "spectrum/SpecIO.h"

// Reader of the XML spectrum formats (mzML, mzXML; plain or gzip). Opening
// streams the whole file once and keeps, for each MS2 spectrum, its name,
// precursor and where its arrays lie; any index the file carries is ignored,
// as writers leave stale ones. Peaks are decoded when a spectrum is read.
// Like the MGF reader, names are unique (the last spectrum of a name wins)
// and reading goes in the byte order of the names. Read-only.
class CMzSpecIO : public CSpecIO {
 public:
  void Init() override;
  void OpenRead(const std::string& path) override;
  bool ReadNext(std::vector<CSpectrum>& out) override;
  uint32_t ReadAll(std::vector<CSpectrum>& out) override;
  void CloseRead() override;
  bool ReadByName(const std::string& name, std::vector<CSpectrum>& out) override;
  void Rewind() override;
  uint32_t Count() override;
  void OpenWrite(const std::string&) override {}
  uint32_t WriteRange(std::vector<CSpectrum>&, uint32_t, uint32_t) override { return 0; }
  void CloseWrite() override {}

  double protonMass = 1.00727647012;

 protected:
  virtual std::unique_ptr<CMzHandler> MakeHandler() const = 0;

 private:
  struct CEntry {
    double precursorMz;
    uint32_t charge;
    bool interleaved;
    CArrayText mz, intensity;
  };
  void Index(const CMzRecord& record);
  bool Decode(const CEntry& entry, std::string& problem);

  CInflatedFile file;
  std::string path;
  std::string stem;
  std::vector<CEntry> entries;
  std::map<std::string, uint32_t> index;  // name -> entry
  std::map<std::string, uint32_t>::iterator cursor = index.end();
  uint32_t profileSpectra = 0;
  uint32_t chargesOutOfRange = 0;
  std::string text;                   // array text being decoded
  std::vector<double> mzValues, intensityValues;
};

class CMzmlIO : public CMzSpecIO {
 public:
  CMzmlIO() { Init(); }
  std::unique_ptr<CMzHandler> MakeHandler() const override { return MakeMzmlHandler(); }
};

class CMzxmlIO : public CMzSpecIO {
 public:
  CMzxmlIO() { Init(); }
  std::unique_ptr<CMzHandler> MakeHandler() const override { return MakeMzxmlHandler(); }
};
