// Every reader must come back from any cut of a valid file and from bytes
// that are no format at all.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "common/TestUtil.h"
#include "spectrum/SpecIO.h"

namespace {
const char* const kMgf =
    "BEGIN IONS\r\nTITLE=a.1.1.2\r\nCHARGE=2+\r\nPEPMASS=500.5 10\r\n100 1\r\n200,2\r\nEND IONS\r\n"
    "BEGIN IONS\nTITLE=b.2.2.3\nPEPMASS=600\n300\t3\n# note\n400 4 1\nEND IONS\n";
const char* const kLibrary =
    "ID=1\nSpectrumName=1\nSequence=AJK\nModifications=2,Deamidated[N];\nPrecursorIonMass=400.12345\n"
    "Charge=2\nFrequency=1\nProteinAC=\nPrevAA=\nLastAA=\nStartPostion=0\nN Glycan Motif=2:NXT\n"
    "Peaks=2\n100.0000 1.0000 1 0 1 1\n200.0000 0.5000 0 1 1 1\n\n";
const char* const kDtas = "[a]\n[b]\n[c]\nx.1.1.2.dta\n500 2\n100 1\n200 2\n\ny.2.2.2.dta\n600 3\n300 3\n";

void ReadEveryCut(int format, const std::string& content, const std::string& path) {
  for (std::size_t cut = 0; cut <= content.size(); ++cut) {
    testutil::WriteFile(path, content.substr(0, cut));
    std::unique_ptr<CSpecIO> io(CreateSpecIO(format));
    io->OpenRead(path);
    std::vector<CSpectrum> out;
    const uint32_t count = io->Count();
    EXPECT_LE(io->ReadAll(out), count);
    io->CloseRead();
  }
}
}  // namespace

TEST(TruncatedInputTest, EveryCutOfEveryFormatReadsWithoutFault) {
  testutil::TempDir dir;
  ReadEveryCut(2, kMgf, dir / "f.mgf");
  ReadEveryCut(0, kLibrary, dir / "f.quolib");
  ReadEveryCut(3, kDtas, dir / "f.dtas");
  testing::internal::CaptureStdout();
  ReadEveryCut(1, "500.5 2\n100 1\n200 2\n", dir / "f.dta");
  testing::internal::GetCapturedStdout();
}

TEST(TruncatedInputTest, GarbageBytesReadWithoutFault) {
  testutil::TempDir dir;
  uint64_t state = 12345;
  for (int round = 0; round < 20; ++round) {
    std::string bytes;
    const std::string alphabet = "BEGIN IONS\nTITLE=ID=SpectrumName=Peaks=[].dta\r\n0123456789 ,\t.e-E\0";
    for (int i = 0; i < 3000; ++i) {
      state ^= state << 13;
      state ^= state >> 7;
      state ^= state << 17;
      bytes += round % 2 ? static_cast<char>(state & 0xFF) : alphabet[state % alphabet.size()];
    }
    for (int format : {0, 2, 3}) {
      testutil::WriteFile(dir / "g.bin", bytes);
      std::unique_ptr<CSpecIO> io(CreateSpecIO(format));
      testing::internal::CaptureStdout();
      io->OpenRead(dir / "g.bin");
      std::vector<CSpectrum> out;
      io->ReadAll(out);
      testing::internal::GetCapturedStdout();
    }
  }
}
