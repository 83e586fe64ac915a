#include "report/HtmlReport.h"

#include <chrono>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <system_error>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "report/HitAnnotation.h"
#include "report/HitSpectra.h"
#include "report/PlotText.h"
#include "report/RankedResults.h"
#include "report/ReportPage.h"
#include "report/RunFigures.h"
#include "report/RunIdentity.h"
#include "report/RunSummary.h"
#include "run/Process.h"

namespace {
using Json = nlohmann::json;
constexpr std::size_t kHistogramBins = 40;

int Fail(const std::string& message) {
  std::cout << "Report error: " << message << std::endl;
  return 1;
}

std::string NowText() {
  const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  char text[64];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M %Z", std::localtime(&now));
  return text;
}

std::string CountRow(const std::string& label, std::size_t value) {
  return "<tr><th>" + EscapeHtml(label) + "</th><td>" + std::to_string(value) + "</td></tr>\n";
}

// The run's result in one sentence: the target lines at the cut that the
// report follows, and with q-values what the FDR column would have claimed.
std::string HeadlineHtml(const CQValues* q, const CFdrCount& fdrAt1) {
  if (q == nullptr)
    return "<p class=\"headline\"><strong>" + std::to_string(fdrAt1.targets) +
           " target hits at FDR ≤ 1 %</strong> (target-decoy estimate).</p>\n";
  return "<p class=\"headline\"><strong>" + std::to_string(q->at1.targets) +
         " target glycopeptides at GlycopeptideQ ≤ 1 %</strong> (" + std::to_string(q->at5.targets) +
         " at 5 %), counting wrong peptides, glycans and isotope readings. The FDR column, the "
         "prescribed target-decoy estimate, which counts only the wrong peptides a reversed decoy could "
         "match as well, passes " + std::to_string(fdrAt1.targets) + " at 1 %.</p>\n";
}

// Mirror-plot data of every shown hit; problems are counted into `notes`.
void AnnotateHits(const CReportRequest& request, const std::vector<CRankedHit>& hits,
                  CHitSpectra& spectra, CReportPage& page, Json& hitNotes,
                  std::vector<std::string>& notes) {
  CHitAnnotator annotator(*request.search);
  std::map<std::string, std::size_t> libraryLines;
  std::size_t missingQueries = 0, missingEntries = 0, differing = 0;
  CSpectrum query, entry;
  for (std::size_t i = 0; i < hits.size(); ++i) {
    const std::vector<std::string>& fields = hits[i].fields;
    const std::string& entryName = fields[resultcol::kLibrary];
    std::string note;
    if (!spectra.LibraryEntry(entryName, entry)) {
      note = "library entry " + entryName + " not found in " + request.libraryPath;
      ++missingEntries;
    } else if (!spectra.Query(fields[resultcol::kQuery], query)) {
      note = "query spectrum not found in the query datasets";
      ++missingQueries;
    }
    if (!note.empty()) {
      hitNotes[std::to_string(i)] = note;
      page.hitLines += "!\n";
      continue;
    }
    const CHitAnnotation hit = annotator.Annotate(query, entry);
    auto [at, added] = libraryLines.try_emplace(entryName, libraryLines.size());
    if (added) {
      AppendLibraryPeaks(entry, page.libraryLines);
      page.libraryLines += '\n';
    }
    AppendHitPeaks(at->second, hit, page.hitLines);
    page.hitLines += '\n';
    if (hit.dpsIons != fields[resultcol::kDpsIons]) {
      ++differing;
      hitNotes[std::to_string(i)] =
          "matching the files again gives other ions than the result line (" + hit.dpsIons +
          "): the library or query files have changed since the search";
    }
  }
  if (missingEntries > 0)
    notes.push_back(std::to_string(missingEntries) + " hits name library entries that " +
                    request.libraryPath + " does not hold; they have no plot");
  if (missingQueries > 0)
    notes.push_back(std::to_string(missingQueries) +
                    " query spectra were not found in the query datasets; their hits have no plot");
  if (differing > 0)
    notes.push_back(std::to_string(differing) +
                    " hits match differently now than in the result file: the library or query "
                    "files have changed since the search");
}

// Writes beside the target and renames into place, so that an interrupted run
// never leaves half a report under the final name.
bool WriteAtomically(const std::string& path, const CReportPage& page, std::string& error) {
  namespace fs = std::filesystem;
  const fs::path target(path);
  const fs::path temporary = target.parent_path() /
      ("." + target.filename().string() + ".part-" + std::to_string(::getpid()));
  {
    std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
    if (!out.is_open()) {
      error = "cannot write the report " + path;
      return false;
    }
    WriteReportPage(page, out);
    out.close();
    if (!out) {
      std::error_code ignored;
      fs::remove(temporary, ignored);
      error = "writing the report " + path + " failed (disk full?)";
      return false;
    }
  }
  std::error_code failed;
  fs::rename(temporary, target, failed);
  if (failed) {
    std::error_code ignored;
    fs::remove(temporary, ignored);
    error = "cannot write the report " + path + ": " + failed.message();
    return false;
  }
  return true;
}
}  // namespace

std::string DefaultReportPath(const std::string& resultPath) {
  const std::size_t slash = resultPath.find_last_of('/');
  const std::size_t point = resultPath.rfind('.');
  const bool hasExtension = point != std::string::npos && (slash == std::string::npos || point > slash + 1);
  return (hasExtension ? resultPath.substr(0, point) : resultPath) + "_report.html";
}

int WriteHtmlReport(const CReportRequest& request) {
  if (request.search == nullptr) return Fail("no search settings were given");
  if (request.outPath.empty()) return Fail("no output file was given");
  if (request.topN < 0) return Fail("--top must be 0 or more");
  // Only regular files are read: a folder can't be, a device or FIFO never ends.
  for (const std::string& path : {request.resultPath, request.summaryPath, request.qvaluesPath,
                                  request.libraryPath}) {
    if (!path.empty() && GetPathKind(path) != PathKind::Missing && GetPathKind(path) != PathKind::File)
      return Fail(path + " is not a regular file (a folder, device or FIFO); it is not read");
  }
  for (const CDatasetFile& dataset : request.queryDatasets)
    if (GetPathKind(dataset.pathname) == PathKind::Other)
      return Fail(dataset.pathname + " is not a regular file or folder (a device or FIFO); it is not read");
  std::vector<std::string> notes;
  std::string note;
  const Json summary = ReadRunSummary(request.summaryPath, note);
  if (!note.empty()) notes.push_back(note);
  const std::string mixed = MixedRunProblem(
      summary, request.summaryPath, {{"result", request.resultPath}, {"qvalues", request.qvaluesPath}});
  if (!mixed.empty()) return Fail(mixed);
  note.clear();
  const CQValues qvalues = ReadQValues(request.qvaluesPath, note);
  if (!note.empty()) notes.push_back(note);
  // With glycopeptide q-values the report follows them: the FDR column counts
  // only the wrong peptides a reversed decoy could match as well.
  const bool byQ = !qvalues.glycopeptideQ.empty();
  CRankedResults results;
  std::string error;
  if (!results.Read(request.resultPath, static_cast<std::size_t>(request.topN), error,
                    byQ ? &qvalues.glycopeptideQ : nullptr))
    return Fail(error);
  if (results.malformedLines > 0)
    notes.push_back(std::to_string(results.malformedLines) +
                    " lines of the result file lack some of the 28 columns and were left out");

  for (const CDatasetFile& dataset : request.queryDatasets)
    if (GetPathKind(dataset.pathname) == PathKind::Missing)
      notes.push_back("the query dataset " + dataset.pathname + " is missing");
  CHitSpectra spectra;
  spectra.Open(request.libraryPath, request.queryDatasets);
  if (spectra.LibraryEntryCount() == 0)
    notes.push_back("the library " + request.libraryPath + " could not be read: no hit has a plot");

  CReportPage page;
  Json hitNotes = Json::object();
  AnnotateHits(request, results.shown, spectra, page, hitNotes, notes);

  const CFdrCount at1 = CountAtFdr(results.all, 0.01), at5 = CountAtFdr(results.all, 0.05);
  const CFdrCount total = CountAtFdr(results.all, 1.0);
  page.title = "QuorinGlyco report: " + std::filesystem::path(request.resultPath).filename().string();
  const std::string cut = byQ ? "GlycopeptideQ ≤ 1 %" : "FDR ≤ 1 %";
  page.introHtml = "<p>Result file <code>" + EscapeHtml(request.resultPath) + "</code>, reported " +
                   EscapeHtml(NowText()) + ". Hits shown: " +
                   (request.topN > 0 ? "the first " + std::to_string(request.topN) : "all at " + cut) +
                   ".</p>\n" + HeadlineHtml(byQ ? &qvalues : nullptr, at1);
  for (const std::string& text : notes) {
    page.notesHtml += "<p class=\"note\">" + EscapeHtml(text) + "</p>\n";
    std::cout << "Report warning: " << text << std::endl;
  }
  const std::string fdrLabel = byQ ? " (target-decoy estimate)" : "";
  page.countsHtml = "<table class=\"facts\"><caption>From the files</caption>\n" +
                    CountRow("library entries", spectra.LibraryEntryCount()) +
                    CountRow("result lines", results.all.size()) +
                    CountRow("targets", total.targets) + CountRow("decoys", total.decoys);
  if (byQ)
    page.countsHtml += CountRow("targets at GlycopeptideQ 1 %", qvalues.at1.targets) +
                       CountRow("decoys at GlycopeptideQ 1 %", qvalues.at1.decoys) +
                       CountRow("targets at GlycopeptideQ 5 %", qvalues.at5.targets) +
                       CountRow("decoys at GlycopeptideQ 5 %", qvalues.at5.decoys);
  page.countsHtml += CountRow("targets at FDR 1 %" + fdrLabel, at1.targets) +
                     CountRow("decoys at FDR 1 %" + fdrLabel, at1.decoys) +
                     CountRow("targets at FDR 5 %" + fdrLabel, at5.targets) +
                     CountRow("decoys at FDR 5 %" + fdrLabel, at5.decoys) + "</table>\n";
  page.summaryHtml = summary.is_null() ? "<p>No run summary (<code>" + EscapeHtml(request.summaryPath) +
                                             "</code>): the counts are taken from the files.</p>\n"
                                       : SummaryTablesHtml(summary);
  page.settingsHtml = SettingsHtml(request.construction, *request.search);

  Json hits = Json::array();
  for (const CRankedHit& hit : results.shown) {
    Json row = hit.fields;
    row.push_back(hit.rank);
    // With a q-value file: its four values for the hit's query, after the rank.
    if (!qvalues.curves.is_null()) {
      const auto found = qvalues.byQuery.find(hit.fields[resultcol::kQuery]);
      row.push_back(found != qvalues.byQuery.end() ? Json(found->second) : Json(std::vector<std::string>(kQValueHitColumns.size())));
    }
    hits.push_back(std::move(row));
  }
  const Json data = {{"hits", std::move(hits)},
                     {"notes", hitNotes},
                     {"cut", request.topN > 0 ? "first " + std::to_string(request.topN) : cut},
                     {"followsQ", byQ},
                     {"histogram", ScoreHistogram(results.all, kHistogramBins)},
                     {"fdr", FdrCurve(results.all)},
                     {"qvalues", qvalues.curves}};
  page.dataJson = JsonForScript(data.dump(-1, ' ', false, Json::error_handler_t::replace));

  if (!WriteAtomically(request.outPath, page, error)) return Fail(error);
  std::cout << "Report written: " << request.outPath << " (" << results.shown.size()
            << " hits shown of " << results.all.size() << ")" << std::endl;
  return 0;
}
