#include <gtest/gtest.h>

#include "ListTestSetup.h"
#include "common/TestUtil.h"
#include "idlist/MaxQuantSpecListIO.h"

namespace {

using Lines = std::vector<std::string>;
constexpr int kMaxQuant = 6;

// Round masses make the label arithmetic easy to follow.
const char* kMassTable =
    "[AA]\nA = 100\nC = 100\nG = 100\nK = 100\nM = 100\nN = 100\nR = 100\nS = 100\nT = 100\n"
    "[Molecule]\nH2O = 10\n"
    "[Modification]\nAcetyl[Protein N-term] = 42\nArg10[R] = 10\nCarbamidomethyl[C] = 57\n"
    "Deamidation[N] = 1\nLys6[K] = 6\nOxidation[M] = 16\n";

// Three groups of modification columns between "Modified sequence" and "Proteins".
const std::string kHeading =
    "Raw file\tScan number\tSequence\tModified sequence\tDeamidation (N) Probabilities\t"
    "Oxidation (M) Probabilities\tDeamidation (N) Score diffs\tOxidation (M) Score diffs\t"
    "Deamidation (N)\tOxidation (M)\tAcetyl (Protein N-term)\tProteins\tCharge\tMass\n";

std::string Row(const std::string& raw, const std::string& scan, const std::string& sequence,
                const std::string& modified, const std::string& charge, const std::string& mass) {
  return raw + "\t" + scan + "\t" + sequence + "\t" + modified + "\tp\tp\ts\ts\t1\t0\t0\tPROT\t" +
         charge + "\t" + mass + "\n";
}

class MaxQuantReader : public ::testing::Test {
 protected:
  void SetUp() override {
    listtest::UseDefaultSettings();
    CConstructionParam& c = CParam::GetInstance().construction;
    c.modification_remove = "Deamidation[N]";
    c.mass_table_filename = dir / "MassTable.ini";
    testutil::WriteFile(c.mass_table_filename, kMassTable);
  }
  void TearDown() override {
    CParam::GetInstance().construction.mass_table_filename = kMassTableFilename;
  }
  // Reads `text` as a table; `output` gets what was printed, with the path as LIST.
  Lines Read(const std::string& text, std::string& output) {
    testutil::WriteFile(path, text);
    Lines records = listtest::Summaries(listtest::ReadListCaptured(kMaxQuant, path, output));
    output = listtest::HidePath(output, path);
    return records;
  }
  testutil::TempDir dir;
  std::string path = dir / "msms.txt";
  std::string out;
};

}  // namespace

TEST_F(MaxQuantReader, NamesPositionsCysteinesAndLabels) {
  std::string last = Row("E", "9", "AAAAK", "_AAAAK_", "2", "510");
  last.pop_back();  // the last row needs no line end
  EXPECT_EQ(Read(kHeading + Row("A", "12", "AANGTK", "_AAN(de)GTK_", "3", "611") + "\r\n" +
                     Row("B", "5", "AMNGTK", "_(ac)AM(ox)N(de)GTK_", "2", "669") +
                     // Both C carbamidomethylated: 114 Da too low, and no label fits that.
                     Row("C", "7", "CNCTK", "_CN(de)CTK_", "2", "511") +
                     Row("D", "8", "AANGTK", "_AAN(de)GT(zz)K_", "2", "611") +  // unknown code
                     Row("L", "1", "AANGTK", "_AAN(de)GTK_", "2", "617.4") +   // d 6: Lys6
                     Row("L", "2", "KNGTK", "_KN(de)GTK_", "2", "517") +       // first K only
                     Row("L", "3", "KNGTKR", "_KN(de)GTKR_", "2", "623") +     // d 12: two Lys6
                     Row("L", "4", "KNGTKR", "_KN(de)GTKR_", "2", "627") +     // d 16: Lys6, Arg10
                     Row("L", "5", "KNGTKR", "_KN(de)GTKR_", "2", "614") + last,  // d 3: no fit
                 out),
            (Lines{"A.12.12.3 3 AAJGTK 3,Deamidation[N]; 3NXT",
                   "B.5.5.2 2 AMJGTK 0,Acetyl[Protein N-term];2,Oxidation[M];3,Deamidation[N]; "
                   "3NXT",
                   "C.7.7.2 2 CJCTK 1,Carbamidomethyl[C];2,Deamidation[N];3,Carbamidomethyl[C]; "
                   "2NXT",
                   "D.8.8.2 2 AAJGTK 3,Deamidation[N];5,; 3NXT",
                   "L.1.1.2 2 AAJGTK 3,Deamidation[N];6,Lys6[K]; 3NXT",
                   "L.2.2.2 2 KJGTK 1,Lys6[K];2,Deamidation[N]; 2NXT",
                   "L.3.3.2 2 KJGTKR 1,Lys6[K];2,Deamidation[N];5,Lys6[K]; 2NXT",
                   "L.4.4.2 2 KJGTKR 1,Lys6[K];2,Deamidation[N];6,Arg10[R]; 2NXT",
                   "L.5.5.2 2 KJGTKR 2,Deamidation[N]; 2NXT"}));
  EXPECT_EQ(out, "");

  // When Lys6 (6) and Arg10 (here 6.5) both explain 6.2, the greatest lysine
  // count that fits wins. Within 1.0 nothing is added; without label masses
  // in the table no pair fits.
  CMaxQuantSpecListIO reader;
  reader.Init(CIdentificationFile());
  CIdentifiedSpectrum record;
  record.sequence = "AKR";  // 310 Da
  reader.massTable.modifications["Arg10[R]"] = 6.5;
  reader.RecoverLabels(record, 316.2);
  EXPECT_EQ(ModificationsToString(record.modifications), "2,Lys6[K];");
  record.modifications.clear();
  reader.RecoverLabels(record, 310.9);
  reader.massTable.modifications.erase("Lys6[K]");
  reader.massTable.modifications.erase("Arg10[R]");
  reader.RecoverLabels(record, 316.0);
  EXPECT_TRUE(record.modifications.empty());
}

TEST_F(MaxQuantReader, CodesShortRowsProgressAndFaults) {
  // The first head of a code stays; the heading may carry a byte-order mark; a
  // row that leaves off its empty last field reads it as empty; progress every
  // 200 rows.
  const std::string heading = "\xEF\xBB\xBFRaw file\tScan number\tSequence\tModified sequence\t"
                              "Deamidation (N)\tDeep (N)\tProteins\tCharge\tMass\n";
  std::string rows;
  for (int i = 0; i < 399; ++i) rows += "R\t2\tAAAK\t_AAAK_\t\t\tP\t2\t100\n";
  EXPECT_EQ(Read(heading + "R\t1\tAANGTK\t_AAN(de)GTK_\t\t\tP\t3\n" + rows, out),
            (Lines{"R.1.1.3 3 AAJGTK 3,Deamidation[N]; 3NXT"}));
  EXPECT_EQ(out, "\t\t200\n\t\t400\n");
  // A row that ends before a column the reader needs makes the file faulty:
  // none of its rows is kept.
  EXPECT_TRUE(Read(heading + rows + "R\t1\tAANGTK\t_AAN(de)GTK_\n", out).empty());
  EXPECT_EQ(out, "\t\t200\n[Warning]: \"LIST\" is not a readable MaxQuant table: row 400 ends "
                 "after 4 of its 9 fields; the file is skipped.\n");
  // Columns that the heading lacks read the first column.
  EXPECT_EQ(Read("Sequence\tModified sequence\tDeamidation (N)\tProteins\nAANGTK\t_AAN(de)GTK_\n",
                 out),
            (Lines{"AANGTK.AANGTK.AANGTK.AANGTK 0 AAJGTK 3,Deamidation[N]; 3NXT"}));

  const std::string row = "R\t1\tAANGTK\t_AAN(de)GTK_\tP\t2\t611\n";
  const std::string skipped = "[Warning]: \"LIST\" is not a readable MaxQuant table: ";
  EXPECT_TRUE(Read("Raw file\tSequence\tProteins\tModified sequence\tCharge\n" + row, out).empty());
  EXPECT_EQ(out, skipped + "its column \"Modified sequence\" doesn't stand before \"Proteins\"; "
                           "the file is skipped.\n");
  EXPECT_TRUE(Read("Modified sequence\tDeamidation (N\tProteins\n" + row, out).empty());
  EXPECT_EQ(out, skipped + "the column head \"Deamidation (N\" has \" (\" without \")\"; the file "
                           "is skipped.\n");
  EXPECT_TRUE(listtest::ReadListCaptured(kMaxQuant, dir / "absent.txt", out).empty());
  EXPECT_EQ(listtest::HidePath(out, dir / "absent.txt"), "Error when opening \"LIST\".\n");
}

TEST_F(MaxQuantReader, RealFiles) {
  SKIP_WITHOUT_REALDATA();
  testutil::WriteFile(CParam::GetInstance().construction.mass_table_filename,
                      testutil::ReadFile(std::string(QUORIN_SOURCE_DIR) + "/data/MassTable.ini"));
  const std::pair<const char*, int> cases[] = {  // file, rows
      {"psm_utils/test_msms.txt", 5},           {"tools-galaxyp/mq1.6.17_01_msms.txt", 6},
      {"tools-galaxyp/mq2.0.3_mqpar_msms.txt", 15},
      {"tools-galaxyp/mq2.0.3_mqpar_evidence.txt", 14},
      {"tools-galaxyp/msstatstmt_evidence.txt", 155}, {"pwiz/test-phospho.msms.txt", 11},
      {"OpenMS/MQMsms_result.txt", 3700}};
  for (const auto& [file, rows] : cases) {
    const std::string real = testutil::RealData(file);
    if (!testutil::FileExists(real)) continue;
    std::string expected;
    for (int n = 200; n <= rows; n += 200) expected += "\t\t" + std::to_string(n) + "\n";
    EXPECT_TRUE(listtest::ReadListCaptured(kMaxQuant, real, out).empty()) << file;  // no sequon
    EXPECT_EQ(out, expected) << file;
  }
}
