#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/TestUtil.h"
#include "idlist/MaxQuantSpecListIO.h"
#include "run/Param.h"

namespace {

// Round masses make the label arithmetic easy to follow.
const char* kMassTable =
    "[AA]\nA = 100\nC = 100\nG = 100\nK = 100\nM = 100\nN = 100\nR = 100\nS = 100\nT = 100\n"
    "[Molecule]\nH2O = 10\n"
    "[Modification]\nAcetyl[Protein N-term] = 42\nArg10[R] = 10\nCarbamidomethyl[C] = 57\n"
    "Deamidation[N] = 1\nLys6[K] = 6\nOxidation[M] = 16\n";

const std::string kHeading =
    "Raw file\tScan number\tSequence\tModified sequence\tDeamidation (N) Probabilities\t"
    "Oxidation (M) Probabilities\tDeamidation (N) Score diffs\tOxidation (M) Score diffs\t"
    "Deamidation (N)\tOxidation (M)\tAcetyl (Protein N-term)\tProteins\tCharge\tMass";

std::string Row(const std::string& raw, const std::string& scan, const std::string& sequence,
                const std::string& modified, const std::string& charge, const std::string& mass) {
  return raw + "\t" + scan + "\t" + sequence + "\t" + modified + "\tp\tp\ts\ts\t1\t0\t0\tPROT\t" +
         charge + "\t" + mass;
}

using Mods = std::vector<CModification>;

class MaxQuantReader : public ::testing::Test {
 protected:
  void SetUp() override {
    CConstructionParam& c = CParam::GetInstance().construction;
    c.modification_remove = "Deamidation[N]";
    c.N_glycan_motifs = {0, 1};
    c.mass_table_filename = dir / "MassTable.ini";
    testutil::WriteFile(c.mass_table_filename, kMassTable);
  }
  void TearDown() override {
    CParam::GetInstance().construction.mass_table_filename = kMassTableFilename;
  }

  // Reads `text` as a MaxQuant table into `list`; returns what was printed.
  std::string Read(const std::string& text, std::vector<CIdentifiedSpectrum>& list) {
    testutil::WriteFile(dir / "msms.txt", text);
    return ReadPath(dir / "msms.txt", list);
  }
  std::string ReadPath(const std::string& path, std::vector<CIdentifiedSpectrum>& list) {
    CMaxQuantSpecListIO reader;
    CIdentificationFile file;
    file.path = path;
    file.format = 6;
    reader.Init(file);
    testing::internal::CaptureStdout();
    reader.Read(list);
    return testing::internal::GetCapturedStdout();
  }

  testutil::TempDir dir;
};

}  // namespace

TEST_F(MaxQuantReader, NamesPositionsAndFixedCysteine) {
  std::vector<CIdentifiedSpectrum> list;
  const std::string output = Read(
      kHeading + "\r\n" + Row("A", "12", "AANGTK", "_AAN(de)GTK_", "3", "611") + "\r\n\r\n" +
          Row("B", "5", "AMNGTK", "_(ac)AM(ox)N(de)GTK_", "2", "669") + "\n" +
          Row("C", "7", "CNCTK", "_CN(de)CTK_", "2", "511") + "\n" +
          Row("D", "8", "AANGTK", "_AAN(de)GT(zz)K_", "2", "611") + "\n" +
          Row("E", "9", "AAAAK", "_AAAAK_", "2", "510"),  // no mark, no line end
      list);
  EXPECT_EQ(output, "");
  ASSERT_EQ(list.size(), 4u);
  EXPECT_EQ(list[0].spectrumName, "A.12.12.3");
  EXPECT_EQ(list[0].sequence, "AAJGTK");
  EXPECT_EQ(list[0].charge, 3);
  EXPECT_EQ(list[0].modifications, (Mods{{3, "Deamidation[N]"}}));
  EXPECT_EQ(list[1].modifications,
            (Mods{{0, "Acetyl[Protein N-term]"}, {2, "Oxidation[M]"}, {3, "Deamidation[N]"}}));
  // Both cysteines are carbamidomethylated; the mass is then 114 too low, and
  // no label fits that.
  EXPECT_EQ(list[2].modifications,
            (Mods{{1, "Carbamidomethyl[C]"}, {2, "Deamidation[N]"}, {3, "Carbamidomethyl[C]"}}));
  // A code that no column head gives has an empty name.
  EXPECT_EQ(list[3].modifications, (Mods{{3, "Deamidation[N]"}, {5, ""}}));
}

TEST_F(MaxQuantReader, LabelRecovery) {
  std::vector<CIdentifiedSpectrum> list;
  Read(kHeading + "\n" + Row("A", "1", "AANGTK", "_AAN(de)GTK_", "2", "617.4") + "\n" +
           Row("A", "2", "KNGTK", "_KN(de)GTK_", "2", "517") + "\n" +
           Row("A", "3", "KNGTKR", "_KN(de)GTKR_", "2", "623") + "\n" +  // d 12: two Lys6
           Row("A", "4", "KNGTKR", "_KN(de)GTKR_", "2", "627") + "\n" +  // d 16: Lys6 + Arg10
           Row("A", "5", "KNGTKR", "_KN(de)GTKR_", "2", "614") + "\n",   // d 3: nothing fits
       list);
  ASSERT_EQ(list.size(), 5u);
  EXPECT_EQ(list[0].modifications, (Mods{{3, "Deamidation[N]"}, {6, "Lys6[K]"}}));
  EXPECT_EQ(list[1].modifications, (Mods{{1, "Lys6[K]"}, {2, "Deamidation[N]"}}));  // first K only
  EXPECT_EQ(list[2].modifications, (Mods{{1, "Lys6[K]"}, {2, "Deamidation[N]"}, {5, "Lys6[K]"}}));
  EXPECT_EQ(list[3].modifications, (Mods{{1, "Lys6[K]"}, {2, "Deamidation[N]"}, {6, "Arg10[R]"}}));
  EXPECT_EQ(list[4].modifications, (Mods{{2, "Deamidation[N]"}}));

  // A table without label masses fits no pair.
  CMaxQuantSpecListIO reader;
  CIdentificationFile file;
  reader.Init(file);
  reader.massTable.modifications.erase("Lys6[K]");
  reader.massTable.modifications.erase("Arg10[R]");
  CIdentifiedSpectrum record;
  record.sequence = "AAK";
  reader.RecoverLabels(record, 316.0);
  EXPECT_TRUE(record.modifications.empty());
  reader.Init(file);
  reader.RecoverLabels(record, 316.0);
  EXPECT_EQ(record.modifications, (Mods{{3, "Lys6[K]"}}));
  record.modifications.clear();
  reader.RecoverLabels(record, 310.9);  // within 1.0: nothing to explain
  EXPECT_TRUE(record.modifications.empty());
}

TEST_F(MaxQuantReader, CodesShortRowsAndProgress) {
  std::vector<CIdentifiedSpectrum> list;
  // The first head of a code stays; the heading may carry a byte-order mark.
  const std::string heading =
      "\xEF\xBB\xBFRaw file\tScan number\tSequence\tModified sequence\tDeamidation (N)\t"
      "Deep (N)\tProteins\tCharge\tMass";
  std::string text = heading + "\nR\t1\tAANGTK\t_AAN(de)GTK_\n";  // row ends before Charge
  for (int i = 0; i < 399; ++i) text += "R\t2\tAAAK\t_AAAK_\t\t\tP\t2\t100\n";
  EXPECT_EQ(Read(text, list), "\t\t200\n\t\t400\n");
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0].spectrumName, "R.1.1.");
  EXPECT_EQ(list[0].charge, 0);
  EXPECT_EQ(list[0].modifications, (Mods{{3, "Deamidation[N]"}}));

  // Columns that the heading lacks read the first column.
  list.clear();
  Read("Sequence\tModified sequence\tDeamidation (N)\tProteins\nAANGTK\t_AAN(de)GTK_\t1\tP\n", list);
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0].spectrumName, "AANGTK.AANGTK.AANGTK.AANGTK");
}

TEST_F(MaxQuantReader, FaultyFilesAreReportedAndSkipped) {
  std::vector<CIdentifiedSpectrum> list;
  EXPECT_EQ(ReadPath(dir / "absent.txt", list), "Error when opening \"" + (dir / "absent.txt") + "\".\n");
  const std::string row = "\nR\t1\tAANGTK\t_AAN(de)GTK_\tP\t2\t611\n";
  EXPECT_EQ(Read("Raw file\tScan number\tSequence\tProteins\tModified sequence\tCharge\tMass" + row, list),
            "[Warning]: \"" + (dir / "msms.txt") +
                "\" is not a readable MaxQuant table: its column \"Modified sequence\" doesn't "
                "stand before \"Proteins\"; the file is skipped.\n");
  EXPECT_EQ(Read("Raw file\tScan number\tSequence\tModified sequence\tDeamidation (N\tProteins"
                 "\tCharge\tMass" + row, list),
            "[Warning]: \"" + (dir / "msms.txt") +
                "\" is not a readable MaxQuant table: the column head \"Deamidation (N\" has "
                "\" (\" without \")\"; the file is skipped.\n");
  EXPECT_NE(Read("", list).find("[Warning]"), std::string::npos);
  EXPECT_TRUE(list.empty());
}

TEST_F(MaxQuantReader, RealFiles) {
  testutil::WriteFile(CParam::GetInstance().construction.mass_table_filename,
                      testutil::ReadFile(std::string(QUORIN_SOURCE_DIR) + "/data/MassTable.ini"));
  struct Case {
    const char* file;
    int rows;
  };
  const Case cases[] = {
      {"psm_utils/test_msms.txt", 5},
      {"tools-galaxyp/mq1.6.17_01_msms.txt", 6},
      {"tools-galaxyp/mq2.0.3_mqpar_msms.txt", 15},
      {"tools-galaxyp/mq2.0.3_mqpar_evidence.txt", 14},
      {"tools-galaxyp/msstatstmt_evidence.txt", 155},
      {"pwiz/test-phospho.msms.txt", 11},
      {"OpenMS/MQMsms_result.txt", 3700},
  };
  for (const Case& c : cases) {
    const std::string path = testutil::RealData(c.file);
    if (!testutil::FileExists(path)) continue;
    std::vector<CIdentifiedSpectrum> list;
    std::string expected;
    for (int n = 200; n <= c.rows; n += 200) expected += "\t\t" + std::to_string(n) + "\n";
    EXPECT_EQ(ReadPath(path, list), expected) << c.file;
    EXPECT_TRUE(list.empty()) << c.file;  // none carries a deamidated sequon
  }
}
