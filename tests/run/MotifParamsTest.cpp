#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

#include "common/TestUtil.h"
#include "run/Motif.h"
#include "run/Param.h"

namespace {

CConstructionParam WithMotifs(const std::string& value) {
  CConstructionParam param;
  param.N_glycan_motifs = {3};  // replaced, not appended to
  param.ParseNGlycanMotifs(value);
  return param;
}

std::vector<uint32_t> YIons(const std::string& value) {
  CConstructionParam param;
  param.added_Y_ions = {9};  // replaced, not appended to
  param.ParseAddedYIons(value);
  return param.added_Y_ions;
}

std::vector<int> Occurrences(const std::string& expression, const std::string& text) {
  std::vector<int> positions{-1};  // appended to
  FindMotifOccurrences(std::regex(expression, std::regex::ECMAScript), text, positions);
  return std::vector<int>(positions.begin() + 1, positions.end());
}

TEST(MotifParams, MotifListsAndExpressions) {
  CConstructionParam two = WithMotifs("NXS, NXT");
  EXPECT_EQ(two.N_glycan_motifs, (std::vector<int32_t>{0, 1}));
  EXPECT_EQ(two.GetMotifRegex(), "[NJ][^P][ST$]");
  EXPECT_EQ(two.GetReverseMotifRegex(), "[ST][^P][NJ]");
  EXPECT_EQ(MotifAcceptorLetters(two.GetMotifRegex()), "ST");
  EXPECT_EQ(WithMotifs("NXS,NXT,").N_glycan_motifs, (std::vector<int32_t>{0, 1}));
  CConstructionParam all = WithMotifs("NXV,\tNXC ,NXS,NXV");
  EXPECT_EQ(all.N_glycan_motifs, (std::vector<int32_t>{3, 2, 0, 3}));
  EXPECT_EQ(all.GetMotifRegex(), "[NJ][^P][VCSV$]");
}

TEST(MotifParams, AddedYIonsAndInvalidPieces) {
  EXPECT_EQ(YIons("Y0,Y1,Y2"), (std::vector<uint32_t>{0, 1, 2}));
  EXPECT_EQ(YIons(" Y5 , Y5"), (std::vector<uint32_t>{5, 5}));
  EXPECT_EQ(YIons("Y12"), (std::vector<uint32_t>{1}));  // one digit only
  EXPECT_TRUE(YIons("y1").empty());
  EXPECT_EQ(YIons("X1,Y,,Yx,3,Y3"), (std::vector<uint32_t>{3}));
  auto motifs = [](const std::string& v) { testutil::PrintToStderr(); WithMotifs(v); };
  auto yIons = [](const std::string& v) { testutil::PrintToStderr(); YIons(v); };
  const std::string motif = "^The input N-linked Glycan motif ";
  const std::string yIon = "^The valid Y ions are Y0-Y5, but the input is ";
  const auto status1 = testing::ExitedWithCode(1);
  EXPECT_EXIT(motifs("NXS,,NXT"), status1, motif + "is not valid, please check!\n$");
  EXPECT_EXIT(motifs("NXS, nxt "), status1, motif + "nxtis not valid, please check!\n$");
  EXPECT_EXIT(yIons("Y0, Y6"), status1, yIon + "Y6\n$");
  EXPECT_EXIT(yIons("Y91"), status1, yIon + "Y91\n$");
}

TEST(MotifParams, OccurrencesOverlapAndAcceptJ) {
  const std::string forward = WithMotifs("NXS,NXT").GetMotifRegex();
  EXPECT_EQ(Occurrences(forward, "NNST"), (std::vector<int>{0, 1}));
  EXPECT_EQ(Occurrences(forward, "AJATKNPS"), (std::vector<int>{1}));
  // The dollar sign inside the bracket is a literal character, not an anchor.
  EXPECT_EQ(Occurrences(forward, "PEPNA"), (std::vector<int>{}));
  EXPECT_EQ(Occurrences(forward, "PEPNA$"), (std::vector<int>{3}));
  const std::string reverse = WithMotifs("NXS,NXT").GetReverseMotifRegex();
  EXPECT_EQ(Occurrences(reverse, "TSNN"), (std::vector<int>{0, 1}));
  EXPECT_EQ(Occurrences(reverse, "TANSAJ"), (std::vector<int>{0, 3}));
}

}  // namespace
