#include <gtest/gtest.h>

#include "molecule/Modification.h"

namespace {

using Mods = std::vector<CModification>;

TEST(Modification, TextFormsRoundTripSorted) {
  for (const char* none : {"-", "", "-3,Oxidation[M];"}) {  // a leading "-" means none
    Mods list{{1, "X"}};
    EXPECT_TRUE(ParseModifications(none, list));
    EXPECT_TRUE(list.empty()) << none;
  }
  EXPECT_EQ(ModificationsToString({}), "-");
  EXPECT_EQ(ModificationsToString({{7, "Carbamidomethyl[C]"}, {3, "Oxidation[M]"}, {-2, ""}}),
            "7,Carbamidomethyl[C];3,Oxidation[M];-2,;");  // list order

  Mods list;
  EXPECT_TRUE(ParseModifications("7,Carbamidomethyl[C];3,Oxidation[M];3,Deamidated[N];", list));
  EXPECT_EQ(list, (Mods{{3, "Deamidated[N]"}, {3, "Oxidation[M]"}, {7, "Carbamidomethyl[C]"}}));
  EXPECT_EQ(ModificationsToString(list), "3,Deamidated[N];3,Oxidation[M];7,Carbamidomethyl[C];");
  // Names are taken without trimming; the position follows atoi; byte order
  // puts upper case before lower case and "Q" before "]".
  EXPECT_TRUE(
      ParseModifications(" 12abc, N[115] ;2,;1,b;1,B;1,Deamidated[N];1,Deamidated[NQ];", list));
  EXPECT_EQ(list, (Mods{{1, "B"}, {1, "Deamidated[NQ]"}, {1, "Deamidated[N]"}, {1, "b"}, {2, ""},
                        {12, " N[115] "}}));
}

TEST(Modification, MalformedTextStopsAndKeepsWhatWasRead) {
  Mods list;
  EXPECT_FALSE(ParseModifications("5,Oxidation[M];3,Deamidated[N]", list));  // no closing ";"
  EXPECT_EQ(list, (Mods{{5, "Oxidation[M]"}}));
  EXPECT_FALSE(ParseModifications("5,Oxidation[M];2;", list));  // no comma
  EXPECT_EQ(list, (Mods{{5, "Oxidation[M]"}}));
  EXPECT_FALSE(ParseModifications("9,B;4,A;garbage", list));
  EXPECT_EQ(list, (Mods{{4, "A"}, {9, "B"}}));  // kept entries are sorted
  EXPECT_FALSE(ParseModifications(std::string("1,A;\0,", 6), list));
  EXPECT_EQ(list.size(), 1u);
  EXPECT_TRUE(ParseModifications("99999999999999999999,X;", list));  // atoi's narrowing
  EXPECT_EQ(list.size(), 1u);
}

}  // namespace
