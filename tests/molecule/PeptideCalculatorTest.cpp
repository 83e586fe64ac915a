#include <gtest/gtest.h>

#include "molecule/PeptideCalculator.h"

namespace {

constexpr double kP = 97.052764, kE = 129.042593, kT = 101.047679, kI = 113.084064,
                 kD = 115.026943, kN = 114.042927, kM = 131.040485;
constexpr double kWater = 18.010565, kProton = 1.00727647, kOx = 15.994915, kAc = 42.010565;

CPeptideCalculator Calculator() {
  CPeptideCalculator calc;
  for (auto [letter, mass] : {std::pair{"P", kP}, {"E", kE}, {"T", kT}, {"I", kI}, {"D", kD},
                              {"N", kN}, {"J", kN}, {"M", kM}})
    calc.massTable.SetEntry(0, letter, mass);
  calc.massTable.SetEntry(1, "H2O", kWater);
  calc.massTable.SetEntry(1, "Proton", kProton);
  calc.massTable.SetEntry(2, "Oxidation[M]", kOx);
  calc.massTable.SetEntry(2, "Deamidated[N]", 0.984016);
  calc.massTable.SetEntry(2, "Acetyl[N-term]", kAc);
  return calc;
}

TEST(PeptideCalculator, PrecursorAndFragments) {
  CPeptideCalculator calc = Calculator();
  ASSERT_TRUE(calc.SetPeptide("PEPTIDE", {}));
  EXPECT_NEAR(calc.PeptideMH(), 800.36724147, 1e-9);
  EXPECT_NEAR(calc.FragmentMz(0, 2, 1), 227.10263347, 1e-9);  // b2: no water
  // y3 holds the last three residues and water; any type but 0 is y.
  EXPECT_NEAR(calc.FragmentMz(1, 3, 2), (kI + kD + kE + kWater + 2 * kProton) / 2, 1e-9);
  EXPECT_NEAR(calc.FragmentMz(7, 3, 1), kI + kD + kE + kWater + kProton, 1e-9);

  // Positions 0 and 1 both land on the first residue, so b1 holds both; a
  // position past the end lands on the last residue, a negative one on the first.
  ASSERT_TRUE(calc.SetPeptide("MEJT", {{0, "Acetyl[N-term]"}, {1, "Oxidation[M]"},
                                       {3, "Deamidated[N]"}, {9, "Oxidation[M]"}}));
  EXPECT_NEAR(calc.FragmentMz(0, 1, 1), kM + kAc + kOx + kProton, 1e-9);
  EXPECT_NEAR(calc.FragmentMz(0, 3, 1), kM + kAc + kOx + kE + kN + 0.984016 + kProton, 1e-9);
  EXPECT_NEAR(calc.FragmentMz(1, 1, 1), kT + kOx + kWater + kProton, 1e-9);
  ASSERT_TRUE(calc.SetPeptide("PET", {{-4, "Oxidation[M]"}}));
  EXPECT_NEAR(calc.FragmentMz(0, 1, 1), kP + kOx + kProton, 1e-9);

  // Missing residues, modifications, water and proton count 0.0.
  ASSERT_TRUE(calc.SetPeptide("PXE", {{2, "Unknown[X]"}}));
  EXPECT_NEAR(calc.PeptideMH(), kP + kE + kWater + kProton, 1e-9);
  CPeptideCalculator bare;
  bare.massTable.SetEntry(0, "P", kP);
  ASSERT_TRUE(bare.SetPeptide("PP", {}));
  EXPECT_EQ(bare.PeptideMH(), 2 * kP);
  EXPECT_EQ(bare.FragmentMz(1, 1, 2), kP / 2);
}

TEST(PeptideCalculator, EdgeLengths) {
  CPeptideCalculator calc = Calculator();
  ASSERT_TRUE(calc.SetPeptide("", {{0, "Oxidation[M]"}}));
  EXPECT_NEAR(calc.PeptideMH(), kWater + kProton, 1e-12);
  std::string longest(CPeptideCalculator::kMaxLength, 'P');
  ASSERT_TRUE(calc.SetPeptide(longest, {{8192, "Oxidation[M]"}, {9000, "Oxidation[M]"}}));
  EXPECT_NEAR(calc.FragmentMz(1, 1, 1), kP + 2 * kOx + kWater + kProton, 1e-9);
  EXPECT_NEAR(calc.FragmentMz(1, 9000, 1), calc.PeptideMH(), 1e-6);  // held to the peptide
  // One residue over the limit: refused, and the calculator holds an empty peptide.
  EXPECT_FALSE(calc.SetPeptide(longest + "P", {{8193, "Oxidation[M]"}}));
  EXPECT_EQ(calc.length, 0u);
  EXPECT_NEAR(calc.PeptideMH(), kWater + kProton, 1e-12);
  ASSERT_TRUE(calc.SetPeptide("PE", {}));  // usable again afterwards
  EXPECT_NEAR(calc.PeptideMH(), kP + kE + kWater + kProton, 1e-9);
}

}  // namespace
