#include <gtest/gtest.h>

#include <algorithm>
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

TEST(MgfIO, TitlesInByteOrderChargeAndHeaderLines) {
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
  // "10" has no CHARGE line: no charge, whatever the block read before it had.
  EXPECT_EQ(mgf.spectra[1].charge, 0u);
  EXPECT_DOUBLE_EQ(mgf.spectra[1].precursorMass, MhOf(600, 0));
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

TEST(MgfIO, BlocksOfRealWritersKeepTheirOwnSpectrumAndAName) {
  struct Case {
    const char* quirk;
    std::string content;
    Names_ names;
    std::vector<double> firstMz;  // in name order
    const char* report;           // expected in the one warning line; nullptr: no warning
  };
  const std::string pd = "TITLE=File: \"x.raw\"; SpectrumID: \"12\"; scans: \"";
  const Case cases[] = {
      {"header lines outside and inside blocks",
       "BASE PEAK M/Z=1\nTOTAL ION CURRENT=5\n" +
           Block("a", "BASE PEAK INTENSITY=9\nCHARGE=2+\nPEPMASS=500\n", "1 1\n") +
           "TOTAL ION CURRENT=7\nBEGIN IONS\nTOTAL ION CURRENT=3\nTITLE=b\nCHARGE=2+\nPEPMASS=5\n2 2\nEND IONS\n",
       {"a", "b"}, {1, 2}, nullptr},
      {"Proteome Discoverer titles",
       Block(pd + "1501\"", "CHARGE=2+\nPEPMASS=5\n", "1 1\n") +
           Block(pd + "1502\"", "CHARGE=3+\nPEPMASS=5\n", "2 2\n"),
       {"t.1501.1501.2", "t.1502.1502.3"}, {1, 2}, "of 2 blocks, 2 blocks share their title with another"},
      {"numbered titles, SCANS= before the block number",
       Block("Spectrum 1", "CHARGE=2+\nPEPMASS=5\n", "1 1\n") +
           Block("Spectrum 2", "SCANS=30\nCHARGE=2+\nPEPMASS=5\n", "2 2\n"),
       {"t.1.1.2", "t.30.30.2"}, {1, 2}, "first: block 1 (line 1, title Spectrum) read as t.1.1.2; block 2"},
      {"titles cut at controllerType=0",
       Block("controllerType=0 controllerNumber=1 scan=7", "CHARGE=2+\nPEPMASS=5\n", "1 1\n") +
           Block("controllerType=0 controllerNumber=1 scan=8", "CHARGE=2+\nPEPMASS=5\n", "2 2\n"),
       {"t.7.7.2", "t.8.8.2"}, {1, 2}, "2 blocks share their title"},
      {"no title, T lines that are not titles",
       "BEGIN IONS\nTOL=1\nCHARGE=2+\nPEPMASS=5\n1 1\nEND IONS\n" + Block("y", "CHARGE=2+\nPEPMASS=5\n", "2 2\n"),
       {"t.1.1.2", "y"}, {1, 2}, "of 2 blocks, 1 block has no title"},
      {"a block left open ends at the next",
       "BEGIN IONS\nTITLE=o\nCHARGE=2+\nPEPMASS=5\n1 1\n" + Block("p", "CHARGE=2+\nPEPMASS=5\n", "2 2\n"),
       {"o", "p"}, {1, 2}, nullptr},
  };
  testutil::TempDir dir;
  const std::string path = dir / "t.mgf";
  for (const Case& c : cases) {
    SCOPED_TRACE(c.quirk);
    testutil::WriteFile(path, c.content);
    testing::internal::CaptureStdout();
    const Loaded mgf = Load(2, path);
    const std::string printed = testing::internal::GetCapturedStdout();
    ASSERT_EQ(Names(mgf.spectra), c.names);
    for (std::size_t i = 0; i < c.firstMz.size(); ++i) {
      ASSERT_FALSE(mgf.spectra[i].peaks.empty());
      EXPECT_EQ(mgf.spectra[i].peaks[0].mz, c.firstMz[i]);
      EXPECT_EQ(mgf.spectra[i].peaks.size(), 1u);
    }
    if (c.report == nullptr) {
      EXPECT_EQ(printed, "");
    } else {
      EXPECT_EQ(printed.rfind("\n[Warning]: " + path + ": ", 0), 0u) << printed;
      EXPECT_NE(printed.find(c.report), std::string::npos) << printed;
      EXPECT_EQ(std::count(printed.begin(), printed.end(), '\n'), 2) << printed;
    }
  }
}

TEST(MgfIO, MissingOrAbsurdChargeAndPrecursorAreNotBorrowed) {
  testutil::TempDir dir;
  const std::string path = dir / "c.mgf";
  testutil::WriteFile(path, Block("a", "CHARGE=3+\nPEPMASS=500\n", "1 1\n") + Block("b", "PEPMASS=600\n", "1 1\n") +
                                Block("c", "CHARGE=2+\n", "1 1\n") +
                                Block("d", "CHARGE=2000000000+\nPEPMASS=700\n", "1 1\n") +
                                Block("e", "CHARGE=-2\nPEPMASS=700\n", "1 1\n"));
  testing::internal::CaptureStdout();
  const Loaded mgf = Load(2, path);
  const std::string printed = testing::internal::GetCapturedStdout();
  ASSERT_EQ(Names(mgf.spectra), (Names_{"a", "b", "c", "d", "e"}));
  const uint32_t charges[] = {3, 0, 2, 0, 0};
  const double masses[] = {MhOf(500, 3), MhOf(600, 0), MhOf(0, 2), MhOf(700, 0), MhOf(700, 0)};
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(mgf.spectra[i].charge, charges[i]) << i;
    EXPECT_DOUBLE_EQ(mgf.spectra[i].precursorMass, masses[i]) << i;
  }
  EXPECT_NE(printed.find("of 5 blocks, 1 block has no CHARGE, 2 blocks have a charge outside 1 to 20 (read as 0), "
                         "1 block has no PEPMASS; first: block 2 (line 8, title b); block 3 (line 14, title c); "
                         "block 4 (line 20, title d)\n"),
            std::string::npos)
      << printed;
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
  // No TITLE line: the blocks are named by their number.
  testing::internal::CaptureStdout();
  EXPECT_EQ(Names(Load(2, dir / "w.mgf").spectra), (Names_{"w.1.1.2", "w.2.2.2"}));
  testing::internal::GetCapturedStdout();

  testing::internal::CaptureStdout();
  io.OpenWrite(dir / "no/such/w.mgf");
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "\nCDtasIO error: failed to open Dtas file " + (dir / "no/such/w.mgf") +
                "\n\tNo such file or directory\n");
}
