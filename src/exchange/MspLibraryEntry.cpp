#include "exchange/MspLibraryEntry.h"

#include <algorithm>
#include <cstdlib>

#include "exchange/MspWriter.h"
#include "run/StringUtil.h"

namespace {

std::string CommentValue(const CMspRecord& record, const char* key) {
  const auto found = record.comment.find(key);
  return found == record.comment.end() ? std::string() : found->second;
}

// Peaks with their annotation: "b3^2 4/5" is b3 at charge 2, seen in 4 of 5 spectra.
void ReadLibraryPeaks(const CMspRecord& record, CSpectrum& spectrum) {
  spectrum.peaks.clear();
  for (const CMspPeak& line : record.peaks) {
    CPeak peak;
    peak.mz = line.mz;
    peak.intensity = line.intensity / kMspIntensityScale;
    const char kind = line.annotation.empty() ? '?' : line.annotation[0];
    if (kind == 'b' || kind == 'y') {
      peak.type = kind == 'b' ? kPeakB : kPeakY;
      char* end = nullptr;
      peak.position = static_cast<uint32_t>(std::strtoul(line.annotation.c_str() + 1, &end, 10));
      peak.charge = *end == '^' ? static_cast<uint32_t>(std::strtoul(end + 1, nullptr, 10)) : 1;
    }
    const std::size_t blank = line.annotation.find(' ');
    if (blank != std::string::npos)
      peak.count = static_cast<uint32_t>(std::strtoul(line.annotation.c_str() + blank + 1, nullptr, 10));
    spectrum.peaks.push_back(peak);
  }
}

void ReadMotifs(const std::string& text, std::vector<CGlycoSite>& motifs) {
  std::vector<std::string> items;
  Split(text, ";", items);
  for (const std::string& item : items) {
    const std::size_t colon = item.find(':');
    if (colon != std::string::npos)
      motifs.push_back({std::atoi(item.c_str()), item.substr(colon + 1)});
  }
}

void SetFragmentMz(CSpectrum& entry, const CPeptideCalculator& calculator) {
  for (CPeak& peak : entry.peaks)
    if ((peak.type == kPeakB || peak.type == kPeakY) && peak.position <= calculator.length &&
        peak.charge > 0)
      peak.mz = calculator.FragmentMz(peak.type, peak.position, peak.charge);
}

}  // namespace

bool RebuildLibraryEntry(const CMspRecord& record, const CIdentifiedSpectrum& peptide,
                         CLibraryBuilder& builder, std::map<std::string, double>& targetMasses,
                         CSpectrum& entry) {
  const int32_t site = std::atoi(CommentValue(record, "Site").c_str());
  if (site < 1 || static_cast<std::size_t>(site) > peptide.sequence.size()) return false;
  entry = CSpectrum();
  entry.name = CommentValue(record, "LibraryEntry");
  if (entry.name.empty()) entry.name = std::to_string(record.number);
  entry.sequence = peptide.sequence;
  entry.sequence[static_cast<std::size_t>(site) - 1] = 'J';
  entry.modifications = peptide.modifications;
  entry.charge = static_cast<uint32_t>(peptide.charge);
  entry.frequency = static_cast<uint32_t>(std::max(1, std::atoi(CommentValue(record, "Nreps").c_str())));
  entry.proteinAC = peptide.proteinAC;
  entry.prevAA = peptide.prevAA;
  entry.lastAA = peptide.lastAA;
  entry.startPosition = peptide.startPosition;
  ReadMotifs(CommentValue(record, "Motifs"), entry.motifs);
  ReadLibraryPeaks(record, entry);

  CPeptideCalculator& calculator = builder.calculator;
  const std::string& mark = builder.param.modification_remove;
  if (entry.name.rfind(kDecoyPrefix, 0) != 0) {
    // As the construction stage: ions with the mark, then the mark taken off.
    calculator.SetPeptide(entry.sequence, entry.modifications);
    entry.precursorMass = calculator.PeptideMH();
    SetFragmentMz(entry, calculator);
    builder.RemoveSiteMarks(entry);
    targetMasses[entry.name] = entry.precursorMass;
  } else {
    // A decoy is made from its finished target: its ions never held the mark.
    std::erase_if(entry.modifications,
                  [&](const CModification& mod) { return mod.position == site && mod.name == mark; });
    calculator.SetPeptide(entry.sequence, entry.modifications);
    const auto target = targetMasses.find(entry.name.substr(kDecoyPrefix.size()));
    entry.precursorMass = target != targetMasses.end() ? target->second : calculator.PeptideMH();
    SetFragmentMz(entry, calculator);
  }
  AddYIons(entry, builder.param.added_Y_ions, builder.param.Y_ion_relative_intensity);
  // Peaks of equal m/z keep the record's order, which is the library's.
  std::stable_sort(entry.peaks.begin(), entry.peaks.end(), ByMz);
  return true;
}
