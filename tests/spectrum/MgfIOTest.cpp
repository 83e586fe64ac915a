#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "SpectrumTestUtil.h"
#include "common/TestUtil.h"
#include "spectrum/MgfIO.h"

using namespace spectest;
using Names_ = std::vector<std::string>;

namespace {
std::string Block(const std::string& title, const std::string& header, const std::string& peaks) {
  return "BEGIN IONS\nTITLE=" + title + "\n" + header + peaks + "END IONS\n\n";
}
}  // namespace

TEST(MgfIO, TitlesInByteOrderPersistingChargeAndHeaderLines) {
  testutil::TempDir dir;
  const std::string path = dir / "run.mgf";
  testutil::WriteFile(path, "MASS=Monoisotopic\n" +
                                Block("2", "CHARGE=3+\nPEPMASS=500.5\n", "100 1\n") +
                                Block("10", "PEPMASS=600\n", "200 2\n") +
                                Block("1 File:x", "PEPMASS=700 123\nCOM=x\nPX=1\nCHARGE=2+\nCX\n",
                                      "100.5 10 1\n200.25\t20\n300,30\n400   \t 40\n"));
  Loaded mgf = Load(2, path);
  EXPECT_EQ(mgf.count, 3u);
  ASSERT_EQ(Names(mgf.spectra), (Names_{"1", "10", "2"}));
  const CSpectrum& s = mgf.spectra[0];
  EXPECT_EQ(s.charge, 2u);
  EXPECT_DOUBLE_EQ(s.precursorMass, MhOf(700, 2));
  // A third column is ignored; blanks, tabs and commas separate alike.
  ASSERT_EQ(s.peaks.size(), 4u);
  const double mz[] = {100.5, 200.25, 300, 400};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(s.peaks[i].mz, mz[i]);
    EXPECT_EQ(s.peaks[i].intensity, (i + 1) * 10.0);
    EXPECT_EQ(s.peaks[i].type * 10 + s.peaks[i].count, 41);
  }
  // "10" has no CHARGE line: it keeps the charge of the block read before it.
  EXPECT_EQ(mgf.spectra[1].charge, 2u);
  EXPECT_DOUBLE_EQ(mgf.spectra[1].precursorMass, MhOf(600, 2));
  EXPECT_EQ(mgf.spectra[2].charge, 3u);

  CMgfIO io;
  io.OpenRead(path);
  std::vector<CSpectrum> one;
  while (io.ReadNext(one)) {}
  EXPECT_EQ(Names(one), (Names_{"1", "10", "2"}));
  io.Rewind();
  EXPECT_TRUE(io.ReadNext(one));
  EXPECT_EQ(one.back().name, "1");
}

TEST(MgfIO, TitleRulesOfTheIndexer) {
  testutil::TempDir dir;
  const std::string path = dir / "t.mgf";
  // A title-less block lends its position to the next title, whose own block
  // gets no entry; a T line that isn't a title keeps the title last read; a
  // later duplicate replaces the earlier; a block cut before its title is lost.
  testutil::WriteFile(path, "BEGIN IONS\nPEPMASS=100\n1 1\nEND IONS\n" +
                                Block("x", "PEPMASS=200\n", "2 2\n") + Block("y", "", "3 3\n") +
                                "BEGIN IONS\nTOL=1\n5 5\nEND IONS\n" + Block("z", "", "4 4\n") +
                                Block("z", "", "6 6\n") + "BEGIN IONS\nPEPMASS=5\n");
  Loaded mgf = Load(2, path);
  ASSERT_EQ(Names(mgf.spectra), (Names_{"x", "y", "z"}));
  EXPECT_EQ(mgf.spectra[0].peaks[0].mz, 1.0);
  EXPECT_EQ(mgf.spectra[1].peaks[0].mz, 5.0);
  EXPECT_EQ(mgf.spectra[2].peaks[0].mz, 6.0);
}

TEST(MgfIO, CrlfFailingPeakLinesAndBrokenBlocks) {
  testutil::TempDir dir;
  const std::string path = dir / "crlf.mgf";
  // A line that fails the scan repeats the previous peak; one column sets the m/z only.
  testutil::WriteFile(path, "BEGIN IONS\r\nTITLE=t1\r\nCHARGE=1+\r\nPEPMASS=400\r\n"
                            "100 5\r\n# comment\r\n150 NaN\r\n175\r\nEND IONS\r\n");
  Loaded crlf = Load(2, path);
  ASSERT_EQ(crlf.spectra.size(), 1u);
  EXPECT_DOUBLE_EQ(crlf.spectra[0].precursorMass, 400.0);
  const std::vector<CPeak>& p = crlf.spectra[0].peaks;
  ASSERT_EQ(p.size(), 4u);
  EXPECT_EQ(p[1].mz + p[1].intensity, 105.0);
  EXPECT_TRUE(p[2].mz == 150.0 && std::isnan(p[2].intensity));
  EXPECT_TRUE(p[3].mz == 175.0 && std::isnan(p[3].intensity));

  // A block without peak lines must not take the next block's header or peaks;
  // the end of the file ends a peak list.
  testutil::WriteFile(path, Block("empty", "CHARGE=2+\nPEPMASS=500\n", "") +
                                Block("full", "CHARGE=3+\nPEPMASS=600\n", "100 1\n200 2\n") +
                                "BEGIN IONS\nTITLE=cut\nCHARGE=1+\nPEPMASS=300\n50 5\n60 6");
  Loaded broken = Load(2, path);
  ASSERT_EQ(Names(broken.spectra), (Names_{"cut", "empty", "full"}));
  EXPECT_EQ(broken.spectra[0].peaks.size(), 2u);
  EXPECT_TRUE(broken.spectra[1].peaks.empty());
  EXPECT_EQ(broken.spectra[1].charge, 2u);
  EXPECT_DOUBLE_EQ(broken.spectra[1].precursorMass, MhOf(500, 2));
  EXPECT_EQ(broken.spectra[2].peaks.size(), 2u);

  const std::string longTitle(20000, 'T');
  testutil::WriteFile(path, Block(longTitle, "", "1 1\n" + std::string(9000, '5') + " 1\n"));
  Loaded overlong = Load(2, path);
  ASSERT_EQ(overlong.spectra.size(), 1u);
  EXPECT_EQ(overlong.spectra[0].name.size(), kMaxLineLength - 6);  // the cut line, less "TITLE="
  EXPECT_EQ(overlong.spectra[0].peaks.size(), 2u);
}

TEST(MgfIO, WriterBlockAndItsChangeOfTheRecord) {
  testutil::TempDir dir;
  CSpectrum s;
  s.name = "n1";
  s.charge = 2;
  s.precursorMass = MhOf(800, 2);
  s.peaks = {MakePeak(100.123456789, 1234567.0)};
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
  EXPECT_EQ(Load(2, dir / "w.mgf").count, 0u);  // no TITLE line: nothing to index

  testing::internal::CaptureStdout();
  io.OpenWrite(dir / "no/such/w.mgf");
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "\nCDtasIO error: failed to open Dtas file " + (dir / "no/such/w.mgf") + "\n");
}
