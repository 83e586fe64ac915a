#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/TestUtil.h"
#include "idlist/PepXmlSpecListIO.h"
#include "run/Param.h"

namespace {

const char* kMassTable =
    "[AA]\nC = 103.009185\nN = 114.042927\n[Molecule]\nH2O = 18.010565\n"
    "[Modification]\nN[115] = 0.984016\nM[147] = 15.994915\n[Glyco]\n5-2-0-0-0 = 1216.422863\n";

struct Query {
  std::string spectrum;
  std::string peptide;
  std::string probability;  // "" for no probability attribute
  std::vector<std::pair<int, std::string>> mods;  // position, mass text
  int charge = 2;
  bool withModificationInfo = true;
};

std::string QueryXml(const Query& q) {
  std::string text = "  <spectrum_query spectrum=\"" + q.spectrum + "\" start_scan=\"1\" assumed_charge=\"" +
                     std::to_string(q.charge) + "\" index=\"1\">\n   <search_result>\n" +
                     "    <search_hit hit_rank=\"1\" peptide=\"" + q.peptide + "\" protein=\"P1\">\n";
  if (q.withModificationInfo) {
    text += "     <modification_info modified_peptide=\"x\">\n";
    for (const auto& [position, mass] : q.mods) {
      text += "      <mod_aminoacid_mass position=\"" + std::to_string(position) + "\" mass=\"" +
              mass + "\"/>\n";
    }
    text += "     </modification_info>\n";
  }
  text += "     <search_score name=\"xcorr\" value=\"2.0\"/>\n"
          "     <analysis_result analysis=\"peptideprophet\">\n      <peptideprophet_result";
  if (!q.probability.empty()) text += " probability=\"" + q.probability + "\"";
  text += " all_ntt_prob=\"(0,0,1)\">\n      </peptideprophet_result>\n     </analysis_result>\n"
          "    </search_hit>\n   </search_result>\n  </spectrum_query>\n";
  return text;
}

std::string PepXml(const std::vector<Query>& queries, const std::string& modifications =
                       "<aminoacid_modification aminoacid=\"N\" massdiff=\"0.984\" mass=\"115.026944\" variable=\"Y\"/>\n") {
  std::string text =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<msms_pipeline_analysis date=\"2020\">\n"
      " <msms_run_summary base_name=\"run\">\n  <search_summary search_engine=\"X\">\n" +
      modifications + "  </search_summary>\n";
  for (const Query& q : queries) text += QueryXml(q);
  text += " </msms_run_summary>\n</msms_pipeline_analysis>\n";
  return text;
}

class PepXmlReader : public ::testing::Test {
 protected:
  void SetUp() override {
    CConstructionParam& c = CParam::GetInstance().construction;
    c.modification_remove = "N[115]";
    c.N_glycan_motifs = {0, 1};
    tablePath = dir / "MassTable.ini";
    testutil::WriteFile(tablePath, kMassTable);
  }

  // Reads `text` as a pepXML list into `list`; returns what was printed.
  std::string Read(const std::string& text, std::vector<CIdentifiedSpectrum>& list,
                   double threshold = 0.5) {
    testutil::WriteFile(dir / "list.pep.xml", text);
    return ReadPath(dir / "list.pep.xml", list, threshold);
  }

  std::string ReadPath(const std::string& path, std::vector<CIdentifiedSpectrum>& list,
                       double threshold) {
    CPepXmlSpecListIO reader;
    CIdentificationFile file;
    file.path = path;
    file.probability_threshold = threshold;
    file.format = 1;
    reader.Init(file);
    reader.massTablePath = tablePath;
    testing::internal::CaptureStdout();
    reader.Read(list);
    return testing::internal::GetCapturedStdout();
  }

  testutil::TempDir dir;
  std::string tablePath;
};

}  // namespace

TEST(PepXmlModName, CutsAtThePoint) {
  EXPECT_EQ(MakePepXmlModName("N", "115.026944"), "N[115]");
  EXPECT_EQ(MakePepXmlModName("C", "160.99"), "C[160]");  // not rounded
  EXPECT_EQ(MakePepXmlModName("M", "147"), "M[147]");
  EXPECT_EQ(MakePepXmlModName("S", ""), "S[]");
}

TEST_F(PepXmlReader, ProbabilityFilterAndRecords) {
  std::vector<CIdentifiedSpectrum> list(1);  // a record of an earlier list
  list[0].spectrumName = "earlier";
  const std::string output = Read(
      PepXml({{"s.1.1.2", "AANGTK", "0.5", {{3, "115.026944"}}},
              {"s.2.2.2", "AANGTK", "0.4999", {{3, "115.026944"}}},           // below
              {"s.3.3.3", "PEPNGSKMK", "0.9", {{8, "147.035"}, {4, "115.03"}}, 3},  // unsorted
              {"s.3.3.3", "PEPNGSKMK", "0.9", {{4, "115.03"}, {8, "147.035"}}, 3},  // same spectrum
              {"s.4.4.2", "AANGTK", "0.9", {}, 2, false},                  // no modification_info
              {"s.5.5.2", "AANGTK", "0.9", {{2, "71.03"}}}}),               // no mark on a sequon
      list);
  EXPECT_EQ(output,
            "\t6 query spectra identified.\n\t4 spectra with probability over 0.5.\n\n");
  ASSERT_EQ(list.size(), 4u);
  EXPECT_EQ(list[1].spectrumName, "s.1.1.2");
  EXPECT_EQ(list[1].sequence, "AAJGTK");
  EXPECT_EQ(list[1].charge, 2);
  EXPECT_EQ(list[1].modifications, (std::vector<CModification>{{3, "N[115]"}}));
  EXPECT_EQ(list[2].spectrumName, "s.3.3.3");
  EXPECT_EQ(list[2].charge, 3);
  EXPECT_EQ(list[2].modifications, (std::vector<CModification>{{8, "M[147]"}, {4, "N[115]"}}));
  EXPECT_EQ(list[3].spectrumName, "s.3.3.3");
  EXPECT_EQ(list[3].modifications, (std::vector<CModification>{{4, "N[115]"}, {8, "M[147]"}}));
}

TEST_F(PepXmlReader, ZeroThresholdTakesMissingProbability) {
  std::vector<CIdentifiedSpectrum> list;
  const std::string output = Read(PepXml({{"a", "AANGTK", "", {{3, "115.0"}}}}), list, 0.0);
  EXPECT_EQ(list.size(), 1u);
  EXPECT_EQ(output, "\t1 query spectra identified.\n\t1 spectra with probability over 0.\n\n");
  // A first analysis_result without peptideprophet_result skips the query.
  std::string text = PepXml({{"b", "AANGTK", "1", {{3, "115.0"}}}});
  const std::string head = "<analysis_result analysis=\"peptideprophet\">";
  text.insert(text.find(head), "<analysis_result analysis=\"interprophet\"/>\n");
  list.clear();
  Read(text, list, 0.0);
  EXPECT_TRUE(list.empty());
}

TEST_F(PepXmlReader, MassTableUpdatedAndSaved) {
  std::string table = kMassTable;
  table.insert(table.find("[Glyco]"), "S[166] = 79.5\n");
  testutil::WriteFile(tablePath, table);
  std::vector<CIdentifiedSpectrum> list;
  Read(PepXml({}, "<aminoacid_modification aminoacid=\"C\" massdiff=\"+57.021464\" mass=\"160.030649\"/>\n"
                  "<aminoacid_modification aminoacid=\"Q\" massdiff=\"0.9\" mass=\"129.04\"/>\n"
                  "<aminoacid_modification aminoacid=\"S\" massdiff=\"79.966331\" mass=\"166.998359\"/>\n"
                  "<aminoacid_modification aminoacid=\"M\" massdiff=\"17.0\" mass=\"147.0\"/>\n"),
       list);
  const std::string saved = testutil::ReadFile(tablePath);
  EXPECT_NE(saved.find("C[160] = 57.02146\n"), std::string::npos) << saved;
  EXPECT_EQ(saved.find("Q[129]"), std::string::npos);          // 0.9 Da isn't added
  EXPECT_NE(saved.find("S[166] = 79.50000\n"), std::string::npos);  // within 1.0: kept
  EXPECT_NE(saved.find("M[147] = 17.00000\n"), std::string::npos);  // off by more: replaced
  EXPECT_NE(saved.find("N[115] = 0.98402\n"), std::string::npos);   // rewritten with 5 decimals
  EXPECT_NE(saved.find("5-2-0-0-0 = 1216.422863"), std::string::npos);  // Glyco as read
}

TEST_F(PepXmlReader, FaultyFilesAreReportedAndSkipped) {
  std::vector<CIdentifiedSpectrum> list(1);
  EXPECT_EQ(ReadPath(dir / "absent.xml", list, 0.0), "Can not open file!\n");
  EXPECT_EQ(Read("<!-- nothing -->", list), "Can not find root element!\n");
  EXPECT_EQ(Read("<a><b></a>", list), "<b>Can not find </element>\n");
  EXPECT_EQ(Read("<msms_pipeline_analysis/>", list),
            "Can not find msms_run_summary element!\n");
  EXPECT_EQ(Read("<p><msms_run_summary></msms_run_summary></p>", list),
            "Can not find search_summary element!\n");
  // A position outside the peptide spoils the whole file: no records from it.
  const std::string output = Read(PepXml({{"a", "AANGTK", "1", {{3, "115.0"}}},
                                          {"b", "AANGTK", "1", {{7, "115.0"}}}}),
                                  list);
  EXPECT_EQ(output,
            "\t2 query spectra identified.\n"
            "Modification position 7 lies outside the peptide AANGTK of spectrum b!\n");
  EXPECT_EQ(list.size(), 1u);
}

TEST_F(PepXmlReader, RealFiles) {
  struct Case {
    const char* file;
    int queries;  // spectrum_query elements of the first run summary
  };
  const Case cases[] = {
      {"pyteomics/test.pep.xml", 5},
      {"OpenMS/IDFileConverter_10_input.pepXML", 2},
      {"OpenMS/IDFileConverter_16_input.pepXML", 6},
      {"OpenMS/IDFileConverter_24_input.pep.xml", 2},
      {"tools-galaxyp/interact-LongSwath_UPS1_1ug_rep1_Q1.pep.xml", 1533},
      {"pwiz/interact-peptideprophet-msfragger-bruker-mzml-nativeid.pep.xml", 7},
      {"crux-toolkit/sample.target.pep.xml", 274},
      {"OpenMS/IDFileConverter_25_output.pep.xml", 3},
      {"OpenMS/PepXMLFile_test_extended.pepxml", 2},
      {"OpenMS/PepXMLFileMascot_test.pepXML", 3},
      {"OpenMS/IDFileConverter_6_input1.pepXML", 3},
      {"crux-toolkit/crux_tpp.pep.xml", 11},
      {"OpenMS/MSFraggerAdapter_7_opt_out.pepXML", 3},
      {"OpenMS/SpectrastAdapter_1_output.pep.xml", 1},
      {"tools-galaxyp/201208-378803-mm-15ppm-fully-tryptic.pepXML", 35},
  };
  for (const Case& c : cases) {
    const std::string path = testutil::RealData(c.file);
    if (!testutil::FileExists(path)) continue;
    std::vector<CIdentifiedSpectrum> list;
    const std::string output = ReadPath(path, list, 0.0);
    EXPECT_EQ(output.substr(0, output.find('\n')),
              "\t" + std::to_string(c.queries) + " query spectra identified.")
        << c.file << ": " << output;
  }
}

TEST_F(PepXmlReader, RealFileWithDeamidatedSequons) {
  const std::string path = testutil::RealData("OpenMS/IDFileConverter_19_output.pepXML");
  if (!testutil::FileExists(path)) GTEST_SKIP() << "real data absent";
  std::vector<CIdentifiedSpectrum> list;
  const std::string output = ReadPath(path, list, 0.0);
  // Of the ten N[115] sites only two can be sequons: both in the last but one
  // place, where the residue behind the peptide is unknown.
  EXPECT_EQ(output, "\t121 query spectra identified.\n\t2 spectra with probability over 0.\n\n");
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0].sequence, "YLSALJK");
  EXPECT_EQ(list[1].sequence, "KQVENKJK");
  // The file's N[115] massdiff of 0.984 lies within 1.0 of the table: unchanged.
  EXPECT_NE(testutil::ReadFile(tablePath).find("N[115] = 0.98402"), std::string::npos);
}
