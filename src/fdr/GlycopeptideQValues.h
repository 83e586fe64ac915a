#pragma once
#include <string>
#include <vector>

#include "fdr/FdrEstimator.h"
#include "fdr/GlycopeptideHit.h"
#include "molecule/MassTable.h"
#include "run/Param.h"

// Names of the features of a hit, in the order of CGlycopeptideHit::features.
extern const std::vector<std::string> kGlycopeptideFeatureNames;

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
// The q-value of the whole identification from one competition: a line
// counts as a decoy when its peptide is a library decoy or its glycan `lost`
// to the decoy glycan, and the lines are walked in order of their separate
// q-values (then `scores`). Adding one decoy once, not once per part, keeps a
// small run of one glycoprotein from a floor of 2 / targets.
std::vector<double> CombinedQValues(const std::vector<double>& peptideQ,
                                    const std::vector<double>& glycanQ,
                                    const std::vector<bool>& lost, std::vector<double> scores);
// GlycopeptideQ from the combined q-value plus the expected share of lines
// whose glycan is the other isotope reading or sits on another site.
void AddIsotopeRivals(std::vector<CGlycopeptideHit>& hits);

// Of the candidates of each query (the result line's, rank 0, and the next
// best the search kept), keeps the one of the highest score in the reported
// one's place; `scores` follow. The candidates of a query without a reported
// one (found one isotope lower) give it a line: the best of them.
void KeepBestCandidates(std::vector<CGlycopeptideHit>& hits, std::vector<double>& scores);

// Final score and the three q-values of every hit, from the hits alone, after
// the best of the candidates of each query is kept (KeepBestCandidates):
// PeptideQ from the library decoys on the rescored match, GlycanQ from a
// competition of each glycan's Y ions against a decoy glycan's, and
// GlycopeptideQ, the chance that either is wrong, bounded by their sum, plus
// the expected share of glycans that only the mass error chose.
// Returns whether the rescoring model was learned (else the search score stands).
bool EstimateGlycopeptideQValues(std::vector<CGlycopeptideHit>& hits);

// Loads the mass table of `settings` into `table` (which the hits then point
// into) and adds the spectrum evidence from the query datasets.
void AddEvidenceFromDatasets(std::vector<CGlycopeptideHit>& hits, const CSearchParam& settings,
                             CMassTable& table);

// Estimates and writes the q-value and feature files of `resultPath`;
// returns the lowest GlycopeptideQ of a target line.
double FinishGlycopeptideQValues(std::vector<CGlycopeptideHit>& hits, const std::string& resultPath);

// The stage step: all of the above for the ranked lines of the FDR stage.
// Returns the smallest GlycopeptideQ of a target line (1 when there is none).
double RunGlycopeptideQValues(const CSearchParam& settings, const std::vector<CFdrRecord>& records);
