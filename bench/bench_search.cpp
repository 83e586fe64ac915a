// Hot paths of the search stage on a generated library of 20,000 entries and a
// stream of generated glycopeptide queries: candidate selection (bisection per
// glycan against the walk over every lighter entry), query preparation, and the
// full match. Items per second are queries per second. Peak memory (VmHWM) of
// the process, library included, is reported as a counter.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <unistd.h>

#include "run/Param.h"
#include "search/QueryBatch.h"
#include "search/SpectralLibrary.h"
#include "search/SpectrumMatcher.h"
#include "spectrum/SpecIO.h"

namespace {

constexpr int kLibraryEntries = 20000;
constexpr int kQueries = 2000;
constexpr double kProton = 1.00727647012;

std::string ShippedTablePath() {
  std::string here = __FILE__;
  return here.substr(0, here.find_last_of('/') + 1) + "../data/MassTable.ini";
}

double PeakMemoryMiB() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line))
    if (line.rfind("VmHWM:", 0) == 0) return std::atof(line.c_str() + 6) / 1024.0;
  return 0.0;
}

// Library, its raw queries and the settings, built once for all benchmarks.
struct Fixture {
  CSpectralLibrary library;
  std::vector<CSpectrum> rawQueries;
  std::vector<CSpectrum> preparedQueries;

  Fixture() {
    CSearchParam& search = CParam::GetInstance().search;
    search.query_precursor_ion_tolerance = 20;
    search.query_precursor_ion_unit = 1;
    search.query_product_ion_tolerance = 0.02;
    search.query_product_ion_unit = 0;
    search.minimal_peptide_ions = 1;

    CMassTableFile tableFile;
    tableFile.filename = ShippedTablePath();
    tableFile.Load(library.massTable);

    std::mt19937_64 rng(2024);
    std::uniform_real_distribution<double> mass(800.0, 3500.0), unit(0.0, 1.0);
    std::vector<CSpectrum> entries;
    entries.reserve(kLibraryEntries);
    for (int i = 0; i < kLibraryEntries; ++i) {
      CSpectrum s;
      s.name = (i % 2 ? "Decoy_" : "") + std::to_string(i / 2 + 1);
      s.sequence = "PEPTJDESEQUENCEK";
      s.precursorMass = mass(rng);
      const double r = unit(rng);
      s.charge = r < 0.5 ? 2 : r < 0.85 ? 3 : 4;
      s.motifs = {{5, "NXS"}};
      for (uint32_t k = 1; k < 16; ++k) {
        for (int32_t type = 0; type < 2; ++type) {
          CPeak p;
          p.mz = 100.0 + unit(rng) * (s.precursorMass - 100.0);
          p.intensity = unit(rng);
          p.type = type;
          p.position = k;
          p.charge = unit(rng) < 0.8 ? 1 : 2;
          s.peaks.push_back(p);
        }
      }
      for (uint32_t y = 0; y < 4; ++y) {
        CPeak p;
        p.mz = s.precursorMass + 203.079373 * y;
        p.intensity = unit(rng);
        p.type = kPeakYCore;
        p.position = y;
        p.charge = 1;
        s.peaks.push_back(p);
      }
      for (int n = 0; n < 10; ++n) {
        CPeak p;
        p.mz = 100.0 + unit(rng) * 1800.0;
        p.intensity = unit(rng) * 0.3;
        s.peaks.push_back(p);
      }
      std::sort(s.peaks.begin(), s.peaks.end(), ByMz);
      entries.push_back(std::move(s));
    }

    // Through the real library file, as the stage reads it.
    const std::string path = "/tmp/quorin_bench_search_" + std::to_string(::getpid()) + ".quolib";
    std::unique_ptr<CSpecIO> writer(CreateSpecIO(0));
    writer->OpenWrite(path);
    writer->WriteRange(entries, 0, static_cast<uint32_t>(entries.size() - 1));
    writer->CloseWrite();
    writer.reset();
    library.file.pathname = path;
    library.file.format = 0;
    library.Load();
    std::remove(path.c_str());

    // Queries: a library peptide plus a glycan of the table, with part of its
    // fragments direct, part shifted, an oxonium marker and noise.
    const auto& glycans = library.massTable.glycans;
    for (int i = 0; i < kQueries; ++i) {
      const CSpectrum& entry = entries[rng() % entries.size()];
      const CGlycan& glycan = glycans[rng() % glycans.size()];
      CSpectrum q;
      q.name = "q" + std::to_string(i);
      q.charge = 2 + static_cast<uint32_t>(rng() % 3);
      q.precursorMass = entry.precursorMass + glycan.mass + (unit(rng) - 0.5) * 0.01;
      auto add = [&](double mz, double intensity) {
        CPeak p;
        p.mz = mz;
        p.intensity = intensity;
        q.peaks.push_back(p);
      };
      add(138.054953, 5000);
      add(204.086645, 8000);
      add(366.139466, 3000);
      for (const CPeak& p : entry.peaks) {
        const double r = unit(rng);
        if (p.type == kPeakUnannotated || r < 0.3) continue;
        const double shift = glycan.mass / (p.charge == 0 ? 1 : p.charge);
        add(r < 0.65 ? p.mz : p.mz + shift, 1000 * unit(rng));
      }
      for (int n = 0; n < 150; ++n) add(100.0 + unit(rng) * 2500.0, 400 * unit(rng));
      rawQueries.push_back(q);
    }

    CQueryBatch batch;
    batch.Init(search);
    preparedQueries = rawQueries;
    for (CSpectrum& q : preparedQueries) batch.PrepareSpectrum(q, false);
  }
};

Fixture& Data() {
  static Fixture fixture;
  return fixture;
}

void Report(benchmark::State& state, std::size_t candidates) {
  state.SetItemsProcessed(state.iterations());
  state.counters["candidates_per_query"] =
      benchmark::Counter(static_cast<double>(candidates) / static_cast<double>(state.iterations()));
  state.counters["peak_MiB"] = PeakMemoryMiB();
}

template <bool ByWalk>
void BM_SelectCandidates(benchmark::State& state) {
  Fixture& data = Data();
  std::vector<CSpectrum*> candidates;
  candidates.reserve(1024);
  CGlycanLists lists;
  lists.reserve(1024, 4096);
  std::size_t i = 0, total = 0;
  for (auto _ : state) {
    const CSpectrum& query = data.preparedQueries[i++ % data.preparedQueries.size()];
    candidates.clear();
    lists.clear();
    if (ByWalk) data.library.SelectCandidatesByWalk(query, candidates, lists);
    else data.library.SelectCandidates(query, candidates, lists);
    total += candidates.size();
    benchmark::DoNotOptimize(candidates.data());
  }
  Report(state, total);
}
BENCHMARK(BM_SelectCandidates<false>)->Name("BM_SelectCandidates/bisection");
BENCHMARK(BM_SelectCandidates<true>)->Name("BM_SelectCandidates/walk");

void BM_PrepareQuery(benchmark::State& state) {
  Fixture& data = Data();
  CQueryBatch batch;
  batch.Init(CParam::GetInstance().search);
  CSpectrum work;
  std::size_t i = 0;
  for (auto _ : state) {
    work = data.rawQueries[i++ % data.rawQueries.size()];
    batch.PrepareSpectrum(work, false);
    benchmark::DoNotOptimize(work.peaks.data());
  }
  Report(state, 0);
}
BENCHMARK(BM_PrepareQuery);

// Selection and matching of prepared queries, as the stage runs them per query.
void BM_SelectAndMatch(benchmark::State& state) {
  Fixture& data = Data();
  CSpectrumMatcher matcher;
  matcher.Init(512);
  matcher.UsePeakTable(&data.library.peakTable);
  std::vector<CSpectrum*> candidates;
  candidates.reserve(1024);
  CGlycanLists lists;
  lists.reserve(1024, 4096);
  std::size_t i = 0, total = 0, hits = 0;
  for (auto _ : state) {
    CSpectrum& query = data.preparedQueries[i++ % data.preparedQueries.size()];
    candidates.clear();
    lists.clear();
    data.library.SelectCandidates(query, candidates, lists);
    CSpectralMatch m = matcher.Match(query, candidates, lists);
    total += candidates.size();
    hits += m.score > 0.00001 && m.library != nullptr;
    benchmark::DoNotOptimize(m.score);
  }
  Report(state, total);
  state.counters["reported_share"] =
      benchmark::Counter(static_cast<double>(hits) / static_cast<double>(state.iterations()));
}
BENCHMARK(BM_SelectAndMatch);

}  // namespace

BENCHMARK_MAIN();
