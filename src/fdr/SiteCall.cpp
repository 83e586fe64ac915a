#include "fdr/SiteCall.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "fdr/FragmentLadder.h"
#include "run/Param.h"

namespace {

// How likely a b or y ion that holds the site is seen in each state, from
// glycopeptide spectra of collision-induced dissociation: seen at all about
// half the time, keeping a HexNAc a third of that, the whole glycan rarely;
// a bare ion is a little rarer when the glycan must have come off it.
constexpr double kSeen = 0.5;
constexpr double kWithHexNAc = 0.15;
constexpr double kWithGlycan = 0.02;
constexpr double kBareWhenHolding = 0.65;
// Candidates whose likelihood is within this factor of the best are told
// apart by no ion worth the name: they form the reported site's group.
constexpr double kTellApart = 2.0;
// The ions of one spectrum are not independent witnesses (a peak can be
// another ion's, the retention varies from spectrum to spectrum): their
// summed log-likelihoods are tempered so that the probabilities hold on
// generated data with the truth known.
constexpr double kEvidenceWeight = 0.55;
// A peak list denser than this share of its m/z range tells nothing.
constexpr double kDensestChance = 0.5;

// Log of the likelihood ratio of one ion (found or not) for a site it holds
// against one it does not, with `chance` the chance of a match by accident.
double Weigh(bool found, double chance, double whenHolding, double whenNot) {
  const double holding = chance + (1.0 - chance) * whenHolding;
  const double notHolding = chance + (1.0 - chance) * whenNot;
  return found ? std::log(holding / notHolding) : std::log((1.0 - holding) / (1.0 - notHolding));
}

}  // namespace

double CSiteCall::ReportedProbability() const {
  for (std::size_t i = 0; i < candidates.size(); ++i)
    if (candidates[i] == reported) return probability[i];
  return 1.0;
}

double CSiteCall::GroupProbability() const {
  if (candidates.empty()) return 1.0;
  double sum = ReportedProbability();
  for (std::size_t i = 0; i < candidates.size(); ++i)
    if (std::find(group.begin(), group.end(), candidates[i]) != group.end()) sum += probability[i];
  return std::min(1.0, sum);
}

std::vector<int> CandidateSites(const std::string& sequence, const std::string& following,
                                const std::string& acceptors) {
  const std::string text = sequence + following;
  std::vector<int> sites;
  for (std::size_t i = 0; i < sequence.size(); ++i) {
    const char r = sequence[i];
    if (r != 'N' && r != 'J') continue;
    const bool sequon = i + 2 < text.size() && text[i + 1] != 'P' &&
                        acceptors.find(text[i + 2]) != std::string::npos;
    if (sequon || r == 'J') sites.push_back(static_cast<int>(i) + 1);
  }
  return sites;
}

CSiteCall CallSite(const std::vector<int>& candidates, int preferred,
                   const CPeptideCalculator& peptide, double glycanMass,
                   const std::vector<CPeak>& peaksByMz, uint32_t highestCharge,
                   CProductTolerance tolerance) {
  CSiteCall call;
  call.candidates = candidates;
  if (candidates.empty()) return call;
  const std::size_t n = candidates.size();
  std::vector<double> logLikelihood(n, 0.0);
  const uint32_t length = peptide.length;
  highestCharge = std::max<uint32_t>(1, highestCharge);
  // The chance that some peak lies within the tolerance of a mass, from the
  // density of the peaks over their range.
  double perMz = 0.0;
  if (peaksByMz.size() >= 2) {
    const double span = std::max(1.0, peaksByMz.back().mz - peaksByMz.front().mz);
    perMz = static_cast<double>(peaksByMz.size()) / span;
  }
  const double shifts[] = {0.0, kHexNAcMass, glycanMass};
  const double whenHolding[] = {kSeen * kBareWhenHolding, kWithHexNAc, kWithGlycan};
  const double whenNot[] = {kSeen, 0.0, 0.0};
  // Only ions between two candidates tell them apart; the others hold all or none.
  for (int type = 0; type < 2 && length > 1; ++type) {
    for (uint32_t k = 1; k < length; ++k) {
      // b ions hold residues 1..k, y ions residues length-k+1..length.
      auto holds = [&](int site) {
        return type == 0 ? site <= static_cast<int>(k) : site > static_cast<int>(length - k);
      };
      const bool all = std::all_of(candidates.begin(), candidates.end(), holds);
      const bool none = std::none_of(candidates.begin(), candidates.end(), holds);
      if (all || none) continue;
      for (int state = 0; state < 3; ++state) {
        bool found = false;
        double chance = 0.0;
        for (uint32_t z = 1; z <= highestCharge; ++z) {
          const double mz = peptide.FragmentMz(type, k, z) + shifts[state] / z;
          found |= HasPeakNear(peaksByMz, mz, tolerance);
          const double width = 2.0 * ToleranceInDa(tolerance.value, tolerance.unit, mz);
          chance = 1.0 - (1.0 - chance) * (1.0 - std::min(kDensestChance, perMz * width));
        }
        const double weight = kEvidenceWeight * Weigh(found, chance, whenHolding[state], whenNot[state]);
        for (std::size_t c = 0; c < n; ++c)
          if (holds(candidates[c])) logLikelihood[c] += weight;
      }
    }
  }
  const double best = *std::max_element(logLikelihood.begin(), logLikelihood.end());
  double total = 0.0;
  for (std::size_t c = 0; c < n; ++c) total += std::exp(logLikelihood[c] - best);
  std::size_t chosen = n;
  for (std::size_t c = 0; c < n; ++c) {
    call.probability.push_back(std::exp(logLikelihood[c] - best) / total);
    if (logLikelihood[c] == best && (chosen == n || candidates[c] == preferred)) chosen = c;
  }
  call.reported = candidates[chosen];
  for (std::size_t c = 0; c < n; ++c)
    if (c != chosen && logLikelihood[chosen] - logLikelihood[c] < std::log(kTellApart))
      call.group.push_back(candidates[c]);
  return call;
}

void ApplySite(const CSiteCall& site, std::string& sequence, std::string& glycoLoc) {
  if (site.reported <= 0 || static_cast<std::size_t>(site.reported) > sequence.size()) return;
  for (char& r : sequence)
    if (r == 'J') r = 'N';
  sequence[static_cast<std::size_t>(site.reported) - 1] = 'J';
  glycoLoc = std::to_string(site.reported);
}

