#pragma once
#include <cstdint>
#include <fstream>
#include <map>
#include <string>

#include "run/SafeOutputFile.h"
#include "spectrum/LineReader.h"
#include "spectrum/SpecIO.h"

// Base of the formats that hold many spectra in one file (DTAS, MGF, library).
// The file is indexed once (name -> stream position); spectra are parsed on
// demand, so memory is needed for names only. Reading order is the byte order
// of the names.
class CMulSpecIO : public CSpecIO {
 public:
  void OpenRead(const std::string& path) override;
  bool ReadNext(std::vector<CSpectrum>& out) override;
  uint32_t ReadAll(std::vector<CSpectrum>& out) override;
  void CloseRead() override;
  bool ReadByName(const std::string& name, std::vector<CSpectrum>& out) override;
  void Rewind() override;
  uint32_t Count() override;
  void OpenWrite(const std::string& path) override;
  uint32_t WriteRange(std::vector<CSpectrum>& spectra, uint32_t first, uint32_t last) override;
  // Moves the written file into place; a file that could not be written
  // completely leaves an earlier file of that name as it was.
  void CloseWrite() override;
  // Drops what was written; an earlier file of the name stays as it was.
  void DiscardWrite() { outputFile.Discard(); }
  // Whether OpenWrite succeeded and, after CloseWrite, every write did.
  bool WriteSucceeded() const { return writeOk; }

  // Appends one spectrum to the output stream.
  virtual bool WriteOne(CSpectrum& spectrum) = 0;

 protected:
  // Empties `index` and reads the whole file once.
  virtual void BuildIndex() = 0;
  // Parses one spectrum from the current stream position into `work`.
  virtual bool ParseAtCursor() = 0;

  CLineReader input;      // binary mode, byte offsets
  CSafeOutputFile outputFile;
  std::ofstream& output = outputFile.Stream();  // text mode
  bool writeOk = false;
  std::map<std::string, std::streamoff> index;
  std::map<std::string, std::streamoff>::iterator cursor = index.end();
  std::string title;      // name last read by the indexer; a failed scan keeps it
};
