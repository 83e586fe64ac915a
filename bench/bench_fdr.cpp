// FDR stage on a result file of a million hits: load, rank, write.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "fdr/FdrEstimator.h"
#include "fdr/ResultLineScan.h"

namespace {

std::string ResultLine(std::mt19937& random, int index) {
  std::uniform_real_distribution<double> score(0.0, 1.0);
  bool decoy = random() % 5 == 0;
  char text[512];
  std::snprintf(text, sizeof text,
                "dataset_%d.%d.%d.2\t%sPEPTJDEK/%d\t2431.%05d\t1214.61234\t%d\tPEPTJDEK\t3,Carbamidomethyl;"
                "\t1216.42312\t1216.42301\tHexNAc(2)Hex(5)\t5\tNXT\t%d\t3\t0.41234\t7\t0.52311\t0.61234"
                "\t0.73456\t%.5f\t%c\t0.12345\t0.23456\tsp|P%05d|PROT_HUMAN\tK\tEK\t%d",
                index % 7, index, index, decoy ? "Decoy_" : "", 2 + index % 3, index % 100000,
                2 + index % 3, index % 40, score(random), decoy ? 'D' : 'T', index % 99999, index % 900);
  return text;
}

std::string resultPath;

const std::string& ResultFile(int lines) {
  std::string& path = resultPath;
  if (path.empty()) {
    path = (std::filesystem::temp_directory_path() / "quorin_bench_fdr_result.txt").string();
    std::ofstream out(path, std::ios::binary);
    std::mt19937 random(7);
    out << "header\n";
    for (int i = 0; i < lines; ++i) out << ResultLine(random, i) << '\n';
  }
  return path;
}

constexpr int kLines = 1000000;

void BM_FdrLoadRankWrite(benchmark::State& state) {
  const std::string& input = ResultFile(kLines);
  std::string output = input + ".ranked";
  for (auto _ : state) {
    CFdrEstimator estimator(input, output, 1);
    estimator.Load();
    estimator.Rank();
    estimator.Write();
    benchmark::DoNotOptimize(estimator.records.data());
  }
  std::remove(output.c_str());
  state.SetItemsProcessed(state.iterations() * kLines);
}
BENCHMARK(BM_FdrLoadRankWrite)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_ScanResultLine(benchmark::State& state) {
  std::mt19937 random(3);
  std::string line = ResultLine(random, 12345);
  for (auto _ : state) benchmark::DoNotOptimize(ScanResultLine(line));
}
BENCHMARK(BM_ScanResultLine);

void BM_ScanResultLineWithFormat(benchmark::State& state) {
  std::mt19937 random(3);
  std::string line = ResultLine(random, 12345);
  for (auto _ : state) benchmark::DoNotOptimize(ScanResultLineWithFormat(line));
}
BENCHMARK(BM_ScanResultLineWithFormat);

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  if (!resultPath.empty()) std::remove(resultPath.c_str());  // a quarter of a gigabyte
  return 0;
}
