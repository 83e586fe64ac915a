#pragma once
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// One data line of the result file.
struct CFdrRecord {
  std::string line;        // the whole line as read, without its line end
  bool isDecoy = false;    // column 21 holds D
  double score = 0.0;      // column 20, as printed (5 decimals)
  double fdr = 0.0;        // the estimate; not read from the file
  double massShift = 0.0;  // column 8
  int32_t charge = 0;      // column 5
  std::size_t order = 0;   // place among the lines loaded, before ranking
};

// What the ranking found, for the run summary.
struct CFdrCounts {
  uint64_t targets = 0;
  uint64_t decoys = 0;
  uint64_t targetsAt1 = 0;  // target lines at FDR <= 0.01
  uint64_t targetsAt5 = 0;  // target lines at FDR <= 0.05
  // With glycopeptide q-values: the smallest GlycopeptideQ of a target line,
  // below which the run has too few lines and decoys to tell anything; 0
  // without q-values.
  double lowestGlycopeptideQ = 0.0;
};

// Ranks the lines of a result file by score and gives each a false discovery
// rate from the running counts of target and decoy hits.
class CFdrEstimator {
 public:
  static constexpr std::size_t kReservedRecords = 4096;

  CFdrEstimator(std::string input, std::string output, int32_t estimateFormula);

  // Load, rank and estimate, write.
  void Estimate();

  // Reads inputPath into records; ends the program with status 1 when the file
  // can't be opened.
  void Load();
  // Appends the lines of one result file; with cutFormerFdr a line of 28
  // columns (an earlier ranking) loses its last one.
  void LoadFile(const std::string& path, bool cutFormerFdr);
  // Sorts by descending score, runs both passes, orders by ascending FDR.
  void Rank();
  // Writes the 28-column file; ends the program with status 1 on failure.
  void Write() const;
  // Counts of the ranked records.
  CFdrCounts Counts() const;

  // Forward pass over the records in their present order: running counts T of
  // targets and D of decoys; formula 1 gives D/T while T > D and 1 otherwise,
  // formula 2 gives 2D/(D+T), any other formula 0.
  static void ForwardPass(std::vector<CFdrRecord>& records, int32_t formula);
  // Gives each record the smallest estimate of itself and all records after it.
  static void BackwardPass(std::vector<CFdrRecord>& records);

  std::string inputPath;
  std::string outputPath;
  int32_t formula = 1;
  std::vector<CFdrRecord> records;
};

// The header of the ranked result file, without line end.
extern const char* const kFdrResultHeader;
