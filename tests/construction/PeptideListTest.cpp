#include <gtest/gtest.h>

#include "common/TestUtil.h"
#include "construction/IdentifiedAnalyzer.h"

namespace {

CIdentifiedSpectrum Record(const std::string& name, const std::string& sequence, int32_t charge,
                           std::vector<CModification> mods = {{3, "Deamidated[N]"}},
                           const std::string& protein = "") {
  CIdentifiedSpectrum record;
  record.spectrumName = name;
  record.sequence = sequence;
  record.charge = charge;
  record.modifications = std::move(mods);
  record.proteinAC = protein;
  record.motifs = {{3, "NXT"}};
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
      Record("a.1", "AAJGTK", 2, {{3, "Deamidated[N]"}}, "P1"),
      Record("a.2", "AAJGTK", 3),
      Record("a.3", "AAJGTK", 2, {{3, "Deamidated[N]"}}, "P2"),  // same peptide, other protein
      Record("a.4", "AAJGTK", 2, {{3, "Deamidated[N]"}, {6, "Label"}}),
      Record("a.5", "AAJGTK", 2, {{4, "Deamidated[N]"}}),
      Record("a.6", "AAJGTK", 2, {{3, "Deamidated"}}),
      Record("a.7", "AANGTK", 2),
      Record("a.2", "AAJGTK", 3),  // the same spectrum twice stays twice
  };
  records[2].datasetIndex = 1;
  analyzer.BuildPeptideList(records);

  ASSERT_EQ(analyzer.peptides.size(), 6u);
  EXPECT_EQ(Names(analyzer.peptides[0]), (std::vector<std::string>{"a.1", "a.3"}));
  EXPECT_EQ(analyzer.peptides[0].proteinAC, "P1");  // the first record's values
  EXPECT_EQ(analyzer.peptides[0].spectra[1].datasetIndex, 1);
  EXPECT_EQ(Names(analyzer.peptides[1]), (std::vector<std::string>{"a.2", "a.2"}));
  EXPECT_EQ(analyzer.peptides[1].charge, 3);
  EXPECT_EQ(Names(analyzer.peptides[2]), (std::vector<std::string>{"a.4"}));
  EXPECT_EQ(Names(analyzer.peptides[5]), (std::vector<std::string>{"a.7"}));

  // The list stays usable one record at a time, and a rebuild starts afresh.
  analyzer.AddPeptide(Record("a.8", "AANGTK", 2));
  EXPECT_EQ(Names(analyzer.peptides[5]), (std::vector<std::string>{"a.7", "a.8"}));
  analyzer.BuildPeptideList({Record("b.1", "AANGTK", 2)});
  ASSERT_EQ(analyzer.peptides.size(), 1u);
  EXPECT_EQ(Names(analyzer.peptides[0]), (std::vector<std::string>{"b.1"}));
}

TEST(PeptideList, KeysNeverConfuseDifferentPeptides) {
  std::string k1, k2;
  CPeptideIdentity a, b;
  a.sequence = "AB";
  a.charge = 12;
  b.sequence = "AB1";
  b.charge = 2;
  MakePeptideKey(a, k1);
  MakePeptideKey(b, k2);
  EXPECT_NE(k1, k2);
  a.charge = b.charge = 2;
  a.sequence = b.sequence = "AJK";
  a.modifications = {{1, "x;2,y"}};
  b.modifications = {{1, "x"}, {2, "y"}};
  MakePeptideKey(a, k1);
  MakePeptideKey(b, k2);
  EXPECT_NE(k1, k2);
}

TEST(PeptideList, SplitMultiSiteMakesOnePeptidePerSiteAtTheEnd) {
  CIdentifiedAnalyzer analyzer;
  CIdentifiedSpectrum multi = Record("m.1", "AJGTKAJSK", 2, {{2, "Deamidated[N]"}, {7, "Deamidated[N]"}});
  multi.motifs = {{2, "NXT"}, {7, "NXS"}};
  analyzer.BuildPeptideList({Record("s.1", "AAJGTK", 2), multi, Record("s.2", "AAJGTK", 3),
                             Record("m.2", "JJTT", 2)});
  analyzer.AddPeptide(Record("m.3", "AJGTKAJSK", 2, {{2, "Deamidated[N]"}, {7, "Deamidated[N]"}}));
  analyzer.SplitMultiSite();

  ASSERT_EQ(analyzer.peptides.size(), 6u);
  EXPECT_EQ(analyzer.peptides[0].sequence, "AAJGTK");
  EXPECT_EQ(analyzer.peptides[1].sequence, "AAJGTK");
  EXPECT_EQ(analyzer.peptides[1].charge, 3);
  EXPECT_EQ(analyzer.peptides[2].sequence, "AJGTKANSK");
  EXPECT_EQ(analyzer.peptides[3].sequence, "ANGTKAJSK");
  EXPECT_EQ(analyzer.peptides[4].sequence, "JNTT");
  EXPECT_EQ(analyzer.peptides[5].sequence, "NJTT");
  // Copies carry everything else: modifications, sites and spectra.
  for (int i : {2, 3}) {
    EXPECT_EQ(analyzer.peptides[i].modifications.size(), 2u);
    EXPECT_EQ(analyzer.peptides[i].motifs.size(), 2u);
    EXPECT_EQ(Names(analyzer.peptides[i]), (std::vector<std::string>{"m.1", "m.3"}));
  }

  // The split list is final: records now fold into it again by the new keys.
  analyzer.AddPeptide(Record("s.3", "AAJGTK", 3));
  EXPECT_EQ(Names(analyzer.peptides[1]), (std::vector<std::string>{"s.2", "s.3"}));
}

TEST(PeptideList, CompanionFileNames) {
  EXPECT_EQ(CompanionFileName("library.quolib"), "library_libcomp.txt");
  EXPECT_EQ(CompanionFileName("out.quolib"), "out_libcomp.txt");
  EXPECT_EQ(CompanionFileName("a.b/c.d.quolib"), "a.b/c.d_libcomp.txt");
  EXPECT_EQ(CompanionFileName("a.b\\c.quolib"), "a.b\\c_libcomp.txt");
  // The last point of the whole name counts, even one in a folder name; with
  // no point at all the suffix is appended.
  EXPECT_EQ(CompanionFileName("library"), "library_libcomp.txt");
  EXPECT_EQ(CompanionFileName("a.b/library"), "a_libcomp.txt");
  EXPECT_EQ(CompanionFileName("lib."), "lib_libcomp.txt");
}

TEST(PeptideList, WriteCompositionWritesOneBlockPerPeptide) {
  testutil::TempDir dir;
  CIdentifiedAnalyzer analyzer;
  analyzer.param.output_speclib_filename = dir / "out.quolib";
  analyzer.BuildPeptideList({Record("a.1", "AAJGTK", 2), Record("a.2", "AAJGTK", 3),
                             Record("a.3", "AAJGTK", 2)});
  analyzer.WriteComposition(analyzer.peptides.size());
  EXPECT_EQ(testutil::ReadFile(dir / "out_libcomp.txt"),
            "SpectrumName:1\na.1\na.3\n\nSpectrumName:2\na.2\n\n");

  // An unwritable place is not reported and harms nothing.
  analyzer.param.output_speclib_filename = dir / "missing/out.quolib";
  analyzer.WriteComposition(analyzer.peptides.size());
  EXPECT_FALSE(testutil::FileExists(dir / "missing/out_libcomp.txt"));
}
