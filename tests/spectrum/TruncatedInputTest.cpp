// Cut files: every spectrum before the cut is kept as it was, but for the one
// whose name an indexed format passes on to the cut block.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "SpectrumTestUtil.h"
#include "common/TestUtil.h"

namespace {

// Each spectrum a format reader gives, with every number to the last bit.
std::vector<std::string> Spectra(int format, const std::string& path) {
  std::vector<std::string> lines;
  char number[64];
  for (const CSpectrum& s : spectest::Load(format, path).spectra) {
    std::snprintf(number, sizeof number, " %u %.17g", s.charge, s.precursorMass);
    std::string line = s.name + number;
    for (const CPeak& p : s.peaks) {
      std::snprintf(number, sizeof number, " %.17g:%.17g", p.mz, p.intensity);
      line += number;
    }
    lines.push_back(line);
  }
  return lines;
}

}  // namespace

TEST(TruncatedInputTest, CutsKeepTheWholeSpectraBeforeThem) {
  struct Case {
    int format;
    std::string head;
    std::vector<std::string> records;
  } cases[] = {
      {2, "",
       {"BEGIN IONS\r\nTITLE=a.1.1.2\r\nCHARGE=2+\r\nPEPMASS=500.5 10\r\n100 1\r\n200,2\r\n"
        "END IONS\r\n",
        "BEGIN IONS\nTITLE=b.2.2.3\nCHARGE=3+\nPEPMASS=600\n300\t3\n# note\n400 4 1\nEND IONS\n",
        "BEGIN IONS\nTITLE=c.3.3.2\nCHARGE=3+\nPEPMASS=700\n500 5\nEND IONS\n"}},
      {0, "",
       {"ID=1\nSpectrumName=1\nSequence=AJK\nModifications=2,Deamidated[N];\n"
        "PrecursorIonMass=400.12345\nCharge=2\nFrequency=1\nProteinAC=\nPrevAA=\nLastAA=\n"
        "StartPostion=0\nN Glycan Motif=2:NXT\nPeaks=2\n100.0000 1.0000 1 0 1 1\n"
        "200.0000 0.5000 0 1 1 1\n\n",
        "ID=2\nSpectrumName=Decoy_1\nSequence=KJA\nModifications=-\n"
        "PrecursorIonMass=400.12345\nCharge=2\nFrequency=1\nProteinAC=\nPrevAA=\nLastAA=\n"
        "StartPostion=0\nN Glycan Motif=2:NXT\nPeaks=1\n150.0000 1.0000 1 0 1 1\n\n"}},
      {3, "[a]\n[b]\n[c]\n", {"x.1.1.2.dta\n500 2\n100 1\n200 2\n\n", "y.2.2.2.dta\n600 3\n300 3\n\n"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.format);
    // MGF titles and library names are indexed: a name line cut to a failed
    // scan files the cut block under the name read before.
    testutil::ExpectCutsKeepWholeRecords(
        [&](const std::string& path, std::string& printed) {
          testing::internal::CaptureStdout();
          std::vector<std::string> spectra = Spectra(c.format, path);
          printed = testing::internal::GetCapturedStdout();
          return spectra;
        },
        c.head, c.records,
        c.format != 3);
  }
}
