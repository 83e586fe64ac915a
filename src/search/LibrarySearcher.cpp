#include "search/LibrarySearcher.h"

#include <algorithm>
#include <deque>
#include <iostream>
#include <thread>

#include "run/InputFailures.h"
#include "run/Process.h"
#include "run/Progress.h"

namespace {
// More threads than this are taken as this many.
constexpr uint32_t kMostThreads = 256;

uint32_t ThreadsToUse(uint32_t asked) {
  if (asked == 0) asked = std::max(1u, std::thread::hardware_concurrency());
  return std::min(asked, kMostThreads);
}
}  // namespace

CLibrarySearcher::~CLibrarySearcher() {
  pool.reset();  // the workers stop before what they use goes
  delete batch.reader;
  batch.reader = nullptr;
}

void CLibrarySearcher::Finish() {
  pool.reset();
  delete batch.reader;
  batch.reader = nullptr;
  if (!resultOutput.Commit()) {
    std::cout << "Output search result error: failed to open file "
              << param.output_result_filename << '\n' << FailureLine(resultOutput) << std::flush;
    ExitProgram(1);
  }
  if (param.glycopeptide_fdr && !candidateOutput.Commit()) {
    std::cout << "Output search result error: failed to open file "
              << CandidatePath(param.output_result_filename) << std::endl;
    ExitProgram(1);
  }
}

void CLibrarySearcher::Init(const CSearchParam& settings) {
  param = settings;
  library.Init(param.input_speclib_filename, param.mass_table_filename);
  batch.Init(param);
  WriteHeader();
  const CSearchParam& search = CParam::GetInstance().search;
  highResolution =
      ::IsHighResolution(search.query_product_ion_tolerance, search.query_product_ion_unit);
}

void CLibrarySearcher::StartWorkers() {
  const uint32_t threads = ThreadsToUse(param.threads);
  workers.clear();
  for (uint32_t w = 0; w < threads; ++w) {
    auto worker = std::make_unique<CWorker>();
    worker->matcher.Init(512);
    worker->matcher.UsePeakTable(&library.peakTable);
    worker->matcher.alternativeCount = param.glycopeptide_fdr ? kAlternativeCandidates : 0;
    worker->candidates.reserve(1024);
    worker->glycanLists.reserve(1024, 4096);
    workers.push_back(std::move(worker));
  }
  pool = std::make_unique<CMatchingPool>(
      threads, [this](std::size_t w, CSearchBatch& work, std::size_t first, std::size_t last) {
        MatchQueries(*workers[w], work, first, last);
      });
}

void CLibrarySearcher::Run() {
  std::cout << ">> Searching:\n"
            << "\tLoading library spectra: \n"
            << "\t\t" << param.input_speclib_filename << std::endl;
  library.Load();
  // Matching reads candidates scattered over the whole library; with huge
  // pages their addresses take far fewer translations. Before the workers
  // start, so that their stacks stay as they are.
  PreferHugePages();
  StartWorkers();
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
  total = 0;
  const uint64_t failuresBefore = InputFailureCount();
  if (batch.reader != nullptr) {
    batch.reader->OpenRead(dataset.pathname);
    total = batch.reader->Count();
  }
  kept = 0;
  progressTask = "Searching " + dataset.pathname;
  progressBase = counts.queriesRead;
  std::size_t damagedPeaks = 0;
  std::size_t damagedSpectra = 0;
  // Batches read but not yet written; with several threads a few are kept in
  // flight so that the workers never wait for the reader.
  const std::size_t threads = pool->Threads();
  const std::size_t inFlight = threads > 1 ? 2 * threads : 0;
  std::deque<std::unique_ptr<CSearchBatch>> open, spare;
  // Should reading or writing fail with an exception, the batches still in
  // the workers' hands go only once they are done with them.
  struct Drain {
    CMatchingPool& pool;
    std::deque<std::unique_ptr<CSearchBatch>>& open;
    ~Drain() {
      for (const auto& work : open) pool.Wait(*work);
    }
  } drain{*pool, open};
  for (;;) {
    std::unique_ptr<CSearchBatch> work;
    if (spare.empty()) {
      work = std::make_unique<CSearchBatch>();
    } else {
      work = std::move(spare.front());
      spare.pop_front();
    }
    ReadBatch(*work, damagedPeaks, damagedSpectra);
    pool->Submit(*work);
    // The empty batch that ends a dataset goes through every step as well, so
    // the last progress line repeats the one before it.
    const bool last = work->spectra.empty();
    open.push_back(std::move(work));
    while (!open.empty() && (open.size() > inFlight || last)) {
      pool->Wait(*open.front());
      WriteBatch(*open.front());
      spare.push_back(std::move(open.front()));
      open.pop_front();
    }
    if (last) break;
  }
  if (damagedPeaks > 0) {
    counts.damagedPeaks += damagedPeaks;
    counts.damagedSpectra += damagedSpectra;
    std::cout << "\t\t[Warning]: " << damagedPeaks
              << " damaged peaks (an m/z or intensity that is not a finite number, or a "
                 "negative intensity) were dropped from "
              << damagedSpectra << " spectra." << std::endl;
  }
  // A dataset that gives not one spectrum (an empty file, a file of another
  // kind, every spectrum undecodable) is a failed input, not a quiet success.
  if (counts.queriesRead == progressBase && InputFailureCount() == failuresBefore) {
    std::cout << "\t\t[Warning]: not one spectrum could be read from " << dataset.pathname << '.'
              << std::endl;
    NoteInputFailure();
  }
  std::cout << "    --- Complete!\n" << std::endl;
}

void CLibrarySearcher::ReadBatch(CSearchBatch& work, std::size_t& damagedPeaks,
                                 std::size_t& damagedSpectra) {
  std::vector<CSpectrum>& spectra = work.spectra;
  spectra.clear();
  work.console.str({});
  // Readers may warn; the warnings appear where they always did, just before
  // the batch's progress line, however far reading runs ahead.
  std::streambuf* const console = std::cout.rdbuf(work.console.rdbuf());
  while (batch.reader != nullptr && spectra.size() < batch.batchSize) {
    const std::size_t before = spectra.size();
    if (!batch.reader->ReadNext(spectra)) break;
    // A failed read adds nothing; a rejected spectrum leaves at once and does
    // not count towards the batch.
    if (spectra.size() == before) continue;
    ++counts.queriesRead;
    if (const std::size_t dropped = CQueryBatch::DropDamagedPeaks(spectra.back())) {
      damagedPeaks += dropped;
      ++damagedSpectra;
    }
    if (!batch.IsGlycoSpectrum(spectra.back())) spectra.pop_back();
    else ++counts.queriesAccepted;
  }
  std::cout.rdbuf(console);
  work.results.resize(spectra.size());
  if (HasProgressSink()) ReportProgress(progressTask, counts.queriesRead - progressBase, total);
}

void CLibrarySearcher::MatchQueries(CWorker& worker, CSearchBatch& work, std::size_t first,
                                    std::size_t last) {
  for (std::size_t i = first; i < last; ++i) {
    CSpectrum& query = work.spectra[i];
    batch.PrepareSpectrum(query, highResolution);
    worker.candidates.clear();
    worker.glycanLists.clear();
    library.SelectCandidates(query, worker.candidates, worker.glycanLists);
    work.results[i] = worker.matcher.Match(query, worker.candidates, worker.glycanLists);
    // Also for a query without a line: read one isotope lower, it may have one.
    if (param.glycopeptide_fdr) AddIsotopeCandidates(worker, query, work.results[i]);
  }
}

void CLibrarySearcher::AddIsotopeCandidates(CWorker& worker, CSpectrum& query, CSpectralMatch& result) {
  // The precursor read one isotope peak lower, as if it was picked one too
  // high: its best candidates join the alternatives. The query is the same
  // spectrum and gets its mass back, so the result lines show the measured one.
  const double measured = query.precursorMass;
  query.precursorMass = measured - kIsotopeStepMass;
  worker.candidates.clear();
  worker.glycanLists.clear();
  library.SelectCandidates(query, worker.candidates, worker.glycanLists);
  CSpectralMatch lower = worker.matcher.Match(query, worker.candidates, worker.glycanLists);
  query.precursorMass = measured;
  if (lower.library == nullptr || lower.score < 0.0) return;
  std::vector<CSpectralMatch> more = std::move(lower.alternatives);
  lower.alternatives.clear();
  result.alternatives.push_back(std::move(lower));
  for (CSpectralMatch& match : more) result.alternatives.push_back(std::move(match));
}

void CLibrarySearcher::WriteBatch(CSearchBatch& work) {
  const std::string console = work.console.str();
  if (!console.empty()) std::cout << console;
  for (const CSpectralMatch& result : work.results) {
    if (result.candidateCount > 0) ++counts.withCandidates;
    // In query order, as if each query were searched after the one before.
    const bool several = result.library != nullptr && result.library->motifs.size() > 1;
    CSpectrumMatcher::NarrowMotifsToSite(result);
    if (several && result.library->motifs.size() == 1)
      narrowings.push_back({result.library->name, result.library->motifs.front().sequon});
  }
  WriteResults(work.results);
  kept += static_cast<uint32_t>(work.spectra.size());
  std::cout << "\t\tSpectra: " << kept << "/" << total << std::endl;
}
