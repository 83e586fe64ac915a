#include "report/RunFigures.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>

#include "run/Process.h"
#include "run/TextLine.h"

namespace {
const char* const kQColumns[] = {"PeptideQ", "GlycanQ", "GlycopeptideQ"};

std::vector<std::string> SplitTabs(const std::string& line) {
  std::vector<std::string> fields(1);
  for (char c : line) c == '\t' ? void(fields.emplace_back()) : fields.back().push_back(c);
  return fields;
}

bool ToFinite(const std::string& text, double& value) {
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  return result.ec == std::errc() && result.ptr == text.data() + text.size() && std::isfinite(value);
}

// Points of a rising step curve, [accepted, value], where it rises by more
// than a few thousandths of its range, and its last point: enough to draw it
// at any screen size, and a few thousand points at most for a million lines.
nlohmann::json StepPoints(const std::vector<double>& ascending) {
  constexpr double kSteps = 4000.0;
  nlohmann::json points = nlohmann::json::array();
  if (ascending.empty()) return points;
  const double step = (ascending.back() - ascending.front()) / kSteps;
  double drawn = ascending.front();
  for (std::size_t i = 0; i < ascending.size(); ++i) {
    const bool last = i + 1 == ascending.size();
    if (last || (ascending[i + 1] != ascending[i] && ascending[i + 1] - drawn > step)) {
      points.push_back({i + 1, ascending[i]});
      if (!last) drawn = ascending[i + 1];
    }
  }
  return points;
}
}  // namespace

// Site columns come from the q-values' site choice and may be absent: a hit then shows none.
const std::vector<std::string> kQValueHitColumns = {
    "PeptideQ",        "GlycanQ",        "GlycopeptideQ",      "IsobaricGlycans", "SiteProbability",
    "SiteCandidates",  "GlycoLoc",       "GlycanMassErrorPpm", "GlycanName"};

CFdrCount CountAtFdr(const std::vector<CScorePoint>& all, double fdr) {
  CFdrCount count;
  for (const CScorePoint& point : all)
    if (point.fdr <= fdr) ++(point.decoy ? count.decoys : count.targets);
  return count;
}

nlohmann::json ScoreHistogram(const std::vector<CScorePoint>& all, std::size_t bins) {
  double best = 0.0;
  for (const CScorePoint& point : all)
    if (std::isfinite(point.score)) best = std::max(best, point.score);
  if (best <= 0.0) best = 1.0;
  std::vector<std::size_t> targets(bins, 0), decoys(bins, 0);
  for (const CScorePoint& point : all) {
    if (!std::isfinite(point.score)) continue;
    const double at = std::clamp(point.score / best, 0.0, 1.0) * static_cast<double>(bins);
    const std::size_t bin = std::min(bins - 1, static_cast<std::size_t>(at));
    ++(point.decoy ? decoys : targets)[bin];
  }
  nlohmann::json edges = nlohmann::json::array();
  for (std::size_t i = 0; i <= bins; ++i) edges.push_back(best * static_cast<double>(i) / static_cast<double>(bins));
  return {{"edges", edges}, {"targets", targets}, {"decoys", decoys}};
}

nlohmann::json FdrCurve(const std::vector<CScorePoint>& all) {
  std::vector<double> fdrs;
  fdrs.reserve(all.size());
  for (const CScorePoint& point : all) fdrs.push_back(point.fdr);
  // The file is ranked by FDR; a hand-edited one need not be.
  std::sort(fdrs.begin(), fdrs.end());
  return StepPoints(fdrs);
}

CQValues ReadQValues(const std::string& path, std::string& note) {
  note.clear();
  CQValues q;
  if (path.empty() || GetPathKind(path) == PathKind::Missing) return q;
  std::ifstream in(path, std::ios::binary);
  std::string line;
  if (!in.is_open() || !ReadLine(in, line, nullptr, 1 << 20)) {
    note = "the q-value file " + path + " could not be read";
    return q;
  }
  const std::vector<std::string> header = SplitTabs(line);
  auto columnOf = [&header](const char* name) {
    return static_cast<std::size_t>(std::find(header.begin(), header.end(), name) - header.begin());
  };
  std::vector<std::pair<std::string, std::size_t>> columns;
  for (const char* name : kQColumns)
    if (columnOf(name) < header.size()) columns.emplace_back(name, columnOf(name));
  if (columns.empty()) {
    note = "the q-value file " + path + " has none of the columns PeptideQ, GlycanQ, GlycopeptideQ";
    return q;
  }
  const std::size_t queryColumn = columnOf("QuerySpecName"), decoyColumn = columnOf("Target/DecoyHit");
  const std::size_t qColumn = columnOf("GlycopeptideQ");
  std::vector<std::vector<double>> values(columns.size());
  while (ReadLine(in, line, nullptr, 1 << 20)) {
    const std::vector<std::string> fields = SplitTabs(line);
    for (std::size_t c = 0; c < columns.size(); ++c) {
      if (columns[c].second >= fields.size()) continue;
      double value = 0.0;
      if (ToFinite(fields[columns[c].second], value)) values[c].push_back(value);
    }
    double glycopeptideQ = 1.0;
    const bool hasQ = qColumn < fields.size() && ToFinite(fields[qColumn], glycopeptideQ);
    if (hasQ && decoyColumn < fields.size()) {
      const bool decoy = fields[decoyColumn] == "D";
      if (glycopeptideQ <= 0.01) ++(decoy ? q.at1.decoys : q.at1.targets);
      if (glycopeptideQ <= 0.05) ++(decoy ? q.at5.decoys : q.at5.targets);
    }
    if (queryColumn >= fields.size() || q.byQuery.contains(fields[queryColumn])) continue;
    if (hasQ) q.glycopeptideQ[fields[queryColumn]] = glycopeptideQ;
    std::vector<std::string>& shown = q.byQuery[fields[queryColumn]];
    for (const std::string& name : kQValueHitColumns)
      shown.push_back(columnOf(name.c_str()) < fields.size() ? fields[columnOf(name.c_str())] : std::string());
  }
  q.curves = nlohmann::json::object();
  for (std::size_t c = 0; c < columns.size(); ++c) {
    std::sort(values[c].begin(), values[c].end());
    q.curves[columns[c].first] = StepPoints(values[c]);
  }
  return q;
}
