// From a consensus spectrum to an annotated library spectrum: theoretical ions,
// site marks and the removal of the marking modification.
#include <cstdint>

#include "construction/LibraryBuilder.h"
#include "run/Motif.h"

namespace {

constexpr double kFragmentMzLow = 0.0;
constexpr double kFragmentMzHigh = 2500.0;
constexpr uint32_t kEntryBinPeaks = 10;
constexpr uint32_t kEntryBinWidth = 100;

bool InSet(const std::string& set, const std::string& text, std::size_t offset) {
  // A character that the text doesn't have is in no set.
  return offset < text.size() && set.find(text[offset]) != std::string::npos;
}

void AppendIon(CSpectrum& theoretical, double mz, int32_t type, uint32_t length, uint32_t z) {
  if (mz < kFragmentMzLow || mz > kFragmentMzHigh) return;
  CPeak ion;
  ion.mz = mz;
  ion.intensity = 1.0;
  ion.type = type;
  ion.position = length;
  ion.charge = z;
  ion.count = 0;
  theoretical.peaks.push_back(ion);
}

}  // namespace

uint32_t MaxFragmentCharge(uint32_t precursorCharge) {
  switch (precursorCharge) {
    case 1:
    case 2:
      return 1;
    case 3:
      return 2;
    case 4:
      return 3;
    default:
      return 4;
  }
}

bool IsGlycoSiteMark(const std::string& sequence, const std::string& lastAA, int32_t position,
                     const std::string& acceptors) {
  const auto length = static_cast<int64_t>(sequence.size());
  if (position <= 0 || position > length) return false;
  const auto offset = static_cast<std::size_t>(position - 1);  // of residue p
  if (sequence[offset] != 'J') return false;
  if (position == length) {
    const bool firstIsP = !lastAA.empty() && lastAA[0] == 'P';
    return !firstIsP && InSet(acceptors, lastAA, 1);
  }
  if (sequence[offset + 1] == 'P') return false;
  if (position == length - 1) return InSet(acceptors, lastAA, 0);
  return InSet(acceptors, sequence, offset + 2);
}

bool IsGlycoSiteMark(const std::string& sequence, const std::string& lastAA, int32_t position) {
  return IsGlycoSiteMark(sequence, lastAA, position,
                         MotifAcceptorLetters(CParam::GetInstance().construction.GetMotifRegex()));
}

void CLibraryBuilder::AnnotateSpectrum(CSpectrum& spectrum) {
  CSpectrum theoretical;
  theoretical.sequence = spectrum.sequence;
  theoretical.modifications = spectrum.modifications;
  theoretical.charge = spectrum.charge;
  const uint32_t zmax = MaxFragmentCharge(spectrum.charge);

  // A sequence beyond the calculator's limit leaves length 0: no ions then.
  calculator.SetPeptide(theoretical.sequence, theoretical.modifications);
  const uint32_t length = calculator.length;
  theoretical.peaks.reserve(2u * zmax * (length > 0 ? length : 1));
  for (uint32_t i = 0; i + 1 < length; ++i) {
    for (uint32_t z = 1; z <= zmax; ++z) {
      const uint32_t yLength = length - 1 - i;
      AppendIon(theoretical, calculator.FragmentMz(kPeakY, yLength, z), kPeakY, yLength, z);
      const uint32_t bLength = i + 1;
      AppendIon(theoretical, calculator.FragmentMz(kPeakB, bLength, z), kPeakB, bLength, z);
    }
  }

  // From here on the entry's mass is theoretical, the site's marking
  // modification still included.
  spectrum.precursorMass = calculator.PeptideMH();
  spectrum.MergeTheoretical(theoretical, param.theta);
  spectrum.TrimMzRange(kFragmentMzLow, kFragmentMzHigh);
  spectrum.KeepTopPeaksPerBin(kEntryBinPeaks, kEntryBinWidth);
}

void CLibraryBuilder::RemoveModification(CSpectrum& spectrum, std::size_t index) {
  if (index >= spectrum.modifications.size()) return;
  const CModification& mod = spectrum.modifications[index];
  const double mass = calculator.massTable.Modification(mod.name);
  const int64_t site = mod.position;
  const auto length = static_cast<int64_t>(spectrum.sequence.size());

  spectrum.precursorMass -= mass;
  for (CPeak& peak : spectrum.peaks) {
    bool holdsSite = false;
    switch (peak.type) {
      case kPeakB:
        holdsSite = static_cast<int64_t>(peak.position) >= site;
        break;
      case kPeakY:
        holdsSite = static_cast<int64_t>(peak.position) >= length - site + 1;
        break;
      case kPeakYCore:
        holdsSite = true;
        break;
      default:
        break;
    }
    // A fragment without a charge has no m/z shift to take; it can't come
    // from the annotation, which gives every ion a charge of at least 1.
    if (holdsSite && peak.charge > 0) peak.mz -= mass / peak.charge;
  }
  spectrum.modifications.erase(spectrum.modifications.begin() +
                               static_cast<std::ptrdiff_t>(index));
}
