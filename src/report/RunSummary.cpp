#include "report/RunSummary.h"

#include "report/RunIdentity.h"

#include <fstream>
#include <iterator>
#include <sstream>
#include <utility>
#include <vector>

#include "run/Process.h"

namespace {
using Json = nlohmann::json;

// Known keys of each stage, in the order shown, with their labels; the stage's
// own label heads its table.
struct CStageLabels {
  std::string key, caption;
  std::vector<std::pair<std::string, std::string>> labels;
};
const std::vector<CStageLabels> kStages = {
    {"construction", "Construction",
     {{"records_read", "identification records read"},
      {"records_kept", "records kept (marked site on a sequon)"},
      {"dropped_no_mark", "dropped: no site mark"},
      {"dropped_not_on_sequon", "dropped: mark not on a sequon"},
      {"dropped_below_probability", "dropped: below the probability threshold"},
      {"dropped_spectrum_not_found", "dropped: spectrum not found"},
      {"peptides_placed_in_fasta", "peptides placed in the FASTA file"},
      {"peptides_not_in_fasta", "peptides not in the FASTA file (kept as listed)"},
      {"peptides_placed_ambiguously", "peptides placed ambiguously (kept as listed)"},
      {"peptides", "library peptides"},
      {"entries_written", "library entries written"},
      {"library", "library"},
      {"companion", "companion file"},
      {"seconds", "time (s)"}}},
    {"search", "Search",
     {{"library_entries", "library entries loaded"},
      {"queries_read", "query spectra read"},
      {"queries_passing_oxonium", "passing the oxonium test"},
      {"queries_with_candidates", "with candidates"},
      {"result_lines", "result lines"},
      {"targets", "target hits"},
      {"decoys", "decoy hits"},
      {"damaged_peaks", "damaged peaks dropped"},
      {"result", "result file"},
      {"qvalues", "q-value file"},
      {"seconds", "time (s)"}}},
    {"merge", "Shards merged", {{"shards", "shards merged"}, {"lines", "lines merged"}}},
    {"fdr", "FDR and q-values",
     {{"targets_glycopeptide_q_1", "targets at GlycopeptideQ 1 %"},
      {"targets_glycopeptide_q_5", "targets at GlycopeptideQ 5 %"},
      {"targets_fdr_1", "targets at FDR 1 % (target-decoy estimate)"},
      {"targets_fdr_5", "targets at FDR 5 % (target-decoy estimate)"},
      {"deferred", "left to a later fdr over all shards"},
      {"cpu_seconds", "CPU time (s)"},
      {"seconds", "time (s)"}}},
};

// A key this report has no label for, made readable: "queries_read" gives "queries read".
std::string Readable(std::string key) {
  for (char& c : key)
    if (c == '_') c = ' ';
  return key;
}

std::string ValueText(const Json& value) {
  if (value.is_string()) return value.get<std::string>();
  if (value.is_number_float()) {
    std::ostringstream text;
    text.precision(3);
    text << std::fixed << value.get<double>();
    return text.str();
  }
  return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string Row(const std::string& label, const std::string& value) {
  return "<tr><th>" + EscapeHtml(label) + "</th><td>" + EscapeHtml(value) + "</td></tr>\n";
}

std::string UnitName(int32_t unit) { return unit == 1 ? "ppm" : "Da"; }

std::string FormatName(int32_t format) {
  switch (format) {
    case 0: return "library";
    case 1: return "dta";
    case 2: return "mgf";
    case 3: return "dtas";
    default: return "format " + std::to_string(format);
  }
}

std::string ListFormatName(int32_t format) {
  switch (format) {
    case 0: return "quorin";
    case 1: return "pepxml";
    case 2: return "lanvek";
    case 4: return "mascot";
    case 5: return "pilot";
    case 6: return "maxquant";
    case 7: return "tab-txt";
    default: return "format " + std::to_string(format);
  }
}

std::string Number(double value) {
  std::ostringstream text;
  text << value;
  return text.str();
}
}  // namespace

std::string EscapeHtml(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      case '\'': out += "&#39;"; break;
      default: out += c;
    }
  }
  return out;
}

Json ReadRunSummary(const std::string& path, std::string& note) {
  Json summary = ReadSummaryFile(path, note);
  if (!note.empty()) note += " and was left out";
  return summary;
}

std::string SummaryTablesHtml(const Json& summary) {
  std::string html;
  auto table = [&html](const std::string& stage, const Json& values,
                       const std::vector<std::pair<std::string, std::string>>& keys) {
    html += "<table class=\"facts\"><caption>" + EscapeHtml(stage) + "</caption>\n";
    for (const auto& [key, label] : keys)
      if (values.contains(key)) html += Row(label, ValueText(values[key]));
    for (const auto& [key, value] : values.items()) {
      bool known = false;
      for (const auto& entry : keys) known = known || entry.first == key;
      if (!known) html += Row(Readable(key), ValueText(value));
    }
    html += "</table>\n";
  };
  for (const CStageLabels& stage : kStages) {
    const auto found = summary.find(stage.key);
    if (found != summary.end() && found->is_object()) table(stage.caption, *found, stage.labels);
  }
  // Stages this report does not know yet are shown too.
  for (const auto& [stage, values] : summary.items()) {
    bool known = false;
    for (const CStageLabels& entry : kStages) known = known || entry.key == stage;
    if (!known && values.is_object()) table(Readable(stage), values, {});
  }
  // Values outside the stages, such as the mass table.
  std::string rest;
  for (const auto& [key, value] : summary.items())
    if (!value.is_object()) rest += Row(Readable(key), ValueText(value));
  if (!rest.empty()) html += "<table class=\"facts\"><caption>Files</caption>\n" + rest + "</table>\n";
  return html;
}

std::string SettingsHtml(const CConstructionParam* construction, const CSearchParam& search) {
  std::string html = "<table class=\"facts\"><caption>search</caption>\n";
  html += Row("library", search.input_speclib_filename);
  for (std::size_t i = 0; i < search.query_datasets.size(); ++i)
    html += Row("query dataset " + std::to_string(i + 1) + " (" +
                    FormatName(search.query_datasets[i].format) + ")",
                search.query_datasets[i].pathname);
  html += Row("precursor tolerance", Number(search.query_precursor_ion_tolerance) + " " +
                                         UnitName(search.query_precursor_ion_unit));
  html += Row("product ion tolerance", Number(search.query_product_ion_tolerance) + " " +
                                           UnitName(search.query_product_ion_unit));
  html += Row("minimal peptide ions", std::to_string(search.minimal_peptide_ions));
  html += Row("top peaks per query", std::to_string(search.top_peak_limit));
  html += Row("result file", search.output_result_filename);
  html += "</table>\n";
  if (construction == nullptr || !construction->enabled) return html;
  const CConstructionParam& c = *construction;
  html += "<table class=\"facts\"><caption>construction</caption>\n";
  for (std::size_t i = 0; i < c.identification_files.size(); ++i)
    html += Row("identification list " + std::to_string(i + 1) + " (" +
                    ListFormatName(c.identification_files[i].format) + ")",
                c.identification_files[i].path);
  for (std::size_t i = 0; i < c.library_datasets.size(); ++i)
    html += Row("library dataset " + std::to_string(i + 1) + " (" +
                    FormatName(c.library_datasets[i].format) + ")",
                c.library_datasets[i].pathname);
  html += Row("site mark", c.modification_remove);
  html += Row("product ion tolerance", Number(c.library_product_ion_tolerance) + " " +
                                           UnitName(c.library_product_ion_unit));
  html += Row("theta", Number(c.theta));
  static const char* const kMotifs[] = {"NXS", "NXT", "NXC", "NXV"};
  std::string motifs, yIons;
  for (int32_t motif : c.N_glycan_motifs) {
    if (!motifs.empty()) motifs += ',';
    motifs += motif >= 0 && motif < 4 ? kMotifs[motif] : "?";
  }
  for (uint32_t y : c.added_Y_ions) {
    yIons += yIons.empty() ? "Y" : ",Y";
    yIons += std::to_string(y);
  }
  html += Row("N-glycan motifs", motifs);
  html += Row("added Y ions", yIons);
  html += Row("Y ion relative intensity", Number(c.Y_ion_relative_intensity));
  html += Row("protein database", c.protein_database);
  html += Row("library written", c.output_speclib_filename);
  html += "</table>\n";
  return html;
}
