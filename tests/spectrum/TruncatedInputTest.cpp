// Every reader must come back from any cut of a valid file and from bytes
// that are no format at all.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "SpectrumTestUtil.h"
#include "common/TestUtil.h"

TEST(TruncatedInputTest, EveryCutOfEveryFormatAndGarbageReadWithoutFault) {
  const std::pair<int, std::string> files[] = {
      {2, "BEGIN IONS\r\nTITLE=a.1.1.2\r\nCHARGE=2+\r\nPEPMASS=500.5 10\r\n100 1\r\n200,2\r\n"
          "END IONS\r\nBEGIN IONS\nTITLE=b.2.2.3\nPEPMASS=600\n300\t3\n# note\n400 4 1\n"
          "END IONS\n"},
      {0, "ID=1\nSpectrumName=1\nSequence=AJK\nModifications=2,Deamidated[N];\n"
          "PrecursorIonMass=400.12345\nCharge=2\nFrequency=1\nProteinAC=\nPrevAA=\nLastAA=\n"
          "StartPostion=0\nN Glycan Motif=2:NXT\nPeaks=2\n100.0000 1.0000 1 0 1 1\n"
          "200.0000 0.5000 0 1 1 1\n\n"},
      {3, "[a]\n[b]\n[c]\nx.1.1.2.dta\n500 2\n100 1\n200 2\n\ny.2.2.2.dta\n600 3\n300 3\n"},
      {1, "500.5 2\n100 1\n200 2\n"},
      {4, "<mzML><run><spectrumList count=\"9\"><spectrum index=\"0\" id=\"scan=1\" defaultArrayLength=\"1\">"
          "<cvParam accession=\"MS:1000511\" value=\"2\"/><precursorList><precursor><selectedIonList><selectedIon>"
          "<cvParam accession=\"MS:1000744\" value=\"500\"/></selectedIon></selectedIonList></precursor>"
          "</precursorList><binaryDataArrayList><binaryDataArray><cvParam accession=\"MS:1000514\"/>"
          "<binary>AAAAAAAAWUA=</binary></binaryDataArray><binaryDataArray><cvParam accession=\"MS:1000515\"/>"
          "<binary>AAAAAAAA8D8=</binary></binaryDataArray></binaryDataArrayList></spectrum></spectrumList></run></mzML>"},
      {5, "<mzXML><msRun><scan num=\"3\" msLevel=\"2\" peaksCount=\"1\"><precursorMz>500</precursorMz>"
          "<peaks precision=\"32\">QsgAAD+AAAA=</peaks></scan></msRun></mzXML>"}};
  testutil::TempDir dir;
  testing::internal::CaptureStdout();
  for (const auto& [format, content] : files) {
    for (std::size_t cut = 0; cut <= content.size(); ++cut) {
      testutil::WriteFile(dir / "f.dta", content.substr(0, cut));
      const spectest::Loaded loaded = spectest::Load(format, dir / "f.dta");
      EXPECT_LE(loaded.spectra.size(), loaded.count);
    }
  }
  uint64_t state = 12345;
  const char kAlphabet[] = "BEGIN IONS\nTITLE=ID=SpectrumName=Peaks=[].dta\r\n0123456789 ,\t.e-E\0";
  const std::string alphabet(kAlphabet, sizeof kAlphabet - 1);
  for (int round = 0; round < 20; ++round) {
    std::string bytes;
    for (int i = 0; i < 3000; ++i) {
      state ^= state << 13;
      state ^= state >> 7;
      state ^= state << 17;
      bytes += round % 2 ? static_cast<char>(state & 0xFF) : alphabet[state % alphabet.size()];
    }
    testutil::WriteFile(dir / "g.bin", bytes);
    for (int format : {0, 2, 3, 4, 5}) spectest::Load(format, dir / "g.bin");
  }
  testing::internal::GetCapturedStdout();
}
