// Exchange formats through the binary on the generated demo run: export to
// mzIdentML and pepXML, library conversion to MSP and back, and the checks by
// OpenMS (package topp), the reader no one here wrote, where it is installed.
#include <gtest/gtest.h>

#include <cstdlib>
#include <regex>
#include <set>
#include <string>

#include "common/TestUtil.h"

namespace {

using testutil::FileExists;
using testutil::Fields;
using testutil::ReadFile;
using testutil::ReadLines;
using testutil::RunProgram;
using testutil::RunResult;
using testutil::WriteFile;

bool HaveOpenMs() {
  return std::system("command -v XMLValidator IDFileConverter SpecLibSearcher >/dev/null 2>&1") == 0;
}
const char* const kNoOpenMs = "OpenMS (package topp) is not installed: third-party checks skipped";

// The peptides (N for the site) of a result file's lines, in order.
std::vector<std::string> ResultPeptides(const std::string& path) {
  std::vector<std::string> peptides;
  const std::vector<std::string> lines = ReadLines(path);
  for (std::size_t i = 1; i < lines.size(); ++i) {
    std::string sequence = Fields(lines[i]).at(5);
    for (char& c : sequence) c = c == 'J' ? 'N' : c;
    peptides.push_back(sequence);
  }
  return peptides;
}

// Peptide sequences of an idXML file in order, the modifications in (...) or
// [...] (glycans nest parentheses) and terminal dots taken out.
std::vector<std::string> IdXmlPeptides(const std::string& path) {
  const std::string text = ReadFile(path);
  std::vector<std::string> peptides;
  static const std::regex hit("<PeptideHit[^>]* sequence=\"([^\"]+)\"");
  for (auto it = std::sregex_iterator(text.begin(), text.end(), hit); it != std::sregex_iterator(); ++it) {
    std::string plain;
    int depth = 0;
    for (char c : (*it)[1].str()) {
      depth += (c == '(' || c == '[') - (c == ')' || c == ']');
      if (depth == 0 && c >= 'A' && c <= 'Z') plain += c;
    }
    peptides.push_back(plain);
  }
  return peptides;
}

class ExchangeFormats : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    dir_ = new testutil::TempDir;
    ASSERT_EQ(testutil::GenerateDemo(dir_->path().string()).exitCode, 0);
    std::string conf = ReadFile(Path("demo.conf"));
    conf.replace(conf.find("[search]"), 8, "[search]\nglycopeptide_fdr = yes");
    WriteFile(Path("demo.conf"), conf);
    const RunResult run = Quorin({"run", Path("demo.conf")});
    ASSERT_EQ(run.exitCode, 0) << run.output;
  }
  static void TearDownTestSuite() {
    delete dir_;
    dir_ = nullptr;
  }
  static std::string Path(const std::string& name) { return (*dir_) / name; }
  static RunResult Quorin(const std::vector<std::string>& args) {
    return RunProgram(QUORIN_BINARY, "", dir_->path().string(), args);
  }

  static testutil::TempDir* dir_;
};
testutil::TempDir* ExchangeFormats::dir_ = nullptr;

TEST_F(ExchangeFormats, ExportBeforeTheRunFinishedSaysSoAndOutputsOverInputsAreRefused) {
  std::string conf = ReadFile(Path("demo.conf"));
  conf.replace(conf.find("demo_result.txt"), 15, "never_run.txt");
  WriteFile(Path("unfinished.conf"), conf);
  const RunResult early = Quorin({"export", Path("unfinished.conf"), "--to", "mzid"});
  EXPECT_EQ(early.exitCode, 1);
  EXPECT_NE(early.output.find("has not finished"), std::string::npos) << early.output;
  EXPECT_FALSE(FileExists(Path("never_run.mzid")));

  const std::string result = ReadFile(Path("demo_result.txt"));
  const RunResult over = Quorin({"export", Path("demo.conf"), "--to", "pepxml", "--out", Path("demo_result.txt")});
  EXPECT_EQ(over.exitCode, 1);
  EXPECT_NE(over.output.find("would overwrite"), std::string::npos) << over.output;
  EXPECT_EQ(ReadFile(Path("demo_result.txt")), result);
}

TEST_F(ExchangeFormats, MzIdentMlIsValidAndReadAsOneIdentificationPerResultLine) {
  const RunResult exported = Quorin({"export", Path("demo.conf"), "--to", "mzid"});
  ASSERT_EQ(exported.exitCode, 0) << exported.output;
  const std::string mzid = ReadFile(Path("demo_result.mzid"));
  const std::vector<std::string> peptides = ResultPeptides(Path("demo_result.txt"));
  // Glycan composition written out, q-values of the run carried along.
  EXPECT_NE(mzid.find("name=\"glycan composition\" value=\"HexNAc("), std::string::npos);
  EXPECT_NE(mzid.find("name=\"GlycopeptideQ\""), std::string::npos);
  EXPECT_NE(mzid.find("spectrumID=\"index="), std::string::npos);
  if (!HaveOpenMs()) GTEST_SKIP() << kNoOpenMs;
  const RunResult valid = RunProgram("XMLValidator", "", ".",
      {"-in", Path("demo_result.mzid"), "-schema", "/usr/share/openms/SCHEMAS/mzIdentML1.1.0.xsd"});
  EXPECT_NE(valid.output.find("Success: the file is valid!"), std::string::npos) << valid.output;
  ASSERT_EQ(RunProgram("IDFileConverter", "", ".", {"-in", Path("demo_result.mzid"), "-out", Path("mzid.idXML")}).exitCode, 0);
  EXPECT_EQ(IdXmlPeptides(Path("mzid.idXML")), peptides);
}

TEST_F(ExchangeFormats, PepXmlIsReadAsOneIdentificationPerResultLine) {
  const RunResult exported = Quorin({"export", Path("demo.conf"), "--to", "pepxml"});
  ASSERT_EQ(exported.exitCode, 0) << exported.output;
  const std::string pepxml = ReadFile(Path("demo_result.pep.xml"));
  EXPECT_NE(pepxml.find("protein=\"DECOY_"), std::string::npos);  // decoys as the TPP marks them
  EXPECT_NE(pepxml.find("<search_score name=\"glycan_composition\" value=\"HexNAc("), std::string::npos);
  if (!HaveOpenMs()) GTEST_SKIP() << kNoOpenMs;
  ASSERT_EQ(RunProgram("IDFileConverter", "", ".", {"-in", Path("demo_result.pep.xml"), "-out", Path("pepxml.idXML")}).exitCode, 0);
  EXPECT_EQ(IdXmlPeptides(Path("pepxml.idXML")), ResultPeptides(Path("demo_result.txt")));
}

TEST_F(ExchangeFormats, LibraryThroughMspSearchesToTheSameResultFile) {
  ASSERT_EQ(Quorin({"convert-library", Path("demo.quolib"), Path("demo.msp")}).exitCode, 0);
  const RunResult back = Quorin({"convert-library", Path("demo.msp"), Path("back.quolib"), "--config", Path("demo.conf")});
  ASSERT_EQ(back.exitCode, 0) << back.output;
  EXPECT_EQ(ReadFile(Path("back.quolib")), ReadFile(Path("demo.quolib")));

  std::string conf = ReadFile(Path("demo.conf"));
  conf.replace(conf.find("construction = yes"), 18, "construction = no");
  conf.replace(conf.find("input_speclib_filename = ") + 25, Path("demo.quolib").size(), Path("back.quolib"));
  conf.replace(conf.find("demo_result.txt"), 15, "back_result.txt");
  WriteFile(Path("back.conf"), conf);
  ASSERT_EQ(Quorin({"run", Path("back.conf")}).exitCode, 0);
  EXPECT_EQ(ReadFile(Path("back_result.txt")), ReadFile(Path("demo_result.txt")));
}

// Records of another origin are spectra: annotated and given decoys as the
// construction stage does; faulty records are named and the rest converts.
TEST_F(ExchangeFormats, ForeignMspBecomesEntriesAndFaultyRecordsAreNamedAndSkipped) {
  const std::string good =
      "Name: EYPNATK/2\nMW: 836.39\nComment: Spec=Consensus Mods=1/3,N,Deamidated Parent=419.20\n"
      "Num peaks: 4\n147.1128\t500\t\"y1/0.0\"\n248.1605\t800\n345.2132\t300\n460.2402\t999\n\n"
      "Name: WFANVTEK/2\nComment: Mods=1(3,N,Deamidated)\nNum peaks: 2\n147.11\t10\n276.15\t20\n\n";
  const std::string text =
      good +
      "Name: NOPEAKS/2\nComment: Mods=0\n100.0\t1\n\n"
      "Name: DISORDER/2\nComment: Mods=0\nNum peaks: 2\n300.0\t1\n200.0\t1\n\n"
      "Name: AANGTK/2\nComment: Mods=1/2,N,Glycated\nNum peaks: 1\n100.0\t1\n\n"
      "Name: AANGTKPLAIN/2\nComment: Mods=0\nNum peaks: 1\n100.0\t1\n\n"
      "Name: CUTNGSK/2\nComment: Mods=1/3,N,Deamidated\nNum peaks: 3\n100.0\t1\n";
  WriteFile(Path("foreign.msp"), text);
  const RunResult converted =
      Quorin({"convert-library", Path("foreign.msp"), Path("foreign.quolib"), "--config", Path("demo.conf")});
  EXPECT_EQ(converted.exitCode, 3) << converted.output;
  for (const char* named : {"record 3 (NOPEAKS/2) has peak lines but no Num peaks",
                            "record 4 (DISORDER/2) has peaks out of m/z order",
                            "record 5 (AANGTK/2) has the unknown modification Glycated",
                            "record 7 (CUTNGSK/2) ends after 1 of its 3 peaks"})
    EXPECT_NE(converted.output.find(named), std::string::npos) << named << "\n" << converted.output;
  EXPECT_EQ(ReadFile(Path("foreign.msp")), text);
  const std::string library = ReadFile(Path("foreign.quolib"));
  EXPECT_NE(library.find("SpectrumName=1\nSequence=EYPJATK\nModifications=-\n"), std::string::npos) << library;
  EXPECT_NE(library.find("SpectrumName=Decoy_1\n"), std::string::npos);
  EXPECT_NE(library.find("SpectrumName=2\nSequence=WFAJVTEK\n"), std::string::npos);
  EXPECT_NE(library.find("N Glycan Motif=4:NXT\n"), std::string::npos);

  WriteFile(Path("binary.msp"), std::string("Name: X/2\n\0\1\2\3", 14));
  const RunResult binary =
      Quorin({"convert-library", Path("binary.msp"), Path("binary.quolib"), "--config", Path("demo.conf")});
  EXPECT_EQ(binary.exitCode, 3);
  EXPECT_NE(binary.output.find("holds binary data"), std::string::npos) << binary.output;
}

TEST_F(ExchangeFormats, SpecLibSearcherFindsOurPeptidesInTheExportedMsp) {
  if (!HaveOpenMs() || std::system("command -v msconvert >/dev/null 2>&1") != 0)
    GTEST_SKIP() << kNoOpenMs << " (or msconvert missing)";
  ASSERT_EQ(Quorin({"convert-library", Path("demo.quolib"), Path("search.msp")}).exitCode, 0);
  // OpenMS 2.6 reads a modification at position 0 as N-terminal and one on the
  // last residue as C-terminal and stops on both; those records are left out.
  std::string readable;
  std::set<std::string> peptides;
  const std::string msp = ReadFile(Path("search.msp"));
  static const std::regex record("Name: ([A-Z]+)/[^]*?\\n\\n");
  static const std::regex mods("Mods=[0-9]+((/[0-9]+,[A-Z],[^ /]+)*)");
  for (auto it = std::sregex_iterator(msp.begin(), msp.end(), record); it != std::sregex_iterator(); ++it) {
    const std::string text = (*it)[0].str(), sequence = (*it)[1].str();
    std::smatch m;
    std::regex_search(text, m, mods);
    const std::string list = m[1].str();
    if (list.find("/0,") != std::string::npos ||
        list.find("/" + std::to_string(sequence.size() - 1) + ",") != std::string::npos)
      continue;
    readable += text;
    if (text.find("Decoy=0") != std::string::npos) peptides.insert(sequence);
  }
  WriteFile(Path("readable.msp"), readable);
  ASSERT_EQ(RunProgram("msconvert", "", dir_->path().string(), {"lib_run1.mgf", "--mzML", "-o", "."}).exitCode, 0);
  const RunResult searched = RunProgram("SpecLibSearcher", "", ".",
      {"-in", Path("lib_run1.mzML"), "-lib", Path("readable.msp"), "-out", Path("speclib.idXML"),
       "-precursor:mass_tolerance", "10", "-precursor:mass_tolerance_unit", "ppm", "-report:top_hits", "1"});
  ASSERT_EQ(searched.exitCode, 0) << searched.output;
  const std::vector<std::string> found = IdXmlPeptides(Path("speclib.idXML"));
  EXPECT_GT(found.size(), 100u);
  for (const std::string& peptide : found) EXPECT_TRUE(peptides.count(peptide)) << peptide;
}

}  // namespace
