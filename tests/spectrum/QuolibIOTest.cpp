#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "SpectrumTestUtil.h"
#include "common/TestUtil.h"
#include "spectrum/QuolibIO.h"

namespace {

const std::string kEntryText =
    "ID=1\nSpectrumName=1\nSequence=AAJGTKPLJSR\nModifications=3,Deamidated[N];9,Deamidated[N];\n"
    "PrecursorIonMass=1234.50000\nCharge=2\nFrequency=3\nProteinAC=P12345\nPrevAA=K\nLastAA=AG\n"
    "StartPostion=42\nN Glycan Motif=3:NXT;9:NXS\nPeaks=2\n"
    "204.0867 0.5000 3 0 2 1\n300.0000 0.3333 0 4 0 0\n\n";

CSpectrum Entry() {
  CSpectrum s;
  s.name = "1";
  s.sequence = "AAJGTKPLJSR";
  s.modifications = {{3, "Deamidated[N]"}, {9, "Deamidated[N]"}};
  s.precursorMass = 1234.5;
  s.charge = 2;
  s.frequency = 3;
  s.proteinAC = "P12345";
  s.prevAA = "K";
  s.lastAA = "AG";
  s.startPosition = 42;
  s.motifs = {{3, "NXT"}, {9, "NXS"}};
  s.peaks = {spectest::MakePeak(204.08671, 0.5), spectest::MakePeak(300.0, 1.0 / 3.0)};
  s.peaks[0].count = 3;
  s.peaks[0].type = 0;
  s.peaks[0].position = 2;
  s.peaks[0].charge = 1;
  s.peaks[1].count = 0;  // a theoretical peak seen in no spectrum
  return s;
}

// The library text of the spectra, as the writer puts it.
std::string TextOf(std::vector<CSpectrum> spectra, const testutil::TempDir& dir) {
  CQuolibIO writer;
  writer.OpenWrite(dir / "w.quolib");
  EXPECT_EQ(writer.WriteRange(spectra, 0, static_cast<uint32_t>(spectra.size())), spectra.size());
  writer.CloseWrite();
  EXPECT_EQ(writer.entryCount, spectra.size());
  return testutil::ReadFile(dir / "w.quolib");
}

std::vector<CSpectrum> ReadText(const std::string& text, const testutil::TempDir& dir) {
  testutil::WriteFile(dir / "r.quolib", text);
  return spectest::Load(0, dir / "r.quolib").spectra;
}

}  // namespace

TEST(QuolibIOTest, EntryTextIsExactAndReadsBackEqual) {
  testutil::TempDir dir;
  CSpectrum decoy = Entry();
  decoy.name = "Decoy_1";
  decoy.modifications.clear();
  decoy.proteinAC = "Decoy_P12345";
  decoy.prevAA = decoy.lastAA = "";
  decoy.motifs = {{5, "NX"}};
  const std::string text = TextOf({Entry(), decoy}, dir);
  EXPECT_EQ(text, kEntryText +
                      "ID=2\nSpectrumName=Decoy_1\nSequence=AAJGTKPLJSR\nModifications=-\n"
                      "PrecursorIonMass=1234.50000\nCharge=2\nFrequency=3\nProteinAC=Decoy_P12345\n"
                      "PrevAA=\nLastAA=\nStartPostion=42\nN Glycan Motif=5:NX\nPeaks=2\n"
                      "204.0867 0.5000 3 0 2 1\n300.0000 0.3333 0 4 0 0\n\n");
  // "1" reads before "Decoy_1", the order written: the text written again is the same.
  const std::vector<CSpectrum> back = ReadText(text, dir);
  ASSERT_EQ(back.size(), 2u);
  EXPECT_TRUE(back[1].modifications.empty());
  EXPECT_EQ(TextOf(back, dir), text);
}

TEST(QuolibIOTest, ReaderGoesByLinePositionAndKeepsWhatFailsToScan) {
  testutil::TempDir dir;
  std::string text = kEntryText;
  // Lines 8 to 10 are read by position: any key, the value cut at a second "=".
  text.replace(text.find("P12345"), 6, " P12345=extra ");
  text.replace(text.find("PrevAA=K"), 8, "Anything=K");
  text.replace(text.find("3:NXT;9:NXS"), 11, " 3 : NXT ;9:NXS;");
  text.replace(text.find("204.0867 0.5000 3 0 2 1"), 23, "204.0867,0.5000\t3 ,0 2 1");
  // A second entry whose charge fails to scan keeps the charge read before.
  std::string second = kEntryText;
  second.replace(second.find("SpectrumName=1"), 14, "SpectrumName=2");
  second.replace(second.find("Charge=2"), 8, "Charge=x");
  std::string crlf;
  for (char c : text + second) crlf += c == '\n' ? std::string("\r\n") : std::string(1, c);
  const std::vector<CSpectrum> back = ReadText(crlf, dir);
  ASSERT_EQ(back.size(), 2u);
  EXPECT_EQ(TextOf({back[0]}, dir), kEntryText);
  EXPECT_EQ(back[1].charge, 2u);
}

TEST(QuolibIOTest, NamesSortAsBytesAndCutFilesStopAtTheEnd) {
  testutil::TempDir dir;
  std::vector<CSpectrum> list;
  for (const char* name : {"2", "Decoy_2", "10", "Decoy_10", "100", "1"}) {
    list.push_back(Entry());
    list.back().name = name;
  }
  std::string text = TextOf(list, dir);
  text.resize(text.size() - 30);  // cut inside the last entry's peak list
  const std::vector<CSpectrum> back = ReadText(text, dir);
  EXPECT_EQ(spectest::Names(back),
            (std::vector<std::string>{"1", "10", "100", "2", "Decoy_10", "Decoy_2"}));
  EXPECT_EQ(back.at(0).peaks.size(), 1u);  // "1", written last, lost its second peak line
  EXPECT_EQ(back.at(1).peaks.size(), 2u);
}
