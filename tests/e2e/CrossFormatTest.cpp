// The same identifications written in each of the six list formats, and the same
// spectra as MGF, DTA files and DTAS, must give the library of the tab-txt route;
// the same queries as MGF, DTA and DTAS must give the same result file.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "e2e/FormatWriters.h"

namespace {

using namespace xfmt;
using testutil::TempDir;

const std::vector<std::string> kMods = {"Carbamidomethyl[C]", "Deamidated[N]", "Oxidation[M]"};
const CStyle kUnimod{".dta", {}};
const CStyle kPepXml{".dta", {{"Deamidated[N]", "N[115]"}, {"Carbamidomethyl[C]", "C[160]"}, {"Oxidation[M]", "M[147]"}}};
const CStyle kMaxQuant{"", {{"Deamidated[N]", "Deamidation[N]"}}};

struct CDataset {
  std::string format;
  std::vector<std::string> paths;
};

struct CBuild {
  testutil::RunResult run;
  std::string library, companion;
};

using CEntry = std::vector<std::string>;

std::vector<CEntry> Entries(const std::string& library) {
  std::vector<CEntry> entries(1);
  for (const std::string& line : Cut(library, '\n'))
    if (!line.empty()) entries.back().push_back(line);
    else if (!entries.back().empty()) entries.emplace_back();
  if (entries.back().empty()) entries.pop_back();
  return entries;
}

std::string Field(const CEntry& entry, const std::string& key) {
  for (const std::string& line : entry)
    if (line.rfind(key + "=", 0) == 0) return line.substr(key.size() + 1);
  return "<none>";
}

// Target entries without the four fields that only a protein database fills.
std::vector<CEntry> TargetsWithoutFlanks(const std::string& library) {
  std::vector<CEntry> targets;
  for (const CEntry& entry : Entries(library)) {
    if (Field(entry, "SpectrumName").rfind("Decoy_", 0) == 0) continue;
    targets.emplace_back();
    for (const std::string& line : entry)
      if (line.rfind("ProteinAC=", 0) && line.rfind("PrevAA=", 0) && line.rfind("LastAA=", 0) &&
          line.rfind("StartPostion=", 0))
        targets.back().push_back(line);
  }
  return targets;
}

class CrossFormatTest : public ::testing::Test {
 protected:
  // One small generated dataset for the whole suite, written in every format.
  static void SetUpTestSuite() {
    dir_ = new TempDir();
    const std::string data = Path("data");
    generator_ = testutil::RunProgram(QUORIN_DATAGEN, "", ".",
                                      {"demo", data, "--peptides", "6", "--queries", "10", "--masstable",
                                       std::string(QUORIN_SOURCE_DIR) + "/data/MassTable.ini"});
    if (generator_.exitCode != 0) return;
    ids_ = ReadTabTxt(data + "/lib_ids.txt");
    CMassTableFile file;
    file.filename = std::string(QUORIN_SOURCE_DIR) + "/data/MassTable.ini";
    file.Load(table_);
    std::string accession;
    for (const std::string& line : testutil::ReadLines(data + "/demo_proteins.fasta"))
      if (line[0] == '>') accession = line.substr(1, line.find(' ') - 1);
      else proteins_[accession] += line;
    // The generator's unmarked peptides come from no protein; Lanvek needs one.
    for (const CIdent& id : ids_)
      if (std::none_of(proteins_.begin(), proteins_.end(),
                       [&](const auto& p) { return p.second.find(id.sequence) != std::string::npos; }))
        proteins_["sp|XF0001|EXTRA"] += "K" + id.sequence;
    std::string fasta;
    for (const auto& [ac, residues] : proteins_) fasta += ">" + ac + " test protein\n" + residues + "\n";
    testutil::WriteFile(Path("proteins.fasta"), fasta);
    for (const std::string run : {"lib_run1", "lib_run2", "glyco_run1"}) {
      const auto blocks = ReadMgf(data + "/" + run + ".mgf");
      WriteMgf(blocks, ".dta", Path(run + ".mgf"));
      WriteDtaDirectory(blocks, ".dta", Path(run + ".dir"));
      WriteDtas(blocks, ".dta", Path(run + ".dtas"));
    }
  }
  static void TearDownTestSuite() { delete dir_; }

  void SetUp() override { ASSERT_EQ(generator_.exitCode, 0) << generator_.output; }

  static std::string Path(const std::string& name) { return *dir_ / name; }

  // The library datasets in one format; MGF keeps the generator's titles when
  // the names have no suffix.
  static CDataset Library(const std::string& format, const std::string& suffix) {
    const std::string ext = format == "dta" ? ".dir" : "." + format;
    const std::string folder = suffix.empty() ? "data/" : "";
    return {format, {Path(folder + "lib_run1" + ext), Path(folder + "lib_run2" + ext)}};
  }

  static std::string Run(const std::string& construction, const std::string& search, testutil::RunResult& run,
                         TempDir& install) {
    const std::string program = testutil::InstallProgram(install.path().string());
    testutil::WriteFile(install / "run.ini", "[construction]\n" + construction + "[search]\n" + search);
    run = testutil::RunProgram("timeout", "run.ini\n", install.path().string(), {"120", program});
    return program;
  }

  // Builds a library in a fresh installation (a pepXML read rewrites its mass table).
  static CBuild Build(const std::string& format, const std::string& list, const std::string& remove,
                      const CDataset& datasets, const std::string& extraKeys = "") {
    TempDir install;
    testutil::WriteFile(install / "ids.txt", list);
    std::string config = "construction = yes\nmodification_remove = " + remove +
                         "\nidentification_format = " + format +
                         "\nprobability_threshold = 0.9\nidentification_number = 1\nidentification_filename_1 = " +
                         (install / "ids.txt") + "\nlibrary_dataset_number = 2\nlibrary_dataset_format = " +
                         datasets.format + "\n";
    for (std::size_t i = 0; i < datasets.paths.size(); ++i)
      config += "library_dataset_pathname_" + std::to_string(i + 1) + " = " + datasets.paths[i] + "\n";
    config += "library_product_ion_unit = da\nlibrary_product_ion_tolerance = 0.02\ntheta = 0.3\n"
              "output_speclib_filename = " + (install / "out.quolib") +
              "\nadded_Y_ions = Y0,Y1,Y2,Y3,Y4,Y5\nY_ion_relative_intensity = 0.5\n"
              "N_glycan_motifs = NXS,NXT\nprotein_database = " + Path("proteins.fasta") + "\n" + extraKeys;
    CBuild build;
    Run(config, "search = no\n", build.run, install);
    if (testutil::FileExists(install / "out.quolib")) build.library = testutil::ReadFile(install / "out.quolib");
    if (testutil::FileExists(install / "out_libcomp.txt"))
      build.companion = testutil::ReadFile(install / "out_libcomp.txt");
    return build;
  }

  // The tab-txt route of one style, built once.
  static const CBuild& Reference(const CStyle& style, const std::string& remove) {
    static std::map<std::string, CBuild> built;
    auto it = built.find(style.suffix + remove);
    if (it == built.end())
      it = built.emplace(style.suffix + remove,
                         Build("tab-txt", TabTxt(ids_, style), remove, Library("mgf", style.suffix))).first;
    return it->second;
  }

  static TempDir* dir_;
  static testutil::RunResult generator_;
  static std::vector<CIdent> ids_;
  static CMassTable table_;
  static std::map<std::string, std::string> proteins_;
};

TempDir* CrossFormatTest::dir_ = nullptr;
testutil::RunResult CrossFormatTest::generator_;
std::vector<CIdent> CrossFormatTest::ids_;
CMassTable CrossFormatTest::table_;
std::map<std::string, std::string> CrossFormatTest::proteins_;

TEST_F(CrossFormatTest, EveryListFormatGivesTheTabTxtLibrary) {
  std::map<std::string, std::string> accession;
  for (const CIdent& id : ids_)
    for (const auto& [ac, residues] : proteins_)
      if (residues.find(id.sequence) != std::string::npos) accession[id.sequence] = ac;
  struct CRoute {
    std::string format, list, remove;
    const CStyle& style;
  };
  // CRLF lists, and the two formats that take a last record without a line end get one.
  const std::string quorin = Crlf(Quorin(ids_, kUnimod)), maxquant = Crlf(MaxQuant(ids_, kMaxQuant, table_));
  const std::vector<CRoute> routes = {
      {"quorin", quorin.substr(0, quorin.size() - 2), "Deamidated[N]", kUnimod},
      {"Lanvek", Crlf(Lanvek(ids_, kUnimod, accession)), "Deamidated[N]", kUnimod},
      {"mascot", Crlf(Mascot(ids_, kUnimod, kMods)), "Deamidated[N]", kUnimod},
      {"pepxml", Crlf(PepXml(ids_, kPepXml, table_, kMods)), "N[115]", kPepXml},
      {"maxquant", maxquant.substr(0, maxquant.size() - 2), "Deamidation[N]", kMaxQuant},
  };
  for (const CRoute& route : routes) {
    SCOPED_TRACE(route.format);
    const CBuild& reference = Reference(route.style, route.remove);
    ASSERT_EQ(reference.run.exitCode, 0) << reference.run.output;
    // 5 marked peptides, one of them at two charges: 6 targets and their decoys.
    ASSERT_EQ(Entries(reference.library).size(), 12u) << reference.run.output;
    const CBuild build = Build(route.format, route.list, route.remove, Library("mgf", route.style.suffix));
    ASSERT_EQ(build.run.exitCode, 0) << build.run.output;
    EXPECT_EQ(build.companion, reference.companion);
    if (route.format != "Lanvek") {
      EXPECT_EQ(build.library, reference.library) << build.run.output;
    } else {
      // Lanvek knows the protein: compare the targets without it (the decoys turn
      // their sequons with the real flanking residues) and check it below.
      EXPECT_EQ(TargetsWithoutFlanks(build.library), TargetsWithoutFlanks(reference.library));
    }
    // Every format learns the residues after its peptides from the FASTA file
    // when asked, as Lanvek's own list gives them.
    const CBuild keyed = route.format == "Lanvek" ? build
                                                  : Build(route.format, route.list, route.remove,
                                                          Library("mgf", route.style.suffix),
                                                          "motifs_across_cleavage = yes\n");
    EXPECT_EQ(TargetsWithoutFlanks(keyed.library), TargetsWithoutFlanks(reference.library)) << keyed.run.output;
    for (const CEntry& entry : Entries(keyed.library)) {
      if (Field(entry, "SpectrumName").rfind("Decoy_", 0) == 0) continue;
      std::string sequence = Field(entry, "Sequence");
      for (char& c : sequence) c = c == 'J' ? 'N' : c;
      const std::string ac = accession[sequence], padded = "-" + proteins_[ac] + "--";
      const std::size_t at = padded.find(sequence);
      EXPECT_EQ(Field(entry, "LastAA"), padded.substr(at + sequence.size(), 2));
      if (route.format != "Lanvek") continue;
      EXPECT_EQ(Field(entry, "ProteinAC"), ac);
      EXPECT_EQ(Field(entry, "StartPostion"), std::to_string(at));
      EXPECT_EQ(Field(entry, "PrevAA"), padded.substr(at - 1, 1));
    }
  }
}

TEST_F(CrossFormatTest, DtaAndDtasDatasetsGiveTheMgfLibrary) {
  const CBuild& reference = Reference(kUnimod, "Deamidated[N]");
  ASSERT_EQ(reference.run.exitCode, 0) << reference.run.output;
  for (const std::string format : {"dta", "dtas"}) {
    SCOPED_TRACE(format);
    const CBuild build = Build("tab-txt", TabTxt(ids_, kUnimod), "Deamidated[N]", Library(format, ".dta"));
    ASSERT_EQ(build.run.exitCode, 0) << build.run.output;
    EXPECT_EQ(build.run.output.find("Warning"), std::string::npos) << build.run.output;
    EXPECT_EQ(build.library, reference.library);
    EXPECT_EQ(build.companion, reference.companion);
  }
}

TEST_F(CrossFormatTest, QueriesGiveTheSameResultsInEveryDatasetFormat) {
  const CBuild& reference = Reference(kUnimod, "Deamidated[N]");
  ASSERT_EQ(reference.run.exitCode, 0) << reference.run.output;
  testutil::WriteFile(Path("lib.quolib"), reference.library);
  // A directory reads the same with a trailing separator and skips files of other extensions.
  testutil::WriteFile(Path("glyco_run1.dir/notes.txt"), "1000.0 2\n138.055 100\n");
  std::map<std::string, std::string> results;
  for (const std::string format : {"mgf", "dta", "dtas"}) {
    SCOPED_TRACE(format);
    TempDir install;
    const std::string search = "search = yes\ninput_speclib_filename = " + Path("lib.quolib") +
                               "\nquery_dataset_number = 1\nquery_dataset_format = " + format +
                               "\nquery_dataset_pathname_1 = " + Path(format == "dta" ? "glyco_run1.dir/" : "glyco_run1." + format) +
                               "\nquery_precursor_ion_unit = ppm\nquery_precursor_ion_tolerance = 10\n"
                               "query_product_ion_unit = da\nquery_product_ion_tolerance = 0.02\n"
                               "output_result_filename = " + (install / "result.txt") + "\nminimal_peptide_ions = 2\n";
    testutil::RunResult run;
    Run("construction = no\n", search, run, install);
    ASSERT_EQ(run.exitCode, 0) << run.output;
    results[format] = testutil::ReadFile(install / "result.txt");
  }
  // Six of the ten queries are glycopeptides of library peptides.
  EXPECT_GE(Cut(results["mgf"], '\n').size(), 6u) << results["mgf"];
  EXPECT_EQ(results["dta"], results["mgf"]);
  EXPECT_EQ(results["dtas"], results["mgf"]);
}

}  // namespace
