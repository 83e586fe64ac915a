// Speed of building the non-redundant peptide list from 100,000 identified
// spectra, in memory and through LoadIdentified from a tab-txt list.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "construction/IdentifiedAnalyzer.h"

namespace {

constexpr int kSpectra = 100000;

// A deterministic peptide of number k: a sequon at 3 and a varying tail.
std::string PeptideSequence(int k) {
  static const char kLetters[] = "ACDEFGHIKLMPQRSTVWY";
  std::string tail;
  for (int v = k; tail.size() < 6; v /= 19) tail.push_back(kLetters[v % 19]);
  return "AANGT" + tail + "K";
}

std::vector<CIdentifiedSpectrum> MakeRecords(int distinct) {
  std::vector<CIdentifiedSpectrum> records(kSpectra);
  for (int i = 0; i < kSpectra; ++i) {
    CIdentifiedSpectrum& r = records[i];
    const int k = (i * 7919) % distinct;
    r.sequence = PeptideSequence(k);
    r.sequence[2] = 'J';
    r.charge = 2 + k % 3;
    r.modifications = {{3, "Deamidated[N]"}};
    if (k % 5 == 0) r.modifications.push_back({8, "Oxidation[M]"});
    r.motifs = {{3, "NXT"}};
    r.spectrumName = "run1." + std::to_string(i) + "." + std::to_string(i) + ".2";
  }
  return records;
}

void BM_BuildPeptideList(benchmark::State& state) {
  const std::vector<CIdentifiedSpectrum> records = MakeRecords(static_cast<int>(state.range(0)));
  CIdentifiedAnalyzer analyzer;
  for (auto _ : state) {
    analyzer.BuildPeptideList(records);
    benchmark::DoNotOptimize(analyzer.peptides.data());
  }
  state.counters["peptides"] = static_cast<double>(analyzer.peptides.size());
  state.SetItemsProcessed(state.iterations() * kSpectra);
}
BENCHMARK(BM_BuildPeptideList)->Arg(1000)->Arg(30000)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_LoadIdentifiedTabTxt(benchmark::State& state) {
  const std::string path = "/tmp/bench_construction_ids.txt";
  {
    std::ofstream out(path);
    out << "Spectrum\tCharge\tSequence\tModification\n";
    for (const CIdentifiedSpectrum& r : MakeRecords(30000)) {
      std::string sequence = r.sequence;
      sequence[2] = 'N';
      out << r.spectrumName << '\t' << r.charge << '\t' << sequence << "\t3,N(Deamidated[N]);\n";
    }
  }
  CConstructionParam& settings = CParam::GetInstance().construction;
  settings.modification_remove = "Deamidated[N]";
  settings.N_glycan_motifs = {0, 1};
  settings.identification_files = {{path, 0.0, 7}};
  settings.library_datasets = {{"run1.mgf", 2}};
  CIdentifiedAnalyzer analyzer;
  analyzer.param = settings;
  for (auto _ : state) {
    analyzer.LoadIdentified();
    benchmark::DoNotOptimize(analyzer.peptides.data());
  }
  state.SetItemsProcessed(state.iterations() * kSpectra);
  std::remove(path.c_str());
}
BENCHMARK(BM_LoadIdentifiedTabTxt)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
