// motifs_across_cleavage through the real program: a site whose sequon is
// completed by the residue after the peptide (...NK|S...) becomes a whole site
// only with the key, and its glycopeptide is found only then.
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "common/TestUtil.h"
#include "construction/ConstructionFixtures.h"

namespace {

using testutil::Fields;
using testutil::ReadFile;
using testutil::ReadLines;
using testutil::WriteFile;

// Unique: LAGVENK is followed by S in its only protein. Differing: VVDGYNR is
// followed by T in one protein and A in another. Missing: FFQDNK is in none.
const char* const kProteins = ">P1\nMSTRLAGVENKSAEQR\n>P2\nMKVVDGYNRTAA\n>P3\nMKVVDGYNRAAA\n";
const char* const kGlycan = "5-2-0-0-0";  // 1216.42286 in the test mass table
constexpr double kGlycanMass = 1216.42286;

double Residues(const std::string& s, std::size_t from, std::size_t to) {
  double sum = 0.0;
  for (std::size_t i = from; i < to; ++i) sum += fixtures::Mass(s[i]);
  return sum;
}

std::string PeakLines(const std::vector<std::pair<double, double>>& peaks) {
  std::string text;
  for (const auto& [mz, intensity] : peaks) text += std::to_string(mz) + " " + std::to_string(intensity) + "\n";
  return text;
}

std::string MgfBlock(const std::string& title, double mh, const std::string& peaks) {
  const double mz = (mh + fixtures::kProton) / 2;  // charge 2
  return "BEGIN IONS\nTITLE=" + title + "\nCHARGE=2+\nPEPMASS=" + std::to_string(mz) + "\n" + peaks +
         "END IONS\n\n";
}

// b and y ions of charge 1 of `sequence`, the N at `deamidated` (1-based, 0 for
// none) 0.984 heavier.
std::vector<std::pair<double, double>> Fragments(const std::string& sequence, std::size_t deamidated) {
  std::vector<std::pair<double, double>> peaks;
  const std::size_t n = sequence.size();
  auto extra = [&](std::size_t from, std::size_t to) {
    return deamidated > from && deamidated <= to ? fixtures::kDeamidated : 0.0;
  };
  for (std::size_t k = 2; k < n; ++k) {
    peaks.push_back({Residues(sequence, 0, k) + extra(0, k) + fixtures::kProton, 50.0});
    peaks.push_back({Residues(sequence, n - k, n) + extra(n - k, n) + fixtures::kH2O + fixtures::kProton, 80.0});
  }
  return peaks;
}

double PeptideMH(const std::string& sequence) {
  return Residues(sequence, 0, sequence.size()) + fixtures::kH2O + fixtures::kProton;
}

struct CleavageRun {
  testutil::TempDir dir;
  std::string program = testutil::InstallProgram(dir.path().string());

  CleavageRun() {
    WriteFile(dir / "MassTable.ini", fixtures::MassTableText());
    WriteFile(dir / "proteins.fasta", kProteins);
    std::string list = "Spectrum\tCharge\tSequence\tModification\n", library;
    int scan = 0;
    for (const std::string sequence : {"LAGVENK", "VVDGYNR", "FFQDNK"}) {
      ++scan;
      const std::string title = "lib." + std::to_string(scan) + "." + std::to_string(scan) + ".2";
      const std::size_t site = sequence.size() - 1;
      list += title + "\t2\t" + sequence + "\t" + std::to_string(site) + ",N(Deamidated[N]);\n";
      library += MgfBlock(title, PeptideMH(sequence) + fixtures::kDeamidated, PeakLines(Fragments(sequence, site)));
    }
    WriteFile(dir / "ids.txt", list);
    WriteFile(dir / "lib.mgf", library);
    // The intact glycopeptide of LAGVENK: marker, Y0 and Y1, b and y ions that lost the glycan.
    std::vector<std::pair<double, double>> peaks = {{138.05495, 100.0}, {204.08665, 60.0}};
    peaks.push_back({PeptideMH("LAGVENK"), 40.0});
    peaks.push_back({PeptideMH("LAGVENK") + 203.07937, 40.0});
    for (const auto& peak : Fragments("LAGVENK", 0)) peaks.push_back(peak);
    std::sort(peaks.begin(), peaks.end());
    WriteFile(dir / "glyco.mgf", MgfBlock("glyco.1.1.2", PeptideMH("LAGVENK") + kGlycanMass, PeakLines(peaks)));
  }

  testutil::RunResult Run(const std::string& key) {
    WriteFile(dir / "run.ini",
              "[construction]\nconstruction = yes\nmodification_remove = Deamidated[N]\n"
              "identification_format = tab-txt\nidentification_number = 1\nidentification_filename_1 = ids.txt\n"
              "library_dataset_number = 1\nlibrary_dataset_format = mgf\nlibrary_dataset_pathname_1 = lib.mgf\n"
              "library_product_ion_unit = da\nlibrary_product_ion_tolerance = 0.02\ntheta = 0.3\n"
              "output_speclib_filename = lib.quolib\nadded_Y_ions = Y0,Y1\nY_ion_relative_intensity = 0.5\n"
              "N_glycan_motifs = NXS,NXT\nprotein_database = proteins.fasta\n" + key +
              "[search]\nsearch = yes\ninput_speclib_filename = lib.quolib\nquery_dataset_number = 1\n"
              "query_dataset_format = mgf\nquery_dataset_pathname_1 = glyco.mgf\n"
              "query_precursor_ion_unit = ppm\nquery_precursor_ion_tolerance = 10\n"
              "query_product_ion_unit = da\nquery_product_ion_tolerance = 0.02\n"
              "output_result_filename = result.txt\nminimal_peptide_ions = 2\n");
    return testutil::RunProgram(program, "", dir.path().string(), {"run", dir / "run.ini"});
  }

  // Sequence, modifications, residues after and motifs of each target entry.
  std::vector<std::string> Targets() const {
    std::vector<std::string> entries, fields;
    bool decoy = false;
    for (const std::string& line : ReadLines(dir / "lib.quolib")) {
      if (line.rfind("SpectrumName=", 0) == 0) decoy = line.find("Decoy_") != std::string::npos;
      if (decoy) continue;
      for (const char* key : {"Sequence=", "Modifications=", "LastAA="})
        if (line.rfind(key, 0) == 0) fields.push_back(line.substr(std::string(key).size()));
      if (line.rfind("N Glycan Motif=", 0) == 0) {
        entries.push_back(fields[0] + " " + fields[1] + " " + fields[2] + " " + line.substr(15));
        fields.clear();
      }
    }
    return entries;
  }

  // GlycoLoc and Motif of the result lines naming LAGVENK's site, with the glycan.
  std::vector<std::string> Hits() const {
    std::vector<std::string> hits;
    const std::vector<std::string> lines = ReadLines(dir / "result.txt");
    for (std::size_t i = 1; i < lines.size(); ++i) {
      const std::vector<std::string> f = Fields(lines[i]);
      if (f.at(5) == "LAGVEJK") hits.push_back(f.at(9) + " " + f.at(10) + " " + f.at(11));
    }
    return hits;
  }
};

TEST(MotifsAcrossCleavage, SequonAfterThePeptideIsASiteOnlyWithTheKey) {
  CleavageRun run;
  // Without the key the sequon is incomplete: the mark's mass stays and the
  // glycopeptide never matches.
  testutil::RunResult plain = run.Run("");
  ASSERT_EQ(plain.exitCode, 0) << plain.output;
  EXPECT_EQ(run.Targets(), (std::vector<std::string>{"LAGVEJK 6,Deamidated[N];  6:NX",
                                                     "VVDGYJR 6,Deamidated[N];  6:NX",
                                                     "FFQDJK 5,Deamidated[N];  5:NX"}));
  EXPECT_TRUE(run.Hits().empty());
  EXPECT_EQ(plain.output.find("FASTA"), std::string::npos) << plain.output;

  testutil::RunResult keyed = run.Run("motifs_across_cleavage = YES\n");
  ASSERT_EQ(keyed.exitCode, 0) << keyed.output;
  // The peptide with one protein place is a whole site; the two others stay as listed.
  EXPECT_EQ(run.Targets(), (std::vector<std::string>{"LAGVEJK - SA 6:NXS",
                                                     "VVDGYJR 6,Deamidated[N];  6:NX",
                                                     "FFQDJK 5,Deamidated[N];  5:NX"}));
  EXPECT_EQ(run.Hits(), (std::vector<std::string>{std::string(kGlycan) + " 6 NXS"}));
  for (const char* row : {"peptides placed in the FASTA file             1",
                          "peptides not in the FASTA file                1",
                          "peptides placed ambiguously                   1"})
    EXPECT_NE(keyed.output.find(row), std::string::npos) << row << "\n" << keyed.output;
  const std::string summary = testutil::ReadFile(run.dir / "result_summary.json");
  EXPECT_NE(summary.find("\"peptides_placed_in_fasta\":1"), std::string::npos) << summary;

  // The key needs the proteins: without them the run stops before any library is written.
  std::filesystem::remove(run.dir / "proteins.fasta");
  std::filesystem::remove(run.dir / "lib.quolib");
  testutil::RunResult missing = run.Run("motifs_across_cleavage = yes\n");
  EXPECT_EQ(missing.exitCode, 1) << missing.output;
  EXPECT_NE(missing.output.find("protein_database"), std::string::npos) << missing.output;
  EXPECT_FALSE(testutil::FileExists(run.dir / "lib.quolib"));
}

// The generator's site traps: the truth names a sequon of the peptide as the
// site, the lists leave some occupied sites unmarked, and a glycopeptide whose
// sequon spans the cleavage is found right (peptide, glycan, site) only with the key.
TEST(MotifsAcrossCleavage, GeneratedSiteTrapsAndCrossCleavageGlycopeptides) {
  testutil::TempDir dir;
  const std::string bin = dir / "bin", data = dir / "data";
  std::filesystem::create_directories(bin);
  const std::string exe = testutil::InstallProgram(bin);
  ASSERT_EQ(testutil::RunProgram(QUORIN_DATAGEN, "", ".",
                                 {"sites", data, "--peptides", "300", "--queries", "3000", "--seed", "5",
                                  "--masstable", bin + "/MassTable.ini"})
                .exitCode, 0);
  std::string proteins;
  for (const std::string& line : ReadLines(data + "/sites_proteins.fasta"))
    if (line.rfind('>', 0) != 0) proteins += line;
  std::map<std::string, std::vector<std::string>> cross;  // query: its truth line
  int unmarkedSites = 0;
  for (const std::string& line : ReadLines(data + "/truth.tsv")) {
    const std::vector<std::string> t = Fields(line);
    if (t.size() != 12 || t[6] == "0" || t[6] == "Site") continue;
    const std::string site = t[6], sequons = ";" + t[9] + ";", marked = ";" + t[10] + ";";
    EXPECT_NE(sequons.find(";" + site + ";"), std::string::npos) << line;
    if (t[8] == "yes" && marked.find(";" + site + ";") == std::string::npos) ++unmarkedSites;
    if (t[11] != "yes") continue;
    EXPECT_EQ(site, std::to_string(t[2].size() - 1)) << line;
    if (t[8] == "yes") {
      const std::size_t at = proteins.find(t[2]);
      ASSERT_NE(at, std::string::npos) << line;
      EXPECT_NE(std::string("ST").find(proteins.at(at + t[2].size())), std::string::npos) << line;
      cross[t[0]] = t;
    }
  }
  EXPECT_GT(unmarkedSites, 20);
  ASSERT_GT(cross.size(), 40u);

  // Right lines of those queries at FDR <= 1 %, with the key or without.
  auto found = [&](const std::string& key) {
    std::string conf = ReadFile(data + "/sites.conf");
    conf.replace(conf.find("[search]"), 8, key + "[search]");
    testutil::WriteFile(data + "/run.conf", conf);
    const testutil::RunResult run = testutil::RunProgram(exe, "", ".", {"run", data + "/run.conf"});
    EXPECT_EQ(run.exitCode, 0) << run.output;
    int right = 0;
    for (const std::string& line : ReadLines(data + "/sites_result.txt")) {
      const std::vector<std::string> f = Fields(line);
      const auto t = cross.find(f[0]);
      if (t == cross.end() || f.size() != 28 || std::atof(f[27].c_str()) > 0.01) continue;
      std::string sequence = f[5];
      std::replace(sequence.begin(), sequence.end(), 'J', 'N');
      right += sequence == t->second[2] && f[6] == t->second[7] && f[9] == t->second[4] && f[10] == t->second[6];
    }
    return right;
  };
  EXPECT_EQ(found(""), 0);
  const int keyed = found("motifs_across_cleavage = yes\n");
  EXPECT_GT(keyed * 2, static_cast<int>(cross.size())) << keyed << " of " << cross.size();
}

}  // namespace
