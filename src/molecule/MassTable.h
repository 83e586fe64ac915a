#pragma once
#include <map>
#include <string>
#include <vector>

#include "molecule/Glycan.h"
#include "run/ConfigFile.h"

// Parsed MassTable.ini: four name-to-mass maps and the glycans sorted by mass.
// Table kinds: 0 AA, 1 Molecule, 2 Modification, 3 Glyco.
class CMassTable {
 public:
  void SetEntry(int kind, const std::string& key, double mass);
  // Empties the map of that kind (0 to 3); any other kind does nothing.
  void ClearEntries(int kind);
  void AddGlycan(const std::string& composition, double mass);
  void SortGlycans();
  // Copies of the glycans with mass in (mass - tolerance, mass + tolerance].
  std::vector<CGlycan> FindGlycans(double mass, double tolerance) const;
  // Index range [low, high) of the same interval, without copying.
  void FindGlycanRange(double mass, double tolerance, std::size_t& low, std::size_t& high) const;

  // Lookups: a missing key reads as 0.0.
  double AminoAcid(char residue) const;
  double AminoAcid(const std::string& key) const;
  double Molecule(const std::string& key) const;
  double Modification(const std::string& key) const;
  double Glyco(const std::string& key) const;

  // Change aminoAcids through SetEntry and ClearEntries only: AminoAcid(char)
  // reads a per-letter copy of its one-letter keys.
  std::map<std::string, double> aminoAcids;
  std::map<std::string, double> molecules;
  std::map<std::string, double> modifications;
  std::map<std::string, double> glycanMasses;
  std::vector<CGlycan> glycans;

 private:
  double residueMass[256] = {};  // fast path of AminoAcid(char), kept in step with aminoAcids
};

// What a table lacks of the masses a run needs, in words; empty when it has
// them all. Library construction needs the twenty residues, H2O and Proton;
// the search needs at least one glycan.
std::string MissingBasicMasses(const CMassTable& table, bool construction, bool search);

// Refuses, before any work, a mass table file that lacks those masses (a file
// of another kind given as the table): prints the usual reading error and the
// reason, and ends the program with -1. A file that isn't there is left to
// the stage that reads it.
void CheckMassTableFile(const std::string& filename, bool construction, bool search);

// Loader and saver of the mass table file.
class CMassTableFile {
 public:
  // Reads `filename`; a file that can't be opened ends the program with -1.
  void Load(CMassTable& table);
  // Rewrites AA, Molecule and Modification with "%.5lf"; Glyco stays as read.
  void Save(const CMassTable& table);

  std::string filename;
  CConfigFile config;
};
