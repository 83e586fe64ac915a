#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "SearchTestUtil.h"
#include "search/SpectralLibrary.h"

using namespace searchtest;

namespace {

// A library held in memory: entries of (mass, charge), glycans of (name, mass).
void Fill(CSpectralLibrary& lib, const std::vector<std::pair<double, uint32_t>>& entries,
          const std::vector<std::pair<std::string, double>>& glycans) {
  lib.spectra.clear();
  for (std::size_t i = 0; i < entries.size(); ++i) {
    CSpectrum s = Spectrum(entries[i].first, entries[i].second);
    s.name = std::to_string(i);
    lib.spectra.push_back(s);
  }
  lib.massTable.glycans.clear();
  for (const auto& [name, mass] : glycans) lib.massTable.AddGlycan(name, mass);
  lib.massTable.SortGlycans();
  lib.BuildIndex();
}

struct Selection {
  std::vector<std::string> names;                 // candidate names in order
  std::vector<std::vector<std::string>> glycans;  // glycan names per candidate
  bool operator==(const Selection&) const = default;
};

Selection Select(CSpectralLibrary& lib, const CSpectrum& query, bool byWalk = false) {
  std::vector<CSpectrum*> candidates;
  CGlycanLists lists;
  if (byWalk) lib.SelectCandidatesByWalk(query, candidates, lists);
  else lib.SelectCandidates(query, candidates, lists);
  Selection out;
  EXPECT_EQ(candidates.size(), lists.size());
  for (std::size_t i = 0; i < candidates.size(); ++i) {
    out.names.push_back(candidates[i]->name);
    out.glycans.emplace_back();
    EXPECT_FALSE(lists[i].empty());
    for (const CGlycan* g : lists[i]) out.glycans.back().push_back(g->name);
  }
  return out;
}

CSpectrum Query(double mass, bool neuAc = false) {
  CSpectrum q = Spectrum(mass, 3);
  q.hasNeuAc = neuAc;
  return q;
}

}  // namespace

TEST(CandidateSelection, GlycanIntervalIsClosedBelowOpenAbove) {
  SetTolerances(0.02, 0, 0.5, 0);
  CSpectralLibrary lib;
  // Glycan 1000: fits a delta from 999.5 (included) to 1000.5 (excluded).
  Fill(lib, {{2000.5, 2}, {1999.5, 2}, {2000.0, 2}, {2000.25, 2}},
       {{"5-2-0-0-0", 1000.0}});
  Selection s = Select(lib, Query(3000.0));
  EXPECT_EQ(s.names, (std::vector<std::string>{"2", "3", "0"}));  // ascending mass, 1999.5 out
  EXPECT_EQ(s, Select(lib, Query(3000.0), true));
}

TEST(CandidateSelection, RowsInChargeOrderNeuAcNeedsMarkerHeavierEntryOut) {
  SetTolerances(0.02, 0, 0.5, 0);
  CSpectralLibrary lib;
  Fill(lib,
       {{1500.0, 3}, {1500.0, 2}, {1200.0, 2}, {3000.2, 2}, {1000.0, 0}, {1000.0, 9}},
       {{"5-4-0-0-0", 1500.0}, {"5-4-1-0-0", 1800.0}, {"5-4-0-1-0", 2000.0}});
  // Same peptide in rows 2 and 3: row 2 first, whatever the query's charge.
  // 1200 fits only the NeuAc glycan; 3000.2 is heavier than the query; charge
  // 0 and 9 are out of reach although 2000 (NeuGc, no marker needed) fits them.
  Selection plain = Select(lib, Query(3000.0));
  EXPECT_EQ(plain.names, (std::vector<std::string>{"1", "0"}));
  EXPECT_EQ(plain.glycans[0], (std::vector<std::string>{"5-4-0-0-0"}));
  Selection sialic = Select(lib, Query(3000.0, true));
  EXPECT_EQ(sialic.names, (std::vector<std::string>{"2", "1", "0"}));
  EXPECT_EQ(sialic.glycans[0], (std::vector<std::string>{"5-4-1-0-0"}));
  EXPECT_EQ(plain, Select(lib, Query(3000.0), true));
  EXPECT_EQ(sialic, Select(lib, Query(3000.0, true), true));

  // Several glycans within tolerance come in table order; a NeuAc one among
  // them is dropped without the marker.
  CSpectralLibrary wide;
  Fill(wide, {{1000.0, 2}}, {{"b", 1000.3}, {"a", 999.8}, {"5-0-1-0-0", 1000.1}});
  EXPECT_EQ(Select(wide, Query(2000.0)).glycans[0], (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(Select(wide, Query(2000.0, true)).glycans[0],
            (std::vector<std::string>{"a", "5-0-1-0-0", "b"}));

  // No glycans, an empty library, a query of no finite mass: nothing.
  CSpectralLibrary none;
  Fill(none, {{1000.0, 2}}, {});
  EXPECT_TRUE(Select(none, Query(2000.0)).names.empty());
  CSpectralLibrary empty;
  Fill(empty, {}, {{"a", 1000.0}});
  EXPECT_TRUE(Select(empty, Query(2000.0)).names.empty());
  EXPECT_TRUE(Select(wide, Query(NAN)).names.empty());
}

TEST(CandidateSelection, PpmToleranceIsTakenOfTheQueryMass) {
  // 10 ppm of 4000 is 0.04.
  SetTolerances(0.02, 0, 10, 1);
  CSpectralLibrary lib;
  Fill(lib, {{2000.0, 2}, {2000.05, 2}, {1999.97, 2}}, {{"g", 2000.0}});
  EXPECT_EQ(Select(lib, Query(4000.0)).names, (std::vector<std::string>{"2", "0"}));
}

// The fast selection must give exactly what the walk over every entry gives,
// also for entries placed right on the interval ends and for repeated masses.
TEST(CandidateSelection, FastSelectionEqualsTheWalkOnRandomData) {
  std::mt19937_64 rng(12345);
  std::uniform_real_distribution<double> massDist(500.0, 4000.0);
  std::uniform_real_distribution<double> glycanDist(800.0, 3500.0);
  std::uniform_int_distribution<int> chargeDist(0, 10);
  for (int round = 0; round < 6; ++round) {
    const bool ppm = round % 2 == 1;
    SetTolerances(0.02, 0, ppm ? 10.0 + round : 0.05 * round + 0.01, ppm ? 1 : 0);
    std::vector<std::pair<std::string, double>> glycans;
    for (int g = 0; g < 60; ++g) {
      double m = glycanDist(rng);
      if (g % 10 == 9) m = glycans.back().second;  // repeated masses
      glycans.push_back({std::to_string(g % 3) + "-4-" + std::to_string(g % 4 == 0) + "-0-" +
                             std::to_string(g), m});
    }
    std::vector<std::pair<double, uint32_t>> entries;
    for (int e = 0; e < 3000; ++e) {
      double m = massDist(rng);
      if (e % 50 == 49) m = entries.back().first;  // repeated masses
      entries.push_back({m, static_cast<uint32_t>(chargeDist(rng))});
    }
    std::vector<double> queries;
    for (int q = 0; q < 150; ++q) {
      const auto& entry = entries[rng() % entries.size()];
      const double g = glycans[rng() % glycans.size()].second;
      const double base = entry.first + g;
      const double tol = ppm ? CParam::GetInstance().QueryPrecursorTolerance(base)
                             : CParam::GetInstance().search.query_precursor_ion_tolerance;
      switch (q % 6) {
        case 0: queries.push_back(base); break;
        case 1: queries.push_back(base + tol); break;
        case 2: queries.push_back(base - tol); break;
        case 3: queries.push_back(std::nextafter(base + tol, 1e9)); break;
        case 4: queries.push_back(std::nextafter(base - tol, 0.0)); break;
        default: queries.push_back(massDist(rng) + glycanDist(rng)); break;
      }
    }
    // Entries right on the interval ends of some queries, too.
    for (int q = 0; q < 40; ++q) {
      const double g = glycans[rng() % glycans.size()].second;
      const double tol = CParam::GetInstance().QueryPrecursorTolerance(queries[q]);
      entries.push_back({queries[q] - g - tol, 2});
      entries.push_back({queries[q] - g + tol, 3});
      entries.push_back({(queries[q] - g) + tol, 4});
    }
    CSpectralLibrary lib;
    Fill(lib, entries, glycans);
    std::size_t total = 0;
    for (std::size_t q = 0; q < queries.size(); ++q) {
      const CSpectrum query = Query(queries[q], q % 3 == 0);
      Selection fast = Select(lib, query), walk = Select(lib, query, true);
      ASSERT_EQ(fast, walk) << "round " << round << " query " << q;
      total += walk.names.size();
    }
    EXPECT_GT(total, queries.size() / 2);  // the test did see candidates
  }
}
