// Construction, search and FDR in one run of the installed program, on a
// dataset small enough to follow by hand: one glycopeptide, one query.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <utility>
#include <string>
#include <vector>

#include "common/TestUtil.h"
#include "construction/ConstructionFixtures.h"
#include "run/StringUtil.h"

namespace {

// LLNGTEPR with the site at 3, masses of the fixture table: b2 to b6, y2 to y6.
const std::vector<double> kFragments = {227.1754,  341.21833, 398.23979, 499.28747, 628.33006,
                                        272.17171, 401.2143,  502.26198, 559.28344, 673.32637};
const std::vector<bool> kHoldsSite = {false, true, true, true, true, false, false, false, false, true};
constexpr double kPeptideMH = 899.49449;
constexpr double kGlycan = 1216.42286;  // 5-2-0-0-0
constexpr double kMgfProton = 1.00727647012;

std::string Number(double value) {
  char text[64];
  std::snprintf(text, sizeof text, "%.5f", value);
  return text;
}

std::string Block(const std::string& title, double mh, const std::vector<double>& mz,
                  const std::vector<double>& intensity) {
  std::string block = "BEGIN IONS\nTITLE=" + title + "\nCHARGE=2+\nPEPMASS=" +
                      Number((mh - kMgfProton) / 2 + kMgfProton) + "\n";
  for (std::size_t i = 0; i < mz.size(); ++i)
    block += Number(mz[i]) + " " + Number(intensity[i]) + "\n";
  return block + "END IONS\n";
}

}  // namespace

TEST(PipelineRun, LibraryHitOfOneGlycopeptideQuery) {
  testutil::TempDir dir;
  const std::string program = testutil::InstallProgram(dir.path().string());
  testutil::WriteFile(dir / "MassTable.ini", fixtures::MassTableText());

  testutil::WriteFile(dir / "ids.txt",
                      "Spectrum\tCharge\tSequence\tModification\n"
                      "lib1.1.1.2\t2\tLLNGTEPR\t3,N(Deamidated[N]);\n"
                      "lib1.2.2.2\t2\tLLNGTEPR\t3,N(Deamidated[N]);\n");
  // Library spectra of the deamidated peptide: the fragments that hold
  // residue 3 carry the mark's mass, which the entry loses again.
  std::vector<double> libMz;
  std::vector<double> libIntensity;
  for (std::size_t i = 0; i < kFragments.size(); ++i) {
    libMz.push_back(kFragments[i] + (kHoldsSite[i] ? fixtures::kDeamidated : 0.0));
    libIntensity.push_back(100.0 + 10.0 * i);
  }
  testutil::WriteFile(dir / "lib1.mgf",
                      Block("lib1.1.1.2", kPeptideMH + fixtures::kDeamidated, libMz, libIntensity) +
                          Block("lib1.2.2.2", kPeptideMH + fixtures::kDeamidated, libMz,
                                libIntensity));

  // The query: marker oxonium ion, the peptide's fragments, its Y1 ion, in
  // ascending m/z as instruments write them.
  std::vector<std::pair<double, double>> query = {{138.054953, 1000.0},
                                                  {kPeptideMH + 203.0794, 300.0}};
  for (std::size_t i = 0; i < kFragments.size(); ++i)
    query.push_back({kFragments[i] + 0.003, 200.0 + 20.0 * i});
  std::sort(query.begin(), query.end());
  std::vector<double> queryMz;
  std::vector<double> queryIntensity;
  for (const auto& [mz, intensity] : query) {
    queryMz.push_back(mz);
    queryIntensity.push_back(intensity);
  }
  testutil::WriteFile(dir / "q1.mgf",
                      Block("q1.1.1.2", kPeptideMH + kGlycan, queryMz, queryIntensity));

  testutil::WriteFile(dir / "run.ini",
                      "[construction]\n"
                      "construction = yes\nmodification_remove = Deamidated[N]\n"
                      "identification_format = tab-txt\nidentification_number = 1\n"
                      "identification_filename_1 = ids.txt\nlibrary_dataset_number = 1\n"
                      "library_dataset_format = mgf\nlibrary_dataset_pathname_1 = lib1.mgf\n"
                      "library_product_ion_unit = da\nlibrary_product_ion_tolerance = 0.05\n"
                      "theta = 0.3\noutput_speclib_filename = lib.quolib\n"
                      "added_Y_ions = Y0,Y1,Y2\nY_ion_relative_intensity = 0.5\n"
                      "N_glycan_motifs = NXS,NXT\nprotein_database = none.fasta\n"
                      "[search]\n"
                      "search = yes\ninput_speclib_filename = lib.quolib\n"
                      "query_dataset_number = 1\nquery_dataset_format = mgf\n"
                      "query_dataset_pathname_1 = q1.mgf\n"
                      "query_precursor_ion_unit = da\nquery_precursor_ion_tolerance = 0.05\n"
                      "query_product_ion_unit = da\nquery_product_ion_tolerance = 0.02\n"
                      "output_result_filename = result.txt\nminimal_peptide_ions = 2\n");

  const testutil::RunResult result =
      testutil::RunProgram("timeout", "run.ini\n", dir.path().string(), {"120", program});
  ASSERT_EQ(result.exitCode, 0) << result.output;
  EXPECT_NE(result.output.find("    --- Complete!"), std::string::npos);
  EXPECT_NE(result.output.find(">> Estimating FDR."), std::string::npos);
  EXPECT_NE(result.output.find("Finish!"), std::string::npos);

  const std::vector<std::string> lines = testutil::ReadLines(dir / "result.txt");
  ASSERT_EQ(lines.size(), 2u) << result.output;
  EXPECT_EQ(lines[0].rfind("QuerySpecName\tLibSpecName\t", 0), 0u);
  std::vector<std::string> columns;
  Split(lines[1], "\t", columns);
  ASSERT_GE(columns.size(), 21u);
  EXPECT_EQ(columns[0], "q1.1.1.2");
  EXPECT_EQ(columns[1], "1");  // the target, not its decoy
  EXPECT_EQ(columns[3], Number(kPeptideMH));
  EXPECT_EQ(columns[5], "LLJGTEPR");
  EXPECT_EQ(columns[6], "-");
  EXPECT_EQ(columns[9], "5-2-0-0-0");
  EXPECT_EQ(columns[20], "T");
  EXPECT_EQ(columns.back(), "0.000");  // FDR of the one target hit
  EXPECT_FALSE(testutil::FileExists(dir / "result.txt.tmp"));
}
