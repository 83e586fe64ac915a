#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "SpectrumTestUtil.h"
#include "common/TestUtil.h"
#include "spectrum/DtaIO.h"
#include "spectrum/DtasIO.h"

using spectest::Load;
using spectest::Names;
using Names_ = std::vector<std::string>;

TEST(DtaIOTest, SingleFileYieldsOneSpectrumNamedWithoutDirectories) {
  testutil::TempDir dir;
  testutil::WriteFile(dir / "x.2.2.2.dta", "1000.5\t2\r\n100.1\t5\r\n200.2 , 6\r\n300.3 7");
  spectest::Loaded dta = Load(1, dir / "x.2.2.2.dta");
  EXPECT_EQ(dta.count, 1u);
  ASSERT_EQ(Names(dta.spectra), Names_{"x.2.2.2.dta"});
  const CSpectrum& s = dta.spectra[0];
  EXPECT_EQ(s.precursorMass, 1000.5);
  EXPECT_EQ(s.charge, 2u);
  ASSERT_EQ(s.peaks.size(), 3u);  // the last line needs no line end
  EXPECT_EQ(s.peaks[2].mz, 300.3);
  EXPECT_EQ(s.peaks[2].intensity, 7.0);
  // A charge beyond belief reads as none.
  for (const char* first : {"1000.5 -2\n", "1000.5 2000000000\n"}) {
    testutil::WriteFile(dir / "y.dta", std::string(first) + "100 1\n");
    EXPECT_EQ(Load(1, dir / "y.dta").spectra.at(0).charge, 0u) << first;
  }
}

TEST(DtaIOTest, DirectoryListsDtaFilesByNameWithOrWithoutTrailingSeparator) {
  testutil::TempDir dir;
  const std::string data = dir / "data";
  std::filesystem::create_directories(data + "/sub.dta");
  testutil::WriteFile(data + "/b.dta", "500 1\n100 1\n\n200 2\n");  // the empty line ends it
  testutil::WriteFile(data + "/FILE.DTA", "bad first line\n100 1\n");
  testutil::WriteFile(data + "/file.dta", "600 3\n");
  testutil::WriteFile(data + "/.dta", "700 1\n");
  testutil::WriteFile(data + "/notes.txt", "800 1\n");
  for (const std::string& path : {data, data + "/", data + "//"}) {
    testing::internal::CaptureStdout();
    spectest::Loaded dta = Load(1, path);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "\nCDtaIO error: failed to open dta file " + data + "/sub.dta\n");
    EXPECT_EQ(dta.count, 4u) << path;
    ASSERT_EQ(Names(dta.spectra), (Names_{"FILE.DTA", "b.dta", "file.dta"}));
    EXPECT_EQ(dta.spectra[0].precursorMass + dta.spectra[0].charge, 0.0);  // no scan: 0
    EXPECT_EQ(dta.spectra[1].peaks.size(), 1u);
    EXPECT_EQ(dta.spectra[2].charge, 3u);
  }
  CDtaIO io;
  io.OpenRead(data);
  std::vector<CSpectrum> out;
  testing::internal::CaptureStdout();
  int reads = 0;
  while (io.ReadNext(out)) ++reads;
  EXPECT_EQ(reads, 3);  // ReadNext passes over the entry that fails
  EXPECT_EQ(io.Count(), 0u);
  EXPECT_FALSE(io.ReadByName("missing.dta", out));
  testing::internal::GetCapturedStdout();

  EXPECT_EXIT((testutil::PrintToStderr(), io.OpenRead("/nonexistent/where.dta//")), testing::ExitedWithCode(1),
              "^\nCDtaIO error: Invalid file or directory /nonexistent/where.dta//\n$");
}

TEST(DtasIOTest, HeadOfThreeBracketLinesThenNamedBodies) {
  testutil::TempDir dir;
  testutil::WriteFile(dir / "set.dtas",
                      "[a]\nearly.1.1.2.dta\n[b]\nkey=value\n[c]\n"
                      "  s2.dta \n1000.5 2\n100 1\n101 2\n\nnoise line\n"
                      "S1.DTA\r\n900.25,3\r\n50 5\r\n\r\n"
                      "s3.dta\nno mass\n70 7\n\r\n"
                      "s4.dta\n700 4\n60 6\n61 6");  // cut off by the end of the file
  spectest::Loaded dtas = Load(3, dir / "set.dtas");
  EXPECT_EQ(dtas.count, 4u);
  ASSERT_EQ(Names(dtas.spectra), (Names_{"S1.DTA", "s2.dta", "s3.dta", "s4.dta"}));
  const std::vector<CSpectrum>& s = dtas.spectra;
  EXPECT_EQ(s[0].precursorMass, 900.25);
  EXPECT_EQ(s[0].peaks.size(), 1u);
  EXPECT_EQ(s[1].peaks.size(), 2u);
  EXPECT_EQ(s[1].peaks[1].intensity, 2.0);
  // A first line that fails to scan keeps mass and charge of the spectrum before.
  EXPECT_EQ(s[2].precursorMass, 1000.5);
  EXPECT_EQ(s[2].charge, 2u);
  EXPECT_EQ(s[2].peaks.size(), 1u);
  EXPECT_EQ(s[3].peaks.size(), 2u);
  EXPECT_EQ(s[3].charge, 4u);
  CDtasIO io;
  std::vector<CSpectrum> copy = s;
  EXPECT_FALSE(io.WriteOne(copy[0]));
  EXPECT_EQ(io.WriteRange(copy, 0, 3), 0u);
}
