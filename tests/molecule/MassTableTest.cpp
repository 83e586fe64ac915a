#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "common/TestUtil.h"
#include "molecule/MassTable.h"

namespace {

std::string Names(const std::vector<CGlycan>& glycans) {
  std::string names;
  for (const CGlycan& g : glycans) names += g.name;
  return names;
}

// Loads `text` as a mass table file into `table`; returns the file for a save.
CMassTableFile LoadText(const testutil::TempDir& dir, const std::string& text, CMassTable& table) {
  testutil::WriteFile(dir / "m.ini", text);
  CMassTableFile file;
  file.filename = dir / "m.ini";
  file.Load(table);
  return file;
}

TEST(MassTable, FindGlycansIntervalIsOpenBelowClosedAbove) {
  CMassTable table;
  for (auto [name, mass] : {std::pair{"c", 300.0}, {"a", 100.0}, {"b", 200.0}})
    table.AddGlycan(name, mass);
  table.SortGlycans();
  EXPECT_EQ(Names(table.glycans), "abc");
  // Exactly at mass - tolerance: out; exactly at mass + tolerance: in.
  EXPECT_EQ(Names(table.FindGlycans(250.0, 50.0)), "c");
  EXPECT_EQ(Names(table.FindGlycans(200.0, 100.0)), "bc");
  EXPECT_EQ(Names(table.FindGlycans(200.0, 100.5)), "abc");
  EXPECT_EQ(Names(table.FindGlycans(199.5, 1.0)), "b");
  EXPECT_EQ(Names(table.FindGlycans(200.0, 0.0)), "");
  EXPECT_EQ(Names(table.FindGlycans(-1.0, 1000.0)), "");  // negative mass
  EXPECT_EQ(Names(table.FindGlycans(200.0, -10.0)), "");
  EXPECT_EQ(Names(table.FindGlycans(std::nan(""), 10.0)), "");
  EXPECT_EQ(Names(CMassTable().FindGlycans(200.0, 1000.0)), "");
  std::size_t low = 99, high = 99;
  table.FindGlycanRange(250.0, 50.0, low, high);
  EXPECT_EQ(low * 10 + high, 23u);
  EXPECT_EQ(table.FindGlycans(100.0, 0.5).at(0).counts.size(), 5u);  // whole copies
}

TEST(MassTable, SetEntryAndLookupsWithMissingKeys) {
  CMassTable table;
  table.SetEntry(0, "N", 114.042927);
  table.SetEntry(1, "H2O", 18.010565);
  table.SetEntry(2, "Oxidation[M]", 15.994915);
  table.SetEntry(3, "5-2-0-0-0", 1216.422863);
  table.SetEntry(4, "ignored", 1.0);
  EXPECT_EQ(table.AminoAcid('N') + table.AminoAcid("N"), 2 * 114.042927);
  EXPECT_EQ(table.Molecule("H2O"), 18.010565);
  EXPECT_EQ(table.Modification("Oxidation[M]"), 15.994915);
  EXPECT_EQ(table.Glyco("5-2-0-0-0"), 1216.422863);
  EXPECT_EQ(table.AminoAcid('Z') + table.AminoAcid('\xff') + table.AminoAcid("Z") +
                table.Molecule("Proton") + table.Modification("oxidation[M]") + table.Glyco("5-2"),
            0.0);
  table.SetEntry(0, "N", 115.0);  // an overwrite reaches the letter lookup too
  EXPECT_EQ(table.AminoAcid('N'), 115.0);
  table.ClearEntries(0);
  EXPECT_EQ(table.AminoAcid('N'), 0.0);
}

TEST(MassTableFile, LoadReplacesOnlyPresentSections) {
  testutil::TempDir dir;
  CMassTable table;
  table.SetEntry(0, "K", 128.0);
  table.SetEntry(2, "Kept[K]", 1.5);  // no Modification section: the map stays
  LoadText(dir,
           "; comment\r\n[AA]\r\nG = 57.021464\r\nA=71.03711\r\nB = abc\r\n"
           "[Molecule]\nH2O = 18.0105647 ; water\n[Glyco]\n5-2-0-0-0 = 1216.42286\n"
           "3-2-0-0-0 = 892.317\n5-4-2-0-1 = 2350.83\n[Other]\nx = y\n",
           table);
  EXPECT_EQ(table.AminoAcid('G'), 57.021464);
  EXPECT_EQ(table.AminoAcid('K'), 0.0);  // the AA section replaced the old letters
  EXPECT_EQ(table.aminoAcids.count("B"), 1u);
  EXPECT_EQ(table.AminoAcid('B'), 0.0);  // not a number reads as 0
  EXPECT_EQ(table.Molecule("H2O"), 18.0105647);
  EXPECT_EQ(table.Modification("Kept[K]"), 1.5);
  EXPECT_EQ(table.Glyco("3-2-0-0-0"), 892.317);
  EXPECT_EQ(Names(table.glycans), "3-2-0-0-05-2-0-0-05-4-2-0-1");
  EXPECT_TRUE(table.glycans[2].hasNeuAc);

  CMassTable noGlyco;
  LoadText(dir, "[AA]\nK = 128.094963\n", noGlyco);
  EXPECT_TRUE(noGlyco.FindGlycans(1000.0, 1000.0).empty());
  CMassTableFile absent;
  absent.filename = dir / "absent.ini";
  EXPECT_EXIT(absent.Load(noGlyco), ::testing::ExitedWithCode(255), "");
}

TEST(MassTableFile, SaveRewritesMassesKeepsGlycoAndCreatesNoSection) {
  testutil::TempDir dir;
  CMassTable table;
  CMassTableFile file =
      LoadText(dir,
               "[Glyco]\n5-2-0-0-0 = 1216.42286\n3-2-0-0-0 = 892.317000\n[AA]\nG = 57.021464\n"
               "[Modification]\nOxidation[M] = 15.994915\nDeamidated[N] = 0.984016\n"
               "[Molecule]\nH2O = 18.0105647\n[Other]\nx = y\n",
               table);
  table.SetEntry(2, "M[147]", 15.9949);
  table.SetEntry(2, "Oxidation[M]", 16.0);
  table.SetEntry(3, "9-2-0-0-0", 1864.634);  // Glyco is never rewritten
  file.Save(table);
  EXPECT_EQ(testutil::ReadFile(dir / "m.ini"),
            "[Glyco]\n3-2-0-0-0 = 892.317000\n5-2-0-0-0 = 1216.42286\n[AA]\nG = 57.02146\n"
            "[Modification]\nDeamidated[N] = 0.98402\nM[147] = 15.99490\nOxidation[M] = 16.00000\n"
            "[Molecule]\nH2O = 18.01056\n[Other]\nx = y\n");
  CMassTable again;  // a later load sees the change
  LoadText(dir, testutil::ReadFile(dir / "m.ini"), again);
  EXPECT_EQ(again.Modification("M[147]"), 15.9949);

  CMassTable bare;
  CMassTableFile bareFile = LoadText(dir, "[AA]\nG = 57.021464\n", bare);
  bare.SetEntry(2, "N[115]", 0.984016);  // no Modification section: lost on save
  bareFile.Save(bare);
  EXPECT_EQ(testutil::ReadFile(dir / "m.ini"), "[AA]\nG = 57.02146\n");
}

// The mass table shipped beside the program.
TEST(ShippedMassTable, ResiduesMoleculesModificationsAndGlycans) {
  CMassTable table;
  CMassTableFile file;
  file.filename = QUORIN_SOURCE_DIR "/data/MassTable.ini";
  file.Load(table);
  for (char residue : std::string("ACDEFGHIKLMNPQRSTVWYJ"))
    EXPECT_GT(table.AminoAcid(residue), 50.0) << residue;
  EXPECT_EQ(table.AminoAcid('J'), table.AminoAcid('N'));
  EXPECT_EQ(table.Molecule("H2O"), 18.010565);
  EXPECT_EQ(table.Molecule("Proton"), 1.00727647);
  for (auto [name, mass] : {std::pair{"Deamidated[N]", 0.984016}, {"N[115]", 0.984016},
                            {"Carbamidomethyl[C]", 57.021464}, {"C[160]", 57.021464},
                            {"Oxidation[M]", 15.994915}, {"M[147]", 15.994915},
                            {"Lys6[K]", 6.020129}, {"Arg10[R]", 10.008269}})
    EXPECT_EQ(table.Modification(name), mass) << name;
  // Every glycan's mass is the sum of its residues, each composition once.
  ASSERT_GE(table.glycans.size(), 150u);
  std::set<std::map<std::string, int32_t>> compositions;
  const std::map<std::string, double> residue = {{"Hex", 162.052824}, {"HexNAc", 203.079373},
      {"NeuAc", 291.095417}, {"NeuGc", 307.090331}, {"dHex", 146.057909}};
  for (const CGlycan& g : table.glycans) {
    double sum = 0.0;
    for (const auto& [name, count] : g.counts) sum += residue.at(name) * count;
    EXPECT_NEAR(g.mass, sum, 1e-6) << g.name;
    EXPECT_TRUE(compositions.insert(g.counts).second) << "duplicate composition " << g.name;
  }
  EXPECT_NEAR(table.Glyco("5-4-2-0-1"), 2350.830355, 1e-9);
}

}  // namespace
