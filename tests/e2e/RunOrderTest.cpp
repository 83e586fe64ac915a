#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "common/TestUtil.h"

namespace {

using testutil::RunProgram;
using testutil::TempDir;
using testutil::WriteFile;

const std::string kUsage =
    "Version:\nv1.0 Release\nUsage:\nQuorinGlyco_v1.0.exe configureFilename\n\n";
const std::string kBothOff = "[construction]\nconstruction = no\n[search]\nsearch = no\n";

// The program installed in one folder and started from another.
class RunOrder : public testing::Test {
 protected:
  RunOrder() : program_(testutil::InstallProgram(installDir_.path().string())) {}

  testutil::RunResult Run(const std::string& stdinText) {
    return RunProgram(program_, stdinText, startDir_.path().string());
  }
  std::string Beside(const std::string& name) const { return installDir_ / name; }

  TempDir installDir_;
  TempDir startDir_;
  std::string program_;
};

std::string Fault(const std::string& key, const std::string& section) {
  return "Missing or invalid parameter \"" + key + "\" in section \"" + section + "\".\n";
}

TEST_F(RunOrder, BothStagesOffFinishes) {
  WriteFile(Beside("run.conf"), kBothOff);
  testutil::RunResult result = Run("run.conf\n");
  EXPECT_EQ(result.output, "Finish!\n");
  EXPECT_EQ(result.exitCode, 0);

  // CRLF everywhere: on standard input and in the file.
  WriteFile(Beside("crlf.conf"), "[construction]\r\nconstruction = No\r\n[search]\r\nsearch = NO\r\n");
  result = Run("crlf.conf\r\n");
  EXPECT_EQ(result.output, "Finish!\n");
  EXPECT_EQ(result.exitCode, 0);

  // Only the first line of standard input is read; no line end is needed.
  result = Run("run.conf\nsomething else\n");
  EXPECT_EQ(result.output, "Finish!\n");
  result = Run("run.conf");
  EXPECT_EQ(result.exitCode, 0);
}

TEST_F(RunOrder, RelativeNamesAreTakenBesideTheExecutable) {
  WriteFile(startDir_ / "here.conf", kBothOff);
  testutil::RunResult result = Run("here.conf\n");
  EXPECT_EQ(result.output, "Error when reading \"here.conf\".\n");
  EXPECT_EQ(result.exitCode, 255);

  WriteFile(startDir_ / "abs.conf", kBothOff);
  result = Run(startDir_ / "abs.conf");
  EXPECT_EQ(result.output, "Finish!\n");
}

TEST_F(RunOrder, EmptyStandardInputPrintsUsage) {
  testutil::RunResult result = Run("");
  EXPECT_EQ(result.output, kUsage + "Error when reading \"\".\n");
  EXPECT_EQ(result.exitCode, 255);

  result = RunProgram(program_, "\n", startDir_.path().string(), {"run.conf"});
  EXPECT_EQ(result.output, kUsage + "Error when reading \"\".\n");
  EXPECT_EQ(result.exitCode, 255);
}

TEST_F(RunOrder, SearchFaultStopsTheRunBeforeConstruction) {
  WriteFile(Beside("run.conf"),
            "[construction]\n"
            "identification_format = tab-txt\n"
            "identification_number = 1\n"
            "identification_filename_1 = ids.txt\n"
            "library_dataset_number = 1\n"
            "library_dataset_format = mgf\n"
            "library_dataset_pathname_1 = spectra.mgf\n"
            "library_product_ion_unit = da\n"
            "library_product_ion_tolerance = 0.02\n"
            "theta = 0.5\n"
            "output_speclib_filename = lib.quolib\n"
            "added_Y_ions = Y0,Y1\n"
            "Y_ion_relative_intensity = 0.3\n"
            "N_glycan_motifs = NXS,NXT\n"
            "protein_database = db.fasta\n"
            "[search]\n"
            "input_speclib_filename = lib.quolib\n"
            "query_dataset_number = 0\n"
            "query_dataset_format = mgf\n"
            "query_precursor_ion_unit = ppm\n"
            "query_precursor_ion_tolerance = 10\n"
            "query_product_ion_unit = Da\n");
  testutil::RunResult result = Run("run.conf\n");
  EXPECT_EQ(result.output, Fault("query_product_ion_unit", "search"));
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_FALSE(testutil::FileExists(Beside("lib.quolib")));
}

TEST_F(RunOrder, MissingEmptyAndBinaryConfigurationFiles) {
  testutil::RunResult result = Run("absent.conf\n");
  EXPECT_EQ(result.output, "Error when reading \"absent.conf\".\n");
  EXPECT_EQ(result.exitCode, 255);

  std::filesystem::create_directory(Beside("folder.conf"));
  result = Run("folder.conf\n");
  EXPECT_EQ(result.output, "Error when reading \"folder.conf\".\n");
  EXPECT_EQ(result.exitCode, 255);

  WriteFile(Beside("empty.conf"), "");
  result = Run("empty.conf\n");
  EXPECT_EQ(result.output, Fault("identification_format", "construction"));
  EXPECT_EQ(result.exitCode, 1);

  std::string binary;
  for (int i = 0; i < 100000; ++i) binary.push_back(static_cast<char>((i * 37 + 11) % 256));
  WriteFile(Beside("binary.conf"), binary);
  result = Run("binary.conf\n");
  EXPECT_EQ(result.output, Fault("identification_format", "construction"));
  EXPECT_EQ(result.exitCode, 1);
}

TEST_F(RunOrder, LongLinesAndLinesBeforeTheFirstSection) {
  WriteFile(Beside("long.conf"), "# " + std::string(100000, 'c') + "\n[construction]\nconstruction = no\n" +
                                      "unused = " + std::string(50000, 'v') + "\n" + "[search]\n" +
                                      "search = no ; " + std::string(20000, 'x') + "\n");
  testutil::RunResult result = Run("long.conf\n");
  EXPECT_EQ(result.output, "Finish!\n");
  EXPECT_EQ(result.exitCode, 0);

  // A key before any header belongs to no section: construction stays enabled.
  WriteFile(Beside("early.conf"), "construction = no\n[construction]\n[search]\nsearch = no\n");
  result = Run("early.conf\n");
  EXPECT_EQ(result.output, Fault("identification_format", "construction"));
  EXPECT_EQ(result.exitCode, 1);

  // A very long configuration name is simply a file that isn't there.
  std::string longName(5000, 'n');
  result = Run(longName + "\n");
  EXPECT_EQ(result.output, "Error when reading \"" + longName + "\".\n");
  EXPECT_EQ(result.exitCode, 255);
}

}  // namespace
