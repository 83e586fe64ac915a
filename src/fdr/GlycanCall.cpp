#include "fdr/GlycanCall.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "spectrum/ChargeLimit.h"
#include "run/Param.h"

namespace {

constexpr double kProton = 1.00727646688;

// A present oxonium ion of a sialic acid that the composition lacks rules the
// composition out; a sialic acid without its ion only makes it less likely,
// since the ion can be too weak to see.
int Excluded(const CGlycan& glycan, bool neuAcMarker, bool neuGcMarker) {
  return (neuAcMarker && !glycan.hasNeuAc) + (neuGcMarker && !glycan.hasNeuGc);
}
int Unsupported(const CGlycan& glycan, bool neuAcMarker, bool neuGcMarker) {
  return (glycan.hasNeuAc && !neuAcMarker) + (glycan.hasNeuGc && !neuGcMarker);
}

// An isotope error is less likely than a correct precursor: it must beat the
// plain reading by this much mass error.
constexpr double kIsotopePenaltyPpm = 2.0;

// Glycans with mass in (centre - tolerance, centre + tolerance], as the
// search's look-up takes them.
template <typename Visit>
void ForGlycansNear(const std::vector<CGlycan>& table, double centre, double tolerance,
                    Visit visit) {
  auto first = std::upper_bound(table.begin(), table.end(), centre - tolerance,
                                [](double m, const CGlycan& g) { return m < g.mass; });
  for (auto it = first; it != table.end() && it->mass <= centre + tolerance; ++it) visit(*it);
}

}  // namespace

CGlycanCall CallGlycan(const std::vector<CGlycan>& table, double delta, double tolerance,
                       double queryMass, bool neuAcMarker, bool neuGcMarker) {
  CGlycanCall call;
  std::tuple<int, int, double> best{0, 0, 0.0};
  const double scale = queryMass > 0.0 ? 1e6 / queryMass : 0.0;
  for (int isotope = 0; isotope <= 1; ++isotope) {
    const double centre = delta - isotope * kIsotopeStep;
    ForGlycansNear(table, centre, tolerance, [&](const CGlycan& glycan) {
      const double errorPpm = (centre - glycan.mass) * scale;
      std::tuple<int, int, double> rank{Excluded(glycan, neuAcMarker, neuGcMarker),
                                        Unsupported(glycan, neuAcMarker, neuGcMarker),
                                        std::fabs(errorPpm) + isotope * kIsotopePenaltyPpm};
      if (call.glycan == nullptr || rank < best) {
        best = rank;
        call.glycan = &glycan;
        call.isotope = isotope;
        call.massErrorPpm = errorPpm;
        call.contradictions = std::get<0>(rank) + std::get<1>(rank);
      }
    });
  }
  if (call.glycan == nullptr) return call;
  const int otherIsotope = 1 - call.isotope;
  ForGlycansNear(table, delta - otherIsotope * kIsotopeStep, tolerance, [&](const CGlycan& glycan) {
    if (Excluded(glycan, neuAcMarker, neuGcMarker) != std::get<0>(best) ||
        Unsupported(glycan, neuAcMarker, neuGcMarker) != std::get<1>(best))
      return;
    const double errorPpm = (delta - otherIsotope * kIsotopeStep - glycan.mass) * scale;
    if (std::isnan(call.rivalErrorPpm) || std::fabs(errorPpm) < std::fabs(call.rivalErrorPpm))
      call.rivalErrorPpm = errorPpm;
  });
  // Only a present oxonium ion tells compositions of one mass apart.
  ForGlycansNear(table, call.glycan->mass, tolerance, [&](const CGlycan& glycan) {
    if (&glycan != call.glycan && Excluded(glycan, neuAcMarker, neuGcMarker) == std::get<0>(best))
      call.isobaric.push_back(&glycan);
  });
  return call;
}

CYIonEvidence FindYIons(const std::vector<CPeak>& peaksByMz, double peptideMH,
                        uint32_t highestCharge, double offset, CProductTolerance tolerance) {
  CYIonEvidence evidence;
  const std::vector<double>& core = CNGlycanFrag::GetInstance().coreMasses;
  // A damaged charge must not make this loop run for minutes.
  const uint32_t top = std::clamp<uint32_t>(highestCharge, 1, static_cast<uint32_t>(kMaxPrecursorCharge));
  std::vector<std::size_t> taken;
  for (double coreMass : core) {
    bool found = false;
    for (uint32_t z = 1; z <= top; ++z) {
      const double mz = (peptideMH + coreMass + offset + (z - 1) * kProton) / z;
      const double productTolerance = ToleranceInDa(tolerance.value, tolerance.unit, mz);
      auto it = std::lower_bound(peaksByMz.begin(), peaksByMz.end(), mz - productTolerance,
                                 [](const CPeak& p, double m) { return p.mz < m; });
      // The strongest peak in reach stands for this ion.
      std::size_t strongest = peaksByMz.size();
      for (; it != peaksByMz.end() && it->mz <= mz + productTolerance; ++it)
        if (strongest == peaksByMz.size() || it->intensity > peaksByMz[strongest].intensity)
          strongest = static_cast<std::size_t>(it - peaksByMz.begin());
      if (strongest == peaksByMz.size()) continue;
      found = true;
      if (std::find(taken.begin(), taken.end(), strongest) == taken.end()) {
        taken.push_back(strongest);
        evidence.intensity += peaksByMz[strongest].intensity;
      }
    }
    evidence.levels += found;
  }
  return evidence;
}
