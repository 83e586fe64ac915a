// Library construction through the installed program from a Lanvek list (with
// its FASTA database) and from a Mascot export, with MGF spectra.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "common/TestUtil.h"

namespace {

struct ListRun {
  testutil::TempDir dir;
  std::string program;
  std::map<std::string, std::string> keys = {
      {"construction", "yes"},
      {"modification_remove", "Deamidated[N]"},
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
      {"protein_database", "db.fasta"},
  };

  ListRun() { program = testutil::InstallProgram(dir.path().string()); }

  testutil::RunResult Run() {
    std::string config = "[construction]\n";
    for (const auto& [key, value] : keys) config += key + " = " + value + "\n";
    config += "[search]\nsearch = no\n";
    testutil::WriteFile(dir / "run.ini", config);
    return testutil::RunProgram("timeout", "run.ini\n", dir.path().string(), {"120", program});
  }
};

std::string MgfBlock(const std::string& title, double pepmass) {
  std::string block = "BEGIN IONS\nTITLE=" + title + "\nCHARGE=2+\nPEPMASS=" +
                      std::to_string(pepmass) + "\n";
  const double mz[] = {120.1, 175.119, 204.087, 240.2, 305.3, 410.4, 520.3};
  double intensity = 100.0;
  for (double m : mz) {
    block += std::to_string(m) + " " + std::to_string(intensity) + "\n";
    intensity += 37.0;
  }
  return block + "END IONS\n\n";
}

std::vector<std::string> Values(const std::vector<std::string>& lines, const std::string& key) {
  std::vector<std::string> values;
  for (const std::string& line : lines)
    if (line.rfind(key, 0) == 0) values.push_back(line.substr(key.size()));
  return values;
}

}  // namespace

TEST(ListLibraryBuild, FromALanvekList) {
  ListRun run;
  run.keys["identification_format"] = "lanvek";
  testutil::WriteFile(run.dir / "db.fasta",
                      ">P1 first\r\nMKAANGTKLLNVSR\r\n>P2 second\nMNGSKR\n");
  auto hit = [](const std::string& seq, const std::string& mods, const std::string& prot) {
    return "*\t1\t" + seq + "\t1000\t" + mods + "\t1\t1\t1\t1\t" + prot + "\n";
  };
  testutil::WriteFile(run.dir / "ids.txt",
                      "h1\nh2\n"
                      "1\trun1.10.10.2.dta\t1\n" + hit("AANGTK", "3,N(Deamidated[N]);", "REVERSE_P1/P1") +
                          hit("AANGTK", "null", "P1") +
                          "2\trun1.11.11.2.dta\t1\n" + hit("LLNVSR", "3,N(Deamidated[N]);", "P1") +
                          "3\trun1.12.12.0.dta\t1\n" + hit("MNGSK", "2,N(Deamidated[N]);", "P2"));
  testutil::WriteFile(run.dir / "run1.mgf",
                      MgfBlock("run1.10.10.2.dta", 600.0) + MgfBlock("run1.11.11.2.dta", 700.0));

  const testutil::RunResult result = run.Run();
  ASSERT_EQ(result.exitCode, 0) << result.output;
  EXPECT_NE(result.output.find("[Warning]: The charge of the spectrum run1.12.12.0.dtais unknown!"
                               " This result will be discarded!\n"),
            std::string::npos)
      << result.output;
  EXPECT_NE(result.output.find("\t\t2 identified spectra.\n"), std::string::npos)
      << result.output;
  const std::vector<std::string> lines = testutil::ReadLines(run.dir / "out.quolib");
  const std::vector<std::string> sequences = Values(lines, "Sequence=");
  ASSERT_EQ(sequences.size(), 4u) << result.output;
  EXPECT_EQ(sequences[0], "AAJGTK");
  EXPECT_EQ(sequences[2], "LLJVSR");
  EXPECT_EQ(Values(lines, "ProteinAC=")[0], "P1");
  EXPECT_EQ(Values(lines, "N Glycan Motif=")[0], "3:NXT");
  EXPECT_EQ(Values(lines, "N Glycan Motif=")[2], "3:NXS");
}

TEST(ListLibraryBuild, FromAMascotExport) {
  ListRun run;
  run.keys["identification_format"] = "Mascot";
  auto row = [](const std::string& seq, const std::string& pos, const std::string& title) {
    return "1,\"sp|P1\",\"a, described protein\"," + seq + "," + pos + ",\"" + title + "\"\n";
  };
  testutil::WriteFile(
      run.dir / "ids.txt",
      "\"Variable modifications,------\"\n\"\"\n\"Identifier,Name,Delta\"\n"
      "\"1,Oxidation (M),15.994915\"\n\"2,Deamidated (N),0.984016\"\n\"\"\n"
      "\"Protein hits,------\"\n\"\"\n"
      "prot_hit_num,prot_acc,prot_desc,pep_seq,pep_var_mod_pos,pep_scan_title\n" +
          row("ignored", "x", "y") +  // the comma in the description shifts this row
          "1,\"sp|P1\",\"plain\",AANGTK,0.002000.0,\"run1.10.10.2.dta spectrum 10\"\n"
          "1,\"sp|P1\",\"plain\",MMNGSR,0.102000.0,\"run1.11.11.2.dta\"\n"
          "1,\"sp|P1\",\"plain\",AANGAK,0.002000.0,\"run1.12.12.2.dta\"\n");
  testutil::WriteFile(run.dir / "run1.mgf",
                      MgfBlock("run1.10.10.2.dta", 600.0) + MgfBlock("run1.11.11.2.dta", 700.0));

  const testutil::RunResult result = run.Run();
  ASSERT_EQ(result.exitCode, 0) << result.output;
  EXPECT_NE(result.output.find("\t\t2 identified spectra.\n"), std::string::npos)
      << result.output;
  const std::vector<std::string> lines = testutil::ReadLines(run.dir / "out.quolib");
  const std::vector<std::string> sequences = Values(lines, "Sequence=");
  ASSERT_EQ(sequences.size(), 4u) << result.output;
  EXPECT_EQ(sequences[0], "AAJGTK");
  EXPECT_EQ(sequences[2], "MMJGSR");
  EXPECT_EQ(Values(lines, "N Glycan Motif=")[2], "3:NXS");
}
