#include "molecule/MassTable.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string_view>

#include "run/Process.h"

namespace {
const char* const kSectionNames[4] = {"AA", "Molecule", "Modification", "Glyco"};

double Lookup(const std::map<std::string, double>& table, const std::string& key) {
  auto found = table.find(key);
  return found == table.end() ? 0.0 : found->second;
}

bool LighterThan(double mass, const CGlycan& glycan) { return mass < glycan.mass; }
}  // namespace

void CMassTable::SetEntry(int kind, const std::string& key, double mass) {
  switch (kind) {
    case 0:
      aminoAcids[key] = mass;
      if (key.size() == 1) residueMass[static_cast<unsigned char>(key[0])] = mass;
      break;
    case 1: molecules[key] = mass; break;
    case 2: modifications[key] = mass; break;
    case 3: glycanMasses[key] = mass; break;
    default: break;
  }
}

void CMassTable::ClearEntries(int kind) {
  switch (kind) {
    case 0:
      aminoAcids.clear();
      std::fill(std::begin(residueMass), std::end(residueMass), 0.0);
      break;
    case 1: molecules.clear(); break;
    case 2: modifications.clear(); break;
    case 3: glycanMasses.clear(); break;
    default: break;
  }
}

void CMassTable::AddGlycan(const std::string& composition, double mass) {
  CGlycan glycan;
  glycan.name = composition;
  glycan.mass = mass;
  glycan.ParseComposition();
  glycan.hasNeuAc = glycan.counts["NeuAc"] != 0;
  glycan.hasNeuGc = glycan.counts["NeuGc"] != 0;
  glycans.push_back(std::move(glycan));
}

void CMassTable::SortGlycans() {
  std::sort(glycans.begin(), glycans.end(),
            [](const CGlycan& a, const CGlycan& b) { return a.mass < b.mass; });
}

void CMassTable::FindGlycanRange(double mass, double tolerance, std::size_t& low,
                                 std::size_t& high) const {
  low = high = 0;
  if (glycans.empty() || mass < 0.0) return;
  // upper_bound counts the glycans at or below the probe: a glycan exactly at
  // mass - tolerance stays out, one exactly at mass + tolerance comes in.
  auto lowIt = std::upper_bound(glycans.begin(), glycans.end(), mass - tolerance, LighterThan);
  auto highIt = std::upper_bound(lowIt, glycans.end(), mass + tolerance, LighterThan);
  low = static_cast<std::size_t>(lowIt - glycans.begin());
  high = static_cast<std::size_t>(highIt - glycans.begin());
}

std::vector<CGlycan> CMassTable::FindGlycans(double mass, double tolerance) const {
  std::size_t low, high;
  FindGlycanRange(mass, tolerance, low, high);
  return std::vector<CGlycan>(glycans.begin() + low, glycans.begin() + high);
}

double CMassTable::AminoAcid(char residue) const {
  return residueMass[static_cast<unsigned char>(residue)];
}
double CMassTable::AminoAcid(const std::string& key) const { return Lookup(aminoAcids, key); }
double CMassTable::Molecule(const std::string& key) const { return Lookup(molecules, key); }
double CMassTable::Modification(const std::string& key) const {
  return Lookup(modifications, key);
}
double CMassTable::Glyco(const std::string& key) const { return Lookup(glycanMasses, key); }

void CMassTableFile::Load(CMassTable& table) {
  config.Read(filename);
  for (int kind = 0; kind < 3; ++kind) {
    const CConfigSection* section = config.FindSection(kSectionNames[kind]);
    if (!section) continue;  // a missing section leaves the table as it was
    table.ClearEntries(kind);
    for (const auto& [key, value] : section->entries)
      table.SetEntry(kind, key, std::atof(value.c_str()));
  }
  if (const CConfigSection* glyco = config.FindSection(kSectionNames[3])) {
    table.ClearEntries(3);
    for (const auto& [key, value] : glyco->entries) {
      double mass = std::atof(value.c_str());
      table.SetEntry(3, key, mass);
      table.AddGlycan(key, mass);
    }
    table.SortGlycans();
  }
}

void CMassTableFile::Save(const CMassTable& table) {
  const std::map<std::string, double>* maps[3] = {&table.aminoAcids, &table.molecules,
                                                  &table.modifications};
  // Glyco keeps the text it was read with; the other sections are rewritten.
  for (int kind = 0; kind < 3; ++kind)
    if (CConfigSection* section = config.FindSection(kSectionNames[kind]))
      section->entries.clear();
  char buffer[512];  // room for "%.5lf" of any double
  for (int kind = 0; kind < 3; ++kind) {
    for (const auto& [key, mass] : *maps[kind]) {
      std::snprintf(buffer, sizeof buffer, "%.5lf", mass);
      config.Set(kSectionNames[kind], key, buffer);  // no section, no entry
    }
  }
  config.Write(filename);
}

std::string MissingBasicMasses(const CMassTable& table, bool construction, bool search) {
  std::vector<std::string> missing;
  auto lacks = [](double mass) { return !(mass > 0.0 && mass < 1e6); };
  if (construction) {
    std::string residues;
    for (const char residue : std::string_view("ACDEFGHIKLMNPQRSTVWY"))
      if (lacks(table.AminoAcid(residue))) residues += residue;
    if (!residues.empty()) missing.push_back("the residue masses of " + residues);
    for (const char* molecule : {"H2O", "Proton"})
      if (lacks(table.Molecule(molecule))) missing.push_back(molecule);
  }
  if (search && table.glycans.empty()) missing.push_back("glycans");
  std::string text;
  for (const std::string& what : missing) text += (text.empty() ? "" : ", ") + what;
  return text;
}

void CheckMassTableFile(const std::string& filename, bool construction, bool search) {
  if (GetPathKind(filename) != PathKind::File) return;
  CMassTable table;
  CMassTableFile file;
  file.filename = filename;
  file.Load(table);
  const std::string missing = MissingBasicMasses(table, construction, search);
  if (missing.empty()) return;
  std::cout << "Error when reading \"" << filename << "\"." << std::endl;
  std::cout << "[Error]: the mass table lacks " << missing
            << " (sections [AA], [Molecule], [Glyco]); the run is refused." << std::endl;
  ExitProgram(-1);
}
