#include "fdr/ShardEvidence.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <type_traits>

static_assert(std::endian::native == std::endian::little, "the shard evidence is kept little-endian");

namespace {

// One list of the fields of a hit serves both directions: `io` is a writer or
// a reader, `Hit` a const or a mutable hit.
template <typename Io, typename Hit>
void EvidenceFields(Io& io, Hit& h) {
  io.Glycan(h.call.glycan);
  io(h.call.isotope);
  io(h.call.massErrorPpm);
  io(h.call.contradictions);
  io.Glycans(h.call.isobaric);
  io(h.call.rivalErrorPpm);
  io(h.yIons.levels);
  io(h.yIons.intensity);
  io(h.decoyYIons.levels);
  io(h.decoyYIons.intensity);
  io(h.fragmentIons);
  io(h.site.candidates);
  io(h.site.probability);
  io(h.site.reported);
  io(h.site.group);
  io(h.ladder.masses);
  io.Bits(h.ladder.found);
  io(h.ladder.chance);
  io(h.ladder.toleranceDa);
}

// The fields the q-values read of a candidate's line (as the line parser
// fills them), its query name first.
template <typename Io, typename Hit>
void LineFields(Io& io, Hit& h) {
  io(h.query);
  io(h.sequence);
  io(h.modification);
  io(h.searchGlycan);
  io(h.glycoLoc);
  io(h.protein);
  io(h.following);
  io(h.proteinStart);
  io(h.decoy);
  io(h.queryMH);
  io(h.peptideMH);
  io(h.searchScore);
  io(h.charge);
  io(h.innerB);
  io(h.innerY);
  io(h.lineFeatures);
}

class CWriter {
 public:
  CWriter(std::string& out, std::map<const CGlycan*, uint32_t>& index, std::vector<std::string>& names)
      : out_(out), index_(index), names_(names) {}

  template <typename T>
    requires std::is_arithmetic_v<T>
  void operator()(const T& value) {
    out_.append(reinterpret_cast<const char*>(&value), sizeof value);
  }
  void operator()(const std::string& text) {
    Count(text.size());
    out_.append(text);
  }
  template <typename T>
    requires std::is_arithmetic_v<T>
  void operator()(const std::vector<T>& values) {
    Count(values.size());
    if (!values.empty()) out_.append(reinterpret_cast<const char*>(values.data()), values.size() * sizeof(T));
  }
  // Flags of 0 and 1, eight to a byte.
  void Bits(const std::vector<uint8_t>& flags) {
    Count(flags.size());
    for (std::size_t i = 0; i < flags.size(); i += 8) {
      uint8_t byte = 0;
      for (std::size_t j = i; j < std::min(i + 8, flags.size()); ++j) byte |= (flags[j] != 0) << (j - i);
      out_ += static_cast<char>(byte);
    }
  }
  void Glycan(const CGlycan* glycan) {
    uint32_t number = 0;
    if (glycan != nullptr) {
      const auto [it, added] = index_.try_emplace(glycan, static_cast<uint32_t>(names_.size() + 1));
      if (added) names_.push_back(glycan->name);
      number = it->second;
    }
    (*this)(number);
  }
  void Glycans(const std::vector<const CGlycan*>& glycans) {
    Count(glycans.size());
    for (const CGlycan* glycan : glycans) Glycan(glycan);
  }

 private:
  void Count(std::size_t count) { (*this)(static_cast<uint32_t>(count)); }

  std::string& out_;
  std::map<const CGlycan*, uint32_t>& index_;
  std::vector<std::string>& names_;
};

// Reads what CWriter wrote; past the end of its bytes, or at a glycan number
// the table lacks, it stops and stays failed.
class CReader {
 public:
  CReader(std::string_view bytes, const std::vector<const CGlycan*>& glycans)
      : bytes_(bytes), glycans_(glycans) {}

  bool Ok() const { return ok_; }
  bool AtEnd() const { return ok_ && bytes_.empty(); }
  std::size_t Left() const { return bytes_.size(); }

  template <typename T>
    requires std::is_arithmetic_v<T>
  void operator()(T& value) {
    if (!Take(sizeof value)) return;
    std::memcpy(&value, taken_, sizeof value);
  }
  void operator()(bool& value) {
    uint8_t byte = 0;
    (*this)(byte);
    ok_ = ok_ && byte <= 1;
    value = byte == 1;
  }
  void operator()(std::string_view& text) {
    const std::size_t count = Count(1);
    if (Take(count)) text = std::string_view(taken_, count);
  }
  void operator()(std::string& text) {
    std::string_view view;
    (*this)(view);
    text = view;
  }
  template <typename T>
    requires std::is_arithmetic_v<T>
  void operator()(std::vector<T>& values) {
    const std::size_t count = Count(sizeof(T));
    values.resize(count);
    if (Take(count * sizeof(T)) && count > 0) std::memcpy(values.data(), taken_, count * sizeof(T));
  }
  void Bits(std::vector<uint8_t>& flags) {
    uint32_t count = 0;
    (*this)(count);
    ok_ = ok_ && count / 8 + (count % 8 != 0) <= bytes_.size();
    flags.resize(ok_ ? count : 0);
    if (!Take((flags.size() + 7) / 8)) return;
    for (std::size_t j = 0; j < flags.size(); ++j) flags[j] = (taken_[j / 8] >> (j % 8)) & 1;
  }
  void Glycan(const CGlycan*& glycan) {
    uint32_t number = 0;
    (*this)(number);
    ok_ = ok_ && number < glycans_.size();
    glycan = ok_ ? glycans_[number] : nullptr;
  }
  void Glycans(std::vector<const CGlycan*>& glycans) {
    glycans.resize(Count(sizeof(uint32_t)));
    for (const CGlycan*& glycan : glycans) Glycan(glycan);
  }

 private:
  // A count of items of `size` bytes; 0, failed, when the bytes left can't hold them.
  std::size_t Count(std::size_t size) {
    uint32_t count = 0;
    (*this)(count);
    ok_ = ok_ && count <= bytes_.size() / size;
    return ok_ ? count : 0;
  }
  bool Take(std::size_t size) {
    ok_ = ok_ && size <= bytes_.size();
    if (!ok_) return false;
    taken_ = bytes_.data();
    bytes_.remove_prefix(size);
    return true;
  }

  std::string_view bytes_;
  const std::vector<const CGlycan*>& glycans_;
  const char* taken_ = nullptr;
  bool ok_ = true;
};

void AppendCount(std::string& out, std::size_t count) {
  const uint32_t value = static_cast<uint32_t>(count);
  out.append(reinterpret_cast<const char*>(&value), sizeof value);
}

}  // namespace

const CGlycan* CGlycanNames::Get(const std::string& name) {
  auto [it, added] = byName.try_emplace(name);
  if (added) {
    it->second.name = name;
    it->second.ParseComposition();
  }
  return &it->second;
}

void CShardEvidence::Add(const CGlycopeptideHit& hit, bool candidate) {
  // The record's length goes before it once it is known.
  const std::size_t start = bytes_.size();
  AppendCount(bytes_, 0);
  CWriter writer(bytes_, glycanIndex_, glycanNames_);
  if (candidate) LineFields(writer, hit);
  else writer(hit.query);
  EvidenceFields(writer, hit);
  const uint32_t length = static_cast<uint32_t>(bytes_.size() - start - sizeof length);
  std::memcpy(bytes_.data() + start, &length, sizeof length);
}

void CShardEvidence::AddLine(const CGlycopeptideHit& hit) {
  Add(hit, false);
  ++lines_;
}

void CShardEvidence::AddCandidate(const CGlycopeptideHit& hit) {
  Add(hit, true);
  ++candidates_;
}

void CShardEvidence::Reserve(std::size_t hits) {
  // About 400 bytes a hit, most of them the b and y ladder.
  bytes_.reserve(bytes_.size() + hits * 512);
}

std::string CShardEvidence::Table() const {
  std::string out;
  AppendCount(out, glycanNames_.size());
  for (const std::string& name : glycanNames_) {
    AppendCount(out, name.size());
    out += name;
  }
  return out;
}

bool CShardEvidence::Load(std::string bytes, std::size_t lines, std::size_t candidates,
                          CGlycanNames& glycans, std::string& why) {
  *this = CShardEvidence{};
  bytes_ = std::move(bytes);
  // The glycan table: names, numbered from 1.
  glycans_ = {nullptr};
  CReader table(bytes_, glycans_);
  uint32_t count = 0;
  table(count);
  for (uint32_t i = 0; i < count && table.Ok(); ++i) {
    std::string_view name;
    table(name);
    if (table.Ok()) glycans_.push_back(glycans.Get(std::string(name)));
  }
  if (!table.Ok()) {
    why = "its table of glycans is damaged";
    return false;
  }
  // The records, by their lengths alone; a record is read when it is needed.
  std::size_t at = bytes_.size() - table.Left();
  while (at < bytes_.size()) {
    uint32_t length = 0;
    if (bytes_.size() - at < sizeof length) break;
    std::memcpy(&length, bytes_.data() + at, sizeof length);
    at += sizeof length;
    if (length > bytes_.size() - at) break;
    records_.emplace_back(at, length);
    at += length;
  }
  if (at != bytes_.size() || records_.size() != lines + candidates) {
    why = "its evidence holds " + std::to_string(records_.size()) + " whole records, not the " +
          std::to_string(lines + candidates) + " it names";
    return false;
  }
  lines_ = lines;
  candidates_ = candidates;
  return true;
}

std::string_view CShardEvidence::LineQuery(std::size_t i) const {
  CReader reader(std::string_view(bytes_).substr(records_[i].first, records_[i].second), glycans_);
  std::string_view query;
  reader(query);
  return query;
}

bool CShardEvidence::ReadLine(std::size_t i, CGlycopeptideHit& hit) const {
  CReader reader(std::string_view(bytes_).substr(records_[i].first, records_[i].second), glycans_);
  std::string_view query;
  reader(query);
  EvidenceFields(reader, hit);
  return reader.AtEnd();
}

bool CShardEvidence::ReadCandidate(std::size_t i, CGlycopeptideHit& hit) const {
  const auto [at, length] = records_[lines_ + i];
  CReader reader(std::string_view(bytes_).substr(at, length), glycans_);
  LineFields(reader, hit);
  EvidenceFields(reader, hit);
  hit.candidateRank = 1;
  return reader.AtEnd();
}
