#include <gtest/gtest.h>

#include "common/TestUtil.h"
#include "molecule/ProteinDatabase.h"

using testutil::TempDir;
using testutil::WriteFile;

namespace {

bool LoadFile(CProteinDatabase& db, const std::string& path, std::string& output) {
  db.path = path;
  testing::internal::CaptureStdout();
  bool loaded = db.Load();
  output = testing::internal::GetCapturedStdout();
  return loaded;
}

}  // namespace

TEST(ProteinDatabase, ReadsEntriesByCharacterRules) {
  TempDir dir;
  const std::string path = dir / "db.fasta";
  WriteFile(path,
            "\xEF\xBB\xBF>sp|P1|ONE first protein\r\n"
            "MKAAN gtk*-12\r\n"
            "\r\n"
            "GTKLL\r\n"
            ">P2\n"
            "MNGSKR\n"
            ">P3 old\n"
            "AAAA\n"
            ">P3 new <&\x01\n"
            "CCCC\n"
            "\n");
  CProteinDatabase db;
  std::string out;
  EXPECT_TRUE(LoadFile(db, path, out));
  EXPECT_EQ(out, "");
  ASSERT_EQ(db.proteins.size(), 3u);
  EXPECT_EQ(db.proteins["sp|P1|ONE"], "MKAANGTKLL");  // lower case, digits, '*', '-' dropped
  EXPECT_EQ(db.proteins["P2"], "MNGSKR");               // header without a blank
  EXPECT_EQ(db.proteins["P3"], "CCCC");                 // the later duplicate stays
}

TEST(ProteinDatabase, FindPeptideFlanksAndMessages) {
  CProteinDatabase db;
  db.proteins["P1"] = "MKAANGTKLLNVSR";
  int32_t position = 0;
  std::string before, after;
  EXPECT_TRUE(db.FindPeptide("P1", "MKAAN", position, before, after));
  EXPECT_EQ(position, 1);
  EXPECT_EQ(before, "-");
  EXPECT_EQ(after, "GT");
  EXPECT_TRUE(db.FindPeptide("P1", "LLNVS", position, before, after));
  EXPECT_EQ(position, 9);
  EXPECT_EQ(before, "K");
  EXPECT_EQ(after, "R-");
  EXPECT_TRUE(db.FindPeptide("P1", "NVSR", position, before, after));
  EXPECT_EQ(after, "--");
  EXPECT_TRUE(db.FindPeptide("P1", "K", position, before, after));
  EXPECT_EQ(position, 2);  // the first occurrence

  testing::internal::CaptureStdout();
  EXPECT_FALSE(db.FindPeptide("P1", "", position, before, after));
  EXPECT_FALSE(db.FindPeptide("P9", "MK", position, before, after));
  EXPECT_FALSE(db.FindPeptide("P1", "WW", position, before, after));
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "There is no protein in database owing the AC of P9\n"
            "The protein of P1 does not have the peptide WW\n");
}

TEST(ProteinDatabase, LoadFailures) {
  TempDir dir;
  CProteinDatabase db;
  std::string out;
  EXPECT_FALSE(LoadFile(db, "", out));
  EXPECT_EQ(out, "DBPath empty!\nCan not open Fasta file!\n");
  EXPECT_FALSE(LoadFile(db, dir / "none.fasta", out));
  EXPECT_EQ(out, "Can't find fasta file!\nCan not open Fasta file!\n");
  EXPECT_FALSE(LoadFile(db, dir.path().string(), out));  // a directory is no file
  EXPECT_EQ(out, "Can't find fasta file!\nCan not open Fasta file!\n");

  // Text in front of the first header breaks the format; entries before a
  // fault stay.
  WriteFile(dir / "a.fasta", "\n>P1\nMK\n");
  EXPECT_FALSE(LoadFile(db, dir / "a.fasta", out));
  EXPECT_EQ(out,
            "FASTA Format error!One Protein Entry must start with char '>'!\n"
            "Error: Fasta file format is wrong!\n");
  EXPECT_TRUE(db.proteins.empty());

  // Sequence lines without any header: no entry is counted, so none is read.
  CProteinDatabase plain;
  WriteFile(dir / "b.fasta", "MKAANGTK\n");
  EXPECT_TRUE(LoadFile(plain, dir / "b.fasta", out));
  EXPECT_EQ(out, "");
  EXPECT_TRUE(plain.proteins.empty());
  CProteinDatabase empty;
  WriteFile(dir / "c.fasta", "");
  EXPECT_TRUE(LoadFile(empty, dir / "c.fasta", out));
  EXPECT_TRUE(empty.proteins.empty());
}

TEST(ProteinDatabase, RealFastaFiles) {
  struct Case {
    const char* file;
    bool loads;
    std::size_t proteins;
    const char* accession;
    const char* prefix;
  } cases[] = {
      {"crux-toolkit/small-yeast.fasta", true, 0, nullptr, nullptr},
      {"OpenMS/FileInfo_17_input.fasta", true, 0, nullptr, nullptr},
      {"OpenMS/PeptideIndexer_1.fasta", true, 0, "BSA2", "EWATYTCVLGFHVYVPVR"},
      {"OpenMS/FASTAFile_test.fasta", false, 0, nullptr, nullptr},
      {"pyteomics/test.fasta", false, 0, nullptr, nullptr},
      {"MetaMorpheus/GlycoProteinFASTA_7proteins.fasta", true, 8, nullptr, nullptr},
  };
  for (const Case& c : cases) {
    const std::string path = testutil::RealData(c.file);
    if (!testutil::FileExists(path)) continue;
    CProteinDatabase db;
    std::string out;
    EXPECT_EQ(LoadFile(db, path, out), c.loads) << c.file << "\n" << out;
    if (c.proteins) {
      EXPECT_EQ(db.proteins.size(), c.proteins) << c.file;
    }
    if (c.accession) {
      EXPECT_EQ(db.proteins[c.accession], c.prefix) << c.file;
    }
    for (const auto& [accession, sequence] : db.proteins)
      for (char r : sequence) ASSERT_TRUE(r >= 'A' && r <= 'Z') << c.file << " " << accession;
  }
}
