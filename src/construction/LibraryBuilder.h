#pragma once
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "construction/ConstructionCounts.h"
#include "construction/IdentifiedAnalyzer.h"
#include "molecule/PeptideCalculator.h"
#include "run/Param.h"
#include "spectrum/QuolibIO.h"
#include "spectrum/Spectrum.h"

// The library construction stage: lists and datasets in, library file out.
class CLibraryBuilder {
 public:
  // The whole stage, from the opening line to "Complete!".
  void Construct();
  // Sets the theoretical precursor mass and blends the consensus peaks with the
  // peptide's b and y ions; keeps 10 peaks per 100 Th.
  void AnnotateSpectrum(CSpectrum& spectrum);
  // Takes the mass of modification `index` off the entry's mass and the
  // fragments that hold it, and removes it from the list.
  void RemoveModification(CSpectrum& spectrum, std::size_t index);
  // Turns a full copy of a finished target into its decoy.
  void MakeDecoy(CSpectrum& decoy);
  // Steps 2 to 8 of the per-peptide loop, on a target already holding its
  // consensus: annotation, then CompleteEntry.
  void FinishEntry(CSpectrum& target, CSpectrum& decoy);
  // On an annotated target: takes off the site marks, makes the decoy and adds
  // the Y ions to both.
  void CompleteEntry(CSpectrum& target, CSpectrum& decoy);
  // Takes off the modification_remove marks that stand on a site J.
  void RemoveSiteMarks(CSpectrum& target);
  // Writes the target and then its decoy, each sorted by m/z.
  void WriteEntryPair(CSpectrum& target, CSpectrum& decoy);

  CConstructionParam param;
  CIdentifiedAnalyzer analyzer;
  CPeptideCalculator calculator;
  CQuolibIO library;
  CConstructionCounts counts;

 private:
  // Carries annotated peaks to the decoy's fragments and their satellites along.
  void RemapDecoyPeaks(CSpectrum& decoy);
};

// Target fields that come from the identification list, not the consensus.
void CopyPeptideFields(const CIdentifiedPeptide& peptide, CSpectrum& target);

// Greatest fragment charge of the theoretical ions for a precursor charge.
uint32_t MaxFragmentCharge(uint32_t precursorCharge);

// Whether the residue at 1-based `position` is a J at the head of a sequon,
// with the acceptor letters of the configured motifs.
bool IsGlycoSiteMark(const std::string& sequence, const std::string& lastAA, int32_t position);
bool IsGlycoSiteMark(const std::string& sequence, const std::string& lastAA, int32_t position,
                     const std::string& acceptors);

// Turns the reversed sequons of a decoy forward again (configured motifs).
void RestoreSequons(CSpectrum& decoy);

// Appends the configured Y ions (with water and ammonia losses) at each charge.
void AddYIons(CSpectrum& spectrum);
void AddYIons(CSpectrum& spectrum, const std::vector<uint32_t>& yIons, double relativeIntensity);
