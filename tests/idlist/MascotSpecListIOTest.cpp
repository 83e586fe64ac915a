#include <gtest/gtest.h>

#include <set>

#include "ListTestSetup.h"
#include "common/TestUtil.h"
#include "idlist/MascotSpecListIO.h"

using testutil::TempDir;
using testutil::WriteFile;

namespace {

constexpr int kMascot = 4;

const std::string kHead =
    "Header,------\n"
    "\n"
    "Fixed modifications,------\n"
    "Identifier,Name,Delta\n"
    "1,Carbamidomethyl (C),57.021464\n"
    "\n"
    "Variable modifications,------\n"
    "\n"
    "Identifier,Name,Delta,Neutral loss(es)\n"
    "1,Oxidation (M),15.994915\n"
    "\"2\",\"Deamidated (N)\",0.984016\n"
    "\n"
    "Search Parameters,------\n"
    "Protein hits,------\n"
    "\n"
    "prot_hit_num,prot_acc,pep_seq,pep_var_mod_pos,pep_scan_title\n";

std::string Row(const std::string& sequence, const std::string& positions,
                const std::string& title) {
  return "1,\"sp|P1\"," + sequence + "," + positions + ",\"" + title + "\"\n";
}

}  // namespace

TEST(MascotSpecListIO, HelperFunctions) {
  std::string text = "a((b(";
  ReplaceAll(text, "(", "[");
  EXPECT_EQ(text, "a[[b[");
  text = "aaa";
  ReplaceAll(text, "aa", "a");  // replaced from the front until none is left
  EXPECT_EQ(text, "a");

  std::vector<std::string> fields;
  SplitCsvRow("1,\"a, b\",,x\"y\",", fields);
  EXPECT_EQ(fields, (std::vector<std::string>{"1", "a", " b", "", "xy", ""}));
  SplitCsvRow("", fields);
  EXPECT_EQ(fields, (std::vector<std::string>{""}));

  std::vector<std::string> names(10);
  names[1] = "Oxidation[M]";
  names[2] = "Deamidated[NQ]";
  EXPECT_EQ(DecodeVarModPos(names, "0.0010002000.0"), "3,Oxidation[M];7,Deamidated[NQ];");
  EXPECT_EQ(DecodeVarModPos(names, ""), "-");
  EXPECT_EQ(DecodeVarModPos(names, "0.000000.0"), "");
  EXPECT_EQ(DecodeVarModPos(names, "1.0A0.2"), "0,Oxidation[M];");  // C-terminal digit unread
  EXPECT_EQ(DecodeVarModPos(names, "0.05.0"), "2,;");               // identifier without name
}

TEST(MascotSpecListIO, ReadsPeptideRows) {
  listtest::UseDefaultSettings();
  TempDir dir;
  const std::string path = dir / "mascot.csv";
  WriteFile(path, kHead + Row("AANGTK", "0.002000.0", "File.10.10.2.dta scan 10") +
                      Row("MANGSK", "0.102000.0", "File.11.11.3.dta") +
                      Row("AANGTK", "0.002000.0", "File.12.12.3") +
                      Row("AANGTK", "0.000000.0", "File.13.13.2.dta") +  // no mark
                      Row("AANGTK", "0.002000.0", "NoStops") +
                      "\n"
                      "9,short\n");
  testing::internal::CaptureStdout();
  auto list = listtest::ReadList(kMascot, path);
  std::string out = testing::internal::GetCapturedStdout();
  EXPECT_EQ(out, "[Warning]: 2 row(s) of \"" + path +
                     "\" are shorter than the heading row and were skipped!\n");
  ASSERT_EQ(list.size(), 4u);
  EXPECT_EQ(list[0].spectrumName, "File.10.10.2.dta");
  EXPECT_EQ(list[0].charge, 2);
  EXPECT_EQ(list[0].sequence, "AAJGTK");
  EXPECT_EQ(list[0].modifications, (std::vector<CModification>{{3, "Deamidated[N]"}}));
  EXPECT_EQ(list[1].spectrumName, "File.11.11.3.dta");
  EXPECT_EQ(list[1].charge, 3);
  EXPECT_EQ(list[1].modifications,
            (std::vector<CModification>{{1, "Oxidation[M]"}, {3, "Deamidated[N]"}}));
  EXPECT_EQ(list[2].spectrumName, "File.12.12.3");
  EXPECT_EQ(list[2].charge, 12);  // the token before the last full stop
  EXPECT_EQ(list[3].spectrumName, "NoStops");
  EXPECT_EQ(list[3].charge, 0);  // kept, unlike a Lanvek spectrum
}

TEST(MascotSpecListIO, LastRowAndTitleCharge) {
  listtest::UseDefaultSettings();
  TempDir dir;
  const std::string path = dir / "mascot.csv";
  std::string last = Row("AANGTK", "0.002000.0", "File.1.1.3");
  last.pop_back();  // the row at which the end of the file is met isn't taken
  WriteFile(path, kHead + Row("AANGTK", "0.002000.0", "File.1.1.3 more words") + last);
  auto list = listtest::ReadList(kMascot, path);
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0].spectrumName, "File.1.1.3");
  EXPECT_EQ(list[0].charge, 1);

  // Column order comes from the heading; a repeated name counts at its last place.
  WriteFile(path, kHead.substr(0, kHead.rfind("prot_hit_num")) +
                      "pep_seq,pep_scan_title,pep_var_mod_pos,x,pep_seq\n"
                      "WWW,T.2.2.2.dta,0.002000.0,x,AANGTK\n");
  list = listtest::ReadList(kMascot, path);
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0].sequence, "AAJGTK");
}

TEST(MascotSpecListIO, FaultyFilesGiveNoRecords) {
  listtest::UseDefaultSettings();
  TempDir dir;
  const std::string path = dir / "mascot.csv";
  const std::string row = Row("AANGTK", "0.002000.0", "File.1.1.2.dta");
  struct Case {
    std::string content;
    std::string message;
  } cases[] = {
      {"Header\n" + row, "has no line with \"Variable modifications\""},
      {"Variable modifications\n1,Oxidation (M)\n" + row, "has no line with \"Identifier\""},
      {"Variable modifications,--\nIdentifier,Name\n2,Deamidated (N)\n" + row,
       "has no line with \"Protein hits\""},
      {"Variable modifications,--\nIdentifier,Name\n2,Deamidated (N)\nProtein hits\n\n",
       "has no heading row"},
      {"Variable modifications,--\nIdentifier,Name\n2,Deamidated (N)\nProtein hits\n\n"
       "prot_acc,pep_seq,pep_scan_title\n" + row + row,
       "has no column pep_var_mod_pos! The file is faulty and is skipped!"},
  };
  for (const Case& c : cases) {
    WriteFile(path, c.content);
    testing::internal::CaptureStdout();
    EXPECT_TRUE(listtest::ReadList(kMascot, path).empty());
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("[Error]: "), std::string::npos) << out;
    EXPECT_NE(out.find(c.message), std::string::npos) << out;
  }

  // Identifiers above 9 have no place in the table.
  WriteFile(path, "Variable modifications,--\nIdentifier,Name\n12,Deamidated (N)\n"
                  "Protein hits\n\npep_seq,pep_var_mod_pos,pep_scan_title\n"
                  "AANGTK,0.002000.0,F.1.1.2.dta\n");
  testing::internal::CaptureStdout();
  EXPECT_TRUE(listtest::ReadList(kMascot, path).empty());
  std::string out = testing::internal::GetCapturedStdout();
  EXPECT_NE(out.find("identifier 12, above 9"), std::string::npos) << out;
}

TEST(MascotSpecListIO, RealProteoQExport) {
  const std::string path = testutil::RealData("proteoQ/F012345.csv");
  if (!testutil::FileExists(path)) GTEST_SKIP() << "missing " << path;
  listtest::UseDefaultSettings();
  testing::internal::CaptureStdout();
  auto list = listtest::ReadList(kMascot, path);
  std::string out = testing::internal::GetCapturedStdout();
  // The re-quoted modification table is read: Deamidated (N) is identifier 2,
  // and the rows whose columns aren't shifted by commas in the description
  // give glycosite peptides.
  ASSERT_EQ(list.size(), 11u) << out;
  std::set<std::string> sequences;
  for (const CIdentifiedSpectrum& r : list) {
    EXPECT_NE(r.sequence.find('J'), std::string::npos) << r.sequence;
    EXPECT_FALSE(r.motifs.empty());
    bool marked = false;
    for (const CModification& m : r.modifications) marked |= m.name == "Deamidated[N]";
    EXPECT_TRUE(marked);
    // Titles such as "File: ~Y:\...~; ..." end at their first blank.
    EXPECT_EQ(r.spectrumName, "File:");
    EXPECT_EQ(r.charge, 0);
    sequences.insert(r.sequence);
  }
  EXPECT_EQ(out.find("[Error]"), std::string::npos) << out;
  RecordProperty("records", static_cast<int>(list.size()));
}
