// Library loading, the mass index and candidate selection.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <tuple>

#include "SearchTestUtil.h"
#include "common/TestUtil.h"
#include "search/SpectralLibrary.h"

using namespace searchtest;
using Names = std::vector<std::string>;

namespace {
std::string Entry(const std::string& name, double mass, int charge, const std::string& peaks) {
  return "ID=1\nSpectrumName=" + name + "\nSequence=PEPJTIDE\nModifications=-\nPrecursorIonMass=" +
         std::to_string(mass) + "\nCharge=" + std::to_string(charge) + "\nFrequency=1\n"
         "ProteinAC=P\nPrevAA=K\nLastAA=AV\nStartPostion=3\nN Glycan Motif=4:NXT\nPeaks=" +
         std::to_string(std::count(peaks.begin(), peaks.end(), '\n')) + "\n" + peaks + "\n";
}

// A library in memory: entries of (mass, charge) named by their index.
void Fill(CSpectralLibrary& lib, const std::vector<std::pair<double, uint32_t>>& entries,
          const std::vector<std::pair<std::string, double>>& glycans) {
  lib.spectra.clear();
  for (std::size_t i = 0; i < entries.size(); ++i) {
    lib.spectra.push_back(Spectrum(entries[i].first, entries[i].second));
    lib.spectra.back().name = std::to_string(i);
  }
  lib.massTable.glycans.clear();
  for (const auto& [name, mass] : glycans) lib.massTable.AddGlycan(name, mass);
  lib.massTable.SortGlycans();
  lib.BuildIndex();
}

// Loaded entry i with its peaks read back from the library's table, where
// loading moved them.
CSpectrum Loaded(const CSpectralLibrary& lib, std::size_t i) {
  CSpectrum entry = lib.spectra[i];
  CEntryPeakView view;
  EXPECT_TRUE(entry.peaks.empty() && lib.peakTable.Find(lib.spectra[i], view));
  for (std::size_t k = 0; k < view.peakCount; ++k) entry.peaks.push_back(view.Peak(k));
  return entry;
}

// Candidate names, and the glycan names of each, in order.
std::pair<Names, std::vector<Names>> Select(CSpectralLibrary& lib, double mass,
                                            bool neuAc = false, bool byWalk = false) {
  CSpectrum query = Spectrum(mass, 3);
  query.hasNeuAc = neuAc;
  std::vector<CSpectrum*> candidates;
  CGlycanLists lists;
  if (byWalk) lib.SelectCandidatesByWalk(query, candidates, lists);
  else lib.SelectCandidates(query, candidates, lists);
  std::pair<Names, std::vector<Names>> out;
  for (std::size_t i = 0; i < candidates.size(); ++i) {
    out.first.push_back(candidates[i]->name);
    out.second.emplace_back();
    for (const CGlycan* g : lists[i]) out.second.back().push_back(g->name);
  }
  EXPECT_EQ(candidates.size(), lists.size());
  return out;
}
}  // namespace

TEST(SpectralLibrary, LoadTrimsCountsAnnotatedPeaksNormalisesAndIndexesByCharge) {
  testutil::TempDir dir;
  testutil::WriteFile(
      dir / "lib.quolib",
      Entry("1", 1000, 2, "2500 3 1 0 5 1\n100 4 1 4 0 0\n2500.5 2 1 1 5 1\n300 0 1 2 1 1\n") +
          Entry("2", 1100, 9, "200 1 1 0 2 1\n210 1 1 7 5000 9\n") + Entry("3", 900, 3, "2600 1 1 4 0 0\n") +
          Entry("4", 900, 2, "200 1 1 4 0 0\n300 nan 1 0 2 1\n") + Entry("5", 800, 0, ""));
  CSpectralLibrary lib;
  lib.file = {dir / "lib.quolib", 0};
  lib.Load();
  ASSERT_EQ(lib.spectra.size(), 5u);
  // The annotated peak above 2500 is gone and no longer counted, the one at 2500
  // stays; sorted, unit length.
  const CSpectrum first = Loaded(lib, 0);
  EXPECT_EQ(Mzs(first), (std::vector<double>{100, 300, 2500}));
  EXPECT_EQ(first.topPeakCount, 2u);
  EXPECT_DOUBLE_EQ(first.peaks[0].intensity, 0.8);
  EXPECT_DOUBLE_EQ(first.peaks[2].intensity, 0.6);
  EXPECT_EQ(first.peaks[2].GetIonName(), "b5+");
  // Labels come back as read, also those outside the common range.
  const CSpectrum second = Loaded(lib, 1);
  ASSERT_EQ(second.peaks.size(), 2u);
  EXPECT_EQ(second.peaks[0].GetIonName(), "b2+");
  EXPECT_EQ(std::tuple(second.peaks[1].type, second.peaks[1].position, second.peaks[1].charge),
            std::tuple(7, 5000u, 9u));
  // A lone peak above 2500 stays; no annotated peak counts 0; a NaN peak goes.
  EXPECT_EQ(Mzs(Loaded(lib, 2)), (std::vector<double>{2600}));
  EXPECT_EQ(lib.spectra[2].topPeakCount, 0u);
  EXPECT_EQ(Mzs(Loaded(lib, 3)), (std::vector<double>{200}));
  // Rows by charge in ascending mass; row 0 built; charge 9 loaded, not indexed.
  ASSERT_EQ(lib.massIndex.size(), 9u);
  EXPECT_EQ(lib.massIndex[0].size(), 1u);
  ASSERT_EQ(lib.massIndex[2].size(), 2u);
  EXPECT_EQ(lib.massIndex[2][0].mass, 900.0);
  EXPECT_EQ(lib.massIndex[3].size(), 1u);
  // A missing file gives an empty library with its rows.
  lib.file.pathname = dir / "absent.quolib";
  lib.Load();
  EXPECT_TRUE(lib.spectra.empty());
  EXPECT_EQ(lib.massIndex.size(), 9u);
}

TEST(CandidateSelection, GlycanIntervalRowsAndTheNeuAcRule) {
  SetTolerances(0.02, 0, 0.5, 0);
  CSpectralLibrary lib;
  // Glycan 1000 fits a delta from 999.5 (included) to 1000.5 (excluded).
  Fill(lib, {{2000.5, 2}, {1999.5, 2}, {2000.0, 2}, {2000.25, 2}}, {{"g", 1000.0}});
  EXPECT_EQ(Select(lib, 3000.0).first, (Names{"2", "3", "0"}));
  // Row 2 before row 3 whatever the query's charge; 1200 fits only the NeuAc
  // glycan; 3000.2 is heavier than the query; charges 0 and 9 are out of reach
  // although the NeuGc glycan (no marker needed) fits them.
  Fill(lib, {{1500.0, 3}, {1500.0, 2}, {1200.0, 2}, {3000.2, 2}, {1000.0, 0}, {1000.0, 9}},
       {{"5-4-0-0-0", 1500.0}, {"5-4-1-0-0", 1800.0}, {"5-4-0-1-0", 2000.0}});
  EXPECT_EQ(Select(lib, 3000.0), (std::pair{Names{"1", "0"}, std::vector{Names{"5-4-0-0-0"},
                                                                          Names{"5-4-0-0-0"}}}));
  EXPECT_EQ(Select(lib, 3000.0, true).first, (Names{"2", "1", "0"}));
  EXPECT_EQ(Select(lib, 3000.0, true).second[0], (Names{"5-4-1-0-0"}));
  // Several glycans come in table order; a NeuAc one needs the marker.
  Fill(lib, {{1000.0, 2}}, {{"b", 1000.3}, {"a", 999.8}, {"5-0-1-0-0", 1000.1}});
  EXPECT_EQ(Select(lib, 2000.0).second[0], (Names{"a", "b"}));
  EXPECT_EQ(Select(lib, 2000.0, true).second[0], (Names{"a", "5-0-1-0-0", "b"}));
  EXPECT_TRUE(Select(lib, NAN).first.empty());
  // ppm is taken of the query's mass: 10 ppm of 4000 is 0.04.
  SetTolerances(0.02, 0, 10, 1);
  Fill(lib, {{2000.0, 2}, {2000.05, 2}, {1999.97, 2}}, {{"g", 2000.0}});
  EXPECT_EQ(Select(lib, 4000.0).first, (Names{"2", "0"}));
}

// The fast selection must give exactly what the walk over every entry gives,
// also for queries and entries right on the interval ends and repeated masses.
TEST(CandidateSelection, FastSelectionEqualsTheWalkOnRandomData) {
  std::mt19937_64 rng(12345);
  std::uniform_real_distribution<double> massDist(500.0, 4000.0), glycanDist(800.0, 3500.0);
  auto tolerance = [](double m) { return CParam::GetInstance().QueryPrecursorTolerance(m); };
  for (int round = 0; round < 6; ++round) {
    const bool ppm = round % 2 == 1;
    SetTolerances(0.02, 0, ppm ? 10.0 + round : 0.05 * round + 0.01, ppm ? 1 : 0);
    std::vector<std::pair<std::string, double>> glycans;  // every 4th with NeuAc
    for (int g = 0; g < 60; ++g)
      glycans.push_back({"0-4-" + std::to_string(g % 4 == 0) + "-0-" + std::to_string(g),
                         g % 10 == 9 ? glycans.back().second : glycanDist(rng)});
    std::vector<std::pair<double, uint32_t>> entries;
    for (int e = 0; e < 3000; ++e)
      entries.push_back({e % 50 == 49 ? entries.back().first : massDist(rng),
                         static_cast<uint32_t>(rng() % 11)});
    std::vector<double> queries;
    for (int q = 0; q < 150; ++q) {
      const double base = entries[rng() % 3000].first + glycans[rng() % 60].second;
      const double t = tolerance(base);
      const double choices[] = {base, base + t, base - t, std::nextafter(base + t, 1e9),
                                std::nextafter(base - t, 0.0), massDist(rng) + glycanDist(rng)};
      queries.push_back(choices[q % 6]);
      const double g = glycans[rng() % 60].second, at = queries.back(), tq = tolerance(at);
      if (q < 40) entries.insert(entries.end(), {{at - g - tq, 2}, {at - g + tq, 3}});
    }
    CSpectralLibrary lib;
    Fill(lib, entries, glycans);
    std::size_t total = 0;
    for (std::size_t q = 0; q < queries.size(); ++q) {
      auto walk = Select(lib, queries[q], q % 3 == 0, true);
      ASSERT_EQ(Select(lib, queries[q], q % 3 == 0), walk) << round << " " << q;
      total += walk.first.size();
    }
    EXPECT_GT(total, queries.size() / 2);  // the test did see candidates
  }
}
