#include <gtest/gtest.h>

#include "ListTestSetup.h"
#include "common/TestUtil.h"
#include "idlist/MascotSpecListIO.h"

namespace {

using Lines = std::vector<std::string>;
constexpr int kMascot = 4;

// Marker lines of other sections come first; one modification row is quoted
// whole, as a spreadsheet re-saves it.
const std::string kHead =
    "Header,------\n\nFixed modifications,------\nIdentifier,Name,Delta\n"
    "1,Carbamidomethyl (C),57.021464\n\nVariable modifications,------\n\n"
    "Identifier,Name,Delta,Neutral loss(es)\n1,Oxidation (M),15.994915\n"
    "\"2,Deamidated (N),0.984016\"\n\nSearch Parameters,------\nProtein hits,------\n\n";
const std::string kColumns = "prot_hit_num,prot_acc,pep_seq,pep_var_mod_pos,pep_scan_title\n";

std::string Row(const std::string& sequence, const std::string& positions,
                const std::string& title) {
  return "1,\"sp|P1\"," + sequence + "," + positions + ",\"" + title + "\"\n";
}

// Reads `text` as a list; `output` gets what was printed, with the path as LIST.
Lines Read(const std::string& text, std::string& output) {
  testutil::TempDir dir;
  const std::string path = dir / "mascot.csv";
  testutil::WriteFile(path, text);
  Lines records = listtest::Summaries(listtest::ReadListCaptured(kMascot, path, output));
  output = listtest::HidePath(output, path);
  return records;
}

}  // namespace

TEST(MascotSpecListIO, DecodeVarModPos) {
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
  std::string out;
  std::string last = Row("AANGTK", "0.002000.0", "File.9.9.2.dta");
  last.pop_back();  // the row at which the end of the file is met isn't taken
  EXPECT_EQ(Read(kHead + kColumns + Row("AANGTK", "0.002000.0", "File.10.10.2.dta scan 10") +
                     Row("MANGSK", "0.102000.0", "File.11.11.3.dta") +
                     Row("AANGTK", "0.002000.0", "File.12.12.3") +
                     Row("AANGTK", "0.000000.0", "File.13.13.2.dta") +  // no mark
                     Row("AANGTK", "0.002000.0", "NoStops") + "\n9,short\n" + last,
                 out),
            (Lines{"File.10.10.2.dta 2 AAJGTK 3,Deamidated[N]; 3NXT",
                   "File.11.11.3.dta 3 MAJGSK 1,Oxidation[M];3,Deamidated[N]; 3NXS",
                   "File.12.12.3 12 AAJGTK 3,Deamidated[N]; 3NXT",  // token before the last stop
                   "NoStops 0 AAJGTK 3,Deamidated[N]; 3NXT"}));     // charge 0 is kept
  EXPECT_EQ(out, "[Warning]: 2 row(s) of \"LIST\" are shorter than the heading row and were "
                 "skipped!\n");

  // Column order comes from the heading; a repeated name counts at its last place.
  EXPECT_EQ(Read(kHead + "pep_seq,pep_scan_title,pep_var_mod_pos,x,pep_seq\n"
                         "WWW,T.2.2.2.dta,0.002000.0,x,AANGTK\n", out),
            (Lines{"T.2.2.2.dta 2 AAJGTK 3,Deamidated[N]; 3NXT"}));
}

TEST(MascotSpecListIO, FaultyFilesGiveNoRecords) {
  listtest::UseDefaultSettings();
  const std::string row = Row("AANGTK", "0.002000.0", "File.1.1.2.dta");
  const std::string table = "Variable modifications,--\nIdentifier,Name\n2,Deamidated (N)\n";
  const std::string skipped = "\"LIST\" has no line with \"";
  const std::pair<std::string, std::string> cases[] = {
      {"Header\n" + row, skipped + "Variable modifications\"! No result is read from it.\n"},
      {"Variable modifications\n1,Oxidation (M)\n" + row, skipped + "Identifier\""},
      {table + row, skipped + "Protein hits\""},
      {table + "Protein hits\n\n", "has no heading row! The file is faulty and is skipped!"},
      {table + "Protein hits\n\nprot_acc,pep_seq,pep_scan_title\n" + row,
       "has no column pep_var_mod_pos! The file is faulty and is skipped!"},
      // Identifiers above 9 have no place in the table.
      {"Variable modifications,--\nIdentifier,Name\n12,Deamidated (N)\nProtein hits\n\n" +
           kColumns + row,
       "[Warning]: The modification Deamidated[N] of \"LIST\" has the identifier 12, above 9!"},
  };
  for (const auto& [content, message] : cases) {
    std::string out;
    EXPECT_TRUE(Read(content, out).empty());
    EXPECT_NE(out.find(message), std::string::npos) << out;
  }
}

TEST(MascotSpecListIO, RealProteoQExport) {
  SKIP_WITHOUT_REALDATA();
  const std::string path = testutil::RealData("proteoQ/F012345.csv");
  if (!testutil::FileExists(path)) GTEST_SKIP() << "the collection lacks " << path;
  listtest::UseDefaultSettings();
  std::string out;
  const std::vector<CIdentifiedSpectrum> list = listtest::ReadListCaptured(kMascot, path, out);
  // The re-quoted modification table is read (Deamidated (N) is identifier 2);
  // the rows not shifted by commas in the description give glycosite peptides.
  // Titles such as "File: ~Y:\...~; ..." end at their first blank.
  EXPECT_EQ(list.size(), 11u) << out;
  for (const CIdentifiedSpectrum& r : list) {
    EXPECT_EQ(listtest::Summary(r).substr(0, 8), "File: 0 ");
    EXPECT_NE(ModificationsToString(r.modifications).find("Deamidated[N]"), std::string::npos);
    EXPECT_FALSE(r.motifs.empty());
  }
  EXPECT_EQ(out.find("[Error]"), std::string::npos) << out;
}
