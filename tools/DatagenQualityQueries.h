#pragma once
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "DatagenChemistry.h"
#include "DatagenPeptides.h"
#include "DatagenRandom.h"
#include "DatagenSiteTraps.h"
#include "DatagenSpectra.h"

// Queries of the quality dataset: besides plain glycopeptides of library
// peptides, every kind of spectrum that can make a search name a wrong peptide
// form or a wrong glycan, so that q-values can be judged against the truth.
namespace datagen {

// What the quality queries need from the library part of the generator.
struct CQualityContext {
  const CDatagenChemistry& chem;
  const std::vector<CDatagenPeptide>& peptides;
  const std::vector<std::size_t>& singleSite;  // library peptides with one site
  std::set<std::string>& keys;                 // peptide forms in use
  std::function<bool(double)> nearLibraryMass;  // an MH within 20 ppm of a library peptide
  uint32_t seed;
  uint32_t planStream, spectrumStream, peptideStream;
  // Site traps: fragments that hold the site keep part of the glycan, and the
  // truth says which sites the library marks (by sequence and oxidation).
  bool siteTraps = false;
  std::map<std::string, std::vector<int>> librarySites = {};
};

enum QualityKind {
  kQGlyco,           // a library peptide with a glycan: the search can get it right
  kQIsotope,         // the same, precursor m/z picked one isotope too high
  kQIsobaric,        // a glycan with an exactly isobaric partner; half without sialic oxonium ions
  kQOxidisedForm,    // oxidised-M form of a library peptide that the library lacks, with NeuAc
  kQMissedCleavage,  // a library peptide extended by a missed cleavage, not in the library
  kQAbsent,          // a glycopeptide of a peptide absent from the library
  kQNoise,           // random peaks that pass the glycopeptide marker test
  kQNoMarker,        // a peptide spectrum without oxonium ions
  kQWeakMarker,      // a glycopeptide whose marker is too weak to pass
  kQKinds
};
inline const char* const kQualityKindNames[kQKinds] = {
    "glyco", "isotope", "isobaric", "oxidised_form", "missed_cleavage",
    "absent", "noise", "no_marker", "weak_marker"};
// Shares of the queries, in percent, in the order of QualityKind.
inline constexpr int kQualityShares[kQKinds] = {40, 8, 8, 6, 6, 12, 10, 5, 5};

// Removes the sialic acid oxonium ions, as in spectra where they are too weak to see.
inline void DropSialicMarkers(CDatagenSpectrum& s) {
  static const double kSialic[] = {274.092124, 290.087039, 292.102689, 308.066794, 657.234878};
  std::erase_if(s.peaks, [](const CDatagenPeak& p) {
    for (double mz : kSialic)
      if (std::abs(p.mz - mz) < 0.01) return true;
    return false;
  });
}

// Oxonium ions, a strong glycopeptide marker and random peaks: passes the
// marker test but holds no peptide.
inline void FillNoiseSpectrum(CDatagenSpectrum& s, CDatagenRandom& rng) {
  static const double kOxonium[] = {126.054955, 144.065520, 168.065520, 186.076085, 204.086650,
                                    366.139474};
  for (double mz : kOxonium)
    if (rng.Chance(0.8)) s.peaks.push_back({mz + rng.Normal(0.0, 0.002), rng.Uniform(0.1, 0.8)});
  s.peaks.push_back({kMarkerMz + rng.Normal(0.0, 0.002), 1.0});
  const double mh = rng.Uniform(1800.0, 5000.0);
  AddNoise(s.peaks, rng.Int(80, 160), 100.0, std::min(3000.0, mh), 0.05, rng);
  s.charge = GlycoCharge(mh, rng);
  s.precursorMz = PrecursorMz(mh, s.charge);
}

struct CQualityQuery {
  int kind = kQGlyco;
  CDatagenPeptide peptide;
  bool inLibrary = false;
  const CDatagenGlycan* glycan = nullptr;
};

// Glycans with an exactly isobaric partner in the table, and NeuAc glycans
// whose NeuGc-for-NeuAc partner (the mass of an oxidised M) is in the table.
struct CGlycanPools {
  std::vector<const CDatagenGlycan*> isobaric;
  std::vector<const CDatagenGlycan*> oxidationTwins;
  explicit CGlycanPools(const CDatagenChemistry& chem) {
    for (const auto& g : chem.glycans) {
      bool partner = false, twin = false;
      for (const auto& h : chem.glycans) {
        if (&g != &h && std::abs(g.mass - h.mass) < 0.001) partner = true;
        if (g.neuAc > 0 && h.neuGc == g.neuGc + 1 && h.neuAc == g.neuAc - 1 && h.hex == g.hex &&
            h.hexNAc == g.hexNAc && h.dHex == g.dHex)
          twin = true;
      }
      if (partner) isobaric.push_back(&g);
      if (twin) oxidationTwins.push_back(&g);
    }
  }
};

template <class T>
const T& Pick(CDatagenRandom& rng, const std::vector<T>& items) {
  return items[static_cast<std::size_t>(rng.Int(0, static_cast<int>(items.size()) - 1))];
}

// A peptide form of `kind` made from library peptides; false when none could be made.
inline bool MakeQualityPeptide(CQualityContext& c, int kind, CDatagenRandom& rng,
                               uint32_t& peptideIndex, CDatagenPeptide& out) {
  for (int attempt = 0; attempt < 200; ++attempt) {
    CDatagenRandom pr(c.seed, c.peptideStream, peptideIndex++);
    CDatagenPeptide p = c.peptides[Pick(rng, c.singleSite)];
    if (kind == kQOxidisedForm) {
      if (p.oxidized || p.sequence.find('M') == std::string::npos) continue;
      p.oxidized = true;
      if (c.keys.count(Key(p))) continue;
    } else {  // missed cleavage: more residues behind the C-terminal K or R
      std::string more = RandomTrypticBody(pr, pr.Int(2, 5));
      if (p.following) more[0] = p.following;  // what follows in the protein
      p.following = 0;
      p.sequence += more;
      if (c.keys.count(Key(p)) ||
          c.nearLibraryMass(CDatagenIon(ResidueMasses(p, c.chem, false), c.chem).MH()))
        continue;
      BuildTemplate(p, pr);
    }
    // A form may recur in several queries, as a peptide does in a real run.
    out = p;
    return true;
  }
  return false;
}

// Writes the queries and their truth lines.
inline void WriteQualityQueries(CQualityContext& c, int queryCount, std::FILE* mgf,
                                std::FILE* truth) {
  std::vector<int> kinds;
  for (int k = 0, made = 0; k < kQKinds; ++k) {
    int n = k + 1 == kQKinds ? queryCount - made : queryCount * kQualityShares[k] / 100;
    kinds.insert(kinds.end(), static_cast<std::size_t>(n), k);
    made += n;
  }
  {
    CDatagenRandom rng(c.seed, c.planStream, 0);
    rng.Shuffle(kinds);
  }
  const CGlycanPools pools(c.chem);
  uint32_t absentIndex = 0, formIndex = 0;
  int scan = 0;
  std::fputs(c.siteTraps ? "Query\tKind\tPeptide\tCharge\tGlycan\tGlycanMass\tSite\tModification\tInLibrary"
                          "\tSequons\tLibrarySites\tCrossCleavage\n"
                        : "Query\tKind\tPeptide\tCharge\tGlycan\tGlycanMass\tSite\tModification\tInLibrary\n",
             truth);
  for (std::size_t i = 0; i < kinds.size(); ++i) {
    CDatagenRandom rng(c.seed, c.spectrumStream, static_cast<uint32_t>(i));
    scan += rng.Int(1, 4);
    CDatagenSpectrum spectrum;
    spectrum.retentionSeconds = scan * 0.5;
    CQualityQuery q;
    q.kind = kinds[i];
    int site = 0;
    if ((q.kind == kQOxidisedForm || q.kind == kQMissedCleavage) &&
        !MakeQualityPeptide(c, q.kind, rng, formIndex, q.peptide))
      q.kind = kQGlyco;  // the library offers no such form
    if (q.kind == kQNoMarker) {
      q.peptide = MakePeptide(rng, 0);
      if (q.peptide.sequence[0] == 'H') q.peptide.sequence[0] = 'A';
      CDatagenIon ion(ResidueMasses(q.peptide, c.chem, false), c.chem);
      FillPeptideSpectrum(spectrum, q.peptide, ion, rng.Int(2, 3), rng);
    } else if (q.kind == kQNoise) {
      FillNoiseSpectrum(spectrum, rng);
    } else {
      if (q.kind == kQAbsent) {
        do {
          CDatagenRandom pr(c.seed, c.peptideStream + 1, absentIndex++);
          q.peptide = MakePeptide(pr, 1);
        } while (c.keys.count(Key(q.peptide)) ||
                 c.nearLibraryMass(CDatagenIon(ResidueMasses(q.peptide, c.chem, false), c.chem).MH()));
        c.keys.insert(Key(q.peptide));
      } else if (q.kind != kQOxidisedForm && q.kind != kQMissedCleavage) {
        q.peptide = c.peptides[Pick(rng, c.singleSite)];
        q.inLibrary = true;
      }
      if (q.kind == kQIsobaric && !pools.isobaric.empty()) q.glycan = Pick(rng, pools.isobaric);
      else if (q.kind == kQOxidisedForm && !pools.oxidationTwins.empty())
        q.glycan = Pick(rng, pools.oxidationTwins);
      else q.glycan = &c.chem.glycans[static_cast<std::size_t>(rng.Int(0, static_cast<int>(c.chem.glycans.size()) - 1))];
      CDatagenIon ion(ResidueMasses(q.peptide, c.chem, false), c.chem);
      int charge = GlycoCharge(ion.MH() + q.glycan->mass, rng);
      if (c.siteTraps) {
        site = TrueSite(q.peptide, rng);
        CSiteFragmentShares shares{rng.Uniform(0.15, 0.45), rng.Uniform(0.02, 0.05)};
        FillGlycoSpectrum(spectrum, q.peptide, ion, site, *q.glycan, charge, rng, &shares);
      } else {
        site = q.peptide.sites[0];
        FillGlycoSpectrum(spectrum, q.peptide, ion, site, *q.glycan, charge, rng);
      }
      if (q.kind == kQWeakMarker) WeakenMarker(spectrum, rng);
      if (q.kind == kQIsobaric && rng.Chance(0.5)) DropSialicMarkers(spectrum);
      if (q.kind == kQIsotope) spectrum.precursorMz += CDatagenChemistry::kIsotopeStep / charge;
    }
    Finish(spectrum, 1.0e5 * rng.LogNormal(0.5));
    spectrum.title = "glyco_run1." + std::to_string(scan) + "." + std::to_string(scan) + "." +
                     std::to_string(spectrum.charge);
    WriteMgf(mgf, spectrum);
    const bool hasPeptide = q.kind != kQNoise;
    std::fprintf(truth, "%s\t%s\t%s\t%d\t%s\t%.6f\t%d\t%s\t%s", spectrum.title.c_str(),
                 kQualityKindNames[q.kind], hasPeptide ? q.peptide.sequence.c_str() : "-",
                 spectrum.charge, q.glycan ? q.glycan->name.c_str() : "-",
                 q.glycan ? q.glycan->mass : 0.0, site,
                 hasPeptide ? LibraryModifications(q.peptide).c_str() : "-",
                 q.inLibrary ? "yes" : "no");
    if (c.siteTraps) {
      auto list = [](const std::vector<int>& sites) {
        std::string text;
        for (int s : sites) {
          if (!text.empty()) text += ';';
          text += std::to_string(s);
        }
        return text.empty() ? std::string("-") : text;
      };
      auto marked = c.librarySites.find(FormKey(q.peptide));
      std::fprintf(truth, "\t%s\t%s\t%s\n", hasPeptide ? list(AllSequons(q.peptide)).c_str() : "-",
                   q.inLibrary && marked != c.librarySites.end() ? list(marked->second).c_str() : "-",
                   q.peptide.following && site == static_cast<int>(q.peptide.sequence.size()) - 1 ? "yes" : "no");
    } else {
      std::fputs("\n", truth);
    }
  }
}

}  // namespace datagen
