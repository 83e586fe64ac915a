#pragma once
#include <fstream>
#include <string>
#include <vector>

#include "run/Param.h"
#include "search/GlycanLists.h"
#include "search/QueryBatch.h"
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
  // Teardown: deletes the last reader and closes (flushes) the result file.
  ~CLibrarySearcher();

  // Set-up: settings, mass table, batch, matcher, result file header.
  void Init(const CSearchParam& settings);
  // The whole search with its progress lines.
  void Run();

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
  std::ofstream resultFile;

 private:
  // One dataset: reader, batch loop, progress lines.
  void SearchDataset(const CDatasetFile& dataset);

  CGlycanLists glycanLists;
  std::string lineBuffer;
};

// The 27 column names of the result file, tab-separated.
extern const char* const kSearchResultHeader;
