#include "exchange/MspWriter.h"

#include <algorithm>
#include <cmath>

#include "exchange/MspNames.h"
#include "run/NumberText.h"
#include "run/Param.h"

namespace {

std::string Annotation(const CPeak& peak, uint32_t frequency) {
  std::string text;
  if (peak.type == kPeakB || peak.type == kPeakY) {
    text += peak.type == kPeakB ? 'b' : 'y';
    text += std::to_string(peak.position);
    if (peak.charge > 1) (text += '^') += std::to_string(peak.charge);
  } else {
    text += '?';
  }
  ((text += ' ') += std::to_string(peak.count) += '/') += std::to_string(frequency);
  return text;
}

// Sites held by a b or y fragment: b_k holds site q when k >= q, y_k when k > L - q.
int SitesHeld(const CPeak& peak, const std::vector<int32_t>& sites, std::size_t length) {
  int held = 0;
  for (int32_t q : sites) {
    const auto k = static_cast<int64_t>(peak.position);
    if (peak.type == kPeakB && k >= q) ++held;
    if (peak.type == kPeakY && k > static_cast<int64_t>(length) - q) ++held;
  }
  return held;
}

}  // namespace

void WriteMspRecord(const CSpectrum& entry, const CSiteMark& mark, const CMassTable& table,
                    std::ostream& out) {
  std::string sequence = entry.sequence;
  std::vector<int32_t> sites;
  for (std::size_t i = 0; i < sequence.size(); ++i)
    if (sequence[i] == 'J') {
      sequence[i] = 'N';
      sites.push_back(static_cast<int32_t>(i + 1));
    }
  // Mods=count/position,residue,name/... as NIST comments give it, 0-based positions in order.
  std::vector<std::pair<int32_t, std::string>> mods;
  for (const CModification& mod : entry.modifications)
    mods.emplace_back(std::max(mod.position, 1), MspModificationName(mod.name));
  for (int32_t q : sites) mods.emplace_back(q, mark.mspName);
  std::stable_sort(mods.begin(), mods.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::string modText = std::to_string(mods.size());
  for (const auto& [position, name] : mods) {
    const char residue = position <= static_cast<int32_t>(sequence.size()) ? sequence[static_cast<std::size_t>(position) - 1] : '-';
    ((((modText += '/') += std::to_string(position - 1) += ',') += residue) += ',') += name;
  }
  if (mods.empty()) modText = "0";

  const double proton = table.Molecule("Proton");
  const double neutral = entry.precursorMass - proton + mark.mass * static_cast<double>(sites.size());
  const uint32_t z = entry.charge > 0 ? entry.charge : 1;
  std::string text = "Name: ";
  ((text += sequence) += '/') += std::to_string(entry.charge);
  text += "\nMW: ";
  AppendFixed(text, neutral, 5);
  text += "\nComment: Spec=Consensus Mods=" + modText + " Fullname=" +
          (entry.prevAA.empty() ? "-" : entry.prevAA.substr(entry.prevAA.size() - 1)) + "." +
          sequence + "." + (entry.lastAA.empty() ? "-" : entry.lastAA.substr(0, 1)) +
          " Charge=" + std::to_string(entry.charge) + " Parent=";
  AppendFixed(text, (neutral + z * proton) / z, 5);
  text += " Nreps=" + std::to_string(entry.frequency);
  const bool decoy = entry.name.rfind(kDecoyPrefix, 0) == 0;
  text += std::string(" Decoy=") + (decoy ? "1" : "0");
  if (!entry.proteinAC.empty()) text += " Protein=\"" + entry.proteinAC + "\"";
  // What only .quolib holds: the entry's name, the flanking texts, start and motifs.
  text += " LibraryEntry=" + entry.name + " PrevAA=" + entry.prevAA + " LastAA=" + entry.lastAA +
          " Start=" + std::to_string(entry.startPosition) + " Motifs=";
  for (std::size_t i = 0; i < entry.motifs.size(); ++i)
    text += (i ? ";" : "") + std::to_string(entry.motifs[i].position) + ":" + entry.motifs[i].sequon;
  if (sites.size() == 1) text += " Site=" + std::to_string(sites[0]);
  text += " " + kMspOriginKey + "=" + kMspOrigin + "\n";

  std::vector<CPeak> peaks;
  for (const CPeak& peak : entry.peaks) {
    if (peak.type == kPeakYCore || peak.type == kPeakOther) continue;
    CPeak shown = peak;
    if (peak.charge > 0)
      shown.mz += mark.mass * SitesHeld(peak, sites, sequence.size()) / peak.charge;
    peaks.push_back(shown);
  }
  std::stable_sort(peaks.begin(), peaks.end(), ByMz);
  text += "Num peaks: " + std::to_string(peaks.size()) + "\n";
  for (const CPeak& peak : peaks) {
    AppendFixed(text, peak.mz, 4);
    text += '\t';
    AppendSigned(text, std::llround(peak.intensity * kMspIntensityScale));
    text += "\t\"" + Annotation(peak, entry.frequency) + "\"\n";
  }
  out << text << "\n";
}
