// Damaged lists: a cut keeps every whole record before it; an overlong line
// ends the list behind it.
#include <gtest/gtest.h>

#include "ListTestSetup.h"
#include "common/TestUtil.h"
#include "molecule/ProteinDatabase.h"

TEST(ListGarbage, CutsKeepTheWholeRecordsBeforeThem) {
  listtest::UseDefaultSettings();
  struct Case {
    int format;
    std::string head;
    std::vector<std::string> records;
  } cases[] = {
      // Each with a line that is reported and skipped.
      {0, "Spectrum Name\tSequencet\tModification\tCharge\n",
       {"a.1.1.2.dta\tAANGTK\t3,Deamidated[N];\t2\r\n", "short.2.2.2.dta\tAANGTK\n",
        "b.2.2.3.dta , LLNVSR , 3,Deamidated[N]; , 3\n"}},
      {7, "Name\tCharge\tSequence\tModifications\n",
       {"a.1.1.2.dta\t2\tAANGTK\t3,N(Deamidated[N]);\r\n", "b.2.2.3.dta\t3\tLLNVSR\t3,N(Deamidated[N]);\n",
        "empty.1.1.2.dta\t\tAANGTK\t3,N(Deamidated[N]);\n",
        "c.3.3.2.dta\t2\tAANGTK\t1,A(Acetyl[N-term]);3,N(Deamidated[N]);\n"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.format);
    testutil::ExpectCutsKeepWholeRecords(
        [&](const std::string& path, std::string& printed) {
          return listtest::Summaries(listtest::ReadListCaptured(c.format, path, printed));
        },
        c.head, c.records);
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
