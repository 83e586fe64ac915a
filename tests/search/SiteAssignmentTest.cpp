#include <gtest/gtest.h>

#include "SearchTestUtil.h"
#include "search/SpectrumMatcher.h"

using namespace searchtest;

namespace {
// Runs the site assignment on a library spectrum whose peaks carry the given
// match states.
std::string Site(CSpectrum& lib, const std::vector<uint32_t>& states) {
  lib.peakUsed = states;
  CSpectrumMatcher matcher;
  matcher.Init(1);
  matcher.current.library = &lib;
  matcher.AssignSite();
  return matcher.current.glycoLoc;
}

CSpectrum TwoSites(int32_t type) {
  // J at residues 2 and 5 of 8; one ion of length 3 between them.
  CSpectrum lib = Spectrum(1000, 2, {Peak(300, 1, type, 3, 1)});
  lib.sequence = "AJCDJFGH";
  lib.motifs = {{2, "NXC"}, {5, "NXF"}};
  return lib;
}
}  // namespace

TEST(SiteAssignment, TwoSitesDecidedByShiftedOrDirectIons) {
  // b3 with the glycan: the site is within the first three residues.
  CSpectrum shiftedB = TwoSites(kPeakB);
  EXPECT_EQ(Site(shiftedB, {2}), "2");
  EXPECT_EQ(shiftedB.motifs, (std::vector<CGlycoSite>{{2, "NXC"}}));
  // b3 without the glycan: not within them.
  CSpectrum directB = TwoSites(kPeakB);
  EXPECT_EQ(Site(directB, {1}), "5");
  EXPECT_EQ(directB.motifs, (std::vector<CGlycoSite>{{5, "NXF"}}));
  // y3 without the glycan allows every residue up to 5: both J tie, the first wins.
  CSpectrum directY = TwoSites(kPeakY);
  EXPECT_EQ(Site(directY, {1}), "2");
  // y5 with the glycan: the last five residues (4..8) hold J 5.
  CSpectrum shiftedY = TwoSites(kPeakY);
  shiftedY.peaks[0].position = 5;
  EXPECT_EQ(Site(shiftedY, {2}), "5");
  // Unmatched and unannotated peaks say nothing: the first J.
  CSpectrum none = TwoSites(kPeakUnannotated);
  EXPECT_EQ(Site(none, {1}), "2");
}

TEST(SiteAssignment, OneSiteIsReportedWhateverTheEvidence) {
  CSpectrum lib = Spectrum(1000, 2, {Peak(300, 1, kPeakB, 6, 1)});
  lib.sequence = "PEPJTIDE";
  lib.motifs = {{2, "NXA"}, {4, "NXT"}, {4, "NXS"}};
  EXPECT_EQ(Site(lib, {1}), "4");  // b6 direct argues against residue 4
  EXPECT_EQ(lib.motifs, (std::vector<CGlycoSite>{{4, "NXT"}}));

  // A site that has no motif entry leaves the list as it was.
  CSpectrum other = Spectrum(1000, 2, {});
  other.sequence = "PEPJTIDE";
  other.motifs = {{2, "NXA"}};
  EXPECT_EQ(Site(other, {}), "4");
  EXPECT_EQ(other.motifs.size(), 1u);
}

TEST(SiteAssignment, WithoutJEveryResidueCompetesAndTheSiteEndsInAComma) {
  CSpectrum lib = Spectrum(1000, 2, {Peak(300, 1, kPeakY, 2, 1)});
  lib.sequence = "ACDEFGH";
  lib.motifs = {{6, "NXS"}};
  EXPECT_EQ(Site(lib, {0}), "1,");  // no evidence: residue 1
  EXPECT_EQ(Site(lib, {2}), "6,");  // y2 with the glycan: residues 6 and 7 tie
  EXPECT_EQ(lib.motifs.size(), 1u);
  // A damaged position beyond the sequence is passed over.
  lib.peaks[0].position = 40;
  EXPECT_EQ(Site(lib, {2}), "1,");
}
