// The search stage through the real program: a hand-made library, a mass table
// with a small Glyco section, MGF queries, and the result file after the FDR stage.
#include <gtest/gtest.h>

#include <algorithm>

#include "common/TestUtil.h"
#include "run/StringUtil.h"

namespace {
using testutil::WriteFile;

std::string LibraryEntry(const std::string& name, const std::string& sequence,
                         const std::string& peaks) {
  return "ID=1\nSpectrumName=" + name + "\nSequence=" + sequence +
         "\nModifications=-\nPrecursorIonMass=1000.00000\nCharge=2\nFrequency=1\nProteinAC=P1\n"
         "PrevAA=K\nLastAA=AV\nStartPostion=3\nN Glycan Motif=4:NXT\nPeaks=" +
         std::to_string(std::count(peaks.begin(), peaks.end(), '\n')) + "\n" + peaks + "\n";
}

// Target "1": b2 at 200, y3 at 350, y5 at 600, Y0 at 1100, all of intensity 1,
// so 0.5 each after unit length, and 4 annotated peaks. Its decoy has the same
// mass and only unannotated peaks.
const std::string kLibrary =
    LibraryEntry("1", "PEPJTIDE", "200 1 1 0 2 1\n350 1 1 1 3 1\n600 1 1 1 5 1\n1100 1 1 2 0 1\n") +
    LibraryEntry("Decoy_1", "EDITJPEP", "210 1 1 4 0 0\n360 1 1 4 0 0\n");

std::string MgfBlock(const std::string& title, const std::string& pepmass,
                     const std::string& peaks, const std::string& charge = "2") {
  return "BEGIN IONS\nTITLE=" + title + "\nCHARGE=" + charge + "+\nPEPMASS=" + pepmass + "\n" +
         peaks + "END IONS\n\n";
}

struct Installed {
  testutil::TempDir dir;
  std::string exe = testutil::InstallProgram(dir.path().string());
  Installed() {
    // Three glycans; 5-4-1-0-0 carries NeuAc and needs the marker.
    WriteFile(dir / "MassTable.ini", "[Glyco]\n3-4-0-0-1=1200\n5-4-0-0-0=1500\n5-4-1-0-0=1800\n");
    WriteFile(dir / "lib.quolib", kLibrary);
  }
  testutil::RunResult Start(const std::vector<std::string>& datasets, const std::string& result) {
    std::string text = "[construction]\nconstruction = no\n[search]\nsearch = yes\n"
                       "input_speclib_filename = " + (dir / "lib.quolib") +
                       "\nquery_dataset_number = " + std::to_string(datasets.size()) +
                       "\nquery_dataset_format = mgf\n";
    for (std::size_t i = 0; i < datasets.size(); ++i)
      text += "query_dataset_pathname_" + std::to_string(i + 1) + " = " + datasets[i] + "\n";
    WriteFile(dir / "search.ini",
              text + "query_precursor_ion_unit = da\nquery_precursor_ion_tolerance = 0.5\n"
                     "query_product_ion_unit = da\nquery_product_ion_tolerance = 0.05\n"
                     "output_result_filename = " + result + "\nminimal_peptide_ions = 1\n");
    return testutil::RunProgram(exe, dir / "search.ini" + "\n", dir.path().string());
  }
};
}  // namespace

TEST(SearchEndToEnd, OneHandWorkedHit) {
  Installed run;
  // q1 has [M+H]+ 2500 (m/z 1250.50363823506 at charge 2): 1500 above the library
  // entries. q2 is accepted but finds no glycan; q3 lacks the marker.
  WriteFile(run.dir / "q.mgf",
            MgfBlock("q1", "1250.50363823506", "138.0550 100\n200.0000 80\n204.0867 30\n"
                                               "700.0000 20\n1100.0000 40\n1850.0000 60\n") +
                MgfBlock("q2", "700.0", "138.0550 100\n500.0000 50\n") +
                MgfBlock("q3", "1250.50363823506", "138.0550 10\n200.0000 80\n"));
  auto result = run.Start({run.dir / "q.mgf"}, run.dir / "result.txt");
  ASSERT_EQ(result.exitCode, 0) << result.output;
  EXPECT_NE(result.output.find(">> Searching:\n\tLoading library spectra: \n\t\t" +
                               (run.dir / "lib.quolib") + "\n\t\t2 library spectra have been "
                               "loaded.\n\t--- Complete! \n\tSearching 1 query datasets: \n"
                               "\t\tDatasets_1: " + (run.dir / "q.mgf") +
                               "\n\t\tSpectra: 2/3\n\t\tSpectra: 2/3\n    --- Complete!\n\n"),
            std::string::npos)
      << result.output;

  std::vector<std::string> lines = testutil::ReadLines(run.dir / "result.txt"), c;
  ASSERT_EQ(lines.size(), 2u) << testutil::ReadFile(run.dir / "result.txt");
  Split(lines[1], "\t", c);
  // Preparation of q1: the marker and 204.0867 are oxonium ions and leave; the rest,
  // scaled to the strongest (200 at 80), are 1, 0.25, 0.5, 0.75: four top peaks.
  // Square roots and unit length give sqrt(x / 2.5): 200 -> sqrt(.4), 1850 -> sqrt(.3),
  // 1100 -> sqrt(.2), 700 -> sqrt(.1). Candidates: both entries (difference 1500 =
  // 5-4-0-0-0; the NeuAc glycan would need the marker, 1200 is too far).
  // Against "1" with shift 1500, fragment charges up to 2: 200 takes b2 directly, 1850
  // y3 shifted (350 + 1500), 1100 Y0 directly, 700 nothing.
  // DPS = ((.5 + sqrt .4) / 2)^2 + ((.5 + sqrt .3) / 2)^2 + ((.5 + sqrt .2) / 2)^2 = 0.81935
  // PS: N = 4, k0 = 3, p = 4 * 2 * 0.05 / 2000, P = 4 p^3 (1 - p) + p^4,
  // PS = sqrt(-ln P) = 4.91584, score 4.02778; the decoy scores 0. Site: J 4, motif NXT.
  const std::vector<std::string> expected = {
      "q1", "1", "2500.00000", "1000.00000", "2", "PEPJTIDE", "-", "1500.00000", "1500.00000",
      "5-4-0-0-0", "4", "NXT", "2", "1", "0.20000", "2", "0.70000", "0.81935", "4.91584",
      "4.02778", "T", "b2+;y3+;Y0+;", "b2+;y3+;Y0+;", "P1", "K", "AV", "3", "0.000"};
  EXPECT_EQ(c, expected);
}

TEST(SearchEndToEnd, ProgressLinesOfFullEmptyAndMissingDatasets) {
  Installed run;
  std::string hundred, rejected;  // 100 accepted spectra; 5 rejected ones
  for (int i = 0; i < 100; ++i) {
    hundred += MgfBlock("s" + std::to_string(1000 + i), "700.0", "138.0550 100\n500.0000 50\n");
    if (i < 5) rejected += MgfBlock("r" + std::to_string(i), "700.0", "138.0550 30\n500 100\n");
  }
  WriteFile(run.dir / "hundred.mgf", hundred);
  WriteFile(run.dir / "rejected.mgf", rejected);
  // 100 accepted: a second, empty pass; none accepted: one line with 0; a file that
  // can't be opened is reported by the reader and searched as empty.
  auto result = run.Start({run.dir / "hundred.mgf", run.dir / "rejected.mgf",
                           run.dir / "absent.mgf"}, run.dir / "result.txt");
  ASSERT_EQ(result.exitCode, 0) << result.output;
  const std::string progress = result.output.substr(result.output.find("\tSearching 3 q"));
  const std::string expected =
      "\tSearching 3 query datasets: \n\t\tDatasets_1: " + (run.dir / "hundred.mgf") +
      "\n\t\tSpectra: 100/100\n\t\tSpectra: 100/100\n    --- Complete!\n\n\t\tDatasets_2: " +
      (run.dir / "rejected.mgf") + "\n\t\tSpectra: 0/5\n    --- Complete!\n\n\t\tDatasets_3: " +
      (run.dir / "absent.mgf") + "\n";
  EXPECT_EQ(progress.substr(0, expected.size()), expected);
  EXPECT_NE(progress.find("\t\tSpectra: 0/0\n    --- Complete!\n\n"), std::string::npos);
  // No hits: the FDR stage leaves the header alone.
  EXPECT_EQ(testutil::ReadLines(run.dir / "result.txt").size(), 1u);

  // No dataset at all; then a result file that can't be opened ends the run
  // with status 1 before the library is loaded.
  EXPECT_NE(run.Start({}, run.dir / "result.txt").output.find("\tSearching 0 query datasets: \n"),
            std::string::npos);
  EXPECT_EQ(testutil::ReadLines(run.dir / "result.txt").size(), 1u);
  const std::string bad = run.dir / "missing-folder/result.txt";
  const auto failed = run.Start({}, bad);
  EXPECT_EQ(failed.exitCode, 1);
  EXPECT_NE(failed.output.find("Output search result error: failed to open file " + bad + "\n"),
            std::string::npos);
  EXPECT_EQ(failed.output.find(">> Searching:"), std::string::npos);
}

TEST(SearchEndToEnd, DamagedQueriesAndLibraryDoNotStopTheRun) {
  Installed run;
  // The hit of q1 at charges 0 and 9, a broken peak line, a block without
  // peaks, an "inf" peak that must not become the base peak, binary noise,
  // and a file that ends inside a block.
  const std::string hit = "138.0550 100\n200.0000 80\n1850.0000 60\n", q1 = "1250.50363823506";
  std::string queries = MgfBlock("a0", "2500.0", hit, "0") + MgfBlock("a9", "2500.0", hit, "9") +
                        MgfBlock("b", q1, "138.0550 100\n200.0 abc\nx y\n1850 60\n") +
                        MgfBlock("c", q1, "") + MgfBlock("e", q1, hit + "300.0 inf\n");
  for (int i = 0; i < 300; ++i) queries += static_cast<char>((i * 131) % 256);
  WriteFile(run.dir / "bad.mgf", queries + "\nBEGIN IONS\nTITLE=d\nPEPMASS=1250.5\n138.0 100\n200");
  WriteFile(run.dir / "lib.quolib", kLibrary + "ID=3\nSpectrumName=cut\nPeaks=9\n1.0 x");
  auto result = run.Start({run.dir / "bad.mgf"}, run.dir / "result.txt");
  ASSERT_EQ(result.exitCode, 0) << result.output;
  EXPECT_NE(result.output.find("\t\t[Warning]: 1 damaged peaks (an m/z or intensity that is not a "
                               "finite number, or a negative intensity) were dropped from 1 "
                               "spectra.\n    --- Complete!"),
            std::string::npos)
      << result.output;
  bool damagedHit = false;
  for (const std::string& line : testutil::ReadLines(run.dir / "result.txt")) {
    EXPECT_EQ(std::count(line.begin(), line.end(), '\t'), 27) << line;
    damagedHit = damagedHit || line.rfind("e\t1\t", 0) == 0;
  }
  EXPECT_TRUE(damagedHit);
}
