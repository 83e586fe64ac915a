#include "fdr/FdrEstimator.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <memory>
#include <string_view>
#include <utility>

#include "fdr/ResultLineScan.h"
#include "run/NumberText.h"
#include "run/Process.h"
#include "run/SafeOutputFile.h"

const char* const kFdrResultHeader =
    "QuerySpecName\tLibSpecName\tQueryPrecursorMH\tLibPrecursorMH\tCharge\tSequence\tModification\t"
    "MassShift\tGlycanMass\tGlycanName\tGlycoLoc\tMotif\tLibCandidateNum\tMatchedYIonNum\t"
    "MatchedYIonIntSum\tMatchedPepIonNum\tMatchedPepIonIntSum\tDPS\tPS\tQuorinGlyco_Score\t"
    "Target/DecoyHit\tDPSIon\tPSIon\tProteinAC\tPreviousAminoAcid\tLastTwoAminoAcid\t"
    "StartPositions\tFDR";

namespace {

// A data line shorter than this (an empty line, say) holds no hit.
constexpr std::size_t kMinimalDataLine = 10;
constexpr std::size_t kIoChunk = 1 << 20;

// `reason`: the system's, as FailureLine gives it.
[[noreturn]] void FailOnResultFile(const std::string& path, const std::string& reason = "") {
  std::cout << "Identification result file load error: failed to open result file " << path
            << '\n' << reason << std::flush;
  ExitProgram(1);
}

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

// Calls onLine for each line of the file, without its line end; LF and CRLF end
// a line alike. Lines of any length are delivered whole: a result line never
// gets cut into pieces that would each become a line of their own. A read error
// ends the reading like the end of the file.
template <typename OnLine>
void ForEachLine(std::FILE* file, OnLine onLine) {
  std::unique_ptr<char[]> chunk(new char[kIoChunk]);
  std::string pending;
  auto deliver = [&](const char* begin, std::size_t length) {
    if (length > 0 && begin[length - 1] == '\r') --length;
    onLine(begin, length);
  };
  std::size_t count;
  while ((count = std::fread(chunk.get(), 1, kIoChunk, file)) > 0) {
    const char* p = chunk.get();
    const char* end = p + count;
    while (p < end) {
      const char* newline = static_cast<const char*>(std::memchr(p, '\n', end - p));
      if (!newline) {
        pending.append(p, end);
        break;
      }
      if (pending.empty()) {
        deliver(p, static_cast<std::size_t>(newline - p));
      } else {
        pending.append(p, newline);
        deliver(pending.data(), pending.size());
        pending.clear();
      }
      p = newline + 1;
    }
  }
  if (!pending.empty()) deliver(pending.data(), pending.size());
}

// Descending score; a score that isn't a number (from a damaged line) goes
// last, so the order stays a strict weak ordering.
bool HigherScore(const CFdrRecord& a, const CFdrRecord& b) {
  if (std::isnan(a.score)) return false;
  if (std::isnan(b.score)) return true;
  return a.score > b.score;
}

// Columns of a search result line; a ranked line has one more.
constexpr long kResultColumns = 27;

bool LowerFdr(const CFdrRecord& a, const CFdrRecord& b) { return a.fdr < b.fdr; }

double ForwardEstimate(double decoys, double targets, int32_t formula) {
  switch (formula) {
    case 1:
      return targets > decoys ? decoys / targets : 1.0;
    case 2:
      return 2.0 * decoys / (decoys + targets);
    default:
      return 0.0;
  }
}

}  // namespace

CFdrEstimator::CFdrEstimator(std::string input, std::string output, int32_t estimateFormula)
    : inputPath(std::move(input)), outputPath(std::move(output)), formula(estimateFormula) {
  records.reserve(kReservedRecords);
}

void CFdrEstimator::Estimate() {
  std::cout << ">> Estimating FDR." << std::endl;
  Load();
  Rank();
  Write();
  std::cout << "    ---- Complete!" << std::endl << std::endl;
}

void CFdrEstimator::Load() { LoadFile(inputPath, false); }

void CFdrEstimator::LoadFile(const std::string& path, bool cutFormerFdr) {
  // Only a regular file is a result file: a directory can't be read, a device never ends.
  if (GetPathKind(path) != PathKind::File) FailOnResultFile(path);
  FilePtr file(std::fopen(path.c_str(), "rb"));
  if (!file) FailOnResultFile(path);
  bool header = true;
  ForEachLine(file.get(), [&](const char* text, std::size_t length) {
    if (header) {
      header = false;
      // Only `fdr` ranks files ranked before. The search writes 27 columns: a
      // ranked file here was written by another run of the same outputs, and
      // its FDR column would pass for part of the line.
      if (!cutFormerFdr && std::string_view(text, length) == kFdrResultHeader) {
        std::cout << "[Error]: " << path << " already has an FDR column: another run may have "
                  << "written the same result file. Nothing was ranked." << std::endl;
        ExitProgram(1);
      }
      return;
    }
    if (length < kMinimalDataLine) return;
    // A ranked line has 28 columns: its former estimate goes, to be made anew.
    if (cutFormerFdr && std::count(text, text + length, '\t') == kResultColumns) {
      while (text[length - 1] != '\t') --length;
      --length;
    }
    CFdrRecord& record = records.emplace_back();
    record.order = records.size() - 1;
    record.line.assign(text, length);
    CResultLineFields fields = ScanResultLine(record.line);
    record.charge = fields.charge;
    record.massShift = fields.massShift;
    record.score = fields.score;
    record.isDecoy = fields.hitKind == 'D';
  });
}

CFdrCounts CFdrEstimator::Counts() const {
  CFdrCounts counts;
  for (const CFdrRecord& record : records) {
    ++(record.isDecoy ? counts.decoys : counts.targets);
    if (record.isDecoy) continue;
    if (record.fdr <= 0.01) ++counts.targetsAt1;
    if (record.fdr <= 0.05) ++counts.targetsAt5;
  }
  return counts;
}

void CFdrEstimator::Rank() {
  // Any order of equal scores is correct; the stable sort keeps them in file
  // order so that a run is reproducible.
  std::stable_sort(records.begin(), records.end(), HigherScore);
  ForwardPass(records, formula);
  BackwardPass(records);
  // After the backward pass the estimates already ascend along the score order;
  // the stable sort by FDR only matters if that ever changes.
  if (!std::is_sorted(records.begin(), records.end(), LowerFdr))
    std::stable_sort(records.begin(), records.end(), LowerFdr);
}

void CFdrEstimator::ForwardPass(std::vector<CFdrRecord>& records, int32_t formula) {
  double targets = 0.0, decoys = 0.0;
  for (CFdrRecord& record : records) {
    if (record.isDecoy) decoys += 1.0;
    else targets += 1.0;
    record.fdr = ForwardEstimate(decoys, targets, formula);
  }
}

void CFdrEstimator::BackwardPass(std::vector<CFdrRecord>& records) {
  double running = 1.0;
  for (auto it = records.rbegin(); it != records.rend(); ++it) {
    if (running > it->fdr) running = it->fdr;
    else it->fdr = running;
  }
}

void CFdrEstimator::Write() const {
  CSafeOutputFile file;
  if (!file.Open(outputPath, std::ios::binary)) FailOnResultFile(outputPath, FailureLine(file));
  std::ofstream& out = file.Stream();
  std::string buffer;
  buffer.reserve(kIoChunk + 8192);
  auto flush = [&] {
    out.write(buffer.data(), static_cast<std::streamsize>(buffer.size()));
    buffer.clear();
  };
  buffer.append(kFdrResultHeader).push_back('\n');
  for (const CFdrRecord& record : records) {
    buffer.append(record.line).push_back('\t');
    AppendFixed(buffer, record.fdr, 3);
    buffer.push_back('\n');
    if (buffer.size() >= kIoChunk) flush();
  }
  flush();
  // The search's lines are still in the input file; it must outlive a write
  // that didn't complete, so the run ends here with the file kept.
  if (!file.Commit()) {
    std::cout << "Identification result file write error: failed to write result file "
              << outputPath << '\n' << FailureLine(file) << std::flush;
    ExitProgram(1);
  }
}
