// Which spectrum files are refused as plainly of another format than declared.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "common/TestUtil.h"
#include "spectrum/DatasetFormatCheck.h"

TEST(DatasetFormatCheckTest, OnlyPlainlyOtherFormatsAreNamed) {
  constexpr int kMgf = 2, kMzml = 4, kMzxml = 5;
  const std::string mgf = "BEGIN IONS\nTITLE=a\n100 1\nEND IONS\n";
  const std::string mzml = "\xEF\xBB\xBF<?xml version=\"1.0\"?>\n<indexedmzML><mzML>";
  struct Case {
    const char* what;
    std::string content;
    int format;
    std::string mismatch;
  } cases[] = {
      {"MGF", mgf, kMgf, ""},
      {"MGF with binary damage after its first block", mgf + std::string("\0\x13\xff", 3), kMgf, ""},
      {"empty file, left to the reader", "", kMgf, ""},
      {"text without blocks, left to the reader", "hello\n", kMgf, ""},
      {"mzML as MGF", mzml, kMgf, "it is an mzML file"},
      {"mzXML as MGF", "<?xml?><mzXML>", kMgf, "it is an mzXML file"},
      {"PNG as MGF", "\x89PNG\r\n\x1a\n", kMgf, "it is a PNG image"},
      {"binary as MGF", std::string("\0\0\x01", 3) + mgf, kMgf, "it is binary data"},
      {"mzML", mzml, kMzml, ""},
      {"MGF as mzML", mgf, kMzml, "it is an MGF file"},
      {"mzXML as mzML", "<mzXML>", kMzml, "it is an mzXML file"},
      {"mzML as mzXML", mzml, kMzxml, "it is an mzML file"},
      {"other XML, left to the reader", "<html>", kMzml, ""},
  };
  testutil::TempDir dir;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    testutil::WriteFile(dir / "f", c.content);
    EXPECT_EQ(FormatMismatch(dir / "f", c.format), c.mismatch);
  }
  // gzip is looked through for the XML formats, and plainly wrong for MGF.
  testutil::WriteFile(dir / "z", mzml);
  ASSERT_EQ(std::system(("gzip -n -f " + (dir / "z")).c_str()), 0);
  EXPECT_EQ(FormatMismatch(dir / "z.gz", kMzml), "");
  EXPECT_EQ(FormatMismatch(dir / "z.gz", kMzxml), "it is an mzML file");
  EXPECT_EQ(FormatMismatch(dir / "z.gz", kMgf), "it is gzip-compressed");
  EXPECT_EQ(FormatMismatch(dir / "missing", kMgf), "");
}
