#include <gtest/gtest.h>

#include "molecule/Modification.h"

namespace {

using Mods = std::vector<CModification>;

TEST(Modification, EmptyListTextForms) {
  Mods list{{1, "X"}};
  EXPECT_TRUE(ParseModifications("-", list));
  EXPECT_TRUE(list.empty());
  list = {{1, "X"}};
  EXPECT_TRUE(ParseModifications("", list));
  EXPECT_TRUE(list.empty());
  list = {{1, "X"}};
  EXPECT_TRUE(ParseModifications("-3,Oxidation[M];", list));  // a leading "-" means none
  EXPECT_TRUE(list.empty());
  EXPECT_EQ(ModificationsToString({}), "-");
}

TEST(Modification, PrintsInListOrder) {
  Mods list{{7, "Carbamidomethyl[C]"}, {3, "Oxidation[M]"}};
  EXPECT_EQ(ModificationsToString(list), "7,Carbamidomethyl[C];3,Oxidation[M];");
  EXPECT_EQ(ModificationsToString({{0, "Acetyl[N-term]"}}), "0,Acetyl[N-term];");
  EXPECT_EQ(ModificationsToString({{-2, ""}}), "-2,;");
}

TEST(Modification, ParseSortsByPositionThenName) {
  Mods list;
  EXPECT_TRUE(ParseModifications("7,Carbamidomethyl[C];3,Oxidation[M];3,Deamidated[N];", list));
  EXPECT_EQ(list, (Mods{{3, "Deamidated[N]"}, {3, "Oxidation[M]"}, {7, "Carbamidomethyl[C]"}}));
  // Names are taken without trimming; the position follows atoi.
  EXPECT_TRUE(ParseModifications(" 12abc, N[115] ;2,;", list));
  EXPECT_EQ(list, (Mods{{2, ""}, {12, " N[115] "}}));
  // Byte order: upper case before lower case, "Q" before "]".
  EXPECT_TRUE(ParseModifications("1,b;1,a;1,B;1,Deamidated[N];1,Deamidated[NQ];", list));
  EXPECT_EQ(list, (Mods{{1, "B"}, {1, "Deamidated[NQ]"}, {1, "Deamidated[N]"}, {1, "a"}, {1, "b"}}));
}

TEST(Modification, PrintAndParseRoundTrip) {
  Mods list{{5, "Oxidation[M]"}, {0, "Acetyl[N-term]"}, {5, "Deamidated[N]"}, {9, "C[160]"}};
  SortModifications(list);
  EXPECT_EQ(list.front(), (CModification{0, "Acetyl[N-term]"}));
  std::string text = ModificationsToString(list);
  EXPECT_EQ(text, "0,Acetyl[N-term];5,Deamidated[N];5,Oxidation[M];9,C[160];");
  Mods back;
  EXPECT_TRUE(ParseModifications(text, back));
  EXPECT_EQ(back, list);
  EXPECT_EQ(ModificationsToString(back), text);
}

TEST(Modification, MalformedTextStopsAndKeepsWhatWasRead) {
  Mods list;
  EXPECT_FALSE(ParseModifications("5,Oxidation[M];3,Deamidated[N]", list));  // no closing ";"
  EXPECT_EQ(list, (Mods{{5, "Oxidation[M]"}}));
  EXPECT_FALSE(ParseModifications("5,Oxidation[M];2;", list));  // no comma
  EXPECT_EQ(list, (Mods{{5, "Oxidation[M]"}}));
  EXPECT_FALSE(ParseModifications("9,B;4,A;garbage", list));
  EXPECT_EQ(list, (Mods{{4, "A"}, {9, "B"}}));  // kept entries are sorted
  EXPECT_FALSE(ParseModifications("abc", list));
  EXPECT_TRUE(list.empty());
  EXPECT_FALSE(ParseModifications(std::string("1,A;\0,", 6), list));
  EXPECT_EQ(list.size(), 1u);
  // A huge position follows atoi's narrowing rather than failing.
  EXPECT_TRUE(ParseModifications("99999999999999999999,X;", list));
  EXPECT_EQ(list.size(), 1u);
}

TEST(Modification, ListObjectOperations) {
  CModificationList mods;
  mods.AddModification(4, "Oxidation[M]");
  mods.AddModification(2, "Deamidated[N]");
  EXPECT_EQ(mods.ModificationsToString(), "4,Oxidation[M];2,Deamidated[N];");
  mods.SortModifications();
  ASSERT_NE(mods.GetModification(1), nullptr);
  EXPECT_EQ(mods.GetModification(1)->name, "Oxidation[M]");
  EXPECT_EQ(mods.GetModification(2), nullptr);
  EXPECT_TRUE(mods.ParseModifications("-"));
  EXPECT_EQ(mods.GetModification(0), nullptr);
}

}  // namespace
