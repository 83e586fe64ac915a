// The non-redundant peptide list, the split of multi-site peptides and the companion file.
#include <gtest/gtest.h>

#include "common/TestUtil.h"
#include "construction/IdentifiedAnalyzer.h"

namespace {

CIdentifiedSpectrum Record(const std::string& name, const std::string& sequence, int32_t charge,
                           std::vector<CModification> mods = {{3, "Deamidated[N]"}}) {
  CIdentifiedSpectrum record;
  record.spectrumName = name;
  record.sequence = sequence;
  record.charge = charge;
  record.modifications = std::move(mods);
  return record;
}

std::vector<std::string> Names(const CIdentifiedPeptide& peptide) {
  std::vector<std::string> names;
  for (const CSpectrumRef& ref : peptide.spectra) names.push_back(ref.spectrumName);
  return names;
}

}  // namespace

TEST(PeptideList, RecordsFoldBySequenceChargeAndModifications) {
  CIdentifiedAnalyzer analyzer;
  std::vector<CIdentifiedSpectrum> records = {
      Record("a.1", "AAJGTK", 2), Record("a.2", "AAJGTK", 3),
      Record("a.3", "AAJGTK", 2),  // same peptide, other protein: the first record's values
      Record("a.4", "AAJGTK", 2, {{3, "Deamidated[N]"}, {6, "Label"}}),
      Record("a.5", "AAJGTK", 2, {{4, "Deamidated[N]"}}), Record("a.6", "AANGTK", 2),
      Record("a.2", "AAJGTK", 3)};  // the same spectrum twice stays twice
  records[0].proteinAC = "P1";
  records[2].proteinAC = "P2";
  records[2].datasetIndex = 1;
  analyzer.BuildPeptideList(records);
  ASSERT_EQ(analyzer.peptides.size(), 5u);
  EXPECT_EQ(Names(analyzer.peptides[0]), (std::vector<std::string>{"a.1", "a.3"}));
  EXPECT_EQ(analyzer.peptides[0].proteinAC, "P1");
  EXPECT_EQ(analyzer.peptides[0].spectra[1].datasetIndex, 1);
  EXPECT_EQ(Names(analyzer.peptides[1]), (std::vector<std::string>{"a.2", "a.2"}));
  EXPECT_EQ(Names(analyzer.peptides[4]), (std::vector<std::string>{"a.6"}));

  // Keys never confuse peptides whose texts run together.
  std::string k1, k2;
  CPeptideIdentity a = Record("", "AJK", 2, {{1, "x;2,y"}}), b = Record("", "AJK", 2, {{1, "x"}, {2, "y"}});
  MakePeptideKey(a, k1);
  MakePeptideKey(b, k2);
  EXPECT_NE(k1, k2);
}

TEST(PeptideList, SplitMultiSiteMakesOnePeptidePerSiteAtTheEnd) {
  CIdentifiedAnalyzer analyzer;
  const std::vector<CModification> two = {{2, "Deamidated[N]"}, {7, "Deamidated[N]"}};
  analyzer.BuildPeptideList({Record("s.1", "AAJGTK", 2), Record("m.1", "AJGTKAJSK", 2, two),
                             Record("s.2", "AAJGTK", 3), Record("m.2", "JJTT", 2),
                             Record("m.3", "AJGTKAJSK", 2, two)});
  analyzer.SplitMultiSite();
  std::vector<std::string> sequences;
  for (const CIdentifiedPeptide& peptide : analyzer.peptides) sequences.push_back(peptide.sequence);
  EXPECT_EQ(sequences, (std::vector<std::string>{"AAJGTK", "AAJGTK", "AJGTKANSK", "ANGTKAJSK",
                                                 "JNTT", "NJTT"}));
  EXPECT_EQ(analyzer.peptides[3].modifications, two);
  EXPECT_EQ(Names(analyzer.peptides[3]), (std::vector<std::string>{"m.1", "m.3"}));
}

TEST(PeptideList, CompanionFile) {
  EXPECT_EQ(CompanionFileName("out.quolib"), "out_libcomp.txt");
  EXPECT_EQ(CompanionFileName("a.b/c.d.quolib"), "a.b/c.d_libcomp.txt");
  // The last point of the whole name counts, even one in a folder name; with
  // no point at all the suffix is appended.
  EXPECT_EQ(CompanionFileName("a.b/library"), "a_libcomp.txt");
  EXPECT_EQ(CompanionFileName("library"), "library_libcomp.txt");

  testutil::TempDir dir;
  CIdentifiedAnalyzer analyzer;
  analyzer.param.output_speclib_filename = dir / "out.quolib";
  analyzer.BuildPeptideList({Record("a.1", "AAJGTK", 2), Record("a.2", "AAJGTK", 3),
                             Record("a.3", "AAJGTK", 2)});
  analyzer.WriteComposition(analyzer.peptides.size());
  EXPECT_FALSE(testutil::FileExists(dir / "out_libcomp.txt"));  // in place only when committed
  analyzer.CommitComposition();
  EXPECT_EQ(testutil::ReadFile(dir / "out_libcomp.txt"),
            "SpectrumName:1\na.1\na.3\n\nSpectrumName:2\na.2\n\n");
}
