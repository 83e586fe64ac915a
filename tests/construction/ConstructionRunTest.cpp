// The construction stage through the installed program: lists and datasets
// written here, the library and its companion file read back.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "common/TestUtil.h"
#include "construction/ConstructionFixtures.h"

namespace {

struct ConstructionRun {
  testutil::TempDir dir;
  std::string program;
  std::map<std::string, std::string> keys = {
      {"construction", "yes"},
      {"modification_remove", "Deamidated[N]"},
      {"identification_format", "tab-txt"},
      {"identification_number", "1"},
      {"identification_filename_1", "ids.txt"},
      {"library_dataset_number", "1"},
      {"library_dataset_format", "mgf"},
      {"library_dataset_pathname_1", "run1.mgf"},
      {"library_product_ion_unit", "da"},
      {"library_product_ion_tolerance", "0.5"},
      {"theta", "0.2"},
      {"output_speclib_filename", "out.quolib"},
      {"added_Y_ions", "Y0,Y1"},
      {"Y_ion_relative_intensity", "0.5"},
      {"N_glycan_motifs", "NXS,NXT"},
      {"protein_database", "none.fasta"},
  };

  ConstructionRun() {
    program = testutil::InstallProgram(dir.path().string());
    testutil::WriteFile(dir / "MassTable.ini", fixtures::MassTableText());
  }

  testutil::RunResult Run() {
    std::string config = "[construction]\n";
    for (const auto& [key, value] : keys) config += key + " = " + value + "\n";
    config += "[search]\nsearch = no\n";
    testutil::WriteFile(dir / "run.ini", config);
    // A hang shows as the exit status of timeout, 124.
    return testutil::RunProgram("timeout", "run.ini\n", dir.path().string(), {"120", program});
  }
};

// One MGF block with a few peaks around the given m/z values.
std::string MgfBlock(const std::string& title, double pepmass, const std::vector<double>& mz) {
  std::string block = "BEGIN IONS\nTITLE=" + title + "\nCHARGE=2+\nPEPMASS=" +
                      std::to_string(pepmass) + "\n";
  double intensity = 100.0;
  for (double m : mz) {
    block += std::to_string(m) + " " + std::to_string(intensity) + "\n";
    intensity += 37.0;
  }
  return block + "END IONS\n\n";
}

const char* kListHeading = "Spectrum\tCharge\tSequence\tModification\n";

std::vector<std::string> Values(const std::vector<std::string>& lines, const std::string& key) {
  std::vector<std::string> values;
  for (const std::string& line : lines)
    if (line.rfind(key, 0) == 0) values.push_back(line.substr(key.size()));
  return values;
}

}  // namespace

TEST(ConstructionRun, PeptideWithoutSpectrumLeavesAGapInTheNamesOnly) {
  ConstructionRun run;
  const char* sequences[] = {"AANGTK", "GNLSAR", "MMNGTR", "YYNASK", "EENKTR"};
  const char* sites[] = {"3", "2", "3", "3", "3"};
  std::string list = kListHeading;
  std::string mgf;
  for (int i = 0; i < 5; ++i) {
    const std::string name = "run1." + std::to_string(i + 1) + "." + std::to_string(i + 1) + ".2";
    list += name + "\t2\t" + sequences[i] + "\t" + sites[i] + ",N(Deamidated[N]);\n";
    if (i != 2) mgf += MgfBlock(name, 330.0 + i, {120.1, 147.1 + i, 240.2, 305.3, 410.4});
  }
  testutil::WriteFile(run.dir / "ids.txt", list);
  testutil::WriteFile(run.dir / "run1.mgf", mgf);

  const testutil::RunResult result = run.Run();
  ASSERT_EQ(result.exitCode, 0) << result.output;
  EXPECT_NE(result.output.find("\n>> Constructing:\n"), std::string::npos);
  EXPECT_NE(result.output.find("\tPreparing the following 1 datasets:\n\t\trun1.mgf\n"),
            std::string::npos);
  EXPECT_NE(result.output.find("\t\t5 identified spectra.\n"), std::string::npos);
  EXPECT_NE(result.output.find("\t\t5 non-redundant spectra\n"), std::string::npos);
  const std::size_t generating = result.output.find("\tGenerating library spectra: \n");
  ASSERT_NE(generating, std::string::npos);
  EXPECT_NE(result.output.find("Unable to load spectrum run1.3.3.2", generating), std::string::npos);
  EXPECT_NE(result.output.find("\n\t\t5 / 5\n    --- Complete!\n\n", generating), std::string::npos);
  EXPECT_NE(result.output.find("Finish!"), std::string::npos);

  const std::vector<std::string> lines = testutil::ReadLines(run.dir / "out.quolib");
  EXPECT_EQ(Values(lines, "SpectrumName="),
            (std::vector<std::string>{"1", "Decoy_1", "2", "Decoy_2", "4", "Decoy_4", "5",
                                      "Decoy_5"}));
  EXPECT_EQ(Values(lines, "ID="),
            (std::vector<std::string>{"1", "2", "3", "4", "5", "6", "7", "8"}));
  const std::vector<std::string> sequencesOut = Values(lines, "Sequence=");
  ASSERT_EQ(sequencesOut.size(), 8u);
  EXPECT_EQ(sequencesOut[0], "AAJGTK");
  EXPECT_EQ(sequencesOut[1], "KTGJAA");  // no flank known: the sequon stays reversed
  // The mark is off the entries, and target and decoy share mass and charge.
  for (const std::string& mods : Values(lines, "Modifications=")) EXPECT_EQ(mods, "-");
  const std::vector<std::string> masses = Values(lines, "PrecursorIonMass=");
  ASSERT_EQ(masses.size(), 8u);
  EXPECT_EQ(masses[0], masses[1]);
  EXPECT_EQ(Values(lines, "ProteinAC=")[1], "Decoy_");
  EXPECT_EQ(Values(lines, "N Glycan Motif=")[0], "3:NXT");
  EXPECT_EQ(Values(lines, "N Glycan Motif=")[1], "2:NXT");

  // The companion file names all five peptides, also the one without an entry.
  EXPECT_EQ(testutil::ReadFile(run.dir / "out_libcomp.txt"),
            "SpectrumName:1\nrun1.1.1.2\n\nSpectrumName:2\nrun1.2.2.2\n\n"
            "SpectrumName:3\nrun1.3.3.2\n\nSpectrumName:4\nrun1.4.4.2\n\n"
            "SpectrumName:5\nrun1.5.5.2\n\n");
}

TEST(ConstructionRun, DisabledStageAndEmptyListAndNameWithoutPoint) {
  {
    ConstructionRun run;
    run.keys = {{"construction", "No"}};
    const testutil::RunResult result = run.Run();
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output.find("Constructing"), std::string::npos);
    EXPECT_FALSE(testutil::FileExists(run.dir / "out.quolib"));
  }
  {
    // A heading alone: an empty library, an empty companion file, 0 / 0.
    ConstructionRun run;
    run.keys["output_speclib_filename"] = "library";
    testutil::WriteFile(run.dir / "ids.txt", kListHeading);
    testutil::WriteFile(run.dir / "run1.mgf", MgfBlock("run1.1.1.2", 400.0, {120.0}));
    const testutil::RunResult result = run.Run();
    ASSERT_EQ(result.exitCode, 0) << result.output;
    EXPECT_NE(result.output.find("\t\t0 identified spectra.\n"), std::string::npos);
    EXPECT_NE(result.output.find("\t\t0 / 0\n"), std::string::npos);
    EXPECT_TRUE(testutil::FileExists(run.dir / "library"));
    EXPECT_EQ(testutil::ReadFile(run.dir / "library"), "");
    EXPECT_TRUE(testutil::FileExists(run.dir / "library_libcomp.txt"));
  }
}

TEST(ConstructionRun, BadInputEndsInAnOrderlyWay) {
  const std::string mgf = MgfBlock("run1.1.1.2", 330.0, {120.1, 147.1, 240.2});
  {
    // A list line of three fields.
    ConstructionRun run;
    testutil::WriteFile(run.dir / "ids.txt",
                        std::string(kListHeading) + "run1.1.1.2\t2\tAANGTK\n");
    testutil::WriteFile(run.dir / "run1.mgf", mgf);
    const testutil::RunResult result = run.Run();
    EXPECT_EQ(result.exitCode, 1) << result.output;
    EXPECT_NE(result.output.find("[Error] The format of the spectral identification list is wrong!"),
              std::string::npos);
  }
  {
    // A spectrum name that no dataset prefix begins.
    ConstructionRun run;
    testutil::WriteFile(run.dir / "ids.txt",
                        std::string(kListHeading) + "other.1.1.2\t2\tAANGTK\t3,N(Deamidated[N]);\n");
    testutil::WriteFile(run.dir / "run1.mgf", mgf);
    const testutil::RunResult result = run.Run();
    EXPECT_EQ(result.exitCode, 1) << result.output;
    EXPECT_NE(result.output.find("[Error]: The spectrum of other.1.1.2 is not found in data sets!\n"
                                 "  Please check whether the name of each data set is prefix of "
                                 "spectral name!"),
              std::string::npos);
  }
  {
    // The pilot format passes the configuration but has no reader.
    ConstructionRun run;
    run.keys["identification_format"] = "pilot";
    testutil::WriteFile(run.dir / "ids.txt", kListHeading);
    testutil::WriteFile(run.dir / "run1.mgf", mgf);
    const testutil::RunResult result = run.Run();
    EXPECT_EQ(result.exitCode, 1) << result.output;
    EXPECT_NE(result.output.find("[Error]: The identification format pilot has no reader."),
              std::string::npos);
  }
  {
    // A modification without its closing semicolon, and a missing list file:
    // whatever the readers decide, the run ends by itself.
    ConstructionRun run;
    run.keys["identification_number"] = "2";
    run.keys["identification_filename_2"] = "absent.txt";
    testutil::WriteFile(run.dir / "ids.txt",
                        std::string(kListHeading) + "run1.1.1.2\t2\tAANGTK\t3,N(Deamidated[N])\n");
    testutil::WriteFile(run.dir / "run1.mgf", mgf);
    const testutil::RunResult result = run.Run();
    EXPECT_TRUE(result.exitCode == 0 || result.exitCode == 1) << result.output;
    EXPECT_NE(result.output.find("Error when opening \"absent.txt\"."), std::string::npos);
  }
}

TEST(ConstructionRun, RealMgfDatasetWithCrlfLines) {
  const std::string source = testutil::RealData("crux-toolkit/scaffold_test.mgf");
  if (!testutil::FileExists(source)) GTEST_SKIP() << "real data file absent";
  ConstructionRun run;
  // A dataset name without a point has the empty prefix: it takes every spectrum.
  testutil::WriteFile(run.dir / "scaffold", testutil::ReadFile(source));
  run.keys["library_dataset_pathname_1"] = "scaffold";
  run.keys["identification_number"] = "1";
  const std::string mark = "\t3\tLLNGTEPR\t3,N(Deamidated[N]);\n";
  testutil::WriteFile(run.dir / "ids.txt",
                      std::string(kListHeading) +
                          "ScaffoldIDNumber_853_o100720_3prot_01.10257.10257.3.dta" + mark +
                          "ScaffoldIDNumber_877_o100720_3prot_01.8067.8067.3.dta" + mark +
                          "ScaffoldIDNumber_879_o100720_3prot_01.8061.8061.3.dta\t3\tGNLSAR"
                          "\t2,N(Deamidated[N]);\n");
  const testutil::RunResult result = run.Run();
  ASSERT_EQ(result.exitCode, 0) << result.output;
  EXPECT_EQ(result.output.find("Unable to load"), std::string::npos) << result.output;
  const std::vector<std::string> lines = testutil::ReadLines(run.dir / "out.quolib");
  EXPECT_EQ(Values(lines, "SpectrumName="),
            (std::vector<std::string>{"1", "Decoy_1", "2", "Decoy_2"}));
  EXPECT_EQ(Values(lines, "Frequency="), (std::vector<std::string>{"2", "2", "1", "1"}));
  EXPECT_EQ(Values(lines, "Charge="), (std::vector<std::string>{"3", "3", "3", "3"}));
}
