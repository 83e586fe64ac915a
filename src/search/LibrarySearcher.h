#pragma once
#include <fstream>
#include <string>
#include <vector>

#include "run/Param.h"
#include "run/SafeOutputFile.h"
#include "search/GlycanLists.h"
#include "search/QueryBatch.h"
#include "search/SearchCounts.h"
#include "search/SpectralLibrary.h"
#include "search/SpectralMatch.h"
#include "search/SpectrumMatcher.h"

// The search stage object: loads the library once, walks the query datasets in
// batches, matches every accepted query and writes the result file.
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
  // Appends one line for each result of the batch that qualifies.
  void WriteResults();
  // The 27-column line of one result, without its line end.
  static void FormatResultLine(const CSpectralMatch& match, std::string& line);

  std::vector<CSpectrum*> candidates;
  std::vector<CSpectralMatch> results;
  CSpectralLibrary library;
  CQueryBatch batch;
  CSpectrumMatcher matcher;
  CSearchParam param;
  CSearchCounts counts;
  CSafeOutputFile resultOutput;
  std::ofstream& resultFile = resultOutput.Stream();

 private:
  // One dataset: reader, batch loop, progress lines.
  void SearchDataset(const CDatasetFile& dataset);

  CGlycanLists glycanLists;
  std::string lineBuffer;
};

// The 27 column names of the result file, tab-separated.
extern const char* const kSearchResultHeader;
