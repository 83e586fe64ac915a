#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "common/TestUtil.h"
#include "spectrum/MgfIO.h"

namespace {
constexpr double kProton = 1.00727647012;

std::vector<CSpectrum> ReadAllOf(const std::string& path, uint32_t* count = nullptr) {
  CMgfIO io;
  io.OpenRead(path);
  if (count) *count = io.Count();
  std::vector<CSpectrum> spectra;
  io.ReadAll(spectra);
  return spectra;
}

std::vector<std::string> Names(const std::vector<CSpectrum>& spectra) {
  std::vector<std::string> names;
  for (const CSpectrum& s : spectra) names.push_back(s.name);
  return names;
}

std::string Block(const std::string& title, const std::string& header, const std::string& peaks) {
  return "BEGIN IONS\nTITLE=" + title + "\n" + header + peaks + "END IONS\n\n";
}
}  // namespace

TEST(MgfIOTest, SpectraComeInByteOrderOfTitlesWithPersistingCharge) {
  testutil::TempDir dir;
  const std::string path = dir / "run.mgf";
  testutil::WriteFile(path, "MASS=Monoisotopic\n" +
                                Block("2", "CHARGE=3+\nPEPMASS=500.5\n", "100 1\n") +
                                Block("10", "PEPMASS=600\n", "200 2\n") +
                                Block("1", "PEPMASS=700\nCHARGE=2+\n", "300 3\n"));
  uint32_t count = 0;
  const std::vector<CSpectrum> spectra = ReadAllOf(path, &count);
  EXPECT_EQ(count, 3u);
  ASSERT_EQ(Names(spectra), (std::vector<std::string>{"1", "10", "2"}));
  EXPECT_EQ(spectra[0].charge, 2u);
  EXPECT_DOUBLE_EQ(spectra[0].precursorMass, (700 - kProton) * 2 + kProton);
  // "10" has no CHARGE line: it keeps the charge of the block read before it ("1").
  EXPECT_EQ(spectra[1].charge, 2u);
  EXPECT_DOUBLE_EQ(spectra[1].precursorMass, (600 - kProton) * 2 + kProton);
  EXPECT_EQ(spectra[2].charge, 3u);

  CMgfIO io;
  io.OpenRead(path);
  std::vector<CSpectrum> one;
  EXPECT_TRUE(io.ReadNext(one));
  EXPECT_TRUE(io.ReadNext(one));
  EXPECT_TRUE(io.ReadNext(one));
  EXPECT_FALSE(io.ReadNext(one));
  EXPECT_EQ(Names(one), (std::vector<std::string>{"1", "10", "2"}));
  io.Rewind();
  EXPECT_TRUE(io.ReadNext(one));
  EXPECT_EQ(one.back().name, "1");
}

TEST(MgfIOTest, HeaderLinesAndPeakSeparators) {
  testutil::TempDir dir;
  const std::string path = dir / "a.mgf";
  testutil::WriteFile(path, Block("a.1.1.2 File:x", "CHARGE=2+\nPEPMASS=800 123\nCOM=x\nPX=1\n",
                                  "100.5 10 1\n200.25\t20\n300,30\n400   \t 40\n"));
  const std::vector<CSpectrum> spectra = ReadAllOf(path);
  ASSERT_EQ(spectra.size(), 1u);
  const CSpectrum& s = spectra[0];
  EXPECT_EQ(s.name, "a.1.1.2");
  EXPECT_EQ(s.charge, 2u);
  EXPECT_DOUBLE_EQ(s.precursorMass, (800 - kProton) * 2 + kProton);
  ASSERT_EQ(s.peaks.size(), 4u);
  const double mz[] = {100.5, 200.25, 300, 400};
  const double in[] = {10, 20, 30, 40};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(s.peaks[i].mz, mz[i]);
    EXPECT_EQ(s.peaks[i].intensity, in[i]);
    EXPECT_EQ(s.peaks[i].type, 4);
    EXPECT_EQ(s.peaks[i].count, 1u);
  }
}

TEST(MgfIOTest, CrlfFilesAndFailingPeakLines) {
  testutil::TempDir dir;
  const std::string path = dir / "crlf.mgf";
  testutil::WriteFile(path,
                      "BEGIN IONS\r\nTITLE=t1\r\nCHARGE=1+\r\nPEPMASS=400\r\n"
                      "100 5\r\n# comment\r\n150 NaN\r\n175\r\nEND IONS\r\n");
  const std::vector<CSpectrum> spectra = ReadAllOf(path);
  ASSERT_EQ(spectra.size(), 1u);
  const CSpectrum& s = spectra[0];
  EXPECT_EQ(s.name, "t1");
  EXPECT_DOUBLE_EQ(s.precursorMass, 400.0);
  ASSERT_EQ(s.peaks.size(), 4u);
  // A line that fails the scan repeats the previous peak; a one-column line
  // sets only the m/z.
  EXPECT_EQ(s.peaks[1].mz, 100.0);
  EXPECT_EQ(s.peaks[1].intensity, 5.0);
  EXPECT_EQ(s.peaks[2].mz, 150.0);
  EXPECT_TRUE(std::isnan(s.peaks[2].intensity));
  EXPECT_EQ(s.peaks[3].mz, 175.0);
  EXPECT_TRUE(std::isnan(s.peaks[3].intensity));
}

TEST(MgfIOTest, BrokenBlocksStopInAnOrderlyWay) {
  testutil::TempDir dir;
  // A block without peak lines must not take the next block's header or peaks.
  const std::string path = dir / "broken.mgf";
  testutil::WriteFile(path, Block("empty", "CHARGE=2+\nPEPMASS=500\n", "") +
                                Block("full", "CHARGE=3+\nPEPMASS=600\n", "100 1\n200 2\n") +
                                "BEGIN IONS\nTITLE=cut\nCHARGE=1+\nPEPMASS=300\n50 5\n60 6");
  const std::vector<CSpectrum> spectra = ReadAllOf(path);
  ASSERT_EQ(Names(spectra), (std::vector<std::string>{"cut", "empty", "full"}));
  EXPECT_EQ(spectra[0].peaks.size(), 2u);  // the file ends inside the block
  EXPECT_EQ(spectra[0].peaks[1].mz, 60.0);
  EXPECT_TRUE(spectra[1].peaks.empty());
  EXPECT_EQ(spectra[1].charge, 2u);
  EXPECT_DOUBLE_EQ(spectra[1].precursorMass, (500 - kProton) * 2 + kProton);
  EXPECT_EQ(spectra[2].peaks.size(), 2u);

  // A block cut before its title has no entry; a title-less block lends its
  // position to the next title; a later duplicate title replaces the earlier.
  testutil::WriteFile(path, "BEGIN IONS\nPEPMASS=100\n1 1\nEND IONS\n" +
                                Block("x", "PEPMASS=200\n", "2 2\n") + Block("y", "", "3 3\n") +
                                Block("y", "", "4 4\n") + "BEGIN IONS\nPEPMASS=5\n");
  const std::vector<CSpectrum> again = ReadAllOf(path);
  ASSERT_EQ(Names(again), (std::vector<std::string>{"x", "y"}));
  EXPECT_EQ(again[0].peaks[0].mz, 1.0);
  EXPECT_EQ(again[1].peaks[0].mz, 4.0);
}

TEST(MgfIOTest, MissingFileAndUnknownNamesAreReportedAndTheRunGoesOn) {
  testutil::TempDir dir;
  CMgfIO io;
  testing::internal::CaptureStdout();
  io.OpenRead(dir / "missing.mgf");
  std::vector<CSpectrum> out;
  EXPECT_EQ(io.Count(), 0u);
  EXPECT_FALSE(io.ReadNext(out));
  EXPECT_EQ(io.ReadAll(out), 0u);
  EXPECT_FALSE(io.ReadByName("nope", out));
  const std::string printed = testing::internal::GetCapturedStdout();
  EXPECT_EQ(printed, "\nCMulSpecIO error: failed to open spec file " + (dir / "missing.mgf") +
                         "\n\n[Warning]: Unable to load spectrum nope\n");
  EXPECT_TRUE(out.empty());
}

TEST(MgfIOTest, BinaryGarbageAndOverlongLinesDoNotHang) {
  testutil::TempDir dir;
  std::string garbage;
  for (int i = 0; i < 200000; ++i) garbage += static_cast<char>((i * 7919) % 256);
  testutil::WriteFile(dir / "g.mgf", garbage);
  ReadAllOf(dir / "g.mgf");  // any result, but it must come back

  const std::string longTitle(20000, 'T');
  testutil::WriteFile(dir / "l.mgf", Block(longTitle, "PEPMASS=2\n", "1 1\n" + std::string(9000, '5') + " 1\n"));
  const std::vector<CSpectrum> spectra = ReadAllOf(dir / "l.mgf");
  ASSERT_EQ(spectra.size(), 1u);
  EXPECT_EQ(spectra[0].name.size(), kMaxLineLength - 6);  // the cut line, less "TITLE="
  EXPECT_EQ(spectra[0].peaks.size(), 2u);
}

TEST(MgfIOTest, WriterBlockAndItsChangeOfTheRecord) {
  testutil::TempDir dir;
  CSpectrum s;
  s.name = "n1";
  s.charge = 2;
  s.precursorMass = (800 - kProton) * 2 + kProton;
  CPeak p;
  p.mz = 100.123456789;
  p.intensity = 1234567.0;
  s.peaks = {p};
  std::vector<CSpectrum> list = {s, s};
  CMgfIO io;
  io.OpenWrite(dir / "w.mgf");
  EXPECT_EQ(io.WriteRange(list, 0, 5), 2u);
  io.CloseWrite();
  EXPECT_DOUBLE_EQ(list[0].precursorMass, 800.0);
  const std::string block =
      "BEGIN IONS\nSpectrumName=n1\nCHARGE=2+\nPEPMASS=800\nPeaks=1\n100.123 1.23457e+06\n"
      "END IONS\n\n";
  EXPECT_EQ(testutil::ReadFile(dir / "w.mgf"), block + block);
  // The written block has no TITLE line: the indexer finds no name in it.
  uint32_t count = 9;
  ReadAllOf(dir / "w.mgf", &count);
  EXPECT_EQ(count, 0u);
}
