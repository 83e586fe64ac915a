#include "spectrum/MgfBlockIndex.h"

#include <sstream>
#include <unordered_map>

#include "spectrum/ChargeLimit.h"
#include "spectrum/MzSpectrumName.h"
#include "spectrum/ScanFormat.h"

namespace {
constexpr std::size_t kExamples = 3;
constexpr std::size_t kExampleTitle = 60;  // characters of a title shown in the report

bool Begins(std::string_view line, std::string_view head) { return line.substr(0, head.size()) == head; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

std::string LeadingDigits(const std::string& text) {
  std::size_t n = 0;
  while (n < text.size() && n < 18 && IsDigit(text[n])) ++n;
  return text.substr(0, n);
}

// The scan number a title carries: a native ID (scan=, scanId=, index=,
// spectrum=) or Proteome Discoverer's scans: "N". Empty when there is none.
std::string ScanOfTitle(std::string title) {
  for (char& c : title)
    if (c == '"' || c == '\'' || c == ',' || c == ';') c = ' ';
  std::string scan = ScanOfNativeId(title);
  if (!scan.empty()) return scan;
  std::istringstream in(title);
  std::string token;
  while (in >> token)
    if (token == "scans:" && in >> token) return LeadingDigits(token);
  return "";
}

// The whole text of a block's TITLE line, read again: only blocks without a
// name of their own need it, so it is not kept for every block.
std::string TitleLineAt(CLineReader& input, int64_t position) {
  input.Seek(position);
  std::string_view line;
  while (input.Next(line) && !Begins(line, "END IONS") && !Begins(line, "BEGIN IONS"))
    if (Begins(line, "TITLE=")) return std::string(line.substr(6));
  return "";
}

std::string Plural(uint32_t count, const char* one, const char* many) {
  return std::to_string(count) + (count == 1 ? one : many);
}
}  // namespace

void CMgfBlockIndex::Build(CLineReader& input, const std::string& stem) {
  *this = CMgfBlockIndex();
  std::string_view line;
  int64_t lineNumber = 0;
  bool open = false, inPeaks = false;
  while (input.Next(line)) {
    ++lineNumber;
    if (Begins(line, "BEGIN IONS")) {
      // A block left open by a writer ends where the next one begins.
      Block block;
      block.position = input.Tell();
      block.line = lineNumber;
      block.number = static_cast<uint32_t>(blocks_.size() + 1);
      blocks_.push_back(std::move(block));
      open = true;
      inPeaks = false;
      continue;
    }
    if (!open) continue;
    if (Begins(line, "END IONS")) {
      open = false;
      continue;
    }
    Block& block = blocks_.back();
    if (!block.titleSeen && Begins(line, "TITLE=")) {
      block.titleSeen = true;
      ScanKeyWord(line, "TITLE=", block.title);
    } else if (block.scans.empty() && Begins(line, "SCANS=")) {
      ScanKeyWord(line, "SCANS=", block.scans);
    } else if (!line.empty() && IsDigit(line.front())) {
      inPeaks = true;  // the parser reads its header up to the first peak line
    } else if (!inPeaks && Begins(line, "CHARGE=")) {
      int charge = 0;
      if (ScanKeyInt(line, "CHARGE=", charge)) {
        block.hasCharge = true;
        block.charge = charge;
      }
    } else if (!inPeaks && Begins(line, "PEPMASS=")) {
      double mz = 0.0;
      if (ScanKeyDouble(line, "PEPMASS=", mz)) block.hasPrecursor = true;
    }
  }
  NameBlocks(input, stem);
}

void CMgfBlockIndex::NameBlocks(CLineReader& input, const std::string& stem) {
  std::unordered_map<std::string, uint32_t> uses;
  for (const Block& block : blocks_)
    if (!block.title.empty()) ++uses[block.title];
  auto nameFrom = [&](const std::string& scan, const Block& block) {
    const int64_t charge = ChargeInRange(block.charge) ? block.charge : 0;
    return stem + "." + scan + "." + scan + "." + std::to_string(charge);
  };
  for (const Block& block : blocks_) {
    const bool untitled = block.title.empty();
    const bool repeated = !untitled && uses[block.title] > 1;
    std::string name = block.title;
    if (untitled || repeated) {
      std::string scan = LeadingDigits(block.scans);
      if (scan.empty() && block.titleSeen) scan = ScanOfTitle(TitleLineAt(input, block.position));
      name = nameFrom(scan.empty() ? std::to_string(block.number) : scan, block);
      // Two blocks of one scan (or a title that is such a name) fall back to the block number.
      if (positions_.count(name) || uses.count(name)) name = nameFrom(std::to_string(block.number), block);
      ++renamed_;
      untitled_ += untitled;
      repeated_ += repeated;
    }
    const bool chargeless = !block.hasCharge, badCharge = block.hasCharge && !ChargeInRange(block.charge);
    noCharge_ += chargeless;
    badCharge_ += badCharge;
    noPrecursor_ += !block.hasPrecursor;
    if ((untitled || repeated || chargeless || badCharge || !block.hasPrecursor) && examples_.size() < kExamples) {
      std::string example = "block " + std::to_string(block.number) + " (line " + std::to_string(block.line);
      if (!block.title.empty()) example += ", title " + block.title.substr(0, kExampleTitle);
      example += ")";
      if (name != block.title) example += " read as " + name;
      examples_.push_back(example);
    }
    // Where even the fallback repeats a name, the later block wins, as before.
    positions_.insert_or_assign(name, block.position);
  }
}

std::string CMgfBlockIndex::Report() const {
  std::string parts;
  auto add = [&](uint32_t count, const std::string& what) {
    if (count == 0) return;
    parts += (parts.empty() ? "" : ", ") + what;
  };
  add(repeated_, Plural(repeated_, " block shares its title with another", " blocks share their title with another"));
  add(untitled_, Plural(untitled_, " block has no title", " blocks have no title"));
  add(noCharge_, Plural(noCharge_, " block has no CHARGE", " blocks have no CHARGE"));
  add(badCharge_, Plural(badCharge_, " block has a charge outside 1 to ", " blocks have a charge outside 1 to ") +
                      std::to_string(kMaxPrecursorCharge) + " (read as 0)");
  add(noPrecursor_, Plural(noPrecursor_, " block has no PEPMASS", " blocks have no PEPMASS"));
  if (parts.empty()) return "";
  std::string report = "of " + std::to_string(blocks_.size()) + " blocks, " + parts;
  if (renamed_ > 0) report += "; blocks without a title of their own are named by scan number or block number";
  report += "; first: ";
  for (std::size_t i = 0; i < examples_.size(); ++i) report += (i ? "; " : "") + examples_[i];
  return report;
}
