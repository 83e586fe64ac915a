// The search stage through the real program: a hand-made library, a mass table
// with a small Glyco section, MGF queries, and the result file after the FDR stage.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/TestUtil.h"
#include "run/StringUtil.h"

namespace {

using testutil::TempDir;
using testutil::WriteFile;

// Three glycans; 5-4-1-0-0 carries NeuAc and needs the marker.
const char* const kMassTable =
    "[Glyco]\n"
    "3-4-0-0-1 = 1200.0\n"
    "5-4-0-0-0 = 1500.0\n"
    "5-4-1-0-0 = 1800.0\n";

std::string LibraryEntry(int id, const std::string& name, const std::string& sequence,
                         const std::vector<std::string>& peaks) {
  std::string text = "ID=" + std::to_string(id) + "\nSpectrumName=" + name +
                     "\nSequence=" + sequence +
                     "\nModifications=-\nPrecursorIonMass=1000.00000\nCharge=2\nFrequency=1\n"
                     "ProteinAC=P1\nPrevAA=K\nLastAA=AV\nStartPostion=3\nN Glycan Motif=4:NXT\n"
                     "Peaks=" + std::to_string(peaks.size()) + "\n";
  for (const auto& p : peaks) text += p + "\n";
  return text + "\n";
}

// Target "1": b2 at 200, y3 at 350, y5 at 600, Y0 at 1100, all of intensity 1,
// so 0.5 each after unit length, and 4 annotated peaks. Its decoy has the same
// mass and only unannotated peaks.
std::string Library() {
  return LibraryEntry(1, "1", "PEPJTIDE",
                      {"200.0000 1.0000 1 0 2 1", "350.0000 1.0000 1 1 3 1",
                       "600.0000 1.0000 1 1 5 1", "1100.0000 1.0000 1 2 0 1"}) +
         LibraryEntry(2, "Decoy_1", "EDITJPEP",
                      {"210.0000 1.0000 1 4 0 0", "360.0000 1.0000 1 4 0 0"});
}

std::string MgfBlock(const std::string& title, const std::string& pepmass,
                     const std::vector<std::string>& peaks) {
  std::string text = "BEGIN IONS\nTITLE=" + title + "\nCHARGE=2+\nPEPMASS=" + pepmass + "\n";
  for (const auto& p : peaks) text += p + "\n";
  return text + "END IONS\n\n";
}

// q1 has [M+H]+ 2500 (m/z 1250.50363823506 at charge 2): 1500 above the library
// entries. q2 is accepted but finds no glycan; q3 lacks the marker.
std::string Queries() {
  return MgfBlock("q1", "1250.50363823506",
                  {"138.0550 100", "200.0000 80", "204.0867 30", "700.0000 20",
                   "1100.0000 40", "1850.0000 60"}) +
         MgfBlock("q2", "700.0", {"138.0550 100", "500.0000 50"}) +
         MgfBlock("q3", "1250.50363823506", {"138.0550 10", "200.0000 80"});
}

std::string Config(const std::string& dir, const std::vector<std::string>& datasets,
                   const std::string& result) {
  std::string text =
      "[construction]\nconstruction = no\n[search]\nsearch = yes\n"
      "input_speclib_filename = " + dir + "/lib.quolib\n"
      "query_dataset_number = " + std::to_string(datasets.size()) + "\n"
      "query_dataset_format = mgf\n";
  for (std::size_t i = 0; i < datasets.size(); ++i)
    text += "query_dataset_pathname_" + std::to_string(i + 1) + " = " + datasets[i] + "\n";
  text +=
      "query_precursor_ion_unit = da\nquery_precursor_ion_tolerance = 0.5\n"
      "query_product_ion_unit = da\nquery_product_ion_tolerance = 0.05\n"
      "output_result_filename = " + result + "\nminimal_peptide_ions = 1\n";
  return text;
}

struct Installed {
  TempDir dir;
  std::string exe;
  Installed() {
    exe = testutil::InstallProgram(dir.path().string());
    WriteFile(dir / "MassTable.ini", kMassTable);
    WriteFile(dir / "lib.quolib", Library());
  }
  testutil::RunResult Start(const std::vector<std::string>& datasets, const std::string& result) {
    WriteFile(dir / "search.ini", Config(dir.path().string(), datasets, result));
    return testutil::RunProgram(exe, dir / "search.ini" + "\n", dir.path().string());
  }
};

std::vector<std::string> Columns(const std::string& line) {
  std::vector<std::string> cols;
  Split(line, "\t", cols);
  return cols;
}

std::size_t Occurrences(const std::string& text, const std::string& what) {
  std::size_t n = 0;
  for (auto pos = text.find(what); pos != std::string::npos; pos = text.find(what, pos + 1)) ++n;
  return n;
}

}  // namespace

TEST(SearchEndToEnd, OneHandWorkedHit) {
  Installed run;
  WriteFile(run.dir / "q.mgf", Queries());
  auto result = run.Start({run.dir / "q.mgf"}, run.dir / "result.txt");
  ASSERT_EQ(result.exitCode, 0) << result.output;
  EXPECT_NE(result.output.find(">> Searching:\n\tLoading library spectra: \n\t\t" +
                               (run.dir / "lib.quolib") +
                               "\n\t\t2 library spectra have been loaded.\n\t--- Complete! \n"
                               "\tSearching 1 query datasets: \n\t\tDatasets_1: " +
                               (run.dir / "q.mgf") +
                               "\n\t\tSpectra: 2/3\n\t\tSpectra: 2/3\n    --- Complete!\n\n"),
            std::string::npos)
      << result.output;

  std::vector<std::string> lines = testutil::ReadLines(run.dir / "result.txt");
  ASSERT_EQ(lines.size(), 2u) << testutil::ReadFile(run.dir / "result.txt");
  std::vector<std::string> c = Columns(lines[1]);
  ASSERT_EQ(c.size(), 28u);
  // Preparation of q1: the marker and 204.0867 are oxonium ions and leave; the
  // rest, scaled to the strongest (200 at 80), are 1, 0.25, 0.5, 0.75: four top
  // peaks (all above 5 %). Square roots and unit length give sqrt(x / 2.5):
  // 200 -> sqrt(.4), 1850 -> sqrt(.3), 1100 -> sqrt(.2), 700 -> sqrt(.1).
  // Candidates: both entries (mass difference 1500 = glycan 5-4-0-0-0; the NeuAc
  // glycan would need the marker, 1200 is too far).
  // Matching against "1" with shift 1500 and fragment charges up to 2: 200 takes
  // b2 directly, 1850 takes y3 shifted (350 + 1500), 1100 takes Y0 directly,
  // 700 finds nothing.
  // DPS = ((.5 + sqrt .4) / 2)^2 + ((.5 + sqrt .3) / 2)^2 + ((.5 + sqrt .2) / 2)^2 = 0.81935
  // PS: N = 4, k0 = 3, p = 4 * 2 * 0.05 / 2000 = 0.0002,
  //     P = 4 p^3 (1 - p) + p^4, PS = sqrt(-ln P) = 4.91584; score = 4.02778.
  // The decoy matches nothing (score 0). Site: the one J, residue 4, motif NXT.
  const std::vector<std::string> expected = {
      "q1", "1", "2500.00000", "1000.00000", "2", "PEPJTIDE", "-", "1500.00000", "1500.00000",
      "5-4-0-0-0", "4", "NXT", "2", "1", "0.20000", "2", "0.70000", "0.81935", "4.91584",
      "4.02778", "T", "b2+;y3+;Y0+;", "b2+;y3+;Y0+;", "P1", "K", "AV", "3", "0.000"};
  EXPECT_EQ(c, expected);
}

TEST(SearchEndToEnd, ProgressLinesOfFullAndEmptyDatasets) {
  Installed run;
  std::string hundred, rejected;
  for (int i = 0; i < 100; ++i) {
    char title[16];
    std::snprintf(title, sizeof title, "s%03d", i);
    hundred += MgfBlock(title, "700.0", {"138.0550 100", "500.0000 50"});
  }
  for (int i = 0; i < 5; ++i)
    rejected += MgfBlock("r" + std::to_string(i), "700.0", {"138.0550 30", "500.0000 100"});
  WriteFile(run.dir / "hundred.mgf", hundred);
  WriteFile(run.dir / "rejected.mgf", rejected);
  auto result = run.Start({run.dir / "hundred.mgf", run.dir / "rejected.mgf"},
                          run.dir / "result.txt");
  ASSERT_EQ(result.exitCode, 0) << result.output;
  EXPECT_NE(result.output.find("\tSearching 2 query datasets: \n"), std::string::npos);
  EXPECT_NE(result.output.find("\t\tSpectra: 100/100\n\t\tSpectra: 100/100\n    --- Complete!\n\n"
                               "\t\tDatasets_2: "),
            std::string::npos)
      << result.output;
  EXPECT_NE(result.output.find("\t\tSpectra: 0/5\n    --- Complete!\n\n"), std::string::npos);
  EXPECT_EQ(Occurrences(result.output, "Spectra: "), 3u);
  // No hits: the FDR stage leaves its header alone.
  EXPECT_EQ(testutil::ReadLines(run.dir / "result.txt").size(), 1u);
}

TEST(SearchEndToEnd, NoDatasetsMissingQueryFileAndAnUnwritableResultFile) {
  Installed run;
  auto result = run.Start({}, run.dir / "result.txt");
  ASSERT_EQ(result.exitCode, 0) << result.output;
  EXPECT_NE(result.output.find("\tSearching 0 query datasets: \n"), std::string::npos);
  EXPECT_EQ(testutil::ReadLines(run.dir / "result.txt").size(), 1u);

  // A query file that can't be opened is reported by the reader and searched as empty.
  auto absent = run.Start({run.dir / "absent.mgf"}, run.dir / "result.txt");
  ASSERT_EQ(absent.exitCode, 0) << absent.output;
  EXPECT_NE(absent.output.find("\t\tSpectra: 0/0\n    --- Complete!\n"), std::string::npos)
      << absent.output;

  const std::string bad = run.dir / "missing-folder/result.txt";
  auto failed = run.Start({}, bad);
  EXPECT_EQ(failed.exitCode, 1);
  EXPECT_NE(failed.output.find("Output search result error: failed to open file " + bad + "\n"),
            std::string::npos)
      << failed.output;
  EXPECT_EQ(failed.output.find(">> Searching:"), std::string::npos);
}

TEST(SearchEndToEnd, DamagedQueriesAndLibraryDoNotStopTheRun) {
  Installed run;
  // The hit of q1 at charges 0 and 9, a broken peak line, a block without
  // peaks, binary noise, and a file that ends inside a block.
  std::string queries =
      MgfBlock("a0", "2500.0", {"138.0550 100", "200.0000 80", "1850.0000 60"}) +
      MgfBlock("a9", "2500.0", {"138.0550 100", "200.0000 80", "1850.0000 60"}) +
      MgfBlock("b", "1250.50363823506", {"138.0550 100", "200.0000 abc", "x y", "1850.0 60"}) +
      MgfBlock("c", "1250.50363823506", {});
  for (auto& block : {std::string("a0"), std::string("a9")}) {
    const std::string from = "TITLE=" + block + "\nCHARGE=2+";
    const std::string to = "TITLE=" + block + "\nCHARGE=" + (block == "a0" ? "0" : "9") + "+";
    queries.replace(queries.find(from), from.size(), to);
  }
  for (int i = 0; i < 300; ++i) queries += static_cast<char>((i * 131) % 256);
  queries += "\nBEGIN IONS\nTITLE=d\nCHARGE=2+\nPEPMASS=1250.5\n138.0550 100\n200.0 5";
  WriteFile(run.dir / "bad.mgf", queries);
  WriteFile(run.dir / "lib.quolib", Library() + "ID=3\nSpectrumName=cut\nSequence=PEP\nPeaks=9\n1.0 x");
  auto result = run.Start({run.dir / "bad.mgf"}, run.dir / "result.txt");
  ASSERT_EQ(result.exitCode, 0) << result.output;
  EXPECT_NE(result.output.find("Finish!"), std::string::npos);
  std::vector<std::string> lines = testutil::ReadLines(run.dir / "result.txt");
  ASSERT_GE(lines.size(), 1u);
  for (std::size_t i = 1; i < lines.size(); ++i) EXPECT_EQ(Columns(lines[i]).size(), 28u);
}
