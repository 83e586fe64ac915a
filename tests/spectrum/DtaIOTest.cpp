#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "common/TestUtil.h"
#include "spectrum/DtaIO.h"
#include "spectrum/DtasIO.h"

namespace {
std::vector<std::string> Names(const std::vector<CSpectrum>& spectra) {
  std::vector<std::string> names;
  for (const CSpectrum& s : spectra) names.push_back(s.name);
  return names;
}
}  // namespace

TEST(DtaIOTest, SingleFileYieldsOneSpectrumNamedWithoutDirectories) {
  testutil::TempDir dir;
  const std::string path = dir / "x.2.2.2.dta";
  testutil::WriteFile(path, "1000.5\t2\r\n100.1\t5\r\n200.2 , 6\r\n300.3 7");  // no final line end
  CDtaIO io;
  io.OpenRead(path);
  EXPECT_EQ(io.Count(), 1u);
  std::vector<CSpectrum> out;
  EXPECT_EQ(io.ReadAll(out), 1u);
  ASSERT_EQ(out.size(), 1u);
  EXPECT_EQ(out[0].name, "x.2.2.2.dta");
  EXPECT_EQ(out[0].precursorMass, 1000.5);
  EXPECT_EQ(out[0].charge, 2u);
  ASSERT_EQ(out[0].peaks.size(), 3u);
  EXPECT_EQ(out[0].peaks[2].mz, 300.3);
  EXPECT_EQ(out[0].peaks[2].intensity, 7.0);
  EXPECT_EQ(io.Count(), 0u);
}

TEST(DtaIOTest, DirectoryListsDtaFilesByNameWithOrWithoutTrailingSeparator) {
  testutil::TempDir dir;
  std::filesystem::create_directory(dir.path() / "data");
  const std::string data = dir / "data";
  testutil::WriteFile(data + "/b.dta", "500 1\n100 1\n\n200 2\n");  // the empty line ends it
  testutil::WriteFile(data + "/FILE.DTA", "bad first line\n100 1\n");
  testutil::WriteFile(data + "/file.dta", "600 3\n");
  testutil::WriteFile(data + "/.dta", "700 1\n");
  testutil::WriteFile(data + "/notes.txt", "800 1\n");
  std::filesystem::create_directory(dir.path() / "data" / "sub.dta");

  for (const std::string& path : {data, data + "/", data + "//"}) {
    CDtaIO io;
    io.OpenRead(path);
    EXPECT_EQ(io.Count(), 4u) << path;
    std::vector<CSpectrum> out;
    testing::internal::CaptureStdout();
    EXPECT_EQ(io.ReadAll(out), 3u);
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(printed, "\nCDtaIO error: failed to open dta file " + data + "/sub.dta\n");
    EXPECT_EQ(Names(out), (std::vector<std::string>{"FILE.DTA", "b.dta", "file.dta"}));
    ASSERT_EQ(out.size(), 3u);
    EXPECT_EQ(out[0].precursorMass, 0.0);  // a first line that does not scan gives 0
    EXPECT_EQ(out[0].charge, 0u);
    EXPECT_EQ(out[1].peaks.size(), 1u);
    EXPECT_EQ(out[2].charge, 3u);
    EXPECT_TRUE(out[2].peaks.empty());
  }

  CDtaIO io;
  io.OpenRead(data);
  std::vector<CSpectrum> out;
  testing::internal::CaptureStdout();
  int reads = 0;
  while (io.ReadNext(out)) ++reads;
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(reads, 3);  // ReadNext passes over the entry that fails
  EXPECT_FALSE(io.ReadByName("missing.dta", out));
}

TEST(DtaIOTest, InvalidPathEndsTheRun) {
  // Standard output goes to standard error in the child so that the death
  // test sees the message.
  EXPECT_EXIT(
      {
        dup2(2, 1);
        CDtaIO io;
        io.OpenRead("/nonexistent/where.dta//");
      },
      testing::ExitedWithCode(1),
      "\nCDtaIO error: Invalid file or directory /nonexistent/where.dta//\n");
}

TEST(DtasIOTest, HeadOfThreeBracketLinesThenNamedBodies) {
  testutil::TempDir dir;
  const std::string path = dir / "set.dtas";
  testutil::WriteFile(path,
                      "[a]\nearly.1.1.2.dta\n[b]\nkey=value\n[c]\n"
                      "  s2.dta \n1000.5 2\n100 1\n101 2\n\n"
                      "noise line\n"
                      "S1.DTA\r\n900.25,3\r\n50 5\r\n\r\n"
                      "s3.dta\n800 1\n70 7\n\r\n"
                      "s4.dta\n700 4\n60 6\n61 6");  // cut off by the end of the file
  CDtasIO io;
  io.OpenRead(path);
  EXPECT_EQ(io.Count(), 4u);
  std::vector<CSpectrum> out;
  EXPECT_EQ(io.ReadAll(out), 4u);
  ASSERT_EQ(Names(out), (std::vector<std::string>{"S1.DTA", "s2.dta", "s3.dta", "s4.dta"}));
  EXPECT_EQ(out[0].precursorMass, 900.25);
  EXPECT_EQ(out[0].charge, 3u);
  EXPECT_EQ(out[0].peaks.size(), 1u);
  EXPECT_EQ(out[1].peaks.size(), 2u);
  EXPECT_EQ(out[1].peaks[1].intensity, 2.0);
  EXPECT_EQ(out[2].peaks.size(), 1u);
  EXPECT_EQ(out[3].peaks.size(), 2u);
  EXPECT_EQ(out[3].charge, 4u);

  std::vector<CSpectrum> none = {};
  EXPECT_FALSE(io.WriteOne(out[0]));
  EXPECT_EQ(io.WriteRange(out, 0, 3), 0u);
}
