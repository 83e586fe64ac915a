#include "cli/RunSummary.h"

#include <cstdio>

#include <nlohmann/json.hpp>

#include "report/RunIdentity.h"
#include "run/FileFingerprint.h"
#include "run/Process.h"
#include "run/SafeOutputFile.h"

namespace {

// The smallest q-value cut a summary assumes a run can tell.
constexpr double kResolvedGlycopeptideQ = 0.001;

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
    if (const CFollowingCounts& f = s.built.following; f.used) {
      text += Row("peptides placed in the FASTA file", f.placed, " (residues after them known)");
      text += Row("peptides not in the FASTA file", f.missing, " (kept as listed)");
      text += Row("peptides placed ambiguously", f.differing, " (different residues after; kept as listed)");
    }
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
    if (!s.shard.empty()) {
      text += Heading("FDR left to a later fdr over all shards", s.fdrSeconds);
    } else {
      text += Heading("FDR", s.fdrSeconds);
      if (s.mergedShards > 0) {
        text += Row("shards merged", s.mergedShards);
        text += Row("lines merged", s.mergedLines);
      }
      // With q-values they lead: the FDR column counts only the wrong peptides a
      // reversed decoy could match as well.
      const bool q = s.glycopeptideQ.read;
      if (q) {
        text += Row("targets at GlycopeptideQ <= 1 %", s.glycopeptideQ.targetsAt1);
        text += Row("targets at GlycopeptideQ <= 5 %", s.glycopeptideQ.targetsAt5);
      }
      const std::string note = q ? " (FDR column: the target-decoy estimate)" : "";
      text += Row("target lines at FDR <= 1 %", s.ranked.targetsAt1, note);
      text += Row("target lines at FDR <= 5 %", s.ranked.targetsAt5, note);
      // A small run (one glycoprotein) cannot tell q-values below one over its
      // lines: say so rather than let an empty 0.1 % cut look like a result.
      if (s.ranked.lowestGlycopeptideQ > kResolvedGlycopeptideQ) {
        char line[160];
        std::snprintf(line, sizeof line,
                      "    too few lines and decoys to tell a GlycopeptideQ below %.4f\n",
                      s.ranked.lowestGlycopeptideQ);
        text += line;
      }
    }
  }
  text += "  Files\n";
  if (s.construction) {
    text += Path("library", s.library);
    text += Path("companion", s.companion);
  }
  if (s.construction || s.search) text += Path("mass table", s.massTable);
  if (s.search) text += Path("result", s.result);
  if (!s.qvalues.empty()) {
    text += Path("q-values", s.qvalues);
    text += Path("features", s.features);
  }
  if (!s.shard.empty()) text += Path("shard", s.shard);
  if (!s.summaryFile.empty()) text += Path("summary", s.summaryFile);
  return text;
}

std::string SummaryJson(const CRunSummary& s) {
  // Keys in the order a reader meets them on the console.
  nlohmann::ordered_json json;
  if (s.construction) {
    const CListCounts& r = s.built.records;
    json["construction"] = {{"records_read", r.read},
                            {"records_kept", r.kept},
                            {"dropped_no_mark", r.noMark},
                            {"dropped_not_on_sequon", r.notOnSequon},
                            {"dropped_below_probability", r.belowProbability},
                            {"dropped_spectrum_not_found", s.built.spectraNotFound},
                            {"peptides", s.built.peptides},
                            {"entries_written", s.built.entriesWritten},
                            {"seconds", s.constructionSeconds},
                            {"library", s.library},
                            {"companion", s.companion}};
    if (const CFollowingCounts& f = s.built.following; f.used) {
      json["construction"]["peptides_placed_in_fasta"] = f.placed;
      json["construction"]["peptides_not_in_fasta"] = f.missing;
      json["construction"]["peptides_placed_ambiguously"] = f.differing;
    }
  }
  if (s.search) {
    const CSearchCounts& q = s.searched;
    json["search"] = {{"library_entries", q.librarySpectra},
                      {"queries_read", q.queriesRead},
                      {"queries_passing_oxonium", q.queriesAccepted},
                      {"queries_with_candidates", q.withCandidates},
                      {"result_lines", q.resultLines},
                      {"targets", q.targets},
                      {"decoys", q.decoys},
                      {"damaged_peaks", q.damagedPeaks},
                      {"seconds", s.searchSeconds},
                      {"result", s.result}};
    if (!s.qvalues.empty()) json["search"]["qvalues"] = s.qvalues;
    if (!s.shard.empty()) {
      json["search"]["shard"] = s.shard;
      json["fdr"] = {{"deferred", true}, {"seconds", s.fdrSeconds}, {"cpu_seconds", s.fdrCpuSeconds}};
    } else {
      json["fdr"] = nlohmann::ordered_json::object();
      if (s.glycopeptideQ.read) {
        json["fdr"]["targets_glycopeptide_q_1"] = s.glycopeptideQ.targetsAt1;
        json["fdr"]["targets_glycopeptide_q_5"] = s.glycopeptideQ.targetsAt5;
      }
      json["fdr"]["targets_fdr_1"] = s.ranked.targetsAt1;
      json["fdr"]["targets_fdr_5"] = s.ranked.targetsAt5;
      json["fdr"]["seconds"] = s.fdrSeconds;
      json["fdr"]["cpu_seconds"] = s.fdrCpuSeconds;
      if (!s.qvalues.empty()) json["fdr"]["lowest_glycopeptide_q"] = s.ranked.lowestGlycopeptideQ;
    }
    if (s.mergedShards > 0) json["merge"] = {{"shards", s.mergedShards}, {"lines", s.mergedLines}};
  }
  json["mass_table"] = s.massTable;
  if (!s.stamp.empty()) {
    json["run"]["stamp"] = s.stamp;
    for (const auto& [role, fingerprint] : s.fingerprints)
      json["run"][FingerprintKey(role)] = fingerprint;
  }
  return json.dump() + "\n";
}

void RecordFingerprints(CRunSummary& summary) {
  summary.fingerprints.clear();
  for (const auto& [role, path] :
       {std::pair{"library", summary.construction ? summary.library : ""},
        std::pair{"companion", summary.construction ? summary.companion : ""},
        std::pair{"result", summary.search ? summary.result : ""}, std::pair{"qvalues", summary.qvalues},
        std::pair{"features", summary.features}}) {
    if (!path.empty() && GetPathKind(path) == PathKind::File)
      summary.fingerprints.emplace_back(role, FileFingerprint(path));
  }
}

bool WriteSummaryFile(const CRunSummary& summary) {
  CSafeOutputFile file;
  if (!file.Open(summary.summaryFile)) return false;
  file.Stream() << SummaryJson(summary);
  return file.Commit();
}
