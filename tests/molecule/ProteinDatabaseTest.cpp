#include <gtest/gtest.h>

#include <map>

#include "common/TestUtil.h"
#include "molecule/ProteinDatabase.h"

namespace {

// Loads `path`: "result|printed text|accession=sequence;...".
std::string Load(const std::string& path) {
  CProteinDatabase db;
  db.path = path;
  testing::internal::CaptureStdout();
  std::string text = std::to_string(db.Load()) + "|";
  text += testing::internal::GetCapturedStdout() + "|";
  for (const auto& [accession, sequence] : db.proteins) text += accession + "=" + sequence + ";";
  return text;
}

}  // namespace

TEST(ProteinDatabase, LoadsByCharacterRulesAndReportsFaults) {
  testutil::TempDir dir;
  auto load = [&dir](const std::string& content) {
    testutil::WriteFile(dir / "db.fasta", content);
    return Load(dir / "db.fasta");
  };
  // Byte-order mark, CRLF, a header without a blank, lower case, digits, '*'
  // and '-' dropped, empty lines inside, the later duplicate stays.
  EXPECT_EQ(load("\xEF\xBB\xBF>sp|P1|ONE first\r\nMKAAN gtk*-12\r\n\r\nGTKLL\r\n>P2\nMNGSKR\n"
                 ">P3 old\nAAAA\n>P3 new <&\x01\nCCCC\n\n"),
            "1||P2=MNGSKR;P3=CCCC;sp|P1|ONE=MKAANGTKLL;");
  EXPECT_EQ(load("\n>P1\nMK\n"),  // an empty line in front of the first header
            "0|FASTA Format error!One Protein Entry must start with char '>'!\n"
            "Error: Fasta file format is wrong!\n|");
  EXPECT_EQ(load("MKAANGTK\n"), "1||");  // no header counted, so no entry read: no message
  EXPECT_EQ(load(""), "1||");
  EXPECT_EQ(Load(""), "0|DBPath empty!\nCan not open Fasta file!\n|");
  for (const std::string& path : {dir / "none.fasta", dir.path().string()})
    EXPECT_EQ(Load(path), "0|Can't find fasta file!\nCan not open Fasta file!\n|");
}

TEST(ProteinDatabase, FindPeptideFlanksAndMessages) {
  CProteinDatabase db;
  db.proteins["P1"] = "MKAANGTKLLNVSR";
  // "found position before after|printed text"
  auto find = [&db](const std::string& accession, const std::string& peptide) {
    int32_t position = 0;
    std::string before, after;
    testing::internal::CaptureStdout();
    std::string text = std::to_string(db.FindPeptide(accession, peptide, position, before, after));
    text += " " + std::to_string(position) + " " + before + " " + after + "|";
    return text + testing::internal::GetCapturedStdout();
  };
  EXPECT_EQ(find("P1", "MKAAN"), "1 1 - GT|");  // at the N-terminus
  EXPECT_EQ(find("P1", "LLNVS"), "1 9 K R-|");  // one residue short of the end
  EXPECT_EQ(find("P1", "NVSR"), "1 11 L --|");  // at the C-terminus
  EXPECT_EQ(find("P1", "K"), "1 2 M AA|");      // the first occurrence
  EXPECT_EQ(find("P1", ""), "0 0  |");
  EXPECT_EQ(find("P9", "MK"), "0 0  |There is no protein in database owing the AC of P9\n");
  EXPECT_EQ(find("P1", "WW"), "0 0  |The protein of P1 does not have the peptide WW\n");
}

TEST(ProteinDatabase, RealFastaFiles) {
  SKIP_WITHOUT_REALDATA();
  const std::pair<const char*, const char*> cases[] = {  // file, a piece of Load's summary
      {"crux-toolkit/small-yeast.fasta", "1||"}, {"OpenMS/FileInfo_17_input.fasta", "1||"},
      {"OpenMS/PeptideIndexer_1.fasta", ";BSA2=EWATYTCVLGFHVYVPVR;"},
      {"MetaMorpheus/GlycoProteinFASTA_7proteins.fasta", "1||"},
      {"OpenMS/FASTAFile_test.fasta", "0|FASTA Format error!"},  // '#' lines before the header
      {"pyteomics/test.fasta", "0|FASTA Format error!"}};         // ';' comments
  for (const auto& [file, piece] : cases) {
    const std::string path = testutil::RealData(file);
    if (!testutil::FileExists(path)) continue;
    const std::string summary = Load(path);
    EXPECT_NE(summary.find(piece), std::string::npos) << file << "\n" << summary;
    // Each sequence, between '=' and ';', holds upper-case residues only.
    for (std::size_t at = summary.find('=', summary.rfind('|')); at != std::string::npos;
         at = summary.find('=', at + 1))
      EXPECT_EQ(summary.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ", at + 1),
                summary.find(';', at)) << file;
  }
}
