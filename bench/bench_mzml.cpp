// Reading 100,000 generated spectra (quorin_datagen bench, converted by
// msconvert to 64-bit zlib mzML and mzXML) in the search stage's pattern: open,
// then every spectrum in batches of 100. Our streaming reader against the MGF
// reader and against ProteoWizard's own reader (MSDataFile), which reads the
// same files with their indexes. Peak memory: run one benchmark at a time,
// e.g. --benchmark_filter=Stream/mzML, under /usr/bin/time -v.
// QUORIN_MZ_BENCH_DIR names a folder that already holds glyco_run1.mgf,
// .mzML and .mzXML; otherwise they are made in a temporary folder (a minute).
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "pwiz/data/msdata/MSDataFile.hpp"
#include "spectrum/SpecIO.h"

namespace {

namespace fs = std::filesystem;

// The folder of the three files, made once per process; empty when that fails.
const std::string& Folder() {
  static const std::string folder = []() -> std::string {
    if (const char* given = std::getenv("QUORIN_MZ_BENCH_DIR")) return given;
    const fs::path dir = fs::temp_directory_path() / "quorin_bench_mz";
    fs::create_directories(dir);
    const std::string d = dir.string();
    if (!fs::exists(dir / "glyco_run1.mzXML")) {
      const std::string make = std::string(QUORIN_DATAGEN) + " bench " + d + " --queries 100000 --masstable " +
                               QUORIN_SOURCE_DIR + "/data/MassTable.ini >/dev/null && cd " + d +
                               " && msconvert --64 --zlib --mzML glyco_run1.mgf >/dev/null && " +
                               "msconvert --64 --zlib --mzXML glyco_run1.mgf >/dev/null";
      if (std::system(make.c_str()) != 0) return "";
    }
    return d;
  }();
  return folder;
}

// Our readers: format code 2 MGF, 4 mzML, 5 mzXML.
void BM_Stream(benchmark::State& state, int format, const char* extension) {
  if (Folder().empty()) return state.SkipWithError("no benchmark files (quorin_datagen, msconvert)");
  const std::string path = Folder() + "/glyco_run1" + extension;
  std::vector<CSpectrum> batch;
  uint64_t spectra = 0, peaks = 0;
  for (auto _ : state) {
    std::unique_ptr<CSpecIO> io(CreateSpecIO(format));
    io->OpenRead(path);
    for (;;) {
      batch.clear();
      while (batch.size() < 100 && io->ReadNext(batch)) {
      }
      if (batch.empty()) break;
      spectra += batch.size();
      for (const CSpectrum& s : batch) peaks += s.peaks.size();
    }
  }
  state.counters["spectra/s"] = benchmark::Counter(static_cast<double>(spectra), benchmark::Counter::kIsRate);
  state.counters["peaks"] = static_cast<double>(peaks / state.iterations());
}
BENCHMARK_CAPTURE(BM_Stream, MGF, 2, ".mgf")->Unit(benchmark::kSecond)->Iterations(1)->Repetitions(3);
BENCHMARK_CAPTURE(BM_Stream, mzML, 4, ".mzML")->Unit(benchmark::kSecond)->Iterations(1)->Repetitions(3);
BENCHMARK_CAPTURE(BM_Stream, mzXML, 5, ".mzXML")->Unit(benchmark::kSecond)->Iterations(1)->Repetitions(3);

// ProteoWizard's reader: every MS2 spectrum with its arrays, in file order.
void BM_Proteowizard(benchmark::State& state, const char* extension) {
  if (Folder().empty()) return state.SkipWithError("no benchmark files (quorin_datagen, msconvert)");
  const std::string path = Folder() + "/glyco_run1" + extension;
  uint64_t spectra = 0, peaks = 0;
  for (auto _ : state) {
    pwiz::msdata::MSDataFile file(path);
    const pwiz::msdata::SpectrumListPtr list = file.run.spectrumListPtr;
    for (std::size_t i = 0; i < list->size(); ++i) {
      const pwiz::msdata::SpectrumPtr s = list->spectrum(i, true);
      if (s->cvParam(pwiz::cv::MS_ms_level).valueAs<int>() != 2) continue;
      ++spectra;
      if (const auto mz = s->getMZArray()) peaks += mz->data.size();
    }
  }
  state.counters["spectra/s"] = benchmark::Counter(static_cast<double>(spectra), benchmark::Counter::kIsRate);
  state.counters["peaks"] = static_cast<double>(peaks / state.iterations());
}
BENCHMARK_CAPTURE(BM_Proteowizard, mzML, ".mzML")->Unit(benchmark::kSecond)->Iterations(1)->Repetitions(3);
BENCHMARK_CAPTURE(BM_Proteowizard, mzXML, ".mzXML")->Unit(benchmark::kSecond)->Iterations(1)->Repetitions(3);

}  // namespace

BENCHMARK_MAIN();
