// The result file of the search: a header line, then one tab-separated line of
// 27 columns for each query that found a match worth reporting.
#include <cstdio>
#include <iostream>
#include <string>

#include "molecule/Modification.h"
#include "run/NumberText.h"
#include "run/Param.h"
#include "run/Process.h"
#include "run/StringUtil.h"
#include "search/LibrarySearcher.h"

const char* const kSearchResultHeader =
    "QuerySpecName\tLibSpecName\tQueryPrecursorMH\tLibPrecursorMH\tCharge\tSequence\t"
    "Modification\tMassShift\tGlycanMass\tGlycanName\tGlycoLoc\tMotif\tLibCandidateNum\t"
    "MatchedYIonNum\tMatchedYIonIntSum\tMatchedPepIonNum\tMatchedPepIonIntSum\tDPS\tPS\t"
    "QuorinGlyco_Score\tTarget/DecoyHit\tDPSIon\tPSIon\tProteinAC\tPrevAminoAcid\t"
    "LastAminoAcid\tStartPositions";

namespace {
// A result line is written only above this score.
constexpr double kMinimalReportedScore = 0.00001;

// Numbers of the result file: fixed notation with 5 digits after the point.
void AppendNumber(std::string& line, double value) { AppendFixed(line, value, 5); }

bool IsDecoyEntry(const CSpectrum& library) {
  return HasAffix(false, true, library.name, kDecoyPrefix);
}

void AppendField(std::string& line, const std::string& value) {
  line += value;
  line += '\t';
}
}  // namespace

void CLibrarySearcher::WriteHeader() {
  if (!resultOutput.Open(param.output_result_filename)) {
    std::cout << "Output search result error: failed to open file "
              << param.output_result_filename << '\n' << FailureLine(resultOutput) << std::flush;
    ExitProgram(1);
  }
  resultFile << kSearchResultHeader << '\n';
  if (param.glycopeptide_fdr && !candidateOutput.Open(CandidatePath(param.output_result_filename))) {
    std::cout << "Output search result error: failed to open file "
              << CandidatePath(param.output_result_filename) << std::endl;
    ExitProgram(1);
  }
}

void CLibrarySearcher::FormatResultLine(const CSpectralMatch& match, std::string& line) {
  const CSpectrum& q = *match.query;
  const CSpectrum& l = *match.library;
  line.clear();
  AppendField(line, q.name);
  AppendField(line, l.name);
  AppendNumber(line, q.precursorMass);
  line += '\t';
  AppendNumber(line, l.precursorMass);
  line += '\t';
  AppendField(line, std::to_string(q.charge));
  AppendField(line, l.sequence);
  AppendField(line, ModificationsToString(l.modifications));
  AppendNumber(line, q.precursorMass - l.precursorMass);
  line += '\t';
  AppendNumber(line, match.glycanMass);
  line += '\t';
  AppendField(line, match.glycanName);
  AppendField(line, match.glycoLoc);
  // The motif of the reported site: the last one whose position reads as the
  // site text; a site with a trailing comma matches none and the first stands.
  const std::string* motif = nullptr;
  if (!l.motifs.empty()) motif = &l.motifs.front().sequon;
  for (const CGlycoSite& site : l.motifs)
    if (std::to_string(site.position) == match.glycoLoc) motif = &site.sequon;
  AppendField(line, motif != nullptr ? *motif : std::string());
  AppendField(line, std::to_string(match.candidateCount));
  AppendField(line, std::to_string(match.matchedYIonCount));
  AppendNumber(line, match.matchedYIonIntensity);
  line += '\t';
  AppendField(line, std::to_string(match.matchedPeptideIonCount));
  AppendNumber(line, match.matchedPeptideIonIntensity);
  line += '\t';
  AppendNumber(line, match.dps);
  line += '\t';
  AppendNumber(line, match.ps);
  line += '\t';
  AppendNumber(line, match.score);
  line += '\t';
  AppendField(line, IsDecoyEntry(l) ? "D" : "T");
  AppendField(line, match.dpsIons);
  AppendField(line, match.psIons);
  AppendField(line, l.proteinAC);
  AppendField(line, l.prevAA);
  AppendField(line, l.lastAA);
  line += std::to_string(l.startPosition);
}

void CLibrarySearcher::WriteResults(std::span<const CSpectralMatch> batchResults) {
  resultFile.setf(std::ios::fixed, std::ios::floatfield);
  resultFile.precision(5);
  for (const CSpectralMatch& match : batchResults) {
    if (match.score > kMinimalReportedScore && match.library != nullptr) {
      FormatResultLine(match, lineBuffer);
      ++counts.resultLines;
      ++(IsDecoyEntry(*match.library) ? counts.decoys : counts.targets);
      lineBuffer += '\n';
      resultFile.write(lineBuffer.data(), static_cast<std::streamsize>(lineBuffer.size()));
    }
    // A query without a line keeps its candidates too (those of the precursor
    // read one isotope lower): the q-values may give it a line of their own.
    for (const CSpectralMatch& alternative : match.alternatives) {
      if (!(alternative.score > kMinimalReportedScore) || alternative.library == nullptr) continue;
      FormatResultLine(alternative, lineBuffer);
      lineBuffer += '\n';
      candidateOutput.Stream().write(lineBuffer.data(), static_cast<std::streamsize>(lineBuffer.size()));
    }
  }
}
