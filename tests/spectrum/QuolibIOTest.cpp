#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "SpectrumTestUtil.h"
#include "common/TestUtil.h"
#include "spectrum/QuolibIO.h"

namespace {
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

const char* const kEntryText =
    "ID=1\n"
    "SpectrumName=1\n"
    "Sequence=AAJGTKPLJSR\n"
    "Modifications=3,Deamidated[N];9,Deamidated[N];\n"
    "PrecursorIonMass=1234.50000\n"
    "Charge=2\n"
    "Frequency=3\n"
    "ProteinAC=P12345\n"
    "PrevAA=K\n"
    "LastAA=AG\n"
    "StartPostion=42\n"
    "N Glycan Motif=3:NXT;9:NXS\n"
    "Peaks=2\n"
    "204.0867 0.5000 3 0 2 1\n"
    "300.0000 0.3333 0 4 0 0\n"
    "\n";

void ExpectSameEntry(const CSpectrum& got, const CSpectrum& want) {
  EXPECT_EQ(got.name + "|" + got.sequence + "|" + got.proteinAC + "|" + got.prevAA + "|" +
                got.lastAA,
            want.name + "|" + want.sequence + "|" + want.proteinAC + "|" + want.prevAA + "|" +
                want.lastAA);
  EXPECT_EQ(got.modifications, want.modifications);
  EXPECT_DOUBLE_EQ(got.precursorMass, want.precursorMass);
  EXPECT_EQ(std::vector<int64_t>({got.charge, got.frequency, got.startPosition}),
            std::vector<int64_t>({want.charge, want.frequency, want.startPosition}));
  EXPECT_EQ(got.motifs, want.motifs);
  ASSERT_EQ(got.peaks.size(), want.peaks.size());
  for (std::size_t i = 0; i < got.peaks.size(); ++i) {
    const CPeak& g = got.peaks[i];
    const CPeak& w = want.peaks[i];
    EXPECT_NEAR(g.mz, w.mz, 5e-5);
    EXPECT_NEAR(g.intensity, w.intensity, 5e-5);
    EXPECT_EQ(std::vector<int64_t>({g.count, g.type, g.position, g.charge}),
              std::vector<int64_t>({w.count, w.type, w.position, w.charge}));
  }
}
}  // namespace

TEST(QuolibIOTest, EntryTextIsExactAndReadsBackEqual) {
  testutil::TempDir dir;
  const std::string path = dir / "lib.quolib";
  CSpectrum target = Entry();
  CSpectrum decoy = Entry();
  decoy.name = "Decoy_1";
  decoy.modifications.clear();
  decoy.proteinAC = "Decoy_P12345";
  decoy.prevAA = "";
  decoy.lastAA = "";
  decoy.motifs = {{5, "NX"}};
  CQuolibIO writer;
  writer.OpenWrite(path);
  EXPECT_TRUE(writer.WriteOne(target));
  EXPECT_TRUE(writer.WriteOne(decoy));
  writer.CloseWrite();
  EXPECT_EQ(writer.entryCount, 2u);

  const std::string text = testutil::ReadFile(path);
  ASSERT_EQ(text.substr(0, std::string(kEntryText).size()), kEntryText);
  const std::string second = text.substr(std::string(kEntryText).size());
  EXPECT_EQ(second.substr(0, second.find("PrecursorIonMass")),
            "ID=2\nSpectrumName=Decoy_1\nSequence=AAJGTKPLJSR\nModifications=-\n");
  EXPECT_NE(second.find("\nProteinAC=Decoy_P12345\nPrevAA=\nLastAA=\nStartPostion=42\n"
                        "N Glycan Motif=5:NX\nPeaks=2\n"),
            std::string::npos);

  CQuolibIO reader;
  reader.OpenRead(path);
  EXPECT_EQ(reader.Count(), 2u);
  std::vector<CSpectrum> spectra;
  EXPECT_EQ(reader.ReadAll(spectra), 2u);
  ASSERT_EQ(spectra.size(), 2u);
  ExpectSameEntry(spectra[0], target);  // "1" before "Decoy_1"
  ExpectSameEntry(spectra[1], decoy);
  EXPECT_TRUE(spectra[1].modifications.empty());
}

TEST(QuolibIOTest, ReaderGoesByLinePositionAndKeepsWhatFailsToScan) {
  testutil::TempDir dir;
  std::string text = kEntryText;
  // Lines 8 to 10 are read by position: any key, the value cut at a second "=".
  text.replace(text.find("ProteinAC=P12345"), 16, "ProteinAC= P1=extra ");
  text.replace(text.find("PrevAA=K"), 8, "Anything=K");
  text.replace(text.find("3:NXT;9:NXS"), 11, " 3 : NXT ;9:NXS;");
  text.replace(text.find("204.0867 0.5000 3 0 2 1"), 23, "204.0867,0.5000\t3 ,0 2 1");
  // A second entry whose charge fails to scan keeps the charge read before.
  std::string second = kEntryText;
  second.replace(second.find("SpectrumName=1"), 14, "SpectrumName=2");
  second.replace(second.find("Charge=2"), 8, "Charge=x");
  std::string crlf;
  for (char c : text + second) crlf += c == '\n' ? std::string("\r\n") : std::string(1, c);
  testutil::WriteFile(dir / "crlf.quolib", crlf);
  CQuolibIO reader;
  reader.OpenRead(dir / "crlf.quolib");
  std::vector<CSpectrum> spectra;
  ASSERT_EQ(reader.ReadAll(spectra), 2u);
  CSpectrum want = Entry();
  want.proteinAC = "P1";
  ExpectSameEntry(spectra[0], want);
  EXPECT_EQ(spectra[1].charge, 2u);
}

TEST(QuolibIOTest, NamesSortAsBytesAndCutFilesStopAtTheEnd) {
  testutil::TempDir dir;
  const std::string path = dir / "order.quolib";
  CQuolibIO writer;
  writer.OpenWrite(path);
  std::vector<CSpectrum> list;
  for (const char* name : {"2", "Decoy_2", "10", "Decoy_10", "100", "1"}) {
    CSpectrum s = Entry();
    s.name = name;
    list.push_back(s);
  }
  EXPECT_EQ(writer.WriteRange(list, 0, 5), 6u);
  writer.CloseWrite();
  std::string text = testutil::ReadFile(path);
  // Cut the file inside the last entry's peak list.
  text.resize(text.size() - 30);
  testutil::WriteFile(path, text);

  CQuolibIO reader;
  reader.OpenRead(path);
  std::vector<CSpectrum> spectra;
  reader.ReadAll(spectra);
  EXPECT_EQ(spectest::Names(spectra),
            (std::vector<std::string>{"1", "10", "100", "2", "Decoy_10", "Decoy_2"}));
  EXPECT_EQ(spectra[0].peaks.size(), 1u);  // "1", written last, lost its second peak line
  EXPECT_EQ(spectra[1].peaks.size(), 2u);
}
