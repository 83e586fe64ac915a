#pragma once
#include <string>
#include <vector>

#include "molecule/Glycan.h"
#include "run/Param.h"
#include "search/GlycanLists.h"
#include "spectrum/Spectrum.h"

namespace searchtest {

inline CPeak Peak(double mz, double intensity, int32_t type = kPeakUnannotated,
                  uint32_t position = 0, uint32_t charge = 0) {
  return CPeak{mz, intensity, type, position, charge};
}

inline CSpectrum Spectrum(double precursorMass, uint32_t charge, std::vector<CPeak> peaks = {}) {
  CSpectrum s;
  s.precursorMass = precursorMass;
  s.charge = charge;
  s.peaks = std::move(peaks);
  return s;
}

// Sets the search tolerances of the parameter singleton (unit 0 Da, 1 ppm).
inline void SetTolerances(double product, int32_t productUnit, double precursor = 0.5,
                          int32_t precursorUnit = 0) {
  CSearchParam& s = CParam::GetInstance().search;
  s.query_product_ion_tolerance = product;
  s.query_product_ion_unit = productUnit;
  s.query_precursor_ion_tolerance = precursor;
  s.query_precursor_ion_unit = precursorUnit;
}

inline std::vector<double> Mzs(const CSpectrum& s) {
  std::vector<double> out;
  for (const CPeak& p : s.peaks) out.push_back(p.mz);
  return out;
}

// Glycan lists of a query's candidates: list i holds the glycans of the
// indices in perCandidate[i].
struct Glycans {
  std::vector<CGlycan> storage;
  CGlycanLists lists;
  Glycans(const std::vector<std::pair<std::string, double>>& glycans,
          const std::vector<std::vector<int>>& perCandidate) {
    for (const auto& [name, mass] : glycans) storage.emplace_back().name = name;
    for (std::size_t i = 0; i < glycans.size(); ++i) storage[i].mass = glycans[i].second;
    for (const auto& list : perCandidate) {
      for (int i : list) lists.Add(&storage[i]);
      lists.Close();
    }
  }
};

}  // namespace searchtest
