#include <gtest/gtest.h>

#include <memory>

#include "ListTestSetup.h"
#include "idlist/SpecListIO.h"

namespace {

CIdentifiedSpectrum Record(const std::string& sequence, std::vector<CModification> mods,
                           const std::string& lastAA = "") {
  CIdentifiedSpectrum r;
  r.sequence = sequence;
  r.modifications = std::move(mods);
  r.lastAA = lastAA;
  return r;
}

const std::string kMark = "Deamidated[N]";

}  // namespace

TEST(NormalizeParenMods, RewritesParenthesisedFields) {
  std::string text = "null";
  NormalizeParenMods(text);
  EXPECT_EQ(text, "-");
  text = "-";
  NormalizeParenMods(text);
  EXPECT_EQ(text, "-");
  text = "2,M(Oxidation[M]);5,N(Deamidated[N]);";
  NormalizeParenMods(text);
  EXPECT_EQ(text, "2,Oxidation[M];5,Deamidated[N];");
  // The comma drops up to the first "(", and the character behind a ")" is kept
  // without a look: a name with its own parenthesis keeps part of the label.
  text = "3,Deamidated (N)(Deamidated[N]);";
  NormalizeParenMods(text);
  EXPECT_EQ(text, "3,N(Deamidated[N];");
  // Without a "(" behind a comma the rest of the text goes.
  text = "4,Oxidation;";
  NormalizeParenMods(text);
  EXPECT_EQ(text, "4,");

  std::vector<CModification> mods{{1, "x"}};
  text = "null";
  NormalizeParenMods(text);
  EXPECT_TRUE(ParseModifications(text, mods));
  EXPECT_TRUE(mods.empty());
}

TEST(MarkGlycosites, MarksSequonsInsideThePeptide) {
  listtest::UseDefaultSettings();
  CIdentifiedSpectrum r = Record("AANGTK", {{3, kMark}});
  EXPECT_TRUE(MarkGlycosites(r, "00"));
  EXPECT_EQ(r.sequence, "AAJGTK");
  ASSERT_EQ(r.motifs.size(), 1u);
  EXPECT_EQ(r.motifs[0], (CGlycoSite{3, "NXT"}));
  EXPECT_EQ(r.modifications, (std::vector<CModification>{{3, kMark}}));  // untouched

  // Overlapping sequons: both asparagines are candidates.
  r = Record("NNTT", {{1, kMark}, {2, kMark}});
  EXPECT_TRUE(MarkGlycosites(r, "00"));
  EXPECT_EQ(r.sequence, "JJTT");
  EXPECT_EQ(r.motifs, (std::vector<CGlycoSite>{{1, "NXT"}, {2, "NXT"}}));

  // The mark on a residue that is no candidate drops the record, even with
  // other modifications on candidates.
  r = Record("NGTANAK", {{1, "Oxidation[M]"}, {5, kMark}});
  EXPECT_FALSE(MarkGlycosites(r, "00"));
  EXPECT_EQ(r.sequence, "NGTANAK");
  EXPECT_TRUE(r.motifs.empty());
  r = Record("AANPTK", {{3, kMark}});
  EXPECT_FALSE(MarkGlycosites(r, "00"));
  r = Record("AANGCK", {{3, kMark}});  // C is not among the motifs
  EXPECT_FALSE(MarkGlycosites(r, "00"));

  // Motif candidates come first, then offset n-1, then n-2.
  r = Record("NGTKNN", {{1, kMark}, {5, kMark}, {6, kMark}});
  EXPECT_TRUE(MarkGlycosites(r, "00"));
  EXPECT_EQ(r.sequence, "JGTKJJ");
  EXPECT_EQ(r.motifs, (std::vector<CGlycoSite>{{1, "NXT"}, {6, "NX"}, {5, "NX"}}));

  // An empty modification_remove matches no named modification.
  CParam::GetInstance().construction.modification_remove.clear();
  r = Record("AANGTK", {{3, kMark}});
  EXPECT_FALSE(MarkGlycosites(r, "00"));
  listtest::UseDefaultSettings();

  // A motif list of NXV alone changes the acceptor letters.
  CParam::GetInstance().construction.N_glycan_motifs = {3};
  r = Record("AANGVK", {{3, kMark}});
  EXPECT_TRUE(MarkGlycosites(r, "00"));
  r = Record("AANGTK", {{3, kMark}});
  EXPECT_FALSE(MarkGlycosites(r, "00"));
  listtest::UseDefaultSettings();
}

TEST(MarkGlycosites, UnknownResiduesBehindThePeptide) {
  listtest::UseDefaultSettings();
  // Last residue N: a candidate without further check; no lastAA gives "NX".
  CIdentifiedSpectrum r = Record("AAKN", {{4, kMark}});
  EXPECT_TRUE(MarkGlycosites(r, "00"));
  EXPECT_EQ(r.sequence, "AAKJ");
  EXPECT_EQ(r.motifs, (std::vector<CGlycoSite>{{4, "NX"}}));

  // Last but one: counts unless the last residue is P; the third place is unknown.
  r = Record("AANK", {{3, kMark}});
  EXPECT_TRUE(MarkGlycosites(r, "00"));
  EXPECT_EQ(r.motifs, (std::vector<CGlycoSite>{{3, "NX"}}));
  r = Record("AANP", {{3, kMark}});
  EXPECT_FALSE(MarkGlycosites(r, "00"));

  // Too short for the end rules: dropped.
  r = Record("N", {{1, kMark}});
  EXPECT_FALSE(MarkGlycosites(r, "00"));
  r = Record("", {{1, kMark}});
  EXPECT_FALSE(MarkGlycosites(r, "00"));
}

TEST(MarkGlycosites, KnownResiduesBehindThePeptide) {
  listtest::UseDefaultSettings();
  CIdentifiedSpectrum r = Record("AAKN", {{4, kMark}}, "GT");
  EXPECT_TRUE(MarkGlycosites(r, "GT"));
  EXPECT_EQ(r.motifs, (std::vector<CGlycoSite>{{4, "NXT"}}));
  r = Record("AAKN", {{4, kMark}}, "GA");
  EXPECT_FALSE(MarkGlycosites(r, "GA"));
  r = Record("AAKN", {{4, kMark}}, "PT");
  EXPECT_FALSE(MarkGlycosites(r, "PT"));
  // A J in the last place needs no look behind it.
  r = Record("AAKJ", {{4, kMark}}, "--");
  EXPECT_TRUE(MarkGlycosites(r, "--"));
  EXPECT_EQ(r.motifs, (std::vector<CGlycoSite>{{4, "NX-"}}));

  r = Record("AANK", {{3, kMark}}, "SA");
  EXPECT_TRUE(MarkGlycosites(r, "SA"));
  EXPECT_EQ(r.sequence, "AAJK");
  EXPECT_EQ(r.motifs, (std::vector<CGlycoSite>{{3, "NXS"}}));
  r = Record("AANK", {{3, kMark}}, "AS");
  EXPECT_FALSE(MarkGlycosites(r, "AS"));
  r = Record("AANP", {{3, kMark}}, "TT");
  EXPECT_FALSE(MarkGlycosites(r, "TT"));
}

TEST(AddIdentified, AppendsOnlyMarkedRecords) {
  listtest::UseDefaultSettings();
  std::vector<CIdentifiedSpectrum> list;
  CIdentifiedSpectrum r = Record("AANGTK", {{3, kMark}});
  r.spectrumName = "a.1.1.2.dta";
  AddIdentified(list, r, "00");
  CIdentifiedSpectrum dropped = Record("AANGAK", {{3, kMark}});
  AddIdentified(list, dropped, "00");
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0].sequence, "AAJGTK");
  EXPECT_EQ(list[0].spectrumName, "a.1.1.2.dta");
}

TEST(CreateSpecListIO, ReaderPerFormatCode) {
  for (int code : {0, 1, 2, 4, 6, 7}) {
    std::unique_ptr<CSpecListIO> reader(CreateSpecListIO(code));
    ASSERT_NE(reader, nullptr) << code;
    EXPECT_EQ(reader->format, code);
  }
  for (int code : {-1, 3, 5, 8}) EXPECT_EQ(CreateSpecListIO(code), nullptr) << code;
}
