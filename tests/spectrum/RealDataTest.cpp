// Real files of third-party converters and instruments.
#include <gtest/gtest.h>

#include <cmath>
#include <iomanip>
#include <string>
#include <vector>

#include "SpectrumTestUtil.h"
#include "common/TestUtil.h"

using spectest::MhOf;

namespace {
struct Expected {
  int format;
  const char* file;
  uint32_t count;         // spectra in the file
  const char* name;       // of the first spectrum in name order
  uint32_t charge;
  double precursorMass;
  std::size_t peaks;
  double firstMz;
};
}  // namespace

TEST(RealDataTest, FirstSpectrumOfEachFile) {
  SKIP_WITHOUT_REALDATA();
  const Expected cases[] = {
      // CRLF line ends.
      {2, "crux-toolkit/scaffold_test.mgf", 45,
       "ScaffoldIDNumber_1019_o100720_3prot_01.8704.8704.3.dta", 3, 0.0, 253, 175.133},
      // "TITLE= 1 : Scan 136 ..." names the spectrum "1": the word after the blanks.
      {2, "jmzReader/custom_tags.mgf", 8, "1", 1, 371.30721, 80, 71.096626},
      // A global header; CHARGE=2+,3+ takes the first charge.
      {2, "jmzReader/F001257.mgf", 10, "PRIDE_Exp_mzData_Ac_9266.xml_id_1", 2, MhOf(406.283, 2),
       54, 145.1191},
      // Each line followed by "\r\r\r": one line end, no repeated peaks.
      {2, "jmzReader/strange_eol.mgf", 5, "O070512-03.10.2581.1.dta", 1, 610.18384, 1172, 172.89},
      {2, "glycopeptide_feature_learning/test1.mgf", 1, nullptr, 5, MhOf(914.003597, 5), 835,
       120.080574036},
      // "Spectrum 1", "Spectrum 2": titles that share their first word, named by scan or block.
      {2, "pyteomics/test.mgf", 2, "test.1.1.2", 2, MhOf(983.6, 2), 6, 846.60},
      // '#' lines inside the peak list repeat the peak before them (twice).
      {2, "MetaMorpheus/22-12-14_EclipseOglyco_EThcD_150ms_calRxn_17360.mgf", 1, nullptr, 4,
       MhOf(976.7354, 4), 1052, 0.0},
      {1, "jmzReader/QSTAR1a", 10, "1a.270.2.1997.1997.2.dta", 2, 539.3453, 41, 86.1006},
      {1, "OpenMS/DTAFile_test.dta", 1, "DTAFile_test.dta", 3, 1745.22, 25, 0.0},
  };
  for (const Expected& want : cases) {
    SCOPED_TRACE(want.file);
    const std::string path = testutil::RealData(want.file);
    if (!testutil::FileExists(path)) continue;  // the collection may lack a file
    const spectest::Loaded loaded = spectest::Load(want.format, path);
    EXPECT_EQ(loaded.count, want.count);
    ASSERT_EQ(loaded.spectra.size(), want.count);
    const CSpectrum& s = loaded.spectra[0];
    EXPECT_TRUE(!want.name || s.name == want.name) << s.name;
    EXPECT_EQ(s.charge, want.charge);
    EXPECT_TRUE(want.precursorMass == 0.0 || s.precursorMass == want.precursorMass)
        << std::setprecision(17) << s.precursorMass;
    EXPECT_EQ(s.peaks.size(), want.peaks);
    EXPECT_TRUE(want.firstMz == 0.0 || s.peaks.at(0).mz == want.firstMz) << s.peaks.at(0).mz;
    for (std::size_t i = 1; i < loaded.spectra.size(); ++i)
      EXPECT_LT(loaded.spectra[i - 1].name, loaded.spectra[i].name);
  }
}

TEST(RealDataTest, NaNIntensities) {
  SKIP_WITHOUT_REALDATA();
  const std::string path = testutil::RealData("MetaMorpheus/tinySemiBroken.mgf");
  if (!testutil::FileExists(path)) GTEST_SKIP() << "the collection lacks " << path;
  const std::vector<CPeak> peaks = spectest::Load(2, path).spectra.at(0).peaks;
  ASSERT_EQ(peaks.size(), 1u);
  EXPECT_EQ(peaks[0].mz, 101.0703067);
  EXPECT_TRUE(std::isnan(peaks[0].intensity));
}
