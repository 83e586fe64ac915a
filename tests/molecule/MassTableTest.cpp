#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "common/TestUtil.h"
#include "molecule/MassTable.h"

namespace {

std::vector<std::string> Names(const std::vector<CGlycan>& glycans) {
  std::vector<std::string> names;
  for (const CGlycan& g : glycans) names.push_back(g.name);
  return names;
}

CMassTable ThreeGlycans() {
  CMassTable table;
  table.AddGlycan("c", 300.0);
  table.AddGlycan("a", 100.0);
  table.AddGlycan("b", 200.0);
  table.SortGlycans();
  return table;
}

TEST(MassTable, SortGlycansByMass) {
  CMassTable table = ThreeGlycans();
  EXPECT_EQ(Names(table.glycans), (std::vector<std::string>{"a", "b", "c"}));
  table.AddGlycan("d", 0.5);
  table.AddGlycan("e", 250.0);
  table.SortGlycans();
  EXPECT_EQ(Names(table.glycans), (std::vector<std::string>{"d", "a", "b", "e", "c"}));
}

TEST(MassTable, FindGlycansIntervalIsOpenBelowClosedAbove) {
  CMassTable table = ThreeGlycans();
  // Exactly at mass - tolerance: out; exactly at mass + tolerance: in.
  EXPECT_EQ(Names(table.FindGlycans(250.0, 50.0)), (std::vector<std::string>{"c"}));
  EXPECT_EQ(Names(table.FindGlycans(150.0, 50.0)), (std::vector<std::string>{"b"}));
  EXPECT_EQ(Names(table.FindGlycans(200.0, 100.0)), (std::vector<std::string>{"b", "c"}));
  EXPECT_EQ(Names(table.FindGlycans(200.0, 100.5)), (std::vector<std::string>{"a", "b", "c"}));
  EXPECT_EQ(Names(table.FindGlycans(199.5, 1.0)), (std::vector<std::string>{"b"}));
  EXPECT_TRUE(table.FindGlycans(200.0, 0.0).empty());  // a zero-width interval holds nothing
  EXPECT_TRUE(table.FindGlycans(1000.0, 5.0).empty());
  EXPECT_TRUE(table.FindGlycans(10.0, 5.0).empty());
  EXPECT_TRUE(table.FindGlycans(-1.0, 1000.0).empty());  // negative mass
  EXPECT_TRUE(table.FindGlycans(200.0, -10.0).empty());  // negative tolerance
  EXPECT_TRUE(table.FindGlycans(std::nan(""), 10.0).empty());
  EXPECT_TRUE(CMassTable().FindGlycans(200.0, 1000.0).empty());  // empty table

  std::size_t low = 99, high = 99;
  table.FindGlycanRange(250.0, 50.0, low, high);
  EXPECT_EQ(low, 2u);
  EXPECT_EQ(high, 3u);
  table.FindGlycanRange(-5.0, 50.0, low, high);
  EXPECT_EQ(low, high);
  // The copies carry the whole record.
  std::vector<CGlycan> found = table.FindGlycans(100.0, 0.5);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].mass, 100.0);
  EXPECT_EQ(found[0].counts.size(), 5u);
}

TEST(MassTable, SetEntryAndLookupsWithMissingKeys) {
  CMassTable table;
  table.SetEntry(0, "N", 114.042927);
  table.SetEntry(1, "H2O", 18.010565);
  table.SetEntry(2, "Oxidation[M]", 15.994915);
  table.SetEntry(3, "5-2-0-0-0", 1216.422863);
  table.SetEntry(4, "ignored", 1.0);
  table.SetEntry(-1, "ignored", 1.0);
  EXPECT_EQ(table.AminoAcid('N'), 114.042927);
  EXPECT_EQ(table.AminoAcid("N"), 114.042927);
  EXPECT_EQ(table.Molecule("H2O"), 18.010565);
  EXPECT_EQ(table.Modification("Oxidation[M]"), 15.994915);
  EXPECT_EQ(table.Glyco("5-2-0-0-0"), 1216.422863);
  EXPECT_EQ(table.AminoAcid('Z'), 0.0);
  EXPECT_EQ(table.AminoAcid('\xff'), 0.0);
  EXPECT_EQ(table.AminoAcid("Z"), 0.0);
  EXPECT_EQ(table.Molecule("Proton"), 0.0);
  EXPECT_EQ(table.Modification("oxidation[M]"), 0.0);
  EXPECT_EQ(table.Glyco("5-2"), 0.0);
  EXPECT_EQ(table.aminoAcids.size() + table.molecules.size() + table.modifications.size() +
                table.glycanMasses.size(),
            4u);
  table.SetEntry(0, "N", 115.0);  // overwrite reaches the letter lookup too
  EXPECT_EQ(table.AminoAcid('N'), 115.0);
  table.ClearEntries(0);
  EXPECT_EQ(table.AminoAcid('N'), 0.0);
  EXPECT_TRUE(table.aminoAcids.empty());
}

TEST(MassTableFile, LoadFillsTablesAndSortedGlycans) {
  testutil::TempDir dir;
  testutil::WriteFile(dir / "m.ini",
                      "; comment\r\n[AA]\r\nG = 57.021464\r\nA=71.03711\r\nB = abc\r\n"
                      "[Molecule]\nH2O = 18.0105647 ; water\nProton = 1.00727647\n"
                      "[Glyco]\n5-2-0-0-0 = 1216.42286\n3-2-0-0-0 = 892.317\n"
                      "5-4-2-0-1 = 2350.83\n[Other]\nx = y\n");
  CMassTable table;
  table.SetEntry(2, "Kept[K]", 1.5);  // no Modification section: the map stays
  CMassTableFile file;
  file.filename = dir / "m.ini";
  file.Load(table);
  EXPECT_EQ(table.AminoAcid('G'), 57.021464);
  EXPECT_EQ(table.AminoAcid('A'), 71.03711);
  EXPECT_EQ(table.AminoAcid('B'), 0.0);  // not a number reads as 0
  EXPECT_EQ(table.aminoAcids.count("B"), 1u);
  EXPECT_EQ(table.Molecule("H2O"), 18.0105647);
  EXPECT_EQ(table.Molecule("Proton"), 1.00727647);
  EXPECT_EQ(table.Modification("Kept[K]"), 1.5);
  EXPECT_EQ(table.Glyco("3-2-0-0-0"), 892.317);
  EXPECT_EQ(Names(table.glycans),
            (std::vector<std::string>{"3-2-0-0-0", "5-2-0-0-0", "5-4-2-0-1"}));
  EXPECT_TRUE(table.glycans[2].hasNeuAc);
}

TEST(MassTableFile, LoadWithoutGlycoFindsNothingAndEmptiesOnlyPresentSections) {
  testutil::TempDir dir;
  testutil::WriteFile(dir / "m.ini", "[AA]\nK = 128.094963\n");
  CMassTable table;
  table.SetEntry(0, "G", 57.0);
  table.SetEntry(1, "Proton", 1.0);
  CMassTableFile file;
  file.filename = dir / "m.ini";
  file.Load(table);
  EXPECT_EQ(table.AminoAcid('G'), 0.0);  // the AA section replaced the old letters
  EXPECT_EQ(table.AminoAcid('K'), 128.094963);
  EXPECT_EQ(table.Molecule("Proton"), 1.0);
  EXPECT_TRUE(table.glycans.empty());
  EXPECT_TRUE(table.FindGlycans(1000.0, 1000.0).empty());
}

TEST(MassTableFile, SaveRewritesMassesAndKeepsGlycoAsRead) {
  testutil::TempDir dir;
  testutil::WriteFile(dir / "m.ini",
                      "[Glyco]\n5-2-0-0-0 = 1216.42286\n3-2-0-0-0 = 892.317000\n"
                      "[AA]\nG = 57.021464\nA = 71.03711\n"
                      "[Modification]\nOxidation[M] = 15.994915\nDeamidated[N] = 0.984016\n"
                      "[Molecule]\nH2O = 18.0105647\nProton = 1.00727647\n[Other]\nx = y\n");
  CMassTable table;
  CMassTableFile file;
  file.filename = dir / "m.ini";
  file.Load(table);
  table.SetEntry(2, "M[147]", 15.9949);
  table.SetEntry(2, "Oxidation[M]", 16.0);
  table.SetEntry(3, "9-2-0-0-0", 1864.634);  // Glyco is never rewritten
  file.Save(table);
  EXPECT_EQ(testutil::ReadFile(dir / "m.ini"),
            "[Glyco]\n3-2-0-0-0 = 892.317000\n5-2-0-0-0 = 1216.42286\n"
            "[AA]\nA = 71.03711\nG = 57.02146\n"
            "[Modification]\nDeamidated[N] = 0.98402\nM[147] = 15.99490\nOxidation[M] = 16.00000\n"
            "[Molecule]\nH2O = 18.01056\nProton = 1.00728\n[Other]\nx = y\n");
  // A later load sees the change.
  CMassTable again;
  CMassTableFile reread;
  reread.filename = dir / "m.ini";
  reread.Load(again);
  EXPECT_EQ(again.Modification("M[147]"), 15.9949);
  EXPECT_EQ(again.glycans.size(), 2u);
}

TEST(MassTableFile, SaveDoesNotCreateMissingSections) {
  testutil::TempDir dir;
  testutil::WriteFile(dir / "m.ini", "[AA]\nG = 57.021464\n");
  CMassTable table;
  CMassTableFile file;
  file.filename = dir / "m.ini";
  file.Load(table);
  table.SetEntry(2, "N[115]", 0.984016);
  table.SetEntry(1, "Proton", 1.00727647);
  file.Save(table);
  EXPECT_EQ(testutil::ReadFile(dir / "m.ini"), "[AA]\nG = 57.02146\n");
}

TEST(MassTableFileDeathTest, UnreadableFileEndsTheProgram) {
  testutil::TempDir dir;
  CMassTable table;
  CMassTableFile file;
  file.filename = dir / "absent.ini";
  EXPECT_EXIT(file.Load(table), ::testing::ExitedWithCode(255), "");
}

// The mass table shipped beside the program.
TEST(ShippedMassTable, LoadsWithResiduesMoleculesModificationsAndGlycans) {
  CMassTable table;
  CMassTableFile file;
  file.filename = QUORIN_SOURCE_DIR "/data/MassTable.ini";
  file.Load(table);
  for (char residue : std::string("ACDEFGHIKLMNPQRSTVWYJ"))
    EXPECT_GT(table.AminoAcid(residue), 50.0) << residue;
  EXPECT_EQ(table.AminoAcid('J'), table.AminoAcid('N'));
  EXPECT_EQ(table.AminoAcid('G'), 57.021464);
  EXPECT_EQ(table.Molecule("H2O"), 18.010565);
  EXPECT_EQ(table.Molecule("Proton"), 1.00727647);
  EXPECT_EQ(table.Modification("Deamidated[N]"), 0.984016);
  EXPECT_EQ(table.Modification("N[115]"), 0.984016);
  EXPECT_EQ(table.Modification("Carbamidomethyl[C]"), 57.021464);
  EXPECT_EQ(table.Modification("C[160]"), 57.021464);
  EXPECT_EQ(table.Modification("Oxidation[M]"), 15.994915);
  EXPECT_EQ(table.Modification("M[147]"), 15.994915);
  EXPECT_EQ(table.Modification("Lys6[K]"), 6.020129);
  EXPECT_EQ(table.Modification("Arg10[R]"), 10.008269);

  ASSERT_GE(table.glycans.size(), 150u);
  EXPECT_EQ(table.glycanMasses.size(), table.glycans.size());
  std::set<std::vector<int>> compositions;
  const double residue[5] = {162.052824, 203.079373, 291.095417, 307.090331, 146.057909};
  const char* names[5] = {"Hex", "HexNAc", "NeuAc", "NeuGc", "dHex"};
  for (std::size_t i = 0; i < table.glycans.size(); ++i) {
    const CGlycan& g = table.glycans[i];
    if (i > 0) {
      EXPECT_LE(table.glycans[i - 1].mass, g.mass);
    }
    double sum = 0.0;
    std::vector<int> counts;
    for (int p = 0; p < 5; ++p) {
      sum += residue[p] * g.counts.at(names[p]);
      counts.push_back(g.counts.at(names[p]));
    }
    EXPECT_NEAR(g.mass, sum, 1e-6) << g.name;
    EXPECT_TRUE(compositions.insert(counts).second) << "duplicate composition " << g.name;
  }
  // High-mannose series and a sialylated, core-fucosylated biantennary glycan.
  for (const char* key : {"3-2-0-0-0", "5-2-0-0-0", "9-2-0-0-0", "5-4-2-0-1", "5-4-0-2-0"})
    EXPECT_GT(table.Glyco(key), 0.0) << key;
  EXPECT_NEAR(table.Glyco("5-4-2-0-1"), 2350.830355, 1e-9);
}

}  // namespace
