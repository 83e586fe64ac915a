// Deterministic generator of the demo and benchmark datasets: a tab-txt list of
// deglycosylated glycopeptide identifications with their MGF spectra, an MGF of
// intact glycopeptide queries, the configuration that runs both stages on them,
// and truth.tsv, which says what each query really is.
//
//   quorin_datagen demo  <outdir> [--peptides N] [--queries N] [--seed N] [--masstable PATH]
//   quorin_datagen bench <outdir> [--peptides N] [--queries N] [--seed N] [--masstable PATH]
//   quorin_datagen quality <outdir> [--peptides N] [--queries N] [--seed N] [--masstable PATH]
//   quorin_datagen sites <outdir> [--peptides N] [--queries N] [--seed N] [--masstable PATH]
//
// quality makes the same library as demo, but queries of every kind that can be
// misidentified (isotope errors, isobaric glycans, peptide forms the library
// lacks, noise that passes the marker test), and asks for glycopeptide q-values.
// sites adds the traps of the glycosite: peptides with two or three sequons of
// which the lists mark only some while the glycan sits on any occupied one,
// sequons completed across the cleavage (...NK|S... in the FASTA), neighbours
// of the same mass, and site-holding fragments that keep a HexNAc or the glycan.
//
// The same arguments always give byte-identical files.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "DatagenChemistry.h"
#include "DatagenPeptides.h"
#include "DatagenQualityQueries.h"
#include "DatagenRandom.h"
#include "DatagenSpectra.h"

namespace fs = std::filesystem;
using namespace datagen;

namespace {

// Random streams, one per purpose (see CDatagenRandom).
enum Stream : uint32_t {
  kLibraryPeptides = 1,
  kUnmarkedPeptides,
  kSpectrumPlan,
  kLibrarySpectra,
  kQueryPlan,
  kQuerySpectra,
  kAbsentPeptides,
  kProteins,
  kQualityPlan,
  kQualitySpectra,
  kQualityPeptides,  // and the next stream for absent peptides
};

struct COptions {
  std::string mode;
  std::string outdir;
  int peptides = 0;  // library peptide ions (target entries)
  int queries = 0;
  int maxSpectra = 4;  // identified spectra per peptide ion, 1 to this
  uint32_t seed = 20240611;
  std::string massTable;
};

[[noreturn]] void Fail(const std::string& message) {
  std::fprintf(stderr, "quorin_datagen: %s\n", message.c_str());
  std::exit(2);
}

void Usage() {
  std::fprintf(stderr,
               "Usage: quorin_datagen demo|bench|quality <outdir> [--peptides N] [--queries N] "
               "[--seed N] [--masstable PATH]\n"
               "  demo:    200 library peptide ions, 400 queries by default\n"
               "  bench:   20000 library peptide ions, 50000 queries by default\n"
               "  quality: 2000 library peptide ions, 20000 queries of every kind that can be\n"
               "           misidentified by default\n"
               "  sites:   as quality, with the traps of the glycosite (several sequons, sequons\n"
               "           across the cleavage, same-mass neighbours) and their truth\n");
  std::exit(2);
}

std::string ExecutableFolder() {
  char buffer[4096];
  ssize_t n = ::readlink("/proc/self/exe", buffer, sizeof buffer - 1);
  if (n <= 0) return ".";
  return fs::path(std::string(buffer, static_cast<std::size_t>(n))).parent_path().string();
}

std::string DefaultMassTable() {
  fs::path folder = ExecutableFolder();
  for (fs::path candidate : {folder / "MassTable.ini", folder / ".." / "data" / "MassTable.ini",
                             fs::path("data") / "MassTable.ini"}) {
    if (fs::exists(candidate)) return candidate.string();
  }
  return (folder / "MassTable.ini").string();
}

COptions ParseOptions(int argc, char** argv) {
  if (argc < 3) Usage();
  COptions o;
  o.mode = argv[1];
  o.outdir = argv[2];
  if (o.mode == "demo") {
    o.peptides = 200;
    o.queries = 400;
  } else if (o.mode == "bench") {
    o.peptides = 20000;
    o.queries = 50000;
    o.maxSpectra = 3;
  } else if (o.mode == "quality" || o.mode == "sites") {
    o.peptides = 2000;
    o.queries = 20000;
  } else {
    Usage();
  }
  for (int i = 3; i < argc; ++i) {
    std::string key = argv[i];
    if (i + 1 >= argc) Usage();
    std::string value = argv[++i];
    if (key == "--peptides") o.peptides = std::atoi(value.c_str());
    else if (key == "--queries") o.queries = std::atoi(value.c_str());
    else if (key == "--seed") o.seed = static_cast<uint32_t>(std::strtoul(value.c_str(), nullptr, 10));
    else if (key == "--masstable") o.massTable = value;
    else Usage();
  }
  if (o.peptides < 1 || o.queries < 0) Fail("--peptides must be at least 1 and --queries not negative");
  if (o.massTable.empty()) o.massTable = DefaultMassTable();
  return o;
}

// A file written through a large stdio buffer; any failure ends the generator.
class COutFile {
 public:
  explicit COutFile(const std::string& path) : path_(path) {
    file_ = std::fopen(path.c_str(), "w");
    if (!file_) Fail("cannot write " + path);
    std::setvbuf(file_, nullptr, _IOFBF, 1 << 20);
  }
  ~COutFile() { Close(); }
  void Close() {
    if (file_ && std::fclose(file_) != 0) Fail("cannot write " + path_);
    file_ = nullptr;
  }
  std::FILE* get() { return file_; }

 private:
  std::string path_;
  std::FILE* file_ = nullptr;
};

struct CPeptideIon {
  std::size_t peptide;  // index into the peptide list
  int charge;
};

struct CLibrarySpectrumPlan {
  std::size_t peptide;
  int charge;
  bool marked;  // the list line carries the site mark
  int dataset;
  int scan;
};

}  // namespace

int main(int argc, char** argv) {
  COptions opt = ParseOptions(argc, argv);

  CDatagenChemistry chem;
  std::string error;
  if (!chem.Load(opt.massTable, error)) Fail(opt.massTable + ": " + error);

  std::error_code ec;
  fs::create_directories(opt.outdir, ec);
  fs::path out = fs::absolute(opt.outdir).lexically_normal();
  if (!fs::is_directory(out)) Fail("cannot create " + out.string());
  // The configuration reader cuts a line at '#' or ';', so such a path can't be named.
  if (out.string().find_first_of("#;") != std::string::npos)
    Fail("the output folder's path must not contain '#' or ';'");

  // ---- Library peptides: marked glycopeptides, one or two charges each.
  std::vector<CDatagenPeptide> peptides;
  std::vector<CPeptideIon> ions;
  std::set<std::string> keys;
  std::vector<std::size_t> singleSite;  // peptides that queries may use
  const bool siteTraps = opt.mode == "sites";
  for (uint32_t i = 0; static_cast<int>(ions.size()) < opt.peptides; ++i) {
    CDatagenRandom rng(opt.seed, kLibraryPeptides, i);
    std::vector<CDatagenPeptide> forms;
    if (!siteTraps) {
      forms.push_back(MakePeptide(rng, rng.Chance(0.03) ? 2 : 1));
    } else {
      // Shares of library peptides: 12 % with several sequons, 5 % with the
      // sequon across the cleavage, 4 % a same-mass neighbour of an earlier one.
      const double pick = rng.Uniform();
      CDatagenPeptide neighbour;
      if (pick < 0.12) forms = MakeMultiSequonForms(rng, rng.Chance(0.7) ? 2 : 3);
      else if (pick < 0.17) forms.push_back(MakeCrossCleavagePeptide(rng));
      else if (pick < 0.21 && !singleSite.empty() &&
               MakeSwappedNeighbour(peptides[singleSite[static_cast<std::size_t>(
                                        rng.Int(0, static_cast<int>(singleSite.size()) - 1))]],
                                    rng, neighbour))
        forms.push_back(neighbour);
      else forms.push_back(MakePeptide(rng, rng.Chance(0.03) ? 2 : 1));
    }
    for (const CDatagenPeptide& p : forms) {
      if (static_cast<int>(ions.size()) >= opt.peptides || !keys.insert(Key(p)).second) continue;
      bool longPeptide = p.sequence.size() > 12;
      int first = rng.Chance(0.75) ? (longPeptide ? 3 : 2) : (longPeptide ? 2 : 3);
      peptides.push_back(p);
      ions.push_back({peptides.size() - 1, first});
      if (static_cast<int>(ions.size()) < opt.peptides && rng.Chance(0.2))
        ions.push_back({peptides.size() - 1, 5 - first});
      if (p.sites.size() == 1) singleSite.push_back(peptides.size() - 1);
    }
  }
  std::size_t markedPeptides = peptides.size();

  // ---- Identifications that the list reader must drop: a glycopeptide found
  // without the mark, and a deamidation on an N that is no sequon.
  int unmarkedCount = std::max(2, opt.peptides / 12);
  std::vector<CPeptideIon> unmarked;
  for (uint32_t i = 0; static_cast<int>(unmarked.size()) < unmarkedCount; ++i) {
    CDatagenRandom rng(opt.seed, kUnmarkedPeptides, i);
    CDatagenPeptide p = (i % 2 == 0) ? MakePeptide(rng, 1) : MakeStrayDeamidatedPeptide(rng);
    if (!keys.insert(Key(p)).second) continue;
    peptides.push_back(p);
    unmarked.push_back({peptides.size() - 1, rng.Chance(0.6) ? 2 : 3});
  }

  // ---- Identified spectra: several per ion, spread over two datasets.
  const int kDatasets = 2;
  std::vector<CLibrarySpectrumPlan> plan;
  {
    CDatagenRandom rng(opt.seed, kSpectrumPlan, 0);
    for (const auto& ion : ions) {
      int n = rng.Int(1, opt.maxSpectra);
      for (int k = 0; k < n; ++k) plan.push_back({ion.peptide, ion.charge, true, 0, 0});
    }
    for (const auto& ion : unmarked) {
      int n = rng.Int(1, 2);
      for (int k = 0; k < n; ++k) plan.push_back({ion.peptide, ion.charge, false, 0, 0});
    }
    rng.Shuffle(plan);
    int scans[kDatasets] = {0, 0};
    for (auto& s : plan) {
      s.dataset = rng.Int(0, kDatasets - 1);
      // Scan numbers leave gaps, as MS1 scans and unidentified spectra do.
      scans[s.dataset] += rng.Int(1, 6);
      s.scan = scans[s.dataset];
    }
  }

  std::string datasetNames[kDatasets] = {"lib_run1", "lib_run2"};
  {
    COutFile list((out / "lib_ids.txt").string());
    std::fputs("Spectrum\tCharge\tPeptide\tModifications\n", list.get());
    COutFile mgf1((out / (datasetNames[0] + ".mgf")).string());
    COutFile mgf2((out / (datasetNames[1] + ".mgf")).string());
    COutFile* mgf[kDatasets] = {&mgf1, &mgf2};
    for (std::size_t i = 0; i < plan.size(); ++i) {
      const auto& s = plan[i];
      const CDatagenPeptide& p = peptides[s.peptide];
      CDatagenSpectrum spectrum;
      spectrum.title = datasetNames[s.dataset] + "." + std::to_string(s.scan) + "." +
                       std::to_string(s.scan) + "." + std::to_string(s.charge);
      spectrum.retentionSeconds = s.scan * 0.8;
      CDatagenRandom rng(opt.seed, kLibrarySpectra, static_cast<uint32_t>(i));
      CDatagenIon ion(ResidueMasses(p, chem, true), chem);
      FillPeptideSpectrum(spectrum, p, ion, s.charge, rng);
      Finish(spectrum, 2.0e4 * rng.LogNormal(0.5));
      WriteMgf(mgf[s.dataset]->get(), spectrum);
      std::fprintf(list.get(), "%s\t%d\t%s\t%s\n", spectrum.title.c_str(), s.charge, p.sequence.c_str(),
                   TabTxtModifications(p, s.marked).c_str());
    }
    // An empty line ends the list; the last record keeps its line end either way.
    std::fputs("\n", list.get());
  }

  // ---- Queries.
  enum Kind { kGlyco, kAbsent, kNoMarker, kWeakMarker };
  static const char* kKindNames[] = {"glyco", "absent", "no_marker", "weak_marker"};
  std::vector<int> kinds;
  int glycoCount = opt.queries * 6 / 10;
  int absentCount = opt.queries * 2 / 10;
  int noMarkerCount = (opt.queries - glycoCount - absentCount) / 2;
  for (int i = 0; i < opt.queries; ++i) {
    kinds.push_back(i < glycoCount ? kGlyco
                    : i < glycoCount + absentCount ? kAbsent
                    : i < glycoCount + absentCount + noMarkerCount ? kNoMarker
                                                                   : kWeakMarker);
  }
  {
    CDatagenRandom rng(opt.seed, kQueryPlan, 0);
    rng.Shuffle(kinds);
  }
  if (singleSite.empty()) Fail("no single-site peptide to make queries from");

  // Peptides "absent" from the library must also differ from every library
  // peptide in mass: an isobaric one (I for L, VT for LS, ...) would be a fair
  // candidate with most of its fragments in common.
  std::vector<double> libraryMasses;
  for (std::size_t i = 0; i < markedPeptides; ++i)
    libraryMasses.push_back(CDatagenIon(ResidueMasses(peptides[i], chem, false), chem).MH());
  std::sort(libraryMasses.begin(), libraryMasses.end());
  auto nearLibraryMass = [&](double mh) {
    double tolerance = mh * 20e-6;
    auto it = std::lower_bound(libraryMasses.begin(), libraryMasses.end(), mh - tolerance);
    return it != libraryMasses.end() && *it <= mh + tolerance;
  };

  if (opt.mode == "quality" || siteTraps) {
    COutFile mgf((out / "glyco_run1.mgf").string());
    COutFile truth((out / "truth.tsv").string());
    CQualityContext context{chem, peptides, singleSite, keys, nearLibraryMass,
                            opt.seed, kQualityPlan, kQualitySpectra, kQualityPeptides};
    context.siteTraps = siteTraps;
    for (std::size_t i = 0; i < markedPeptides; ++i)
      for (int site : peptides[i].sites) context.librarySites[FormKey(peptides[i])].push_back(site);
    for (auto& [form, sites] : context.librarySites) std::sort(sites.begin(), sites.end());
    WriteQualityQueries(context, opt.queries, mgf.get(), truth.get());
  } else {
    COutFile mgf((out / "glyco_run1.mgf").string());
    COutFile truth((out / "truth.tsv").string());
    std::fputs("Query\tKind\tPeptide\tCharge\tGlycan\tGlycanMass\tSite\tModification\tInLibrary\n", truth.get());
    uint32_t absentIndex = 0;
    int scan = 0;
    for (std::size_t i = 0; i < kinds.size(); ++i) {
      CDatagenRandom rng(opt.seed, kQuerySpectra, static_cast<uint32_t>(i));
      scan += rng.Int(1, 4);
      CDatagenSpectrum spectrum;
      spectrum.retentionSeconds = scan * 0.5;
      int kind = kinds[i];
      CDatagenPeptide peptide;
      bool inLibrary = false;
      std::string glycanName = "-";
      double glycanMass = 0.0;
      int site = 0;
      if (kind == kNoMarker) {
        // An ordinary peptide spectrum: no glycan, no oxonium ions.
        peptide = MakePeptide(rng, 0);
        // A b1 ion of histidine (138.066) would pass for the oxonium marker.
        if (peptide.sequence[0] == 'H') peptide.sequence[0] = 'A';
        CDatagenIon ion(ResidueMasses(peptide, chem, false), chem);
        FillPeptideSpectrum(spectrum, peptide, ion, rng.Int(2, 3), rng);
      } else {
        if (kind == kAbsent) {
          // A glycopeptide whose peptide is not in the library.
          do {
            CDatagenRandom pr(opt.seed, kAbsentPeptides, absentIndex++);
            peptide = MakePeptide(pr, 1);
          } while (keys.count(Key(peptide)) ||
                   nearLibraryMass(CDatagenIon(ResidueMasses(peptide, chem, false), chem).MH()));
          keys.insert(Key(peptide));
        } else {
          std::size_t pick = singleSite[static_cast<std::size_t>(rng.Int(0, static_cast<int>(singleSite.size()) - 1))];
          peptide = peptides[pick];
          inLibrary = true;
        }
        const CDatagenGlycan& glycan =
            chem.glycans[static_cast<std::size_t>(rng.Int(0, static_cast<int>(chem.glycans.size()) - 1))];
        glycanName = glycan.name;
        glycanMass = glycan.mass;
        site = peptide.sites[0];
        CDatagenIon ion(ResidueMasses(peptide, chem, false), chem);
        int charge = GlycoCharge(ion.MH() + glycan.mass, rng);
        FillGlycoSpectrum(spectrum, peptide, ion, site, glycan, charge, rng);
        if (kind == kWeakMarker) WeakenMarker(spectrum, rng);
      }
      Finish(spectrum, 1.0e5 * rng.LogNormal(0.5));
      spectrum.title = "glyco_run1." + std::to_string(scan) + "." + std::to_string(scan) + "." +
                       std::to_string(spectrum.charge);
      WriteMgf(mgf.get(), spectrum);
      std::fprintf(truth.get(), "%s\t%s\t%s\t%d\t%s\t%.6f\t%d\t%s\t%s\n", spectrum.title.c_str(),
                   kKindNames[kind], peptide.sequence.c_str(), spectrum.charge, glycanName.c_str(), glycanMass, site,
                   LibraryModifications(peptide).c_str(), inLibrary ? "yes" : "no");
    }
  }

  // ---- Protein database: the configuration requires one (only lanvek lists read it).
  std::string fastaName = opt.mode + "_proteins.fasta";
  {
    COutFile fasta((out / fastaName).string());
    CDatagenRandom rng(opt.seed, kProteins, 0);
    const std::size_t perProtein = 6;
    for (std::size_t start = 0, n = 1; start < markedPeptides; start += perProtein, ++n) {
      std::string sequence = "M";
      for (std::size_t i = start; i < std::min(markedPeptides, start + perProtein); ++i) {
        for (int k = rng.Int(3, 12); k > 0; --k) sequence += RandomResidue(rng);
        sequence += rng.Chance(0.5) ? 'K' : 'R';
        sequence += peptides[i].sequence;
        // completes a sequon across the cleavage
        if (peptides[i].following) sequence += peptides[i].following;
      }
      std::fprintf(fasta.get(), ">sp|QDG%05zu|QDG%05zu_SYNTH Synthetic glycoprotein %zu\n", n, n, n);
      for (std::size_t i = 0; i < sequence.size(); i += 60)
        std::fprintf(fasta.get(), "%s\n", sequence.substr(i, 60).c_str());
    }
  }

  // ---- Configuration: absolute paths, since the program works in its own folder.
  std::string confName = opt.mode + ".conf";
  {
    COutFile conf((out / confName).string());
    auto path = [&](const std::string& name) { return (out / name).string(); };
    std::fprintf(conf.get(),
                 "# Written by quorin_datagen. Paths are absolute: the program works in its own folder.\n"
                 "[construction]\n"
                 "construction = yes\n"
                 "modification_remove = %s\n"
                 "identification_format = tab-txt\n"
                 "identification_number = 1\n"
                 "identification_filename_1 = %s\n"
                 "library_dataset_number = 2\n"
                 "library_dataset_format = mgf\n"
                 "library_dataset_pathname_1 = %s\n"
                 "library_dataset_pathname_2 = %s\n"
                 "library_product_ion_unit = da\n"
                 "library_product_ion_tolerance = 0.02\n"
                 "theta = 0.3\n"
                 "output_speclib_filename = %s\n"
                 "added_Y_ions = Y0,Y1,Y2,Y3,Y4,Y5\n"
                 "Y_ion_relative_intensity = 0.5\n"
                 "N_glycan_motifs = NXS,NXT\n"
                 "protein_database = %s\n"
                 "\n"
                 "[search]\n"
                 "search = yes\n"
                 "input_speclib_filename = %s\n"
                 "query_dataset_number = 1\n"
                 "query_dataset_format = mgf\n"
                 "query_dataset_pathname_1 = %s\n"
                 "query_precursor_ion_unit = ppm\n"
                 "query_precursor_ion_tolerance = 10\n"
                 "query_product_ion_unit = da\n"
                 "query_product_ion_tolerance = 0.02\n"
                 "output_result_filename = %s\n"
                 "# two peptide ions let chance hits through, so that decoys give the FDR something to count\n"
                 "minimal_peptide_ions = 2\n",
                 CDatagenChemistry::kDeamidated, path("lib_ids.txt").c_str(), path("lib_run1.mgf").c_str(),
                 path("lib_run2.mgf").c_str(), path(opt.mode + ".quolib").c_str(), path(fastaName).c_str(),
                 path(opt.mode + ".quolib").c_str(), path("glyco_run1.mgf").c_str(),
                 path(opt.mode + "_result.txt").c_str());
    if (opt.mode == "quality" || siteTraps) std::fputs("glycopeptide_fdr = yes\n", conf.get());
  }

  std::printf("Generated %s dataset in %s\n", opt.mode.c_str(), out.string().c_str());
  std::printf("  library: %zu marked peptides, %zu peptide ions, %zu identified spectra (%zu unmarked ions to be dropped)\n",
              markedPeptides, ions.size(), plan.size(), unmarked.size());
  if (opt.mode == "quality" || siteTraps) std::printf("  queries: %d of every kind, see truth.tsv\n", opt.queries);
  else
    std::printf("  queries: %d (glyco %d, absent from library %d, no marker %d, weak marker %d)\n", opt.queries,
                glycoCount, absentCount, noMarkerCount, opt.queries - glycoCount - absentCount - noMarkerCount);
  std::printf("  configuration: %s\n", (out / confName).string().c_str());
  return 0;
}
