// The common step of every list reader: modification texts, site marking, the reader factory.
#include <gtest/gtest.h>

#include <memory>

#include "ListTestSetup.h"

TEST(NormalizeParenMods, RewritesParenthesisedFields) {
  const std::pair<std::string, std::string> cases[] = {
      {"null", "-"}, {"-", "-"},
      {"2,M(Oxidation[M]);5,N(Deamidated[N]);", "2,Oxidation[M];5,Deamidated[N];"},
      // The comma drops up to the first "(", and the character behind a ")" is
      // kept without a look: a label with its own parenthesis keeps part of it.
      {"3,Deamidated (N)(Deamidated[N]);", "3,N(Deamidated[N];"},
      {"4,Oxidation;", "4,"}};  // without a "(" the rest goes
  for (auto [text, expected] : cases) {
    NormalizeParenMods(text);
    EXPECT_EQ(text, expected);
  }
}

TEST(MarkGlycosites, CandidatesAndSequonTexts) {
  listtest::UseDefaultSettings();
  const std::string R = "Deamidated[N]";
  // Sites as "position:sequon;" in the order found; "" when the record is dropped.
  struct Case { std::string sequence; std::vector<CModification> mods; std::string after, marked, sites; };
  const Case cases[] = {
      {"AANGTK", {{3, R}}, "00", "AAJGTK", "3:NXT;"},
      {"NNTT", {{1, R}, {2, R}}, "00", "JJTT", "1:NXT;2:NXT;"},  // overlapping sequons
      // A mark on no candidate drops the record, even with others on candidates.
      {"NGTANAK", {{1, "Oxidation[M]"}, {5, R}}, "00", "NGTANAK", ""},
      {"AANPTK", {{3, R}}, "00", "AANPTK", ""}, {"AANGCK", {{3, R}}, "00", "AANGCK", ""},
      // Motif candidates first, then offset n-1, then n-2.
      {"NGTKNN", {{1, R}, {5, R}, {6, R}}, "00", "JGTKJJ", "1:NXT;6:NX;5:NX;"},
      // Unknown residues behind: a last N counts without a look; the last but
      // one unless the last is P.
      {"AAKN", {{4, R}}, "00", "AAKJ", "4:NX;"}, {"AANK", {{3, R}}, "00", "AAJK", "3:NX;"},
      {"AANP", {{3, R}}, "00", "AANP", ""}, {"N", {{1, R}}, "00", "N", ""},
      // Known residues behind, with lastAA as the reader sets it.
      {"AAKN", {{4, R}}, "GT", "AAKJ", "4:NXT;"}, {"AAKN", {{4, R}}, "GA", "AAKN", ""},
      {"AAKN", {{4, R}}, "PT", "AAKN", ""}, {"AAKJ", {{4, R}}, "--", "AAKJ", "4:NX-;"},
      {"AANK", {{3, R}}, "SA", "AAJK", "3:NXS;"}, {"AANK", {{3, R}}, "AS", "AANK", ""},
      {"AANP", {{3, R}}, "TT", "AANP", ""}};
  for (const Case& c : cases) {
    CIdentifiedSpectrum record;
    record.sequence = c.sequence;
    record.modifications = c.mods;
    record.lastAA = c.after == "00" ? "" : c.after;
    record.motifs = {{9, "stale"}};
    EXPECT_EQ(MarkGlycosites(record, c.after), !c.sites.empty()) << c.sequence << " " << c.after;
    std::string sites;
    for (const CGlycoSite& site : record.motifs)
      sites += std::to_string(site.position) + ":" + site.sequon + ";";
    EXPECT_EQ(record.sequence, c.marked) << c.sequence << " " << c.after;
    EXPECT_EQ(sites, c.sites) << c.sequence << " " << c.after;
    EXPECT_EQ(record.modifications, c.mods);  // the mark stays on the J
  }

  // An empty modification_remove matches no named modification; NXV alone
  // changes the acceptor letters.
  CIdentifiedSpectrum record;
  record.sequence = "AANGVK";
  record.modifications = {{3, R}};
  CParam::GetInstance().construction.modification_remove.clear();
  EXPECT_FALSE(MarkGlycosites(record, "00"));
  listtest::UseDefaultSettings();
  EXPECT_FALSE(MarkGlycosites(record, "00"));
  CParam::GetInstance().construction.N_glycan_motifs = {3};
  EXPECT_TRUE(MarkGlycosites(record, "00"));
  listtest::UseDefaultSettings();
}

TEST(CreateSpecListIO, ReaderPerFormatCode) {
  for (int code : {0, 1, 2, 4, 6, 7}) {
    std::unique_ptr<CSpecListIO> reader(CreateSpecListIO(code));
    ASSERT_NE(reader, nullptr) << code;
    EXPECT_EQ(reader->format, code);
  }
  for (int code : {-1, 3, 5, 8}) EXPECT_EQ(CreateSpecListIO(code), nullptr) << code;
}
