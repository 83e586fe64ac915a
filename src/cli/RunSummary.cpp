#include "cli/RunSummary.h"

#include <cstdio>

namespace {

std::string Row(const std::string& label, uint64_t value, const std::string& note = "") {
  char buffer[160];
  std::snprintf(buffer, sizeof buffer, "    %-34s %12llu%s\n", label.c_str(),
                static_cast<unsigned long long>(value), note.c_str());
  return buffer;
}

std::string Heading(const std::string& stage, double seconds) {
  char buffer[96];
  std::snprintf(buffer, sizeof buffer, "  %s (%.1f s)\n", stage.c_str(), seconds);
  return buffer;
}

std::string Path(const std::string& label, const std::string& path) {
  return "    " + label + std::string(label.size() < 12 ? 12 - label.size() : 0, ' ') + " " + path +
         "\n";
}

std::string Quoted(const std::string& text) {
  std::string out = "\"";
  for (char c : text) {
    switch (c) {
      case '"':
        out += "\\\"";
        break;
      case '\\':
        out += "\\\\";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\t':
        out += "\\t";
        break;
      case '\r':
        out += "\\r";
        break;
      default:
        if (static_cast<unsigned char>(c) < 0x20) {
          char escaped[8];
          std::snprintf(escaped, sizeof escaped, "\\u%04x", c);
          out += escaped;
        } else {
          out += c;
        }
    }
  }
  return out + "\"";
}

std::string Field(const std::string& name, uint64_t value) {
  return Quoted(name) + ":" + std::to_string(value);
}

std::string Field(const std::string& name, double seconds) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.3f", seconds);
  return Quoted(name) + ":" + buffer;
}

std::string Field(const std::string& name, const std::string& text) {
  return Quoted(name) + ":" + Quoted(text);
}

}  // namespace

std::string FormatSummary(const CRunSummary& s) {
  std::string text = "\nSummary\n";
  if (s.construction) {
    const CListCounts& r = s.built.records;
    text += Heading("Construction", s.constructionSeconds);
    text += Row("identification records read", r.read);
    text += Row("kept (marked site on a sequon)", r.kept);
    text += Row("dropped: no mark", r.noMark);
    text += Row("dropped: mark not on a sequon", r.notOnSequon);
    text += Row("dropped: below the probability", r.belowProbability);
    text += Row("spectra not found", s.built.spectraNotFound);
    text += Row("library peptides", s.built.peptides);
    text += Row("entries written", s.built.entriesWritten,
                " (" + std::to_string(s.built.entriesWritten / 2) + " targets and as many decoys)");
  }
  if (s.search) {
    text += Heading("Search", s.searchSeconds);
    text += Row("library entries loaded", s.searched.librarySpectra);
    text += Row("queries read", s.searched.queriesRead);
    text += Row("passing the oxonium filter", s.searched.queriesAccepted);
    text += Row("with candidates", s.searched.withCandidates);
    text += Row("result lines", s.searched.resultLines,
                " (" + std::to_string(s.searched.targets) + " targets, " +
                    std::to_string(s.searched.decoys) + " decoys)");
    if (s.searched.damagedPeaks > 0) text += Row("damaged peaks dropped", s.searched.damagedPeaks);
    text += Heading("FDR", s.fdrSeconds);
    text += Row("target lines at FDR <= 1 %", s.ranked.targetsAt1);
    text += Row("target lines at FDR <= 5 %", s.ranked.targetsAt5);
  }
  text += "  Files\n";
  if (s.construction) {
    text += Path("library", s.library);
    text += Path("companion", s.companion);
  }
  if (s.construction || s.search) text += Path("mass table", s.massTable);
  if (s.search) text += Path("result", s.result);
  if (!s.summaryFile.empty()) text += Path("summary", s.summaryFile);
  return text;
}

std::string SummaryJson(const CRunSummary& s) {
  std::string json = "{";
  if (s.construction) {
    const CListCounts& r = s.built.records;
    json += Quoted("construction") + ":{" + Field("records_read", r.read) + "," +
            Field("records_kept", r.kept) + "," + Field("dropped_no_mark", r.noMark) + "," +
            Field("dropped_not_on_sequon", r.notOnSequon) + "," +
            Field("dropped_below_probability", r.belowProbability) + "," +
            Field("dropped_spectrum_not_found", s.built.spectraNotFound) + "," +
            Field("peptides", s.built.peptides) + "," +
            Field("entries_written", s.built.entriesWritten) + "," +
            Field("seconds", s.constructionSeconds) + "," + Field("library", s.library) + "," +
            Field("companion", s.companion) + "}";
  }
  if (s.search) {
    if (s.construction) json += ",";
    const CSearchCounts& q = s.searched;
    json += Quoted("search") + ":{" + Field("library_entries", q.librarySpectra) + "," +
            Field("queries_read", q.queriesRead) + "," +
            Field("queries_passing_oxonium", q.queriesAccepted) + "," +
            Field("queries_with_candidates", q.withCandidates) + "," +
            Field("result_lines", q.resultLines) + "," + Field("targets", q.targets) + "," +
            Field("decoys", q.decoys) + "," + Field("damaged_peaks", q.damagedPeaks) + "," +
            Field("seconds", s.searchSeconds) + "," + Field("result", s.result) + "}," +
            Quoted("fdr") + ":{" + Field("targets_fdr_1", s.ranked.targetsAt1) + "," +
            Field("targets_fdr_5", s.ranked.targetsAt5) + "," + Field("seconds", s.fdrSeconds) +
            "}";
  }
  if (s.construction || s.search) json += ",";
  json += Field("mass_table", s.massTable) + "}\n";
  return json;
}
