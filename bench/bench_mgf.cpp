// Throughput of the MGF reader on a generated file of 20,000 spectra x 200
// peaks: indexing (one pass over the file), reading everything in name order,
// reading in search-sized batches, and the peak-line scan against sscanf.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "spectrum/MgfIO.h"
#include "spectrum/QuolibIO.h"
#include "spectrum/ScanFormat.h"

namespace {

constexpr int kSpectra = 20000;
constexpr int kPeaks = 200;

struct GeneratedFile {
  std::string path;
  int64_t bytes = 0;
  ~GeneratedFile() {
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
  }
};

// A deterministic MGF written once per process.
const GeneratedFile& Mgf() {
  static GeneratedFile file = [] {
    GeneratedFile f;
    f.path = (std::filesystem::temp_directory_path() / "quorin_bench_mgf.mgf").string();
    std::FILE* out = std::fopen(f.path.c_str(), "wb");
    uint64_t state = 88172645463325252ull;
    auto next = [&state] {  // xorshift: fixed, fast, good enough for numbers
      state ^= state << 13;
      state ^= state >> 7;
      state ^= state << 17;
      return state;
    };
    for (int i = 0; i < kSpectra; ++i) {
      std::fprintf(out,
                   "BEGIN IONS\nTITLE=run1.%d.%d.%d File:\"run1.raw\", NativeID:\"scan=%d\"\n"
                   "RTINSECONDS=%.4f\nPEPMASS=%.6f %.2f\nCHARGE=%d+\n",
                   i + 1, i + 1, 2 + i % 3, i + 1, i * 0.37, 400.0 + (next() % 1600000) / 1000.0,
                   (next() % 10000000) / 100.0, 2 + i % 3);
      double mz = 100.0;
      for (int k = 0; k < kPeaks; ++k) {
        mz += (next() % 10000) / 1000.0;
        std::fprintf(out, "%.5f %.4f\n", mz, (next() % 100000000) / 1000.0);
      }
      std::fputs("END IONS\n\n", out);
    }
    f.bytes = std::ftell(out);
    std::fclose(out);
    return f;
  }();
  return file;
}

void BM_MgfIndex(benchmark::State& state) {
  const GeneratedFile& file = Mgf();
  for (auto _ : state) {
    CMgfIO io;
    io.OpenRead(file.path);
    benchmark::DoNotOptimize(io.Count());
  }
  state.SetBytesProcessed(state.iterations() * file.bytes);
}
BENCHMARK(BM_MgfIndex)->Unit(benchmark::kMillisecond);

void BM_MgfReadAll(benchmark::State& state) {
  const GeneratedFile& file = Mgf();
  CMgfIO io;
  io.OpenRead(file.path);
  std::vector<CSpectrum> spectra;
  spectra.reserve(kSpectra);
  for (auto _ : state) {
    spectra.clear();
    io.Rewind();
    benchmark::DoNotOptimize(io.ReadAll(spectra));
  }
  state.SetBytesProcessed(state.iterations() * file.bytes);
  state.counters["spectra/s"] =
      benchmark::Counter(static_cast<double>(state.iterations()) * kSpectra, benchmark::Counter::kIsRate);
}
BENCHMARK(BM_MgfReadAll)->Unit(benchmark::kMillisecond);

// The search stage's pattern: open (index), then ReadNext in batches of 100.
void BM_MgfOpenAndReadInBatches(benchmark::State& state) {
  const GeneratedFile& file = Mgf();
  std::vector<CSpectrum> batch;
  batch.reserve(100);
  for (auto _ : state) {
    CMgfIO io;
    io.OpenRead(file.path);
    for (;;) {
      batch.clear();
      while (batch.size() < 100 && io.ReadNext(batch)) {
      }
      if (batch.empty()) break;
      benchmark::DoNotOptimize(batch.data());
    }
  }
  state.SetBytesProcessed(state.iterations() * file.bytes);
}
BENCHMARK(BM_MgfOpenAndReadInBatches)->Unit(benchmark::kMillisecond);

const char* const kLines[] = {"1234.56789 98765.4321", "100.1\t2", "523.28431 1.2e5",
                              "87.04 0.0031 1"};

void BM_PeakLineFastScan(benchmark::State& state) {
  double mz = 0, intensity = 0;
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(ScanPeakLine(kLines[i++ & 3], mz, intensity));
  }
  benchmark::DoNotOptimize(mz + intensity);
}
BENCHMARK(BM_PeakLineFastScan);

void BM_PeakLineSscanf(benchmark::State& state) {
  double mz = 0, intensity = 0;
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(std::sscanf(kLines[i++ & 3], "%lf%*[ ,\t]%lf", &mz, &intensity));
  }
  benchmark::DoNotOptimize(mz + intensity);
}
BENCHMARK(BM_PeakLineSscanf);

// Library round trip: write 20,000 entries of 60 annotated peaks, read them all.
void BM_LibraryWriteAndRead(benchmark::State& state) {
  const std::string path =
      (std::filesystem::temp_directory_path() / "quorin_bench_lib.quolib").string();
  CSpectrum entry;
  entry.sequence = "AAJGTKPLJSR";
  entry.modifications = {{3, "Deamidated[N]"}};
  entry.precursorMass = 1234.56789;
  entry.charge = 2;
  entry.motifs = {{3, "NXT"}};
  for (int k = 0; k < 60; ++k) {
    CPeak p;
    p.mz = 150.0 + k * 17.123456;
    p.intensity = 0.01 * k;
    p.count = static_cast<uint32_t>(k % 4);
    p.type = k % 5;
    entry.peaks.push_back(p);
  }
  int64_t bytes = 0;
  std::vector<CSpectrum> loaded;
  for (auto _ : state) {
    CQuolibIO writer;
    writer.OpenWrite(path);
    for (int i = 0; i < kSpectra; ++i) {
      entry.name = std::to_string(i + 1);
      writer.WriteOne(entry);
    }
    writer.CloseWrite();
    CQuolibIO reader;
    reader.OpenRead(path);
    loaded.clear();
    reader.ReadAll(loaded);
    bytes = static_cast<int64_t>(std::filesystem::file_size(path));
  }
  state.SetBytesProcessed(state.iterations() * bytes);
  std::error_code ignored;
  std::filesystem::remove(path, ignored);
}
BENCHMARK(BM_LibraryWriteAndRead)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
