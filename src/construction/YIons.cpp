// Y ions: the peptide with part of the N-glycan core, added to every entry.
#include "construction/LibraryBuilder.h"
#include "molecule/Glycan.h"

namespace {

// Fixed values of the Y ions, independent of the mass table.
constexpr double kYProton = 1.00728;
constexpr double kWaterLoss = 18.01057;
constexpr double kAmmoniaLoss = 17.02656;

}  // namespace

void AddYIons(CSpectrum& spectrum, const std::vector<uint32_t>& yIons, double relativeIntensity) {
  const uint32_t zmax = spectrum.charge > 2 ? spectrum.charge - 1 : spectrum.charge;
  const CNGlycanFrag& core = CNGlycanFrag::GetInstance();
  CPeak peak;
  peak.intensity = relativeIntensity;
  peak.type = kPeakYCore;
  peak.count = 1;
  for (uint32_t z = 1; z <= zmax; ++z) {
    const double shift = (z - 1) * kYProton;
    for (uint32_t y : yIons) {
      const double mass = spectrum.precursorMass + core.GetCoreMass(y) + shift;
      peak.position = y;
      peak.charge = z;
      for (double loss : {0.0, kWaterLoss, kAmmoniaLoss}) {
        peak.mz = (mass - loss) / z;
        spectrum.peaks.push_back(peak);
      }
    }
  }
}

void AddYIons(CSpectrum& spectrum) {
  const CConstructionParam& settings = CParam::GetInstance().construction;
  AddYIons(spectrum, settings.added_Y_ions, settings.Y_ion_relative_intensity);
}
