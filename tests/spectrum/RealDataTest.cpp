// Real files of third-party converters and instruments.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "common/TestUtil.h"
#include "spectrum/SpecIO.h"

namespace {
constexpr double kProton = 1.00727647012;

struct Loaded {
  uint32_t count = 0;
  std::vector<CSpectrum> spectra;
};

// Reads a real file in place, or skips the test when the collection lacks it.
#define LOAD_OR_SKIP(var, format, relative)                              \
  const std::string var##Path = testutil::RealData(relative);            \
  if (!testutil::FileExists(var##Path)) GTEST_SKIP() << relative;        \
  const Loaded var = Load(format, var##Path)

Loaded Load(int format, const std::string& path) {
  std::unique_ptr<CSpecIO> io(CreateSpecIO(format));
  io->OpenRead(path);
  Loaded loaded;
  loaded.count = io->Count();
  io->ReadAll(loaded.spectra);
  return loaded;
}

double MhOf(double mz, int charge) { return (mz - kProton) * charge + kProton; }
}  // namespace

TEST(RealDataTest, MgfFromScaffoldWithCrlf) {
  LOAD_OR_SKIP(mgf, 2, "crux-toolkit/scaffold_test.mgf");
  EXPECT_EQ(mgf.count, 45u);
  ASSERT_EQ(mgf.spectra.size(), 45u);
  const CSpectrum& s = mgf.spectra[0];
  EXPECT_EQ(s.name, "ScaffoldIDNumber_1019_o100720_3prot_01.8704.8704.3.dta");
  EXPECT_EQ(s.charge, 3u);
  EXPECT_EQ(s.peaks.size(), 253u);
  EXPECT_EQ(s.peaks.front().mz, 175.133);
  EXPECT_EQ(s.peaks.front().intensity, 37.09);
  for (std::size_t i = 1; i < mgf.spectra.size(); ++i) {
    EXPECT_LT(mgf.spectra[i - 1].name, mgf.spectra[i].name);
  }
}

TEST(RealDataTest, MgfFromMascotDistillerWithCommentsAndTabs) {
  LOAD_OR_SKIP(mgf, 2, "jmzReader/custom_tags.mgf");
  // "TITLE= 1 : Scan 136 ..." names the spectrum "1": the word after the blanks.
  EXPECT_EQ(mgf.count, 8u);
  ASSERT_FALSE(mgf.spectra.empty());
  const CSpectrum& s = mgf.spectra[0];
  EXPECT_EQ(s.name, "1");
  EXPECT_EQ(s.charge, 1u);
  EXPECT_DOUBLE_EQ(s.precursorMass, 371.30721);
  ASSERT_EQ(s.peaks.size(), 80u);
  EXPECT_EQ(s.peaks[0].mz, 71.096626);
  EXPECT_EQ(s.peaks[0].intensity, 26.201022);
  EXPECT_DOUBLE_EQ(mgf.spectra[1].precursorMass, MhOf(294.21098, 2));
}

TEST(RealDataTest, MgfWithGlobalHeaderAndTwoCharges) {
  LOAD_OR_SKIP(mgf, 2, "jmzReader/F001257.mgf");
  EXPECT_EQ(mgf.count, 10u);
  ASSERT_FALSE(mgf.spectra.empty());
  const CSpectrum& s = mgf.spectra[0];  // CHARGE=2+,3+ takes the first charge
  EXPECT_EQ(s.name, "PRIDE_Exp_mzData_Ac_9266.xml_id_1");
  EXPECT_EQ(s.charge, 2u);
  EXPECT_DOUBLE_EQ(s.precursorMass, MhOf(406.283, 2));
  EXPECT_EQ(s.peaks.size(), 54u);
  EXPECT_EQ(s.peaks[0].mz, 145.1191);
}

TEST(RealDataTest, MgfWithOnlyCarriageReturns) {
  LOAD_OR_SKIP(mgf, 2, "jmzReader/strange_eol.mgf");
  // Each peak line is followed by "\r\r\r": one line end, no repeated peaks.
  EXPECT_EQ(mgf.count, 5u);
  ASSERT_EQ(mgf.spectra.size(), 5u);
  const CSpectrum& s = mgf.spectra[0];
  EXPECT_EQ(s.name, "O070512-03.10.2581.1.dta");
  EXPECT_EQ(s.charge, 1u);
  EXPECT_DOUBLE_EQ(s.precursorMass, 610.18384);
  ASSERT_EQ(s.peaks.size(), 1172u);
  EXPECT_EQ(s.peaks[0].mz, 172.89);
  EXPECT_EQ(s.peaks[1].mz, 177.39);
  EXPECT_EQ(mgf.spectra[1].peaks.size(), 114u);
}

TEST(RealDataTest, MgfOfGlycopeptidesWithThreeColumnsCommentsAndNaN) {
  {
    LOAD_OR_SKIP(mgf, 2, "glycopeptide_feature_learning/test1.mgf");
    ASSERT_EQ(mgf.spectra.size(), 1u);
    const CSpectrum& s = mgf.spectra[0];
    EXPECT_EQ(s.charge, 5u);
    EXPECT_DOUBLE_EQ(s.precursorMass, MhOf(914.003597, 5));
    EXPECT_EQ(s.peaks.size(), 835u);
    EXPECT_EQ(s.peaks[0].mz, 120.080574036);
    EXPECT_EQ(s.peaks[0].intensity, 8482.28125);
  }
  {
    // '#' lines inside the peak list repeat the peak before them.
    LOAD_OR_SKIP(mgf, 2, "MetaMorpheus/22-12-14_EclipseOglyco_EThcD_150ms_calRxn_17360.mgf");
    ASSERT_EQ(mgf.spectra.size(), 1u);
    const CSpectrum& s = mgf.spectra[0];
    EXPECT_EQ(s.charge, 4u);
    EXPECT_DOUBLE_EQ(s.precursorMass, MhOf(976.7354, 4));
    ASSERT_EQ(s.peaks.size(), 1052u);
    int repeats = 0;
    for (std::size_t i = 1; i < s.peaks.size(); ++i) {
      if (s.peaks[i].mz == s.peaks[i - 1].mz && s.peaks[i].intensity == s.peaks[i - 1].intensity) {
        ++repeats;
      }
    }
    EXPECT_EQ(repeats, 2);
  }
  {
    LOAD_OR_SKIP(mgf, 2, "MetaMorpheus/tinySemiBroken.mgf");
    ASSERT_EQ(mgf.spectra.size(), 1u);
    ASSERT_EQ(mgf.spectra[0].peaks.size(), 1u);
    EXPECT_EQ(mgf.spectra[0].peaks[0].mz, 101.0703067);
    EXPECT_TRUE(std::isnan(mgf.spectra[0].peaks[0].intensity));
  }
}

TEST(RealDataTest, DtaDirectoryFromQstarAndSingleOpenMsFiles) {
  {
    LOAD_OR_SKIP(dta, 1, "jmzReader/QSTAR1a");
    EXPECT_EQ(dta.count, 10u);
    ASSERT_EQ(dta.spectra.size(), 10u);
    const CSpectrum& s = dta.spectra[0];
    EXPECT_EQ(s.name, "1a.270.2.1997.1997.2.dta");
    EXPECT_EQ(s.precursorMass, 539.3453);
    EXPECT_EQ(s.charge, 2u);
    EXPECT_EQ(s.peaks.size(), 41u);
    EXPECT_EQ(s.peaks[0].mz, 86.1006);
    EXPECT_EQ(s.peaks[0].intensity, 4.0);
  }
  {
    LOAD_OR_SKIP(dta, 1, "OpenMS/DTAFile_test.dta");
    ASSERT_EQ(dta.spectra.size(), 1u);
    const CSpectrum& s = dta.spectra[0];
    EXPECT_EQ(s.name, "DTAFile_test.dta");
    EXPECT_EQ(s.precursorMass, 1745.22);
    EXPECT_EQ(s.charge, 3u);
    EXPECT_EQ(s.peaks.size(), 25u);
    EXPECT_EQ(s.peaks[1].intensity, 61870.99);
  }
}
