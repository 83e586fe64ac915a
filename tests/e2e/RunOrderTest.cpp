#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "common/TestUtil.h"

namespace {

using testutil::TempDir;
using testutil::WriteFile;

const std::string kUsage =
    "Version:\nv1.0 Release\nUsage:\nQuorinGlyco_v1.0.exe configureFilename\n\n";
const std::string kBothOff = "[construction]\nconstruction = no\n[search]\nsearch = no\n";

std::string Fault(const std::string& key, const std::string& section) {
  return "Missing or invalid parameter \"" + key + "\" in section \"" + section + "\".\n";
}

// The program installed in one folder and started from another: every
// relative name is taken beside the executable.
TEST(RunOrder, ConsoleAndExitStatusOfEachWayThroughTheRun) {
  TempDir installDir, startDir;
  const std::string program = testutil::InstallProgram(installDir.path().string());
  auto beside = [&](const std::string& name) { return installDir / name; };
  WriteFile(beside("run.conf"), kBothOff);
  WriteFile(beside("crlf.conf"),
            "[construction]\r\nconstruction = No\r\n[search]\r\nsearch = NO\r\n");
  WriteFile(startDir / "here.conf", kBothOff);
  std::filesystem::create_directory(beside("folder.conf"));
  WriteFile(beside("empty.conf"), "");
  std::string binary;
  for (int i = 0; i < 100000; ++i) binary.push_back(static_cast<char>((i * 37 + 11) % 256));
  WriteFile(beside("binary.conf"), binary);
  WriteFile(beside("long.conf"), "# " + std::string(100000, 'c') + "\n" + kBothOff + "unused = " +
                                     std::string(50000, 'v') + " ;" + std::string(20000, 'x'));
  // A key before any header belongs to no section: construction stays enabled.
  WriteFile(beside("early.conf"), "construction = no\n[construction]\n[search]\nsearch = no\n");
  // A fault in the search section ends the run before any construction work.
  WriteFile(beside("searchfault.conf"),
            "[construction]\nidentification_format = tab-txt\nidentification_number = 1\n"
            "identification_filename_1 = ids.txt\nlibrary_dataset_number = 1\n"
            "library_dataset_format = mgf\nlibrary_dataset_pathname_1 = spectra.mgf\n"
            "library_product_ion_unit = da\nlibrary_product_ion_tolerance = 0.02\ntheta = 0.5\n"
            "output_speclib_filename = lib.quolib\nadded_Y_ions = Y0,Y1\n"
            "Y_ion_relative_intensity = 0.3\nN_glycan_motifs = NXS,NXT\nprotein_database = db\n"
            "[search]\ninput_speclib_filename = lib.quolib\nquery_dataset_number = 0\n"
            "query_dataset_format = mgf\nquery_precursor_ion_unit = ppm\n"
            "query_precursor_ion_tolerance = 10\nquery_product_ion_unit = Da\n");
  const std::string longName(5000, 'n');

  struct Case {
    std::string input, output;
    int exitCode;
  };
  const Case cases[] = {
      {"run.conf\n", "Finish!\n", 0},
      {"crlf.conf\r\n", "Finish!\n", 0},
      {"run.conf\nsomething else\n", "Finish!\n", 0},  // only the first line is read
      {"run.conf", "Finish!\n", 0},
      {"here.conf\n", "Error when reading \"here.conf\".\n", 255},
      {startDir / "here.conf", "Finish!\n", 0},
      {"", kUsage + "Error when reading \"\".\n", 255},
      {"\n", kUsage + "Error when reading \"\".\n", 255},
      {"absent.conf\n", "Error when reading \"absent.conf\".\n", 255},
      {"folder.conf\n", "Error when reading \"folder.conf\".\n", 255},
      {"empty.conf\n", Fault("identification_format", "construction"), 1},
      {"binary.conf\n", Fault("identification_format", "construction"), 1},
      {"long.conf\n", "Finish!\n", 0},
      {"early.conf\n", Fault("identification_format", "construction"), 1},
      {"searchfault.conf\n", Fault("query_product_ion_unit", "search"), 1},
      {longName + "\n", "Error when reading \"" + longName + "\".\n", 255},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.input.substr(0, 40));
    testutil::RunResult result = testutil::RunProgram(program, c.input, startDir.path().string());
    EXPECT_EQ(result.output, c.output);
    EXPECT_EQ(result.exitCode, c.exitCode);
  }
  EXPECT_FALSE(testutil::FileExists(beside("lib.quolib")));
}

}  // namespace
