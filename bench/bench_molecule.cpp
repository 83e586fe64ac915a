// Hot paths of the molecule model: peptide masses for every library peptide
// and the glycan interval for every (query, library entry) pair.
#include <benchmark/benchmark.h>

#include "molecule/MassTable.h"
#include "molecule/PeptideCalculator.h"

namespace {

// The default table of the source tree, found beside this file's folder.
std::string ShippedTablePath() {
  std::string here = __FILE__;
  return here.substr(0, here.find_last_of('/') + 1) + "../data/MassTable.ini";
}

CMassTable ShippedTable() {
  CMassTable table;
  CMassTableFile file;
  file.filename = ShippedTablePath();
  file.Load(table);
  return table;
}

void BM_SetPeptideAndFragments(benchmark::State& state) {
  CPeptideCalculator calc;
  calc.massTable = ShippedTable();
  const std::string sequence = "LCPDCPLLAPLJDSRVVHAVEGK";
  const std::vector<CModification> mods = {{2, "Carbamidomethyl[C]"}, {5, "Carbamidomethyl[C]"},
                                           {12, "Deamidated[N]"}};
  for (auto _ : state) {
    calc.SetPeptide(sequence, mods);
    double sum = calc.PeptideMH();
    for (uint32_t k = 1; k < calc.length; ++k)
      for (uint32_t z = 1; z <= 2; ++z) sum += calc.FragmentMz(0, k, z) + calc.FragmentMz(1, k, z);
    benchmark::DoNotOptimize(sum);
  }
}
BENCHMARK(BM_SetPeptideAndFragments);

void BM_FindGlycanRange(benchmark::State& state) {
  CMassTable table = ShippedTable();
  double delta = 500.0;
  for (auto _ : state) {
    std::size_t low, high;
    table.FindGlycanRange(delta, 0.02, low, high);
    benchmark::DoNotOptimize(low);
    benchmark::DoNotOptimize(high);
    delta = delta > 4500.0 ? 500.0 : delta + 0.731;
  }
}
BENCHMARK(BM_FindGlycanRange);

void BM_FindGlycansCopies(benchmark::State& state) {
  CMassTable table = ShippedTable();
  double delta = 500.0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(table.FindGlycans(delta, 0.02));
    delta = delta > 4500.0 ? 500.0 : delta + 0.731;
  }
}
BENCHMARK(BM_FindGlycansCopies);

}  // namespace

BENCHMARK_MAIN();
