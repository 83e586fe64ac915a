#include "search/LibrarySearcher.h"

#include <iostream>

#include "run/Process.h"
#include "run/Progress.h"

CLibrarySearcher::~CLibrarySearcher() {
  delete batch.reader;
  batch.reader = nullptr;
}

void CLibrarySearcher::Finish() {
  delete batch.reader;
  batch.reader = nullptr;
  if (!resultOutput.Commit()) {
    std::cout << "Output search result error: failed to open file "
              << param.output_result_filename << std::endl;
    ExitProgram(1);
  }
}

void CLibrarySearcher::Init(const CSearchParam& settings) {
  param = settings;
  library.Init(param.input_speclib_filename, param.mass_table_filename);
  batch.Init(param);
  matcher.Init(512);
  WriteHeader();
  candidates.reserve(1024);
  glycanLists.reserve(1024, 4096);
  results.reserve(batch.batchSize);
}

void CLibrarySearcher::Run() {
  std::cout << ">> Searching:\n"
            << "\tLoading library spectra: \n"
            << "\t\t" << param.input_speclib_filename << std::endl;
  library.Load();
  matcher.UsePeakLookup(&library.peakLookup);
  counts.librarySpectra = library.spectra.size();
  std::cout << "\t\t" << library.spectra.size() << " library spectra have been loaded.\n"
            << "\t--- Complete! \n";
  std::cout << "\tSearching " << batch.datasets.size() << " query datasets: " << std::endl;
  for (std::size_t i = 0; i < batch.datasets.size(); ++i) {
    std::cout << "\t\tDatasets_" << (i + 1) << ": " << batch.datasets[i].pathname << std::endl;
    SearchDataset(batch.datasets[i]);
  }
}

void CLibrarySearcher::SearchDataset(const CDatasetFile& dataset) {
  delete batch.reader;
  batch.reader = CreateSpecIO(dataset.format);
  uint32_t total = 0;
  if (batch.reader != nullptr) {
    batch.reader->OpenRead(dataset.pathname);
    total = batch.reader->Count();
  }
  uint32_t kept = 0;
  const uint64_t readBefore = counts.queriesRead;
  const std::string task = "Searching " + dataset.pathname;
  std::size_t damagedPeaks = 0;
  std::size_t damagedSpectra = 0;
  for (;;) {
    batch.spectra.clear();
    while (batch.reader != nullptr && batch.spectra.size() < batch.batchSize) {
      const std::size_t before = batch.spectra.size();
      if (!batch.reader->ReadNext(batch.spectra)) break;
      // A failed read adds nothing; a rejected spectrum leaves at once and does
      // not count towards the batch.
      if (batch.spectra.size() == before) continue;
      ++counts.queriesRead;
      if (const std::size_t dropped = CQueryBatch::DropDamagedPeaks(batch.spectra.back())) {
        damagedPeaks += dropped;
        ++damagedSpectra;
      }
      if (!batch.IsGlycoSpectrum(batch.spectra.back())) batch.spectra.pop_back();
      else ++counts.queriesAccepted;
    }
    batch.Prepare();
    results.clear();
    for (CSpectrum& query : batch.spectra) {
      candidates.clear();
      glycanLists.clear();
      library.SelectCandidates(query, candidates, glycanLists);
      if (!candidates.empty()) ++counts.withCandidates;
      results.push_back(matcher.Match(query, candidates, glycanLists));
    }
    WriteResults();
    kept += static_cast<uint32_t>(batch.spectra.size());
    std::cout << "\t\tSpectra: " << kept << "/" << total << std::endl;
    if (HasProgressSink()) ReportProgress(task, counts.queriesRead - readBefore, total);
    // The empty batch that ends a dataset goes through every step above, so
    // the last progress line repeats the one before it.
    if (batch.spectra.empty()) break;
  }
  if (damagedPeaks > 0) {
    counts.damagedPeaks += damagedPeaks;
    counts.damagedSpectra += damagedSpectra;
    std::cout << "\t\t[Warning]: " << damagedPeaks
              << " damaged peaks (an m/z or intensity that is not a finite number, or a "
                 "negative intensity) were dropped from "
              << damagedSpectra << " spectra." << std::endl;
  }
  std::cout << "    --- Complete!\n" << std::endl;
}
