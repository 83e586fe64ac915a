#include <gtest/gtest.h>

#include <cmath>

#include "SearchTestUtil.h"
#include "common/TestUtil.h"
#include "search/SpectralLibrary.h"

using namespace searchtest;

namespace {
std::string Entry(const std::string& name, double mass, int charge,
                  const std::vector<std::string>& peaks) {
  std::string text = "ID=1\nSpectrumName=" + name +
                     "\nSequence=PEPJTIDE\nModifications=-\nPrecursorIonMass=" +
                     std::to_string(mass) + "\nCharge=" + std::to_string(charge) +
                     "\nFrequency=1\nProteinAC=P1\nPrevAA=K\nLastAA=AV\nStartPostion=3\n"
                     "N Glycan Motif=4:NXT\nPeaks=" + std::to_string(peaks.size()) + "\n";
  for (const auto& p : peaks) text += p + "\n";
  return text + "\n";
}

// Loads a library file without a mass table (no candidate selection needed).
CSpectralLibrary LoadFile(const std::string& path) {
  CSpectralLibrary lib;
  lib.file.pathname = path;
  lib.file.format = 0;
  lib.Load();
  return lib;
}

const CSpectrum* Named(const CSpectralLibrary& lib, const std::string& name) {
  for (const CSpectrum& s : lib.spectra)
    if (s.name == name) return &s;
  return nullptr;
}
}  // namespace

TEST(LibraryLoad, TrimsCountsAnnotatedPeaksNormalisesAndIndexesByCharge) {
  testutil::TempDir dir;
  const std::string path = dir / "lib.quolib";
  testutil::WriteFile(
      path, Entry("1", 1000.0, 2,
                  {"2500.0000 3.0000 1 0 5 1", "100.0000 4.0000 1 4 0 0",
                   "2500.5000 2.0000 1 1 5 1", "300.0000 0.0000 1 2 1 1"}) +
                Entry("2", 1100.0, 9, {"200.0000 1.0000 1 0 2 1"}) +
                Entry("3", 900.0, 3, {"2600.0000 1.0000 1 4 0 0"}) +
                Entry("4", 900.0, 2, {"200.0000 1.0000 1 4 0 0", "300.0000 nan 1 0 2 1"}) +
                Entry("5", 800.0, 0, {}));
  CSpectralLibrary lib = LoadFile(path);
  ASSERT_EQ(lib.spectra.size(), 5u);

  const CSpectrum* one = Named(lib, "1");
  ASSERT_NE(one, nullptr);
  // The annotated peak just above 2500 is gone and no longer counted; the one
  // at 2500 stays; the result is sorted and has unit length.
  EXPECT_EQ(Mzs(*one), (std::vector<double>{100, 300, 2500}));
  EXPECT_EQ(one->topPeakCount, 2u);
  EXPECT_DOUBLE_EQ(one->peaks[0].intensity, 0.8);
  EXPECT_DOUBLE_EQ(one->peaks[2].intensity, 0.6);

  // A lone peak above 2500 stays; no annotated peak gives 0.
  const CSpectrum* three = Named(lib, "3");
  ASSERT_NE(three, nullptr);
  EXPECT_EQ(Mzs(*three), (std::vector<double>{2600}));
  EXPECT_EQ(three->topPeakCount, 0u);
  // A peak that reads as not-a-number is dropped.
  EXPECT_EQ(Mzs(*Named(lib, "4")), (std::vector<double>{200}));

  ASSERT_EQ(lib.massIndex.size(), 9u);
  EXPECT_EQ(lib.massIndex[0].size(), 1u);  // built, never searched
  ASSERT_EQ(lib.massIndex[2].size(), 2u);
  EXPECT_EQ(lib.massIndex[2][0].mass, 900.0);  // ascending mass
  EXPECT_EQ(lib.massIndex[3].size(), 1u);
  std::size_t indexed = 0;
  for (const auto& row : lib.massIndex) indexed += row.size();
  EXPECT_EQ(indexed, 4u);  // charge 9 is loaded but not indexed
}

TEST(LibraryLoad, DamagedOrMissingFilesLoadInAnOrderlyWay) {
  testutil::TempDir dir;
  // Cut in the middle of the peak lines.
  std::string whole = Entry("1", 1000.0, 2, {"200.0000 1.0000 1 0 2 1"}) +
                      Entry("2", 1000.0, 2, {"200.0000 1.0000 1 0 2 1", "300.0000 1.0000 1 1 2 1",
                                             "400.0000 1.0000 1 1 3 1"});
  testutil::WriteFile(dir / "cut.quolib", whole.substr(0, whole.size() - 40));
  CSpectralLibrary cut = LoadFile(dir / "cut.quolib");
  EXPECT_EQ(cut.spectra.size(), 2u);
  for (const CSpectrum& s : cut.spectra) {
    double sum = 0;
    for (const CPeak& p : s.peaks) sum += p.intensity * p.intensity;
    EXPECT_TRUE(s.peaks.empty() || std::fabs(sum - 1.0) < 1e-12);
  }

  std::string garbage;
  for (int i = 0; i < 5000; ++i) garbage += static_cast<char>((i * 7919) % 256);
  testutil::WriteFile(dir / "garbage.quolib", garbage);
  CSpectralLibrary junk = LoadFile(dir / "garbage.quolib");
  EXPECT_LE(junk.spectra.size(), 5000u);

  CSpectralLibrary missing = LoadFile(dir / "absent.quolib");
  EXPECT_TRUE(missing.spectra.empty());
  EXPECT_EQ(missing.massIndex.size(), 9u);
}
