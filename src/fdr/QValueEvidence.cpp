#include "fdr/QValueEvidence.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <iterator>

namespace {

// Doubles in the shortest form that reads back to the same value, so that
// estimates over read-back evidence equal those over evidence just found.
void AppendDouble(std::string& out, double value) {
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, value).ptr;
  out.append(text, end);
}

bool ReadDouble(std::string_view text, double& value) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size();
}

bool ReadInt(std::string_view text, int& value) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size() && !text.empty();
}

struct CEvidenceField {
  const char* name;
  void (*write)(const CGlycopeptideHit& hit, std::string& out);
  // False when the text does not read as the field.
  bool (*read)(std::string_view text, CGlycopeptideHit& hit, CGlycanNames& glycans);
};

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
    {"isotope", [](const CGlycopeptideHit& h, std::string& o) { o += std::to_string(h.call.isotope); },
     [](std::string_view t, CGlycopeptideHit& h, CGlycanNames&) { return ReadInt(t, h.call.isotope); }},
    {"massErrorPpm", [](const CGlycopeptideHit& h, std::string& o) { AppendDouble(o, h.call.massErrorPpm); },
     [](std::string_view t, CGlycopeptideHit& h, CGlycanNames&) {
       return ReadDouble(t, h.call.massErrorPpm);
     }},
    {"contradictions",
     [](const CGlycopeptideHit& h, std::string& o) { o += std::to_string(h.call.contradictions); },
     [](std::string_view t, CGlycopeptideHit& h, CGlycanNames&) {
       return ReadInt(t, h.call.contradictions);
     }},
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
    {"rivalErrorPpm", [](const CGlycopeptideHit& h, std::string& o) { AppendDouble(o, h.call.rivalErrorPpm); },
     [](std::string_view t, CGlycopeptideHit& h, CGlycanNames&) {
       return ReadDouble(t, h.call.rivalErrorPpm);
     }},
    {"yLevels", [](const CGlycopeptideHit& h, std::string& o) { o += std::to_string(h.yIons.levels); },
     [](std::string_view t, CGlycopeptideHit& h, CGlycanNames&) { return ReadInt(t, h.yIons.levels); }},
    {"yIntensity", [](const CGlycopeptideHit& h, std::string& o) { AppendDouble(o, h.yIons.intensity); },
     [](std::string_view t, CGlycopeptideHit& h, CGlycanNames&) {
       return ReadDouble(t, h.yIons.intensity);
     }},
    {"decoyYLevels",
     [](const CGlycopeptideHit& h, std::string& o) { o += std::to_string(h.decoyYIons.levels); },
     [](std::string_view t, CGlycopeptideHit& h, CGlycanNames&) { return ReadInt(t, h.decoyYIons.levels); }},
    {"decoyYIntensity",
     [](const CGlycopeptideHit& h, std::string& o) { AppendDouble(o, h.decoyYIons.intensity); },
     [](std::string_view t, CGlycopeptideHit& h, CGlycanNames&) {
       return ReadDouble(t, h.decoyYIons.intensity);
     }},
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
}
