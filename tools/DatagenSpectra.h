#pragma once
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "DatagenChemistry.h"
#include "DatagenPeptides.h"
#include "DatagenRandom.h"

// Synthesis of peak lists: deglycosylated peptide spectra for the library and
// intact glycopeptide spectra for the queries.
struct CDatagenPeak {
  double mz;
  double intensity;
};

struct CDatagenSpectrum {
  std::string title;
  int charge = 2;
  double precursorMz = 0.0;
  double retentionSeconds = 0.0;
  std::vector<CDatagenPeak> peaks;
};

namespace datagen {

constexpr double kMgfProton = 1.00727647012;  // the MGF reader's proton
constexpr double kMarkerMz = 138.054953;
constexpr double kFragmentErrorSd = 0.003;    // Da, well inside a 0.02 Da tolerance

// Highest fragment charge that the search tries for a query charge.
inline int MaxFragmentCharge(int charge) {
  if (charge <= 1) return 1;
  if (charge <= 3) return 2;
  if (charge == 4) return 3;
  return 4;
}

// A fragment with its isotope envelope; all peaks share one m/z error.
inline void AddIon(std::vector<CDatagenPeak>& peaks, double mz, int z, double intensity,
                   CDatagenRandom& rng, double lowMz, double highMz) {
  if (intensity <= 0.0) return;
  double error = rng.Normal(0.0, kFragmentErrorSd);
  double neutral = mz * z;
  double m1 = std::min(0.9, neutral / 1800.0);  // M+1 relative to the monoisotopic peak
  double m2 = m1 * m1 * 0.5;
  double step = CDatagenChemistry::kIsotopeStep / z;
  if (mz >= lowMz && mz <= highMz) peaks.push_back({mz + error, intensity});
  if (mz + step >= lowMz && mz + step <= highMz && m1 * intensity > 0.01)
    peaks.push_back({mz + step + error, intensity * m1});
  if (mz + 2 * step >= lowMz && mz + 2 * step <= highMz && m2 * intensity > 0.02)
    peaks.push_back({mz + 2 * step + error, intensity * m2});
}

inline void AddNoise(std::vector<CDatagenPeak>& peaks, int count, double low, double high,
                     double meanIntensity, CDatagenRandom& rng) {
  if (high <= low) return;
  for (int i = 0; i < count; ++i) {
    double intensity = std::min(rng.Exponential(meanIntensity), 4.0 * meanIntensity) + 0.002;
    peaks.push_back({rng.Uniform(low, high), intensity});
  }
}

// Sorts by m/z and scales the strongest peak to `base`.
inline void Finish(CDatagenSpectrum& s, double base) {
  std::sort(s.peaks.begin(), s.peaks.end(),
            [](const CDatagenPeak& a, const CDatagenPeak& b) { return a.mz < b.mz; });
  double top = 0.0;
  for (const auto& p : s.peaks) top = std::max(top, p.intensity);
  if (top <= 0.0) return;
  for (auto& p : s.peaks) p.intensity *= base / top;
}

inline double PrecursorMz(double mh, int z) { return (mh - kMgfProton) / z + kMgfProton; }

// A tryptic peptide spectrum as a search engine identified it: b and y ions
// following the peptide's template, with spectrum-to-spectrum variation.
inline void FillPeptideSpectrum(CDatagenSpectrum& s, const CDatagenPeptide& p, const CDatagenIon& ion,
                                int charge, CDatagenRandom& rng) {
  const double high = 2000.0;
  std::size_t n = ion.Length();
  for (std::size_t k = 1; k < n; ++k) {
    const double* templates[2] = {&p.bTemplate[k], &p.yTemplate[k]};
    for (int kind = 0; kind < 2; ++kind) {
      double t = *templates[kind];
      if (t <= 0.0 || !rng.Chance(0.9)) continue;
      double intensity = t * rng.LogNormal(0.25);
      double mz1 = kind == 0 ? ion.B(k, 1) : ion.Y(k, 1);
      AddIon(s.peaks, mz1, 1, intensity, rng, 100.0, high);
      if (charge >= 3 && k >= 3 && rng.Chance(0.7)) {
        double mz2 = kind == 0 ? ion.B(k, 2) : ion.Y(k, 2);
        AddIon(s.peaks, mz2, 2, intensity * 0.5 * rng.LogNormal(0.3), rng, 100.0, high);
      }
    }
  }
  double mh = ion.MH();
  double precursor = PrecursorMz(mh, charge);
  if (precursor <= high) s.peaks.push_back({precursor + rng.Normal(0.0, kFragmentErrorSd), 0.15});
  AddNoise(s.peaks, rng.Int(15, 40), 100.0, std::min(high, mh + 100.0), 0.03, rng);
  s.charge = charge;
  s.precursorMz = precursor * (1.0 + rng.Normal(0.0, 3e-6));
}

struct COxonium {
  double mz;
  double relative;
  double presence;
};

// What the b/y fragments that hold the site keep of the glycan: a HexNAc for a
// share of them, the whole glycan for a few, nothing for the rest.
struct CSiteFragmentShares {
  double hexNAc = 0.0;
  double whole = 0.0;
};
constexpr double kHexNAcMass = 203.079373;

// Intact glycopeptide spectrum (HCD): oxonium ions, Y ions (peptide plus part
// of the core), peptide fragments that lost the glycan and a few that kept it.
// With `siteShares`, the fragments that hold the site keep a HexNAc or the
// glycan as those shares say, in place of the one to three whole-glycan ones.
inline void FillGlycoSpectrum(CDatagenSpectrum& s, const CDatagenPeptide& p, const CDatagenIon& ion,
                              int site, const CDatagenGlycan& glycan, int charge,
                              CDatagenRandom& rng, const CSiteFragmentShares* siteShares = nullptr) {
  const double high = 3000.0;
  const double proton = kMgfProton;
  static const COxonium kCommon[] = {
      {126.054955, 0.15, 0.9}, {144.065520, 0.12, 0.7}, {168.065520, 0.12, 0.8},
      {186.076085, 0.22, 0.9}, {204.086650, 1.00, 1.0}, {366.139474, 0.35, 0.9},
      {528.192298, 0.06, 0.4}};
  for (const auto& o : kCommon) {
    if (rng.Chance(o.presence)) s.peaks.push_back({o.mz + rng.Normal(0.0, 0.002), o.relative * rng.LogNormal(0.2)});
  }
  s.peaks.push_back({kMarkerMz + rng.Normal(0.0, 0.002), rng.Uniform(0.45, 1.0)});
  if (glycan.neuAc > 0) {
    s.peaks.push_back({274.092124 + rng.Normal(0.0, 0.002), rng.Uniform(0.15, 0.4)});
    s.peaks.push_back({292.102689 + rng.Normal(0.0, 0.002), rng.Uniform(0.2, 0.5)});
    if (rng.Chance(0.5)) s.peaks.push_back({657.234878 + rng.Normal(0.0, 0.002), 0.05});
  }
  if (glycan.neuGc > 0) {
    s.peaks.push_back({290.087039 + rng.Normal(0.0, 0.002), rng.Uniform(0.1, 0.3)});
    s.peaks.push_back({308.066794 + rng.Normal(0.0, 0.002), rng.Uniform(0.1, 0.3)});
  }
  if (glycan.dHex > 0 && rng.Chance(0.5)) s.peaks.push_back({512.1974 + rng.Normal(0.0, 0.002), 0.05});

  // Y ions: the peptide with none or part of the core, at charges below the precursor's.
  static const double kYRelative[6] = {0.25, 0.6, 0.3, 0.2, 0.12, 0.12};
  double pepMH = ion.MH();
  int topY = std::max(1, charge - 1);
  for (int z = 1; z <= topY; ++z) {
    for (int y = 0; y < 6; ++y) {
      if (!rng.Chance(0.85)) continue;
      double mz = (pepMH + CDatagenChemistry::kCoreMasses[y] + (z - 1) * proton) / z;
      AddIon(s.peaks, mz, z, kYRelative[y] * (z == 1 ? 1.0 : 0.8) * rng.LogNormal(0.3), rng, 100.0, high);
    }
  }

  // Peptide fragments without the glycan, at their own m/z.
  std::size_t n = ion.Length();
  for (std::size_t k = 1; k < n; ++k) {
    const double* templates[2] = {&p.bTemplate[k], &p.yTemplate[k]};
    for (int kind = 0; kind < 2; ++kind) {
      double t = *templates[kind];
      if (t <= 0.0 || !rng.Chance(0.85)) continue;
      double intensity = 0.35 * t * rng.LogNormal(0.3);
      double kept = 0.0;  // mass of the glycan that stays on the fragment
      const bool holdsSite = kind == 0 ? static_cast<int>(k) >= site : static_cast<int>(k) > static_cast<int>(n) - site;
      if (siteShares && holdsSite) {
        const double u = rng.Uniform();
        kept = u < siteShares->whole ? glycan.mass : u < siteShares->whole + siteShares->hexNAc ? kHexNAcMass : 0.0;
      }
      AddIon(s.peaks, (kind == 0 ? ion.B(k, 1) : ion.Y(k, 1)) + kept, 1, intensity, rng, 100.0, 2000.0);
      if (charge >= 3 && k >= 3 && rng.Chance(0.5)) {
        AddIon(s.peaks, (kind == 0 ? ion.B(k, 2) : ion.Y(k, 2)) + kept / 2, 2, intensity * 0.4, rng, 100.0,
               2000.0);
      }
    }
  }

  // A few fragments that kept the whole glycan: they must hold the site.
  int shifted = siteShares ? 0 : rng.Int(1, 3);
  int maxZ = std::min(2, MaxFragmentCharge(charge));
  for (int i = 0; i < shifted; ++i) {
    bool isB = rng.Chance(0.5);
    std::size_t k = isB ? static_cast<std::size_t>(rng.Int(site, static_cast<int>(n) - 1))
                        : static_cast<std::size_t>(rng.Int(static_cast<int>(n) - site + 1, static_cast<int>(n) - 1));
    if (k < 1 || k >= n) continue;
    int z = rng.Int(1, maxZ);
    double plain = isB ? ion.B(k, z) : ion.Y(k, z);
    AddIon(s.peaks, plain + glycan.mass / z, z, 0.08 * rng.LogNormal(0.3), rng, 100.0, high);
  }

  double glycoMH = pepMH + glycan.mass;
  AddNoise(s.peaks, rng.Int(60, 140), 100.0, std::min(high, glycoMH), 0.025, rng);

  // The marker must clear 0.3 of the base peak with room to spare.
  double top = 0.0;
  CDatagenPeak* marker = nullptr;
  for (auto& pk : s.peaks) {
    top = std::max(top, pk.intensity);
    if (std::abs(pk.mz - kMarkerMz) < 0.01) marker = &pk;
  }
  if (marker && marker->intensity <= 0.38 * top) marker->intensity = rng.Uniform(0.45, 0.9) * top;

  s.charge = charge;
  double ppm = std::clamp(rng.Normal(0.0, 2.0), -6.0, 6.0);
  s.precursorMz = PrecursorMz(glycoMH * (1.0 + ppm * 1e-6), charge);
}

// Turns the marker of a glycopeptide spectrum into one too weak to pass.
inline void WeakenMarker(CDatagenSpectrum& s, CDatagenRandom& rng) {
  double top = 0.0;
  for (const auto& pk : s.peaks)
    if (std::abs(pk.mz - kMarkerMz) >= 0.01) top = std::max(top, pk.intensity);
  for (auto& pk : s.peaks)
    if (std::abs(pk.mz - kMarkerMz) < 0.01) pk.intensity = rng.Uniform(0.05, 0.25) * top;
}

// Precursor charge of a glycopeptide: one that puts the m/z in the usual window.
inline int GlycoCharge(double mh, CDatagenRandom& rng) {
  std::vector<int> fitting;
  for (int z = 2; z <= 4; ++z) {
    double mz = PrecursorMz(mh, z);
    if (mz >= 650.0 && mz <= 2000.0) fitting.push_back(z);
  }
  if (fitting.empty()) return 3;
  return fitting[static_cast<std::size_t>(rng.Int(0, static_cast<int>(fitting.size()) - 1))];
}

// MGF block with a TITLE line, which the program's reader needs to index it.
inline void WriteMgf(std::FILE* out, const CDatagenSpectrum& s) {
  std::fprintf(out, "BEGIN IONS\nTITLE=%s\nRTINSECONDS=%.2f\nPEPMASS=%.6f\nCHARGE=%d+\n",
               s.title.c_str(), s.retentionSeconds, s.precursorMz, s.charge);
  for (const auto& p : s.peaks) std::fprintf(out, "%.5f %.1f\n", p.mz, p.intensity);
  std::fputs("END IONS\n\n", out);
}

}  // namespace datagen
