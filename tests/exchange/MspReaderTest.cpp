// MSP reading: what a record gives, and that a faulty record spoils none after it.
#include <gtest/gtest.h>

#include "common/TestUtil.h"
#include "exchange/ExportedRun.h"
#include "exchange/MspReader.h"

namespace {

std::vector<CMspRecord> Read(const std::string& text, std::size_t& faulty) {
  testutil::TempDir dir;
  testutil::WriteFile(dir / "lib.msp", text);
  std::vector<CMspRecord> records;
  bool opened = false;
  testing::internal::CaptureStdout();
  faulty = ReadMspFile(dir / "lib.msp", [&](const CMspRecord& r) { records.push_back(r); }, opened);
  testing::internal::GetCapturedStdout();
  EXPECT_TRUE(opened);
  return records;
}

TEST(MspReader, RecordsGiveFieldsCommentItemsAndAnnotatedPeaksInAnyLineEnd) {
  std::size_t faulty = 0;
  const std::vector<CMspRecord> records = Read(
      "Name: AANGTK/2_1(2,N,Deamidated)\r\nMW: 589.3\r\n"
      "Comment: Mods=1/2,N,Deamidated Protein=\"sp|P1|A B\" Nreps=3\r\n"
      "Num Peaks: 2\r\n147.11 120 \"y1/0.0 2/3\"\r\n260.2\t999.5\r\n",
      faulty);
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(faulty, 0u);
  const CMspRecord& r = records[0];
  EXPECT_EQ(r.name, "AANGTK/2_1(2,N,Deamidated)");
  EXPECT_EQ(r.fields.at("mw"), "589.3");
  EXPECT_EQ(r.comment.at("Protein"), "sp|P1|A B");
  EXPECT_EQ(r.comment.at("Mods"), "1/2,N,Deamidated");
  ASSERT_EQ(r.peaks.size(), 2u);
  EXPECT_DOUBLE_EQ(r.peaks[0].intensity, 120.0);
  EXPECT_EQ(r.peaks[0].annotation, "y1/0.0 2/3");
  EXPECT_DOUBLE_EQ(r.peaks[1].mz, 260.2);
  EXPECT_EQ(r.peaks[1].annotation, "");
}

TEST(MspReader, FaultyRecordsAreSkippedAndTheRecordsAfterThemRead) {
  const std::string good = "Name: GOOD/2\nNum peaks: 1\n100.0\t1\n\n";
  std::size_t faulty = 0;
  const std::vector<CMspRecord> records = Read(
      good + "Name: TOOMANY/2\nNum peaks: 1\n100.0\t1\n200.0\t1\n\n" + good +
          "Name: NOTANUMBER/2\nNum peaks: 1\nabc\t1\n\n" + good + "Name: CUT/2\nNum peaks: 2\n100.0\t1\n",
      faulty);
  EXPECT_EQ(faulty, 3u);
  ASSERT_EQ(records.size(), 3u);
  EXPECT_EQ(records[2].number, 5u);  // numbers count every record, faulty ones too
}

TEST(GlycanCompositionText, PrintsTheCountsInTheFieldsOrderWithoutZeros) {
  EXPECT_EQ(GlycanCompositionText("5-4-1-0-1"), "HexNAc(4)Hex(5)dHex(1)NeuAc(1)");
  EXPECT_EQ(GlycanCompositionText("3-2-0-2-0"), "HexNAc(2)Hex(3)NeuGc(2)");
}

}  // namespace
