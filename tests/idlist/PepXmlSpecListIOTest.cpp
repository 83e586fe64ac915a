#include <gtest/gtest.h>

#include "ListTestSetup.h"
#include "common/TestUtil.h"
#include "idlist/PepXmlSpecListIO.h"

namespace {

using Lines = std::vector<std::string>;
const char* kMassTable =
    "[AA]\nN = 114.042927\n[Molecule]\nH2O = 18.010565\n"
    "[Modification]\nN[115] = 0.984016\nM[147] = 15.994915\n[Glyco]\n5-2-0-0-0 = 1216.422863\n";

// One spectrum_query. `probability` is the attribute text (none when empty);
// `mods` the mod_aminoacid_mass elements, or "-" for no modification_info.
std::string Query(const std::string& spectrum, const std::string& peptide,
                  const std::string& probability, const std::string& mods, int charge = 2) {
  const std::string info =
      mods == "-" ? "" : "<modification_info>\n" + mods + "</modification_info>\n";
  return "<spectrum_query spectrum=\"" + spectrum + "\" assumed_charge=\"" +
         std::to_string(charge) + "\">\n<search_result>\n<search_hit peptide=\"" + peptide +
         "\">\n" + info + "<analysis_result>\n<peptideprophet_result" +
         (probability.empty() ? "" : " probability=\"" + probability + "\"") +
         ">\n</peptideprophet_result>\n</analysis_result>\n</search_hit>\n</search_result>\n"
         "</spectrum_query>\n";
}
std::string Mod(int position, const std::string& mass) {
  return "<mod_aminoacid_mass position=\"" + std::to_string(position) + "\" mass=\"" + mass +
         "\"/>\n";
}
std::string AaMod(const std::string& residue, const std::string& massdiff,
                  const std::string& mass) {
  return "<aminoacid_modification aminoacid=\"" + residue + "\" massdiff=\"" + massdiff +
         "\" mass=\"" + mass + "\"/>\n";
}
std::string PepXml(const std::string& queries,
                   const std::string& modifications = AaMod("N", "0.984", "115.03")) {
  return "<?xml version=\"1.0\"?>\n<msms_pipeline_analysis>\n<msms_run_summary>\n"
         "<search_summary>\n" + modifications + "</search_summary>\n" + queries +
         "</msms_run_summary>\n</msms_pipeline_analysis>\n";
}

class PepXmlReader : public ::testing::Test {
 protected:
  void SetUp() override {
    listtest::UseDefaultSettings();
    CParam::GetInstance().construction.modification_remove = "N[115]";
    testutil::WriteFile(table, kMassTable);
  }
  // Reads `text` (or the file at `path`) into `list`; returns what was printed.
  std::string Read(const std::string& text, double threshold = 0.5, std::string path = "") {
    if (path.empty()) testutil::WriteFile(path = dir / "list.pep.xml", text);
    CPepXmlSpecListIO reader;
    CIdentificationFile file;
    file.path = path;
    file.probability_threshold = threshold;
    reader.Init(file);
    reader.massTablePath = table;
    testing::internal::CaptureStdout();
    reader.Read(list);
    return testing::internal::GetCapturedStdout();
  }
  testutil::TempDir dir;
  std::string table = dir / "MassTable.ini";
  std::vector<CIdentifiedSpectrum> list;
};

}  // namespace

TEST_F(PepXmlReader, ProbabilityFilterAndRecords) {
  list.resize(1);  // a record of an earlier list counts in the final line
  const std::string n3 = Mod(3, "115.026944");
  const std::string m8 = Mod(8, "147.035"), n4 = Mod(4, "115.03");
  EXPECT_EQ(Read(PepXml(Query("s.1.1.2", "AANGTK", "0.5", n3) +  // equal to the threshold
                        Query("s.2.2.2", "AANGTK", "0.4999", n3) +
                        Query("s.3.3.3", "PEPNGSKMK", "0.9", m8 + n4, 3) +
                        Query("s.3.3.3", "PEPNGSKMK", "0.9", n4 + m8, 3) +
                        Query("s.4.4.2", "AANGTK", "0.9", "-") +  // no modification_info
                        Query("s.5.5.2", "AANGTK", "0.9", Mod(2, "71.03")))),
            "\t6 query spectra identified.\n\t4 spectra with probability over 0.5.\n\n");
  // The list keeps the file's order of modifications, unsorted.
  EXPECT_EQ(listtest::Summaries(list),
            (Lines{" 0  -", "s.1.1.2 2 AAJGTK 3,N[115]; 3NXT",
                   "s.3.3.3 3 PEPJGSKMK 8,M[147];4,N[115]; 4NXS",
                   "s.3.3.3 3 PEPJGSKMK 4,N[115];8,M[147]; 4NXS"}));

  // With a threshold of 0 a missing probability passes, printed as "0".
  list.clear();
  EXPECT_EQ(Read(PepXml(Query("a", "AANGTK", "", Mod(3, "115.0"))), 0.0),
            "\t1 query spectra identified.\n\t1 spectra with probability over 0.\n\n");
  // A first analysis_result without peptideprophet_result skips the query.
  std::string text = PepXml(Query("b", "AANGTK", "1", Mod(3, "115.0")));
  text.insert(text.find("<analysis_result"), "<analysis_result analysis=\"interprophet\"/>\n");
  Read(text, 0.0);
  EXPECT_EQ(list.size(), 1u);
}

TEST_F(PepXmlReader, MassTableUpdatedAndSavedOnEveryRead) {
  std::string withS = kMassTable;
  testutil::WriteFile(table, withS.insert(withS.find("[Glyco]"), "S[166] = 79.5\n"));
  EXPECT_EQ(MakePepXmlModName("C", "160.99"), "C[160]");  // cut, not rounded
  EXPECT_EQ(MakePepXmlModName("M", "147"), "M[147]");
  Read(PepXml("", AaMod("C", "+57.021464", "160.030649") + AaMod("Q", "0.9", "129.04") +
                      AaMod("S", "79.966331", "166.99") + AaMod("M", "17.0", "147.0")));
  // Q[129] (0.9 Da from nothing) isn't added, S[166] within 1.0 is kept, the
  // others are set; all masses get five decimals, Glyco stays as read.
  EXPECT_EQ(testutil::ReadFile(table),
            "[AA]\nN = 114.04293\n[Molecule]\nH2O = 18.01056\n[Modification]\n"
            "C[160] = 57.02146\nM[147] = 17.00000\nN[115] = 0.98402\nS[166] = 79.50000\n"
            "[Glyco]\n5-2-0-0-0 = 1216.422863\n");
}

TEST_F(PepXmlReader, FaultyFilesAreReportedAndSkipped) {
  list.resize(1);
  EXPECT_EQ(Read("", 0.0, dir / "absent.xml"), "Can not open file!\n");
  EXPECT_EQ(Read("<!-- nothing -->"), "Can not find root element!\n");
  EXPECT_EQ(Read("<msms_pipeline_analysis/>"), "Can not find msms_run_summary element!\n");
  EXPECT_EQ(Read("<p><msms_run_summary></msms_run_summary></p>"),
            "Can not find search_summary element!\n");
  // A position outside the peptide spoils the whole file: no records from it.
  EXPECT_EQ(Read(PepXml(Query("a", "AANGTK", "1", Mod(3, "115.0")) +
                        Query("b", "AANGTK", "1", Mod(7, "115.0")))),
            "\t2 query spectra identified.\n"
            "Modification position 7 lies outside the peptide AANGTK of spectrum b!\n");
  EXPECT_EQ(list.size(), 1u);
}

TEST_F(PepXmlReader, RealFiles) {
  SKIP_WITHOUT_REALDATA();
  struct Case {
    const char* file;
    int queries, records;  // spectrum_query elements of the first run summary, records kept
  } cases[] = {
      {"pyteomics/test.pep.xml", 5, 0}, {"OpenMS/IDFileConverter_10_input.pepXML", 2, 0},
      {"OpenMS/IDFileConverter_16_input.pepXML", 6, 0},
      {"OpenMS/IDFileConverter_24_input.pep.xml", 2, 0},
      {"tools-galaxyp/interact-LongSwath_UPS1_1ug_rep1_Q1.pep.xml", 1533, 0},
      {"pwiz/interact-peptideprophet-msfragger-bruker-mzml-nativeid.pep.xml", 7, 0},
      {"crux-toolkit/sample.target.pep.xml", 274, 0},
      {"OpenMS/IDFileConverter_25_output.pep.xml", 3, 0},
      {"OpenMS/PepXMLFile_test_extended.pepxml", 2, 0},
      {"OpenMS/PepXMLFileMascot_test.pepXML", 3, 0},
      {"OpenMS/IDFileConverter_6_input1.pepXML", 3, 0},
      {"crux-toolkit/crux_tpp.pep.xml", 11, 0}, {"OpenMS/MSFraggerAdapter_7_opt_out.pepXML", 3, 0},
      {"OpenMS/SpectrastAdapter_1_output.pep.xml", 1, 0},
      {"tools-galaxyp/201208-378803-mm-15ppm-fully-tryptic.pepXML", 35, 0},
      // Of its ten N[115] sites only two can be sequons, both in the last but
      // one place, where the residue behind the peptide is unknown.
      {"OpenMS/IDFileConverter_19_output.pepXML", 121, 2}};
  for (const Case& c : cases) {
    const std::string path = testutil::RealData(c.file);
    if (!testutil::FileExists(path)) continue;
    list.clear();
    EXPECT_EQ(Read("", 0.0, path),
              "\t" + std::to_string(c.queries) + " query spectra identified.\n\t" +
                  std::to_string(c.records) + " spectra with probability over 0.\n\n")
        << c.file;
    if (c.records == 2) {
      ASSERT_EQ(list.size(), 2u);
      EXPECT_EQ(list[0].sequence + " " + list[1].sequence, "YLSALJK KQVENKJK");
      // Its N[115] massdiff of 0.984 lies within 1.0 of the table: unchanged.
      EXPECT_NE(testutil::ReadFile(table).find("N[115] = 0.98402"), std::string::npos);
    }
  }
}
