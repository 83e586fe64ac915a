#pragma once
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "DatagenChemistry.h"
#include "DatagenRandom.h"

// One synthetic tryptic peptide. Sites are N of N-X-S/T sequons (1-based).
struct CDatagenPeptide {
  std::string sequence;    // plain residues, N at the sites
  std::vector<int> sites;  // marked sites, ascending
  bool oxidized = false;   // every M carries Oxidation[M]
  // Deamidated[N] on an N that is no sequon: the list reader must drop it.
  int strayDeamidation = 0;
  // Relative fragment intensities shared by all spectra of the peptide, index k
  // for the fragment of k residues; 0 means the fragment is not seen.
  std::vector<double> bTemplate, yTemplate;
  // Site traps only (empty or 0 elsewhere): every sequon of the peptide, the one
  // completed across the cleavage included; those that carry a glycan in the
  // sample; and the residue behind the peptide in its protein when it completes
  // a sequon across the cleavage (...NK|S...).
  std::vector<int> sequons;
  std::vector<int> occupied;
  char following = 0;
};

namespace datagen {

// Residue frequencies of proteins, without K and R (they end the peptide) and
// without N (it only stands where a sequon is wanted).
inline char RandomResidue(CDatagenRandom& rng, bool allowProline = true) {
  static const char kLetters[] = "AGSTVLIEDQFYWHMCP";
  static const double kWeights[] = {8.3, 7.1, 6.6, 5.3, 6.9, 9.7, 6.0, 6.8, 5.5,
                                    3.9, 3.9, 2.9, 1.1, 2.3, 2.4, 1.4, 4.7};
  const int count = allowProline ? 17 : 16;  // P is last
  double total = 0.0;
  for (int i = 0; i < count; ++i) total += kWeights[i];
  double pick = rng.Uniform() * total;
  for (int i = 0; i < count; ++i) {
    pick -= kWeights[i];
    if (pick < 0.0) return kLetters[i];
  }
  return kLetters[count - 1];
}

inline std::string RandomTrypticBody(CDatagenRandom& rng, int length) {
  std::string s;
  for (int i = 0; i + 1 < length; ++i) s += RandomResidue(rng);
  s += rng.Chance(0.55) ? 'K' : 'R';
  return s;
}

inline void PlaceSequon(std::string& s, int offset, CDatagenRandom& rng) {
  s[offset] = 'N';
  s[offset + 1] = RandomResidue(rng, false);
  s[offset + 2] = rng.Chance(0.5) ? 'S' : 'T';
}

inline void BuildTemplate(CDatagenPeptide& p, CDatagenRandom& rng) {
  std::size_t n = p.sequence.size();
  p.bTemplate.assign(n, 0.0);
  p.yTemplate.assign(n, 0.0);
  for (std::size_t k = 1; k < n; ++k) {
    // y ions dominate tryptic HCD spectra; cleavage before a proline is favoured.
    bool beforeProline = p.sequence[n - k] == 'P';
    double yPresence = k == 1 ? 0.6 : 0.88;
    if (rng.Chance(yPresence)) {
      p.yTemplate[k] = std::clamp(rng.LogNormal(0.6), 0.08, 3.0) * (beforeProline ? 2.5 : 1.0);
    }
    double bPresence = k == 1 ? 0.05 : (k == 2 ? 0.5 : 0.65);
    if (rng.Chance(bPresence)) p.bTemplate[k] = 0.4 * std::clamp(rng.LogNormal(0.6), 0.08, 3.0);
  }
}

// A tryptic peptide with `siteCount` sequons (1 or 2), or none for 0.
inline CDatagenPeptide MakePeptide(CDatagenRandom& rng, int siteCount) {
  CDatagenPeptide p;
  int length = rng.Int(siteCount == 2 ? 11 : 7, 20);
  p.sequence = RandomTrypticBody(rng, length);
  if (siteCount >= 1) {
    // The acceptor must lie inside the peptide, ahead of the C-terminal K/R, so
    // that the site is known without the residues behind the peptide.
    int last = length - 4;
    int first = rng.Int(0, siteCount == 2 ? last - 3 : last);
    PlaceSequon(p.sequence, first, rng);
    p.sites.push_back(first + 1);
    if (siteCount == 2) {
      int second = rng.Int(first + 3, last);
      PlaceSequon(p.sequence, second, rng);
      p.sites.push_back(second + 1);
    }
  }
  p.oxidized = p.sequence.find('M') != std::string::npos && rng.Chance(0.3);
  BuildTemplate(p, rng);
  return p;
}

// A peptide whose only deamidation stands on an N that is followed by G, which
// is no sequon: such an identification carries the mark but no site.
inline CDatagenPeptide MakeStrayDeamidatedPeptide(CDatagenRandom& rng) {
  CDatagenPeptide p;
  int length = rng.Int(8, 16);
  p.sequence = RandomTrypticBody(rng, length);
  int offset = rng.Int(1, length - 3);
  p.sequence[offset] = 'N';
  p.sequence[offset + 1] = 'G';
  // keep the residue behind it from completing an N-G-S/T sequon
  if (p.sequence[offset + 2] == 'S' || p.sequence[offset + 2] == 'T') p.sequence[offset + 2] = 'A';
  p.strayDeamidation = offset + 1;
  BuildTemplate(p, rng);
  return p;
}

// The peptide form: sequence and oxidation.
inline std::string FormKey(const CDatagenPeptide& p) { return p.sequence + (p.oxidized ? "+ox" : ""); }

inline std::string Key(const CDatagenPeptide& p) {
  std::string key = FormKey(p);
  // The forms of a peptide with several sequons differ in the marked site.
  if (p.sequons.size() > 1)
    for (int site : p.sites) key += "@" + std::to_string(site);
  return key;
}

struct CDatagenModification {
  int position;
  std::string name;
};

// Modifications of the peptide as identified: deamidated sites, every C, and the
// M when oxidised. Sorted by position as a search engine writes them.
inline std::vector<CDatagenModification> IdentifiedModifications(const CDatagenPeptide& p,
                                                                 bool withMark) {
  std::vector<CDatagenModification> mods;
  for (std::size_t i = 0; i < p.sequence.size(); ++i) {
    int position = static_cast<int>(i) + 1;
    char r = p.sequence[i];
    if (withMark && std::find(p.sites.begin(), p.sites.end(), position) != p.sites.end())
      mods.push_back({position, CDatagenChemistry::kDeamidated});
    if (withMark && position == p.strayDeamidation) mods.push_back({position, CDatagenChemistry::kDeamidated});
    if (r == 'C') mods.push_back({position, CDatagenChemistry::kCarbamidomethyl});
    if (r == 'M' && p.oxidized) mods.push_back({position, CDatagenChemistry::kOxidation});
  }
  return mods;
}

// The tab-txt field: "null", or "<pos>,<residue>(<name>);" per modification.
// The text between the comma and the parenthesis must hold no "(" of its own:
// the list reader cuts at the first one.
inline std::string TabTxtModifications(const CDatagenPeptide& p, bool withMark) {
  auto mods = IdentifiedModifications(p, withMark);
  if (mods.empty()) return "null";
  std::string text;
  for (const auto& m : mods) {
    text += std::to_string(m.position) + "," + p.sequence[m.position - 1] + "(" + m.name + ");";
  }
  return text;
}

// The program's text form of the library entry's modifications once the site
// mark is taken off: "-" or "%d,%s;" per entry, by position then name.
inline std::string LibraryModifications(const CDatagenPeptide& p) {
  auto mods = IdentifiedModifications(p, false);
  if (mods.empty()) return "-";
  std::string text;
  for (const auto& m : mods) text += std::to_string(m.position) + "," + m.name + ";";
  return text;
}

// Residue masses as the spectra show them. `deamidatedSites`: the sites carry
// the deamidation that the removal of the glycan leaves (library spectra);
// otherwise the site is a plain asparagine (intact glycopeptide queries).
inline std::vector<double> ResidueMasses(const CDatagenPeptide& p, const CDatagenChemistry& chem,
                                         bool deamidatedSites) {
  std::vector<double> masses;
  for (std::size_t i = 0; i < p.sequence.size(); ++i) {
    int position = static_cast<int>(i) + 1;
    char r = p.sequence[i];
    bool site = std::find(p.sites.begin(), p.sites.end(), position) != p.sites.end();
    double m = site ? chem.Residue('J') : chem.Residue(r);
    if (site && deamidatedSites) m += chem.deamidation;
    if (position == p.strayDeamidation) m += chem.deamidation;
    if (r == 'C') m += chem.carbamidomethyl;
    if (r == 'M' && p.oxidized) m += chem.oxidation;
    masses.push_back(m);
  }
  return masses;
}

}  // namespace datagen
