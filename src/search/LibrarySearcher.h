#pragma once
#include <fstream>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "run/Param.h"
#include "run/RunPaths.h"
#include "run/SafeOutputFile.h"
#include "search/GlycanLists.h"
#include "search/MatchingPool.h"
#include "search/QueryBatch.h"
#include "search/SearchCounts.h"
#include "search/SpectralLibrary.h"
#include "search/SpectralMatch.h"
#include "search/SpectrumMatcher.h"

// Next best candidates per query that the glycopeptide q-values weigh.
inline constexpr std::size_t kAlternativeCandidates = 3;
// One isotope step of a peptide-sized molecule (13C - 12C).
inline constexpr double kIsotopeStepMass = 1.0033548;

// The search stage object: loads the library once, walks the query datasets in
// batches, matches every accepted query and writes the result file. Batches
// are read and written in order by the calling thread and matched on
// param.threads threads (0: all the hardware has); the result file and the
// console are the same for every thread count.
class CLibrarySearcher {
 public:
  CLibrarySearcher() = default;
  CLibrarySearcher(const CLibrarySearcher&) = delete;
  CLibrarySearcher& operator=(const CLibrarySearcher&) = delete;
  // Teardown: deletes the last reader; a result file not finished is discarded.
  ~CLibrarySearcher();

  // Set-up: settings, mass table, batch, matcher, result file header.
  void Init(const CSearchParam& settings);
  // The whole search with its progress lines.
  void Run();
  // Moves the complete result file into place; a file that could not be
  // written completely ends the run with status 1 and leaves an earlier file
  // of that name as it was.
  void Finish();

  // Opens the result file (ends the program with status 1 if it can't) and
  // writes the header line.
  void WriteHeader();
  // Appends one line for each result in `results` that qualifies.
  void WriteResults() { WriteResults(results); }
  void WriteResults(std::span<const CSpectralMatch> batchResults);
  // The 27-column line of one result, without its line end.
  static void FormatResultLine(const CSpectralMatch& match, std::string& line);

  std::vector<CSpectralMatch> results;
  CSpectralLibrary library;
  CQueryBatch batch;
  CSearchParam param;
  CSearchCounts counts;
  std::vector<CMotifNarrowing> narrowings;  // in the order they happened
  CSafeOutputFile resultOutput;
  std::ofstream& resultFile = resultOutput.Stream();
  // With glycopeptide q-values: the next best candidates of each result line,
  // as result lines, for the q-value step (which removes the file).
  CSafeOutputFile candidateOutput;

 private:
  // What one matching thread owns.
  struct CWorker {
    CSpectrumMatcher matcher;
    std::vector<CSpectrum*> candidates;
    CGlycanLists glycanLists;
  };
  // Creates the matching threads and their state.
  void StartWorkers();
  // One dataset: reader, batch loop, progress lines.
  void SearchDataset(const CDatasetFile& dataset);
  // Fills a batch from the open reader; counts what was read.
  void ReadBatch(CSearchBatch& work, std::size_t& damagedPeaks, std::size_t& damagedSpectra);
  // Prepares, selects candidates for and matches queries [first, last).
  void MatchQueries(CWorker& worker, CSearchBatch& work, std::size_t first, std::size_t last);
  // With glycopeptide q-values: the best candidates of the precursor read
  // one isotope peak lower join `result`'s alternatives.
  void AddIsotopeCandidates(CWorker& worker, CSpectrum& query, CSpectralMatch& result);
  // Shows what reading printed, then the result lines; in query order.
  void WriteBatch(CSearchBatch& work);

  std::vector<std::unique_ptr<CWorker>> workers;
  std::unique_ptr<CMatchingPool> pool;
  bool highResolution = false;
  uint32_t total = 0;  // spectra of the current dataset
  uint32_t kept = 0;   // accepted queries of the current dataset written so far
  std::string progressTask;   // what a progress bar calls the current dataset
  uint64_t progressBase = 0;  // queries read before the current dataset
  std::string lineBuffer;
};

// The 27 column names of the result file, tab-separated.
extern const char* const kSearchResultHeader;
