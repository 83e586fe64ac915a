// The consensus spectrum of one peptide from all spectra that identified it.
#include <algorithm>

#include "construction/IdentifiedAnalyzer.h"

namespace {

constexpr uint32_t kFirstFilterPeaks = 5;
constexpr uint32_t kFirstFilterWidth = 50;
constexpr double kConsensusFraction = 0.33;
constexpr double kIntensityExponent = 0.5;

}  // namespace

bool CIdentifiedAnalyzer::BuildConsensus(const CIdentifiedPeptide& peptide) {
  spectra.clear();
  if (pool) {
    for (const CSpectrumRef& ref : peptide.spectra) {
      CSpecIO* io = nullptr;
      if (ref.datasetIndex >= 0 && static_cast<std::size_t>(ref.datasetIndex) < pool->ios.size())
        io = pool->ios[static_cast<std::size_t>(ref.datasetIndex)].get();
      if (!io || !io->ReadByName(ref.spectrumName, spectra)) ++spectraNotFound;
    }
  }
  if (spectra.empty()) return false;
  MergeIntoConsensus(spectra, param);
  return true;
}

void MergeIntoConsensus(std::vector<CSpectrum>& spectra, const CConstructionParam& param) {
  const bool highResolution =
      IsHighResolution(param.library_product_ion_tolerance, param.library_product_ion_unit);
  for (CSpectrum& spectrum : spectra) {
    if (highResolution) spectrum.CollapsePeakClusters();
    spectrum.KeepTopPeaksPerBin(kFirstFilterPeaks, kFirstFilterWidth);
    spectrum.NormalizeToBasePeak();
  }

  CSpectrum& consensus = spectra[0];
  for (std::size_t i = 1; i < spectra.size(); ++i) {
    consensus.SortPeaksByMz();
    consensus.BuildMzIndex();
    consensus.MergeSpectrum(spectra[i]);
  }

  // A peak stays if more than a third of the spectra showed it.
  consensus.SortPeaksByCount();
  const auto threshold = static_cast<uint32_t>(consensus.frequency * kConsensusFraction);
  auto firstRare = std::find_if(consensus.peaks.begin(), consensus.peaks.end(),
                                [threshold](const CPeak& p) { return p.count <= threshold; });
  consensus.peaks.erase(firstRare, consensus.peaks.end());

  consensus.PowerTransform(kIntensityExponent);
}
