// Library construction through the installed program from a Lanvek list (with
// its FASTA database) and from a re-quoted Mascot export, with MGF spectra.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/TestUtil.h"

namespace {

std::string MgfBlock(const std::string& title, double pepmass) {
  std::string block = "BEGIN IONS\nTITLE=" + title + "\nCHARGE=2+\nPEPMASS=" +
                      std::to_string(pepmass) + "\n";
  double intensity = 100.0;
  for (double mz : {120.1, 175.119, 204.087, 240.2, 305.3, 410.4, 520.3}) {
    block += std::to_string(mz) + " " + std::to_string(intensity) + "\n";
    intensity += 37.0;
  }
  return block + "END IONS\n\n";
}

// The values of the target entries' lines that begin with `key`; each target
// is followed by its decoy.
std::string Targets(const std::vector<std::string>& lines, const std::string& key) {
  std::string values;
  bool target = true;
  for (const std::string& line : lines) {
    if (line.rfind(key, 0) != 0) continue;
    if (target) values += line.substr(key.size()) + " ";
    target = !target;
  }
  return values;
}

const std::string kKeys =
    "modification_remove = Deamidated[N]\nidentification_number = 1\nidentification_filename_1 = "
    "ids.txt\nlibrary_dataset_number = 1\nlibrary_dataset_format = mgf\nlibrary_dataset_pathname_1"
    " = run1.mgf\nlibrary_product_ion_unit = da\nlibrary_product_ion_tolerance = 0.5\ntheta = 0.2"
    "\noutput_speclib_filename = out.quolib\nadded_Y_ions = Y0,Y1\nY_ion_relative_intensity = 0.5"
    "\nN_glycan_motifs = NXS,NXT\nprotein_database = db.fasta\n";

std::string LanvekHit(const std::string& seq, const std::string& mods, const std::string& prot) {
  return "*\t1\t" + seq + "\t1000\t" + mods + "\t1\t1\t1\t1\t" + prot + "\n";
}

}  // namespace

TEST(ListLibraryBuild, FromLanvekAndMascotLists) {
  struct Case {
    const char* format;
    std::string list, warning, sequences, motifs, proteins;
  } cases[] = {
      {"lanvek",
       "h1\nh2\n1\trun1.10.10.2.dta\t1\n" +
           LanvekHit("AANGTK", "3,N(Deamidated[N]);", "REVERSE_P1/P1") +
           LanvekHit("AANGTK", "null", "P1") + "2\trun1.11.11.2.dta\t1\n" +
           LanvekHit("LLNVSR", "3,N(Deamidated[N]);", "P1") + "3\trun1.12.12.0.dta\t1\n" +
           LanvekHit("MNGSK", "2,N(Deamidated[N]);", "P2"),
       "[Warning]: The charge of the spectrum run1.12.12.0.dtais unknown! This result will be "
       "discarded!\n",
       "AAJGTK LLJVSR ", "3:NXT 3:NXS ", "P1 P1 "},
      // Mixed case keyword; the comma in a description shifts a row's columns.
      {"Mascot",
       "\"Variable modifications,------\"\n\"\"\n\"Identifier,Name,Delta\"\n"
       "\"1,Oxidation (M),15.994915\"\n\"2,Deamidated (N),0.984016\"\n\"\"\n"
       "\"Protein hits,------\"\n\"\"\n"
       "prot_hit_num,prot_acc,prot_desc,pep_seq,pep_var_mod_pos,pep_scan_title\n"
       "1,\"sp|P1\",\"a, described protein\",ignored,x,\"y\"\n"
       "1,\"sp|P1\",\"plain\",AANGTK,0.002000.0,\"run1.10.10.2.dta spectrum 10\"\n"
       "1,\"sp|P1\",\"plain\",MMNGSR,0.102000.0,\"run1.11.11.2.dta\"\n"
       "1,\"sp|P1\",\"plain\",AANGAK,0.002000.0,\"run1.12.12.2.dta\"\n",
       "", "AAJGTK MMJGSR ", "3:NXT 3:NXS ", "  "},
  };
  for (const Case& c : cases) {
    testutil::TempDir dir;
    const std::string program = testutil::InstallProgram(dir.path().string());
    testutil::WriteFile(dir / "db.fasta", ">P1 first\r\nMKAANGTKLLNVSR\r\n>P2 second\nMNGSKR\n");
    testutil::WriteFile(dir / "ids.txt", c.list);
    testutil::WriteFile(dir / "run1.mgf", MgfBlock("run1.10.10.2.dta", 600.0) +
                                              MgfBlock("run1.11.11.2.dta", 700.0));
    testutil::WriteFile(dir / "run.ini",
                        "[construction]\nconstruction = yes\nidentification_format = " +
                            std::string(c.format) + "\n" + kKeys + "[search]\nsearch = no\n");
    const testutil::RunResult result =
        testutil::RunProgram("timeout", "run.ini\n", dir.path().string(), {"120", program});
    ASSERT_EQ(result.exitCode, 0) << result.output;
    EXPECT_NE(result.output.find(c.warning + "\t\t2 identified spectra.\n"), std::string::npos)
        << result.output;
    const std::vector<std::string> lines = testutil::ReadLines(dir / "out.quolib");
    EXPECT_EQ(Targets(lines, "Sequence="), c.sequences) << c.format;
    EXPECT_EQ(Targets(lines, "N Glycan Motif="), c.motifs) << c.format;
    EXPECT_EQ(Targets(lines, "ProteinAC="), c.proteins) << c.format;
  }
}
