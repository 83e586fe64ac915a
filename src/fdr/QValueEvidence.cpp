#include "fdr/QValueEvidence.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <functional>
#include <iterator>
#include <vector>

namespace {

// Numbers in the shortest form that reads back to the same value (doubles
// included), so that estimates over read-back evidence equal those over
// evidence just found.
template <typename T>
void AppendNumber(std::string& out, T value) {
  char text[32];
  out.append(text, std::to_chars(text, text + sizeof text, value).ptr);
}

template <typename T>
bool ReadNumber(std::string_view text, T& value) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size() && !text.empty();
}

struct CEvidenceField {
  const char* name;
  std::function<void(const CGlycopeptideHit& hit, std::string& out)> write;
  // False when the text does not read as the field.
  std::function<bool(std::string_view text, CGlycopeptideHit& hit, CGlycanNames& glycans)> read;
};

// A number of the hit, reached through `get`.
template <typename T>
CEvidenceField NumberField(const char* name, T& (*get)(CGlycopeptideHit&)) {
  return {name,
          [get](const CGlycopeptideHit& h, std::string& o) { AppendNumber(o, get(const_cast<CGlycopeptideHit&>(h))); },
          [get](std::string_view t, CGlycopeptideHit& h, CGlycanNames&) { return ReadNumber(t, get(h)); }};
}

// A list of numbers of the hit, `;`-separated, reached through `get`.
template <typename T>
CEvidenceField ListField(const char* name, std::vector<T>& (*get)(CGlycopeptideHit&)) {
  return {name,
          [get](const CGlycopeptideHit& h, std::string& o) {
            const std::vector<T>& values = get(const_cast<CGlycopeptideHit&>(h));
            for (std::size_t i = 0; i < values.size(); ++i) {
              if (i > 0) o += ';';
              AppendNumber(o, values[i]);
            }
          },
          [get](std::string_view t, CGlycopeptideHit& h, CGlycanNames&) {
            std::vector<T>& values = get(h);
            values.clear();
            while (!t.empty()) {
              const std::size_t end = std::min(t.find(';'), t.size());
              if (!ReadNumber(t.substr(0, end), values.emplace_back())) return false;
              t.remove_prefix(std::min(end + 1, t.size()));
            }
            return true;
          }};
}

// The fields, in column order. The glycans are written by name: the merge
// needs nothing of them but the name.
const CEvidenceField kFields[] = {
    {"query", [](const CGlycopeptideHit& h, std::string& o) { o += h.query; },
     [](std::string_view t, CGlycopeptideHit& h, CGlycanNames&) {
       h.query = t;
       return true;
     }},
    {"glycan",
     [](const CGlycopeptideHit& h, std::string& o) {
       if (h.call.glycan != nullptr) o += h.call.glycan->name;
     },
     [](std::string_view t, CGlycopeptideHit& h, CGlycanNames& g) {
       h.call.glycan = t.empty() ? nullptr : g.Get(std::string(t));
       return true;
     }},
    NumberField<int>("isotope", [](CGlycopeptideHit& h) -> int& { return h.call.isotope; }),
    NumberField<double>("massErrorPpm", [](CGlycopeptideHit& h) -> double& { return h.call.massErrorPpm; }),
    NumberField<int>("contradictions", [](CGlycopeptideHit& h) -> int& { return h.call.contradictions; }),
    {"isobaric",
     [](const CGlycopeptideHit& h, std::string& o) {
       for (std::size_t i = 0; i < h.call.isobaric.size(); ++i)
         (o += i == 0 ? "" : ";") += h.call.isobaric[i]->name;
     },
     [](std::string_view t, CGlycopeptideHit& h, CGlycanNames& g) {
       h.call.isobaric.clear();
       while (!t.empty()) {
         const std::size_t end = std::min(t.find(';'), t.size());
         h.call.isobaric.push_back(g.Get(std::string(t.substr(0, end))));
         t.remove_prefix(std::min(end + 1, t.size()));
       }
       return true;
     }},
    NumberField<double>("rivalErrorPpm", [](CGlycopeptideHit& h) -> double& { return h.call.rivalErrorPpm; }),
    NumberField<int>("yLevels", [](CGlycopeptideHit& h) -> int& { return h.yIons.levels; }),
    NumberField<double>("yIntensity", [](CGlycopeptideHit& h) -> double& { return h.yIons.intensity; }),
    NumberField<int>("decoyYLevels", [](CGlycopeptideHit& h) -> int& { return h.decoyYIons.levels; }),
    NumberField<double>("decoyYIntensity", [](CGlycopeptideHit& h) -> double& { return h.decoyYIons.intensity; }),
    NumberField<int>("fragmentIons", [](CGlycopeptideHit& h) -> int& { return h.fragmentIons; }),
    ListField<int>("siteCandidates", [](CGlycopeptideHit& h) -> std::vector<int>& { return h.site.candidates; }),
    ListField<double>("siteProbabilities",
                      [](CGlycopeptideHit& h) -> std::vector<double>& { return h.site.probability; }),
    NumberField<int>("siteReported", [](CGlycopeptideHit& h) -> int& { return h.site.reported; }),
    ListField<int>("siteGroup", [](CGlycopeptideHit& h) -> std::vector<int>& { return h.site.group; }),
    ListField<float>("ladderMasses", [](CGlycopeptideHit& h) -> std::vector<float>& { return h.ladder.masses; }),
    ListField<uint8_t>("ladderFound", [](CGlycopeptideHit& h) -> std::vector<uint8_t>& { return h.ladder.found; }),
    NumberField<float>("ladderChance", [](CGlycopeptideHit& h) -> float& { return h.ladder.chance; }),
    NumberField<float>("ladderToleranceDa", [](CGlycopeptideHit& h) -> float& { return h.ladder.toleranceDa; }),
};

}  // namespace

const CGlycan* CGlycanNames::Get(const std::string& name) {
  auto [it, added] = byName.try_emplace(name);
  if (added) {
    it->second.name = name;
    it->second.ParseComposition();
  }
  return &it->second;
}

std::string EvidenceHeader() {
  std::string header;
  for (const CEvidenceField& field : kFields) (header += header.empty() ? "" : "\t") += field.name;
  return header;
}

void AppendEvidence(const CGlycopeptideHit& hit, std::string& line) {
  bool first = true;
  for (const CEvidenceField& field : kFields) {
    if (!first) line += '\t';
    first = false;
    field.write(hit, line);
  }
}

bool ReadEvidence(std::string_view row, CGlycopeptideHit& hit, CGlycanNames& glycans,
                  std::string& why) {
  std::vector<std::string_view> columns;
  for (;;) {
    const std::size_t tab = row.find('\t');
    columns.push_back(row.substr(0, tab));
    if (tab == std::string_view::npos) break;
    row.remove_prefix(tab + 1);
  }
  if (columns.size() != std::size(kFields)) {
    why = "it has " + std::to_string(columns.size()) + " columns, not the " +
          std::to_string(std::size(kFields)) + " of its header";
    return false;
  }
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (!kFields[i].read(columns[i], hit, glycans)) {
      why = "its field " + std::string(kFields[i].name) + " does not read (\"" +
            std::string(columns[i]) + "\")";
      return false;
    }
  }
  return true;
}

void CopyEvidence(const CGlycopeptideHit& from, CGlycopeptideHit& to) {
  to.call = from.call;
  to.yIons = from.yIons;
  to.decoyYIons = from.decoyYIons;
  to.fragmentIons = from.fragmentIons;
  to.site = from.site;
  to.ladder = from.ladder;
}
