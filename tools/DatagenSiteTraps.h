#pragma once
#include <algorithm>
#include <string>
#include <vector>

#include "DatagenPeptides.h"
#include "DatagenRandom.h"

// Library peptides of the site-trap dataset: peptides with two or three
// sequons of which the deglycosylated lists mark only some, sequons completed
// by the residue behind the cleavage, and neighbours of exactly the same mass.
namespace datagen {

// Every sequon of a peptide: the plain peptides of the other modes know only their sites.
inline const std::vector<int>& AllSequons(const CDatagenPeptide& p) {
  return p.sequons.empty() ? p.sites : p.sequons;
}

// The site that carries the glycan in one query: any occupied sequon.
inline int TrueSite(const CDatagenPeptide& p, CDatagenRandom& rng) {
  if (p.occupied.empty()) return p.sites[0];
  return p.occupied[static_cast<std::size_t>(rng.Int(0, static_cast<int>(p.occupied.size()) - 1))];
}

// A nonempty subset of `from`: all of it with `allShare`, else each element with
// one chance in two (one kept at random when none was).
inline std::vector<int> SomeOf(const std::vector<int>& from, double allShare, CDatagenRandom& rng) {
  if (rng.Chance(allShare)) return from;
  std::vector<int> kept;
  for (int x : from)
    if (rng.Chance(0.5)) kept.push_back(x);
  if (kept.empty()) kept.push_back(from[static_cast<std::size_t>(rng.Int(0, static_cast<int>(from.size()) - 1))]);
  return kept;
}

// A tryptic peptide with `count` (2 or 3) sequons; the glycans of the sample sit
// on some of them, the lists mark some of those. One form per marked site: each
// identification marks one site, as a search engine reports the deamidation it
// localised.
inline std::vector<CDatagenPeptide> MakeMultiSequonForms(CDatagenRandom& rng, int count) {
  CDatagenPeptide p;
  const int length = rng.Int(4 + 3 * count, 22);
  p.sequence = RandomTrypticBody(rng, length);
  const int last = length - 4;  // the acceptor stays ahead of the C-terminal residue
  int from = 0;
  for (int i = 0; i < count; ++i) {
    const int offset = rng.Int(from, last - 3 * (count - 1 - i));
    PlaceSequon(p.sequence, offset, rng);
    p.sequons.push_back(offset + 1);
    from = offset + 3;
  }
  p.occupied = SomeOf(p.sequons, 0.5, rng);
  const std::vector<int> marked = SomeOf(p.occupied, 0.3, rng);
  p.oxidized = p.sequence.find('M') != std::string::npos && rng.Chance(0.3);
  BuildTemplate(p, rng);
  std::vector<CDatagenPeptide> forms;
  for (int site : marked) {
    forms.push_back(p);
    forms.back().sites = {site};
  }
  return forms;
}

// A peptide whose only sequon spans the cleavage: N and the C-terminal K or R
// end it, the S or T that completes the sequon begins what follows in the protein.
inline CDatagenPeptide MakeCrossCleavagePeptide(CDatagenRandom& rng) {
  CDatagenPeptide p;
  const int length = rng.Int(7, 20);
  p.sequence = RandomTrypticBody(rng, length);
  p.sequence[static_cast<std::size_t>(length - 2)] = 'N';
  p.sites = {length - 1};
  p.sequons = p.sites;
  p.occupied = p.sites;
  p.following = rng.Chance(0.5) ? 'S' : 'T';
  p.oxidized = p.sequence.find('M') != std::string::npos && rng.Chance(0.3);
  BuildTemplate(p, rng);
  return p;
}

// A neighbour of exactly the same mass: two adjacent residues of `p` swapped,
// away from its sequons (so no sequon appears or goes) and its C-terminal
// residue. False when no such pair differs.
inline bool MakeSwappedNeighbour(const CDatagenPeptide& p, CDatagenRandom& rng, CDatagenPeptide& out) {
  const int n = static_cast<int>(p.sequence.size());
  std::vector<int> starts;  // 0-based i: swap i and i+1
  for (int i = 0; i + 2 < n; ++i) {
    bool nearSequon = false;
    for (int s : AllSequons(p)) nearSequon |= i + 1 >= s - 1 && i <= s + 1;  // 0-based s-1..s+1
    if (!nearSequon && p.sequence[static_cast<std::size_t>(i)] != p.sequence[static_cast<std::size_t>(i + 1)])
      starts.push_back(i);
  }
  if (starts.empty()) return false;
  out = p;
  const auto i = static_cast<std::size_t>(starts[static_cast<std::size_t>(rng.Int(0, static_cast<int>(starts.size()) - 1))]);
  std::swap(out.sequence[i], out.sequence[i + 1]);
  return true;
}

}  // namespace datagen
