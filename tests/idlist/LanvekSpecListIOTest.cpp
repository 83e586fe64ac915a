#include <gtest/gtest.h>

#include "ListTestSetup.h"
#include "common/TestUtil.h"

namespace {

using Lines = std::vector<std::string>;
constexpr int kLanvek = 2;
const std::string kHead = "heading 1\nheading 2\n";
const std::string kMark2 = "2,N(Deamidated[N]);", kMark3 = "3,N(Deamidated[N]);";

std::string Spectrum(const std::string& name) { return "1\t" + name + "\t999.1\n"; }
std::string Hit(const std::string& sequence, const std::string& mods, const std::string& proteins) {
  return "*\t1\t" + sequence + "\t1000.5\t" + mods + "\t10\t0.1\t5\t3\t" + proteins + "\n";
}

struct LanvekFiles {
  testutil::TempDir dir;
  std::string list = dir / "result.txt";
  LanvekFiles() {
    listtest::UseDefaultSettings();
    testutil::WriteFile(dir / "db.fasta", ">P1 first\nMKAANGTKLL\nNVSR\n>P2 second\r\nMNGSKR\r\n"
                                          ">REVERSE_P1 decoy\nRSVNLLKTGNAAKM\n");
    CParam::GetInstance().construction.protein_database = dir / "db.fasta";
  }
  Lines Read(const std::string& text, std::string& output) {
    testutil::WriteFile(list, text);
    return listtest::Summaries(listtest::ReadListCaptured(kLanvek, list, output));
  }
};

}  // namespace

TEST(LanvekSpecListIO, ReadsFirstHitsWithFlanksFromTheDatabase) {
  LanvekFiles files;
  std::string out;
  const Lines records = files.Read(
      kHead + Spectrum("a.b.10.10.2.0.dta") + Hit("AANGTK", kMark3, "REVERSE_P1/P1") +
          Hit("AANGTK", "null", "P1") +  // further hits are skipped
          Spectrum("x.10.11.3.dta") + Hit("LLNVSR", kMark3, "P1/REVERSE_P1") +
          Hit("MNGSK", kMark2, "P2") + Spectrum("y.5.5.0.dta") + Hit("MNGSK", kMark2, "P2") +
          Spectrum("z.3.dta") + Hit("MNGSK", kMark2, "P2") +
          Spectrum("m.7.7.2.dta") + Hit("MNGSK", kMark2, "P2/P1") +
          Spectrum("m.8.8.3.dta") + Hit("MKAAN", "5,N(Deamidated[N]);", "P1") +
          Spectrum("m.9.9.2.dta") + Hit("MNGSK", "null", "P2") +  // no mark: dropped
          "\n" + Spectrum("m.10.10.2.dta") + Hit("MNGSK", kMark2, "P2"),  // behind the end
      out);
  // The charge token follows the first equal pair, else it is token 3; no
  // blank stands in front of "is unknown!".
  EXPECT_EQ(out,
            "[Warning]: The charge of the spectrum y.5.5.0.dtais unknown! This result will be "
            "discarded!\n[Warning]: The name of the spectrum z.3.dta has no charge token! This "
            "result will be discarded!\n");
  EXPECT_EQ(records, (Lines{"a.b.10.10.2.0.dta 2 AAJGTK 3,Deamidated[N]; @P1:3 K LL 3NXT",
                            "x.10.11.3.dta 3 LLJVSR 3,Deamidated[N]; @P1:9 K -- 3NXS",
                            "m.7.7.2.dta 2 MJGSK 2,Deamidated[N]; @P2:1 - R- 2NXS",
                            // A sequon reaching past the peptide, told by the residues behind it.
                            "m.8.8.3.dta 3 MKAAJ 5,Deamidated[N]; @P1:1 - GT 5NXT"}));
}

TEST(LanvekSpecListIO, ShortFilesAndMissingList) {
  LanvekFiles files;
  std::string out;
  EXPECT_TRUE(listtest::ReadListCaptured(kLanvek, files.dir / "none.txt", out).empty());
  EXPECT_EQ(listtest::HidePath(out, files.dir / "none.txt"), "Error when opening \"LIST\".\n");
  // The third line met the end of the file: nothing is read.
  EXPECT_TRUE(files.Read(kHead + "1\tm.7.7.2.dta\t1", out).empty());
  // A hit line that ends the file without a line end is still taken.
  std::string last = Hit("MNGSK", kMark2, "P2");
  last.pop_back();
  EXPECT_EQ(files.Read(kHead + Spectrum("m.7.7.2.dta") + last, out).size(), 1u);
  // A hit line without its ten fields is reported and skipped.
  EXPECT_EQ(files.Read(kHead + Spectrum("m.7.7.2.dta") + "*\t1\tMNGSK\t1\n" +
                           Spectrum("m.8.8.2.dta") + Hit("MNGSK", kMark2, "P2"), out),
            (Lines{"m.8.8.2.dta 2 MJGSK 2,Deamidated[N]; @P2:1 - R- 2NXS"}));
  EXPECT_NE(out.find("m.7.7.2.dta has fewer than ten fields"), std::string::npos) << out;
}

TEST(LanvekSpecListIODeathTest, UnknownProteinOrPeptideEndsTheRun) {
  LanvekFiles files;
  auto run = [&files](const std::string& hit) {
    testutil::WriteFile(files.list, kHead + Spectrum("m.7.7.2.dta") + hit);
    testutil::PrintToStderr();
    listtest::ReadList(kLanvek, files.list);
  };
  // All accessions decoys: the first one is looked up.
  EXPECT_EXIT(run(Hit("MNGSK", kMark2, "REVERSE_P9/REVERSE_P2")), testing::ExitedWithCode(1),
              "There is no protein in database owing the AC of REVERSE_P9\n");
  EXPECT_EXIT(run(Hit("WWNGT", kMark3, "P1")), testing::ExitedWithCode(1),
              "The protein of P1 does not have the peptide WWNGT\n");
}
