#include <gtest/gtest.h>

#include <string>
#include <vector>

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
  CPeak a;
  a.mz = 204.08671;
  a.intensity = 0.5;
  a.count = 3;
  a.type = 0;
  a.position = 2;
  a.charge = 1;
  CPeak b;
  b.mz = 300.0;
  b.intensity = 1.0 / 3.0;
  b.count = 0;
  b.type = 4;
  s.peaks = {a, b};
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
  EXPECT_EQ(got.name, want.name);
  EXPECT_EQ(got.sequence, want.sequence);
  EXPECT_EQ(got.modifications, want.modifications);
  EXPECT_DOUBLE_EQ(got.precursorMass, want.precursorMass);
  EXPECT_EQ(got.charge, want.charge);
  EXPECT_EQ(got.frequency, want.frequency);
  EXPECT_EQ(got.proteinAC, want.proteinAC);
  EXPECT_EQ(got.prevAA, want.prevAA);
  EXPECT_EQ(got.lastAA, want.lastAA);
  EXPECT_EQ(got.startPosition, want.startPosition);
  EXPECT_EQ(got.motifs, want.motifs);
  ASSERT_EQ(got.peaks.size(), want.peaks.size());
  for (std::size_t i = 0; i < got.peaks.size(); ++i) {
    EXPECT_NEAR(got.peaks[i].mz, want.peaks[i].mz, 5e-5);
    EXPECT_NEAR(got.peaks[i].intensity, want.peaks[i].intensity, 5e-5);
    EXPECT_EQ(got.peaks[i].count, want.peaks[i].count);
    EXPECT_EQ(got.peaks[i].type, want.peaks[i].type);
    EXPECT_EQ(got.peaks[i].position, want.peaks[i].position);
    EXPECT_EQ(got.peaks[i].charge, want.peaks[i].charge);
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

TEST(QuolibIOTest, ReaderTakesCrlfCommasAndCutsValuesAtEquals) {
  testutil::TempDir dir;
  const std::string path = dir / "crlf.quolib";
  std::string text = kEntryText;
  std::string crlf;
  for (char c : text) {
    if (c == '\n') crlf += '\r';
    crlf += c;
  }
  crlf.replace(crlf.find("P12345"), 6, "P1=extra ");
  crlf.replace(crlf.find("204.0867 0.5000 3 0 2 1"), 23, "204.0867,0.5000\t3 ,0 2 1");
  testutil::WriteFile(path, crlf);
  CQuolibIO reader;
  reader.OpenRead(path);
  std::vector<CSpectrum> spectra;
  ASSERT_TRUE(reader.ReadByName("1", spectra));
  CSpectrum want = Entry();
  want.proteinAC = "P1";
  ExpectSameEntry(spectra[0], want);
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
  std::vector<std::string> names;
  for (const CSpectrum& s : spectra) names.push_back(s.name);
  EXPECT_EQ(names, (std::vector<std::string>{"1", "10", "100", "2", "Decoy_10", "Decoy_2"}));
  EXPECT_EQ(spectra[0].peaks.size(), 1u);  // "1", written last, lost its second peak line
  EXPECT_EQ(spectra[1].peaks.size(), 2u);
}
