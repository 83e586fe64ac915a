// The construction stage driver: the order of the steps and the per-peptide loop.
#include "construction/LibraryBuilder.h"

#include <filesystem>
#include <iostream>
#include <string>

#include "construction/FollowingResidues.h"
#include "molecule/MassTable.h"
#include "run/Motif.h"
#include "run/Process.h"
#include "run/Progress.h"

namespace {

constexpr std::size_t kProgressStep = 1000;

// Whether a regular file of some content is at the path.
bool HoldsData(const std::string& path) {
  std::error_code error;
  return GetPathKind(path) == PathKind::File && std::filesystem::file_size(path, error) > 0 && !error;
}

}  // namespace

void CopyPeptideFields(const CIdentifiedPeptide& peptide, CSpectrum& target) {
  target.sequence = peptide.sequence;
  target.modifications = peptide.modifications;
  target.charge = static_cast<uint32_t>(peptide.charge);
  target.proteinAC = peptide.proteinAC;
  target.prevAA = peptide.prevAA;
  target.lastAA = peptide.lastAA;
  target.startPosition = peptide.startPosition;
  target.motifs = peptide.motifs;
}

void CLibraryBuilder::Construct() {
  std::cout << std::endl << ">> Constructing:" << std::endl;
  if (param.pauseAtStart) SleepMilliseconds(1000);

  analyzer.Init(param);
  CMassTableFile tableFile;
  tableFile.filename = param.mass_table_filename;
  tableFile.Load(calculator.massTable);
  library.OpenWrite(param.output_speclib_filename);
  // The message is printed; a library that can't be written ends the run
  // instead of building into nothing.
  if (!library.WriteSucceeded()) ExitProgram(1);

  ListCounts() = CListCounts();
  {
    CFollowingResidues following;
    if (param.motifs_across_cleavage) following.Install(param.protein_database);
    analyzer.LoadIdentified();
    counts.following = following.counts;
  }
  counts.records = ListCounts();
  analyzer.SplitMultiSite();
  const std::size_t n = analyzer.peptides.size();
  analyzer.WriteComposition(n);

  std::cout << "\tGenerating library spectra: " << std::endl;
  // Two work records for all peptides: their vectors keep their capacity.
  CSpectrum target;
  CSpectrum decoy;
  for (std::size_t i = 1; i <= n; ++i) {
    const CIdentifiedPeptide& peptide = analyzer.peptides[i - 1];
    if (!analyzer.BuildConsensus(peptide)) continue;
    target = analyzer.spectra[0];
    target.name = std::to_string(i);
    CopyPeptideFields(peptide, target);
    FinishEntry(target, decoy);
    WriteEntryPair(target, decoy);
    if (i % kProgressStep == 0) std::cout << "\t\t" << i << " / " << n << std::endl;
    if (HasProgressSink()) ReportProgress("Building library entries", i, n);
  }

  counts.peptides = n;
  counts.spectraNotFound = analyzer.spectraNotFound;
  analyzer.spectra.clear();
  analyzer.ClosePool();
  if (counts.entriesWritten == 0 && HoldsData(param.output_speclib_filename)) {
    // An empty library (a misspelled modification_remove keeps nothing) must
    // not replace a complete earlier one.
    library.DiscardWrite();
    analyzer.DiscardComposition();
    counts.keptEarlierLibrary = true;
    std::cout << "[Warning]: No library entry was built; the earlier library "
              << param.output_speclib_filename
              << " and its companion file are kept as they were, and nothing is searched."
              << std::endl;
    return;
  }
  library.CloseWrite();
  if (!library.WriteSucceeded()) ExitProgram(1);
  analyzer.CommitComposition();
  std::cout << "\t\t" << n << " / " << n << std::endl;
  std::cout << "    --- Complete!" << std::endl << std::endl;
}

void CLibraryBuilder::WriteEntryPair(CSpectrum& target, CSpectrum& decoy) {
  target.SortPeaksByMz();
  library.WriteOne(target);
  decoy.SortPeaksByMz();
  library.WriteOne(decoy);
  counts.entriesWritten += 2;
}

void CLibraryBuilder::FinishEntry(CSpectrum& target, CSpectrum& decoy) {
  AnnotateSpectrum(target);
  CompleteEntry(target, decoy);
}

void CLibraryBuilder::CompleteEntry(CSpectrum& target, CSpectrum& decoy) {
  RemoveSiteMarks(target);
  decoy = target;
  MakeDecoy(decoy);
  AddYIons(target, param.added_Y_ions, param.Y_ion_relative_intensity);
  AddYIons(decoy, param.added_Y_ions, param.Y_ion_relative_intensity);
}

void CLibraryBuilder::RemoveSiteMarks(CSpectrum& target) {
  const std::string& removed = param.modification_remove;
  if (removed.empty()) return;
  const std::string acceptors = MotifAcceptorLetters(param.GetMotifRegex());
  for (std::size_t m = 0; m < target.modifications.size();) {
    const CModification& mod = target.modifications[m];
    if (mod.name == removed &&
        IsGlycoSiteMark(target.sequence, target.lastAA, mod.position, acceptors)) {
      RemoveModification(target, m);  // the next one moves into index m
    } else {
      ++m;
    }
  }
}
