#include "fdr/FragmentLadder.h"

#include <algorithm>
#include <cmath>

#include "fdr/SiteCall.h"
#include "run/Param.h"

namespace {

// How often a b or y ion of the right peptide is seen in a glycopeptide
// spectrum, bare or with a HexNAc.
constexpr double kSeen = 0.5;
// A peak list denser than this share of its m/z range tells nothing.
constexpr double kDensestChance = 0.5;

// The sum of the weights of the ions of `a` that `b` lacks.
double Unshared(const CFragmentLadder& a, const CFragmentLadder& b, double toleranceDa) {
  std::vector<float> other = b.masses;
  std::sort(other.begin(), other.end());
  const double chance = std::clamp(static_cast<double>(a.chance), 1e-4, kSeen / 2);
  const double onFound = std::log(kSeen / chance);
  const double onMissing = std::log((1.0 - kSeen) / (1.0 - chance));
  double sum = 0.0;
  for (std::size_t i = 0; i < a.masses.size(); ++i) {
    const auto it = std::lower_bound(other.begin(), other.end(), a.masses[i] - toleranceDa);
    if (it != other.end() && *it <= a.masses[i] + toleranceDa) continue;
    sum += a.found[i] ? onFound : onMissing;
  }
  return sum;
}

}  // namespace

bool HasPeakNear(const std::vector<CPeak>& peaksByMz, double mz, CProductTolerance tolerance) {
  const double width = ToleranceInDa(tolerance.value, tolerance.unit, mz);
  auto it = std::lower_bound(peaksByMz.begin(), peaksByMz.end(), mz - width,
                             [](const CPeak& p, double m) { return p.mz < m; });
  return it != peaksByMz.end() && it->mz <= mz + width;
}

int CFragmentLadder::InnerFound() const {
  const std::size_t half = masses.size() / 2;
  int count = 0;
  for (std::size_t i = 0; i < masses.size(); ++i) {
    const std::size_t length = (i < half ? i : i - half) + 1;
    count += length >= 3 && found[i];
  }
  return count;
}

CFragmentLadder ReadLadder(const CPeptideCalculator& peptide, const std::vector<CPeak>& peaksByMz,
                           uint32_t highestCharge, CProductTolerance tolerance) {
  CFragmentLadder ladder;
  highestCharge = std::max<uint32_t>(1, highestCharge);
  const std::size_t ions = peptide.length > 1 ? 2 * (peptide.length - 1) : 0;
  ladder.masses.reserve(ions);
  ladder.found.reserve(ions);
  for (int type = 0; type < 2; ++type)
    for (uint32_t k = 1; k < peptide.length; ++k) {
      const double singly = peptide.FragmentMz(type, k, 1);
      bool found = HasPeakNear(peaksByMz, singly, tolerance) ||
                   HasPeakNear(peaksByMz, singly + kHexNAcMass, tolerance);
      for (uint32_t z = 2; z <= highestCharge && !found; ++z) {
        const double mz = peptide.FragmentMz(type, k, z);
        found = HasPeakNear(peaksByMz, mz, tolerance) || HasPeakNear(peaksByMz, mz + kHexNAcMass / z, tolerance);
      }
      ladder.masses.push_back(static_cast<float>(singly));
      ladder.found.push_back(found);
    }
  if (peaksByMz.size() >= 2 && !ladder.masses.empty()) {
    // Chance of a match at some charge and glycan state, from the density of
    // the peaks over their range, at the middle of the ladder.
    const double span = std::max(1.0, peaksByMz.back().mz - peaksByMz.front().mz);
    const double middle = ladder.masses[ladder.masses.size() / 2];
    const double one = std::min(kDensestChance, static_cast<double>(peaksByMz.size()) / span * 2.0 *
                                                    ToleranceInDa(tolerance.value, tolerance.unit, middle));
    ladder.chance = static_cast<float>(1.0 - std::pow(1.0 - one, 2.0 * highestCharge));
    ladder.toleranceDa = static_cast<float>(ToleranceInDa(tolerance.value, tolerance.unit, middle));
  }
  return ladder;
}

double LadderLogOdds(const CFragmentLadder& a, const CFragmentLadder& b) {
  const double toleranceDa = std::max(a.toleranceDa, b.toleranceDa);
  return Unshared(a, b, toleranceDa) - Unshared(b, a, toleranceDa);
}
