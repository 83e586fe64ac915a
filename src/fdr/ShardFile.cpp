#include "fdr/ShardFile.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <type_traits>

#include <zlib.h>

#include "run/Motif.h"
#include "run/Process.h"
#include "run/SafeOutputFile.h"
#include "run/TextLine.h"

const char* const kShardFileMagic = "QuorinGlyco shard";

namespace {

std::string Number(double value) {
  char text[32];
  return std::string(text, std::to_chars(text, text + sizeof text, value).ptr);
}

std::string Hex(uint32_t value) {
  char text[16];
  std::snprintf(text, sizeof text, "%08x", value);
  return text;
}

std::vector<std::string> Split(const std::string& line) {
  std::vector<std::string> fields(1);
  for (char c : line) c == '\t' ? void(fields.emplace_back()) : fields.back().push_back(c);
  return fields;
}

template <typename T>
bool ReadNumber(const std::string& text, T& value, int base = 10) {
  const char* const last = text.data() + text.size();
  std::from_chars_result read;
  if constexpr (std::is_floating_point_v<T>) read = std::from_chars(text.data(), last, value);
  else read = std::from_chars(text.data(), last, value, base);
  return read.ec == std::errc() && read.ptr == last && !text.empty();
}

bool ReadIdentity(const std::vector<std::string>& f, std::size_t at, CFileIdentity& identity) {
  return f.size() == at + 2 && ReadNumber(f[at], identity.size) && ReadNumber(f[at + 1], identity.crc, 16);
}

// The search counts by the names the run summary gives them.
struct CCountField {
  const char* name;
  uint64_t CSearchCounts::*member;
};
const CCountField kCounts[] = {{"library_entries", &CSearchCounts::librarySpectra},
                               {"queries_read", &CSearchCounts::queriesRead},
                               {"queries_passing_oxonium", &CSearchCounts::queriesAccepted},
                               {"queries_with_candidates", &CSearchCounts::withCandidates},
                               {"result_lines", &CSearchCounts::resultLines},
                               {"targets", &CSearchCounts::targets},
                               {"decoys", &CSearchCounts::decoys},
                               {"damaged_peaks", &CSearchCounts::damagedPeaks},
                               {"damaged_spectra", &CSearchCounts::damagedSpectra}};

// CRC-32 of a whole buffer, or of `before` followed by it.
uint32_t Crc32(const std::string& bytes, uint32_t before = 0) {
  return static_cast<uint32_t>(crc32_z(before, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()));
}

}  // namespace

std::vector<std::pair<std::string, std::string>> EstimateSettings(const CSearchParam& s) {
  CFileIdentity table;
  IdentifyFile(s.mass_table_filename, table, false);
  return {{"query_precursor_ion_tolerance", Number(s.query_precursor_ion_tolerance)},
          {"query_precursor_ion_unit", std::to_string(s.query_precursor_ion_unit)},
          {"query_product_ion_tolerance", Number(s.query_product_ion_tolerance)},
          {"query_product_ion_unit", std::to_string(s.query_product_ion_unit)},
          {"minimal_peptide_ions", std::to_string(s.minimal_peptide_ions)},
          {"top_peak_limit", std::to_string(s.top_peak_limit)},
          {"glycopeptide_fdr", s.glycopeptide_fdr ? "yes" : "no"},
          // The site call takes its sequons from the construction's motifs.
          {"site_acceptors", MotifAcceptorLetters(CParam::GetInstance().construction.GetMotifRegex())},
          {"mass_table", std::to_string(table.size) + " bytes, CRC-32 " + Hex(table.crc)}};
}

bool WriteShardFile(const CShardFile& shard, const std::string& path) {
  std::string text = std::string(kShardFileMagic) + '\t' + std::to_string(shard.version) + '\n';
  auto identity = [](const CFileIdentity& id) {
    return std::to_string(id.size) + '\t' + Hex(id.crc);
  };
  text += "library\t" + shard.library + '\t' + identity(shard.libraryIdentity) + '\n';
  text += "mass_table\t" + shard.massTable + '\n';
  for (const auto& [name, value] : shard.settings) text += "setting\t" + name + '\t' + value + '\n';
  for (const std::string& dataset : shard.datasets) text += "dataset\t" + dataset + '\n';
  text += "result\t" + shard.result + '\t' + std::to_string(shard.resultLines) + '\t' +
          identity(shard.resultIdentity) + '\n';
  for (const CCountField& count : kCounts)
    text += std::string("count\t") + count.name + '\t' + std::to_string(shard.counts.*count.member) + '\n';
  text += "seconds\t" + Number(shard.searchSeconds) + '\n';
  for (const CMotifNarrowing& n : shard.narrowings) text += "narrowed\t" + n.entry + '\t' + n.sequon + '\n';
  std::string table;
  const std::string& records = shard.evidence.Records();
  if (shard.glycopeptideFdr) {
    table = shard.evidence.Table();
    text += "evidence\t" + std::to_string(shard.evidence.Lines()) + '\t' +
            std::to_string(shard.evidence.Candidates()) + '\t' + std::to_string(table.size() + records.size()) +
            '\t' + Hex(Crc32(records, Crc32(table))) + '\n';
  }
  // The last line counts the lines before it: a file cut short lacks it.
  std::size_t lines = 0;
  for (char c : text) lines += c == '\n';
  text += "end\t" + std::to_string(lines) + '\n';
  CSafeOutputFile file;
  if (!file.Open(path, std::ios::binary)) return false;
  file.Stream().write(text.data(), static_cast<std::streamsize>(text.size()));
  if (shard.glycopeptideFdr) {
    file.Stream().write(table.data(), static_cast<std::streamsize>(table.size()));
    file.Stream().write(records.data(), static_cast<std::streamsize>(records.size()));
  }
  return file.Commit();
}

bool ReadShardFile(const std::string& path, CShardFile& shard, CGlycanNames& glycans,
                   std::string& why) {
  if (GetPathKind(path) != PathKind::File) {
    why = "it is not there (a search with run --no-fdr writes it beside its result file)";
    return false;
  }
  std::ifstream in(path, std::ios::binary);
  std::string line;
  if (!in || !ReadLine(in, line, nullptr, 1 << 16)) {
    why = "it can't be read";
    return false;
  }
  const std::vector<std::string> magic = Split(line);
  if (magic.size() != 2 || magic[0] != kShardFileMagic || !ReadNumber(magic[1], shard.version)) {
    why = "its first line is not that of a shard file";
    return false;
  }
  if (shard.version != kShardFormatVersion) {
    why = "it has format version " + magic[1] + ", this program reads version " +
          std::to_string(kShardFormatVersion) + "; search its datasets again with this version";
    return false;
  }
  shard = CShardFile{};
  bool ended = false, hasLibrary = false, hasResult = false;
  std::size_t number = 1, lines = 0, candidates = 0, bytes = 0;
  uint32_t crc = 0;
  for (; !ended && ReadLine(in, line, nullptr, 1 << 20); ++number) {
    const std::vector<std::string> f = Split(line);
    const std::string& kind = f[0];
    bool ok = true;
    if (kind == "library") {
      ok = f.size() == 4 && ReadIdentity(f, 2, shard.libraryIdentity);
      shard.library = f.size() > 1 ? f[1] : "";
      hasLibrary = true;
    } else if (kind == "mass_table") {
      ok = f.size() == 2;
      if (ok) shard.massTable = f[1];
    } else if (kind == "seconds") {
      ok = f.size() == 2 && ReadNumber(f[1], shard.searchSeconds);
    } else if (kind == "setting") {
      ok = f.size() == 3;
      if (ok) shard.settings.emplace_back(f[1], f[2]);
    } else if (kind == "dataset") {
      ok = f.size() == 2;
      if (ok) shard.datasets.push_back(f[1]);
    } else if (kind == "result") {
      ok = f.size() == 5 && ReadNumber(f[2], shard.resultLines) && ReadIdentity(f, 3, shard.resultIdentity);
      shard.result = f.size() > 1 ? f[1] : "";
      hasResult = true;
    } else if (kind == "count") {
      ok = false;
      for (const CCountField& count : kCounts)
        if (f.size() == 3 && f[1] == count.name) ok = ReadNumber(f[2], shard.counts.*count.member);
    } else if (kind == "narrowed") {
      ok = f.size() == 3;
      if (ok) shard.narrowings.push_back({f[1], f[2]});
    } else if (kind == "evidence") {
      ok = !shard.glycopeptideFdr && f.size() == 5 && ReadNumber(f[1], lines) && ReadNumber(f[2], candidates) &&
           ReadNumber(f[3], bytes) && ReadNumber(f[4], crc, 16);
      shard.glycopeptideFdr = true;
    } else if (kind == "end") {
      std::size_t counted = 0;
      ok = f.size() == 2 && ReadNumber(f[1], counted) && counted == number;
      ended = ok;
    } else {
      ok = false;
    }
    if (!ok) {
      why = "line " + std::to_string(number + 1) + " is damaged (\"" + line.substr(0, 80) + "\")";
      return false;
    }
  }
  if (!ended || !hasLibrary || !hasResult) {
    why = "it is cut short (its line \"end\" is missing)";
    return false;
  }
  if (!shard.glycopeptideFdr) {
    if (in.peek() == EOF) return true;
    why = "something follows its line \"end\"";
    return false;
  }
  // The evidence: exactly the bytes its line names, up to the end of the file.
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  const auto at = static_cast<std::uintmax_t>(in.tellg());
  if (error || at > size || size - at < bytes) {
    const std::size_t lacking = error || at > size ? bytes : bytes - (size - at);
    why = "it is cut short (its evidence lacks " + std::to_string(lacking) + " bytes)";
    return false;
  }
  std::string evidence(bytes, '\0');
  in.read(evidence.data(), static_cast<std::streamsize>(bytes));
  if (static_cast<std::size_t>(in.gcount()) != bytes) {
    why = "it is cut short (its evidence can't be read whole)";
    return false;
  }
  if (in.peek() != EOF) {
    why = "something follows its evidence";
    return false;
  }
  if (Crc32(evidence) != crc) {
    why = "its evidence is damaged (its CRC-32 is " + Hex(Crc32(evidence)) + ", not the " + Hex(crc) +
          " it was written with)";
    return false;
  }
  if (!shard.evidence.Load(std::move(evidence), lines, candidates, glycans, why)) {
    why = "its evidence is damaged: " + why;
    return false;
  }
  return true;
}
