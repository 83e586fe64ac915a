#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "fdr/FdrEstimator.h"
#include "fdr/GlycanCall.h"
#include "run/Param.h"

// One result line as the glycopeptide q-values see it.
struct CGlycopeptideHit {
  // From the result line.
  std::string query, sequence, modification, searchGlycan, glycoLoc, protein;
  bool decoy = false;
  double queryMH = 0.0, peptideMH = 0.0, searchScore = 0.0;
  uint32_t charge = 0;
  int innerB = 0, innerY = 0;  // matched b and y ions of 3 residues or more
  std::vector<double> lineFeatures;  // the scores and ion counts of the line
  // From the spectrum.
  bool spectrumFound = false;
  CGlycanCall call;
  CYIonEvidence yIons, decoyYIons;  // at the peptide's Y ions, and moved by a decoy glycan
  // Results.
  std::vector<double> features;
  double score = 0.0;  // the final score
  double peptideQ = 1.0, glycanQ = 1.0, glycopeptideQ = 1.0;

  std::string GlycanName() const { return call.glycan ? call.glycan->name : searchGlycan; }
  double GlycanScore() const { return yIons.Score() - 2.0 * call.contradictions; }
  // The decoy glycan shares the composition's oxonium evidence: the two
  // differ in their Y ions alone, so that neither is favoured by chance.
  double DecoyGlycanScore() const { return decoyYIons.Score() - 2.0 * call.contradictions; }
};

// The hits of result lines (27 or more tab-separated columns); a line with
// fewer columns gives a hit of what it has.
std::vector<CGlycopeptideHit> ParseResultLines(const std::vector<CFdrRecord>& records);

// Reads the query spectra named by the hits from the datasets of `settings`,
// prepares them as the search did, and calls each hit's glycan and Y ions
// against the glycan table (sorted by mass).
void AddSpectrumEvidence(std::vector<CGlycopeptideHit>& hits, const CSearchParam& settings,
                         const std::vector<CGlycan>& glycanTable);

// The glycan call and Y-ion evidence of one hit from its prepared spectrum.
void CallHit(CGlycopeptideHit& hit, const CSpectrum& prepared, const CSearchParam& settings,
             const std::vector<CGlycan>& glycanTable);

// Mass errors of the precursor against the glycan, in ppm, of confident lines:
// centre (median) and spread (scaled median absolute deviation).
struct CMassErrorModel {
  double centre = 0.0;
  double spread = 3.0;
};
inline constexpr double kConfidentQ = 0.01;
inline constexpr std::size_t kMinimalErrorSample = 30;
inline constexpr double kSmallestSpreadPpm = 0.5;
// How often a precursor is picked one isotope peak too high, before the evidence.
inline constexpr double kIsotopeErrorPrior = 0.1;

// Fitted on the confident targets read at isotope 0; the defaults stand when
// they are too few.
CMassErrorModel FitMassErrors(const std::vector<CGlycopeptideHit>& hits,
                              const std::vector<bool>& confident);
// The chance that the other isotope reading of a call is the right one.
double IsotopeRivalProbability(const CGlycanCall& call, const CMassErrorModel& model);
// GlycopeptideQ from PeptideQ and GlycanQ plus the expected share of calls
// whose glycan is the other isotope reading.
void AddIsotopeRivals(std::vector<CGlycopeptideHit>& hits);

// Final score and the three q-values of every hit, from the hits alone:
// PeptideQ from the library decoys on the rescored match, GlycanQ from a
// competition of each glycan's Y ions against a decoy glycan's, and
// GlycopeptideQ, the chance that either is wrong, bounded by their sum, plus
// the expected share of glycans that only the mass error chose.
// Returns whether the rescoring model was learned (else the search score stands).
bool EstimateGlycopeptideQValues(std::vector<CGlycopeptideHit>& hits);

// "<stem>_qvalues<extension>" beside the result file, and the feature file
// "<stem>_qvalues.pin".
std::string QValuePath(const std::string& resultPath, const std::string& extension = "");

// The q-value file (best first) and the feature file, each written whole to a
// temporary file and then renamed into place.
void WriteQValueFiles(std::vector<CGlycopeptideHit>& hits, const std::string& resultPath);

// The stage step: all of the above for the ranked lines of the FDR stage.
void RunGlycopeptideQValues(const CSearchParam& settings, const std::vector<CFdrRecord>& records);
