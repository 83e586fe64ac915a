// The lookup of motifs_across_cleavage at the scale of a human proteome: the
// index of 11 million residues, and the residues after a marked peptide.
#include <benchmark/benchmark.h>

#include <map>
#include <random>
#include <string>
#include <vector>

#include "molecule/PeptideLocator.h"

namespace {

// 20,000 proteins of 550 residues in the proteome's letter frequencies (roughly).
const std::map<std::string, std::string>& Proteome() {
  static const std::map<std::string, std::string> proteins = [] {
    std::mt19937 random(11);
    const std::string letters = "LLLLSSSEEEAAAGGGVVVPPPKKKRRRTTTDDQQIINNFFYYHHMCW";
    std::map<std::string, std::string> made;
    for (int p = 0; p < 20000; ++p) {
      std::string protein(550, 'A');
      for (char& c : protein) c = letters[random() % letters.size()];
      made["P" + std::to_string(p)] = std::move(protein);
    }
    return made;
  }();
  return proteins;
}

// Pieces of the proteins of 7 to 25 residues; every fourth one changed so that it is in none.
std::vector<std::string> Peptides(std::size_t count) {
  std::mt19937 random(12);
  std::vector<const std::string*> proteins;
  for (const auto& entry : Proteome()) proteins.push_back(&entry.second);
  std::vector<std::string> peptides;
  for (std::size_t i = 0; i < count; ++i) {
    const std::string& protein = *proteins[random() % proteins.size()];
    const std::size_t length = 7 + random() % 19;
    std::string peptide = protein.substr(random() % (protein.size() - length), length);
    if (i % 4 == 0) peptide[length / 2] = 'W';
    peptides.push_back(std::move(peptide));
  }
  return peptides;
}

void BM_IndexProteome(benchmark::State& state) {
  for (auto _ : state) {
    CPeptideLocator locator(Proteome());
    benchmark::DoNotOptimize(&locator);
  }
}
BENCHMARK(BM_IndexProteome)->Unit(benchmark::kMillisecond);

void BM_ResiduesAfter(benchmark::State& state) {
  const CPeptideLocator locator(Proteome());
  const std::vector<std::string> peptides = Peptides(100000);
  std::size_t next = 0;
  std::string after;
  for (auto _ : state) {
    benchmark::DoNotOptimize(locator.ResiduesAfter(peptides[next], after));
    next = next + 1 == peptides.size() ? 0 : next + 1;
  }
}
BENCHMARK(BM_ResiduesAfter);

// The plain rule, for the ratio: std::string::find over every protein.
void BM_ResiduesAfterByScan(benchmark::State& state) {
  const std::vector<std::string> peptides = Peptides(1000);
  std::size_t next = 0;
  std::string after;
  for (auto _ : state) {
    benchmark::DoNotOptimize(ResiduesAfterByScan(Proteome(), peptides[next], after));
    next = next + 1 == peptides.size() ? 0 : next + 1;
  }
}
BENCHMARK(BM_ResiduesAfterByScan)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
