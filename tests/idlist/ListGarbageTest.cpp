// Damaged input: binary garbage, overlong lines and truncated files end each
// reader in order (records or a defined exit), never in a crash or a hang.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <iostream>
#include <random>

#include "ListTestSetup.h"
#include "common/TestUtil.h"
#include "molecule/ProteinDatabase.h"
#include "run/Process.h"

TEST(ListGarbage, ReadersSurviveNoise) {
  listtest::UseDefaultSettings();
  testutil::TempDir dir;
  const std::string path = dir / "noise.txt";
  testutil::WriteFile(dir / "db.fasta", ">P1\nAANGTK\n");
  CParam::GetInstance().construction.protein_database = dir / "db.fasta";
  // Deterministic noise with many line ends, tabs, commas and list keywords.
  const char* words[] = {"\n", "\t", ",", "\r\n", "*", ">", "(", ")", ";", ".", "\"", "1,", "null",
                         "Variable modifications", "Identifier", "Protein hits", "NGT",
                         "pep_seq,pep_var_mod_pos,pep_scan_title\n", "3,N(Deamidated[N]);"};
  for (unsigned seed = 1; seed <= 12; ++seed) {
    std::mt19937 random(seed);
    std::string text;
    while (text.size() < 20000 + seed * 1000)
      text += random() % 3 == 0 ? std::string(words[random() % std::size(words)])
                                : std::string(1, static_cast<char>(random() % 256));
    testutil::WriteFile(path, text);
    testing::internal::CaptureStdout();
    for (int format : {0, 4}) listtest::ReadList(format, path);
    CProteinDatabase db;
    db.path = path;
    db.Load();
    testing::internal::GetCapturedStdout();
    // tab-txt and Lanvek end the run on some faults by design.
    for (int format : {2, 7}) {
      EXPECT_EXIT(
          {
            std::cout.flush();
            ::dup2(::open("/dev/null", O_WRONLY), STDOUT_FILENO);
            listtest::ReadList(format, path);
            ExitProgram(0);
          },
          [](int status) { return WIFEXITED(status) && WEXITSTATUS(status) <= 1; }, "")
          << "format " << format << " seed " << seed;
    }
  }
}

TEST(ListGarbage, OverlongLinesEndTheList) {
  listtest::UseDefaultSettings();
  testutil::TempDir dir;
  const std::string good = "a.1.1.2.dta\tAANGTK\t3,Deamidated[N];\t2\n";
  // The first 8191 characters of an overlong line are a line; the list ends behind it.
  testutil::WriteFile(dir / "list.txt", "heading\n" + good + "b.1.1.2.dta\tAANGTK\t3,Deamidated[N];\t2 " +
                                            std::string(9000, 'x') + "\n" + good);
  auto list = listtest::ReadList(0, dir / "list.txt");
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[1].spectrumName, "b.1.1.2.dta");

  // A FASTA line has no such limit.
  const std::string protein = std::string(20000, 'A') + "NGTK";
  testutil::WriteFile(dir / "db.fasta", ">P1\n" + protein + "\n");
  CProteinDatabase db;
  db.path = dir / "db.fasta";
  EXPECT_TRUE(db.Load());
  EXPECT_EQ(db.proteins["P1"], protein);
}
