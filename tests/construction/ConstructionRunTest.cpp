// The construction stage through the installed program: lists and datasets
// written here, the library and its companion file read back.
#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "common/TestUtil.h"
#include "construction/ConstructionFixtures.h"

namespace {

struct ConstructionRun {
  testutil::TempDir dir;
  std::string program = testutil::InstallProgram(dir.path().string());
  std::map<std::string, std::string> keys = {
      {"construction", "yes"}, {"modification_remove", "Deamidated[N]"},
      {"identification_format", "tab-txt"}, {"identification_number", "1"},
      {"identification_filename_1", "ids.txt"}, {"library_dataset_number", "1"},
      {"library_dataset_format", "mgf"}, {"library_dataset_pathname_1", "run1.mgf"},
      {"library_product_ion_unit", "da"}, {"library_product_ion_tolerance", "0.5"},
      {"theta", "0.2"}, {"output_speclib_filename", "out.quolib"}, {"added_Y_ions", "Y0,Y1"},
      {"Y_ion_relative_intensity", "0.5"}, {"N_glycan_motifs", "NXS,NXT"},
      {"protein_database", "none.fasta"}};

  testutil::RunResult Run() {
    std::string config = "[construction]\n";
    for (const auto& [key, value] : keys) config += key + " = " + value + "\n";
    testutil::WriteFile(dir / "run.ini", config + "[search]\nsearch = no\n");
    testutil::WriteFile(dir / "MassTable.ini", fixtures::MassTableText());
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

const std::string kListHeading = "Spectrum\tCharge\tSequence\tModification\n";

// The values of one key of the library file, entry by entry.
std::vector<std::string> Values(const std::string& path, const std::string& key) {
  std::vector<std::string> values;
  for (const std::string& line : testutil::ReadLines(path))
    if (line.rfind(key, 0) == 0) values.push_back(line.substr(key.size()));
  return values;
}

// The Y-ion peak lines (type 2) of each entry of the library file.
std::vector<std::vector<std::string>> YIonLines(const std::string& path) {
  std::vector<std::vector<std::string>> entries;
  for (const std::string& line : testutil::ReadLines(path)) {
    if (line.rfind("ID=", 0) == 0) entries.emplace_back();
    std::istringstream fields(line);
    std::string mz, intensity, count, type;
    if (line.find('=') == std::string::npos && fields >> mz >> intensity >> count >> type &&
        type == "2")
      entries.back().push_back(line);
  }
  return entries;
}

}  // namespace

TEST(ConstructionRun, PeptideWithoutSpectrumLeavesAGapInTheNamesOnly) {
  ConstructionRun run;
  // Peptide 3 has no spectrum; peptide 4 carries the mark twice on its J, and
  // both go (the second is looked at after moving into the first one's place).
  const char* sequences[] = {"AANGTK", "GNLSAR", "MMNGTR", "YYNASK", "EENKTR"};
  const char* mods[] = {"3,N(Deamidated[N]);", "2,N(Deamidated[N]);", "3,N(Deamidated[N]);",
                        "3,N(Deamidated[N]);3,N(Deamidated[N]);", "3,N(Deamidated[N]);"};
  std::string list = kListHeading;
  std::string mgf;
  for (int i = 0; i < 5; ++i) {
    const std::string name = "run1." + std::to_string(i + 1) + "." + std::to_string(i + 1) + ".2";
    list += name + "\t2\t" + sequences[i] + "\t" + mods[i] + "\n";
    if (i != 2) mgf += MgfBlock(name, 330.0 + i, {120.1, 147.1 + i, 240.2, 305.3, 410.4});
  }
  testutil::WriteFile(run.dir / "ids.txt", list);
  testutil::WriteFile(run.dir / "run1.mgf", mgf);

  const testutil::RunResult result = run.Run();
  ASSERT_EQ(result.exitCode, 0) << result.output;
  // The console lines in their order, the warning of the missing spectrum
  // between the opening of the loop and its last progress line.
  std::size_t at = 0;
  for (const char* line :
       {"\n>> Constructing:\n", "\tPreparing the following 1 datasets:\n\t\trun1.mgf\n",
        "\tLoading Spectral list: \n\t\t5 identified spectra.\n"
        "\tAnalyzing Identified Spectral list: \n\t\t5 non-redundant spectra\n"
        "\tGenerating library spectra: \n",
        "Unable to load spectrum run1.3.3.2", "\n\t\t5 / 5\n    --- Complete!\n\n", "Finish!"}) {
    at = result.output.find(line, at);
    ASSERT_NE(at, std::string::npos) << line << "\n" << result.output;
  }

  const std::string library = run.dir / "out.quolib";
  EXPECT_EQ(Values(library, "SpectrumName="),
            (std::vector<std::string>{"1", "Decoy_1", "2", "Decoy_2", "4", "Decoy_4", "5", "Decoy_5"}));
  EXPECT_EQ(Values(library, "ID="), (std::vector<std::string>{"1", "2", "3", "4", "5", "6", "7", "8"}));
  // No flank known: the decoy's sequon stays reversed.
  EXPECT_EQ(Values(library, "Sequence=")[1], "KTGJAA");
  EXPECT_EQ(Values(library, "N Glycan Motif=")[1], "2:NXT");
  EXPECT_EQ(Values(library, "ProteinAC=")[1], "Decoy_");
  // The marks are off the entries: the mass is the bare peptide's, the decoy's the same.
  for (const std::string& mods : Values(library, "Modifications=")) EXPECT_EQ(mods, "-");
  const std::vector<std::string> masses = Values(library, "PrecursorIonMass=");
  EXPECT_EQ(masses[0], "561.29909");
  EXPECT_EQ(masses[1], "561.29909");
  EXPECT_EQ(masses[4], masses[5]);
  // Target and decoy carry the same Y ions: Y0 and Y1 at charges 1 and 2, each
  // also less water and less ammonia.
  const std::vector<std::vector<std::string>> yIons = YIonLines(library);
  ASSERT_EQ(yIons.size(), 8u);
  EXPECT_EQ(yIons[0].size(), 12u);
  EXPECT_EQ(yIons[1], yIons[0]);

  // The companion file names all five peptides, also the one without an entry.
  EXPECT_EQ(testutil::ReadFile(run.dir / "out_libcomp.txt"),
            "SpectrumName:1\nrun1.1.1.2\n\nSpectrumName:2\nrun1.2.2.2\n\n"
            "SpectrumName:3\nrun1.3.3.2\n\nSpectrumName:4\nrun1.4.4.2\n\n"
            "SpectrumName:5\nrun1.5.5.2\n\n");
}

TEST(ConstructionRun, EmptyListAndAFormatWithoutReader) {
  // A heading alone: an empty library, an empty companion file, 0 / 0.
  ConstructionRun run;
  run.keys["output_speclib_filename"] = "library";
  testutil::WriteFile(run.dir / "ids.txt", kListHeading);
  testutil::WriteFile(run.dir / "run1.mgf", MgfBlock("run1.1.1.2", 400.0, {120.0}));
  testutil::RunResult result = run.Run();
  ASSERT_EQ(result.exitCode, 0) << result.output;
  EXPECT_NE(result.output.find("\t\t0 identified spectra.\n"), std::string::npos);
  EXPECT_NE(result.output.find("\n\t\t0 / 0\n    --- Complete!\n"), std::string::npos);
  for (const char* file : {"library", "library_libcomp.txt"}) {
    EXPECT_TRUE(testutil::FileExists(run.dir / file));
    EXPECT_EQ(testutil::ReadFile(run.dir / file), "");
  }

  // pilot passes the configuration but has no reader: the run stops before any spectrum.
  run.keys["identification_format"] = "pilot";
  result = run.Run();
  EXPECT_EQ(result.exitCode, 1) << result.output;
  EXPECT_NE(result.output.find("[Error]: The identification format pilot has no reader."),
            std::string::npos);
}
