// Throughput of the pepXML and MaxQuant list readers on large generated lists,
// and the peak memory of a pepXML read relative to the file's size.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "idlist/MaxQuantSpecListIO.h"
#include "idlist/PepXmlSpecListIO.h"
#include "idlist/XmlDocument.h"
#include "run/Param.h"

namespace {

namespace fs = std::filesystem;

const int kQueries = 200000;
const int kRows = 1000000;

const char* kMassTable =
    "[AA]\nA = 71.037114\nC = 103.009185\nD = 115.026943\nE = 129.042593\nF = 147.068414\n"
    "G = 57.021464\nH = 137.058912\nI = 113.084064\nJ = 114.042927\nK = 128.094963\n"
    "L = 113.084064\nM = 131.040485\nN = 114.042927\nP = 97.052764\nQ = 128.058578\n"
    "R = 156.101111\nS = 87.032028\nT = 101.047679\nV = 99.068414\nW = 186.079313\n"
    "Y = 163.063329\n[Molecule]\nH2O = 18.010565\nProton = 1.00727647\n[Modification]\n"
    "Carbamidomethyl[C] = 57.021464\nDeamidated[N] = 0.984016\nOxidation[M] = 15.994915\n"
    "Lys6[K] = 6.020129\nArg10[R] = 10.008269\nN[115] = 0.984016\n";

const char* kPeptides[] = {"LCVLHEKTPVSEK", "AANGTKMPEDR", "VFDKDGNGYLSAAELR", "QEPERNECFLQHK",
                           "YLSALNKTVEGR", "HVVPAQVHVNGSALASER"};

fs::path WorkDir() {
  static fs::path dir = [] {
    fs::path d = fs::temp_directory_path() / ("quorin_bench_idlists_" + std::to_string(::getpid()));
    fs::create_directories(d);
    std::ofstream(d / "MassTable.ini") << kMassTable;
    return d;
  }();
  return dir;
}

// A TPP-like pepXML: every query with a hit, scores, modifications and a
// PeptideProphet result; a third of them with a deamidated sequon, a third
// without modification_info.
std::string PepXmlFile() {
  static std::string path = [] {
    std::string file = (WorkDir() / "large.pep.xml").string();
    std::ofstream out(file, std::ios::binary);
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<msms_pipeline_analysis date=\"2024-01-01T00:00:00\" xmlns=\"http://regis-web.systemsbiology.net/pepXML\">\n"
           "<msms_run_summary base_name=\"/data/run01\" raw_data_type=\"raw\" raw_data=\".mzML\">\n"
           "<sample_enzyme name=\"trypsin\">\n<specificity cut=\"KR\" no_cut=\"P\" sense=\"C\"/>\n</sample_enzyme>\n"
           "<search_summary base_name=\"/data/run01\" search_engine=\"Comet\" precursor_mass_type=\"monoisotopic\">\n"
           "<aminoacid_modification aminoacid=\"C\" massdiff=\"57.021464\" mass=\"160.030649\" variable=\"N\"/>\n"
           "<aminoacid_modification aminoacid=\"N\" massdiff=\"0.984016\" mass=\"115.026943\" variable=\"Y\"/>\n"
           "<aminoacid_modification aminoacid=\"M\" massdiff=\"15.994915\" mass=\"147.035400\" variable=\"Y\"/>\n"
           "</search_summary>\n";
    for (int i = 0; i < kQueries; ++i) {
      const std::string peptide = kPeptides[i % 6];
      const std::string scan = std::to_string(1000 + i);
      out << "<spectrum_query spectrum=\"run01." << scan << "." << scan << ".2\" start_scan=\"" << scan
          << "\" end_scan=\"" << scan << "\" precursor_neutral_mass=\"1492.7349\" assumed_charge=\"2\" index=\""
          << i + 1 << "\">\n <search_result>\n  <search_hit hit_rank=\"1\" peptide=\"" << peptide
          << "\" peptide_prev_aa=\"K\" peptide_next_aa=\"A\" protein=\"sp|P02768|ALBU_HUMAN\" num_tot_proteins=\"1\""
             " num_matched_ions=\"14\" tot_num_ions=\"24\" calc_neutral_pep_mass=\"1492.7321\" massdiff=\"0.0028\""
             " num_tol_term=\"2\" num_missed_cleavages=\"0\">\n";
      if (i % 3 != 2) {
        out << "   <modification_info modified_peptide=\"" << peptide << "\">\n";
        const std::size_t n = peptide.find('N');
        if (n != std::string::npos) {
          out << "    <mod_aminoacid_mass position=\"" << n + 1 << "\" mass=\"115.026943\"/>\n";
        }
        const std::size_t c = peptide.find('C');
        if (c != std::string::npos) {
          out << "    <mod_aminoacid_mass position=\"" << c + 1 << "\" mass=\"160.030649\"/>\n";
        }
        out << "   </modification_info>\n";
      }
      out << "   <search_score name=\"xcorr\" value=\"3.142\"/>\n"
             "   <search_score name=\"deltacn\" value=\"0.412\"/>\n"
             "   <search_score name=\"spscore\" value=\"512.3\"/>\n"
             "   <search_score name=\"expect\" value=\"1.2e-05\"/>\n"
             "   <analysis_result analysis=\"peptideprophet\">\n"
             "    <peptideprophet_result probability=\""
          << (i % 10) / 10.0 + 0.05
          << "\" all_ntt_prob=\"(0.0000,0.0000,0.9990)\">\n"
             "     <search_score_summary>\n"
             "      <parameter name=\"fval\" value=\"3.1\"/>\n"
             "      <parameter name=\"ntt\" value=\"2\"/>\n"
             "      <parameter name=\"nmc\" value=\"0\"/>\n"
             "      <parameter name=\"massd\" value=\"0.003\"/>\n"
             "     </search_score_summary>\n"
             "    </peptideprophet_result>\n"
             "   </analysis_result>\n"
             "  </search_hit>\n"
             " </search_result>\n"
             "</spectrum_query>\n";
    }
    out << "</msms_run_summary>\n</msms_pipeline_analysis>\n";
    return file;
  }();
  return path;
}

// A MaxQuant msms table of 60 columns, as MaxQuant 2.x writes it.
std::string MaxQuantFile() {
  static std::string path = [] {
    std::string file = (WorkDir() / "msms.txt").string();
    std::ofstream out(file, std::ios::binary);
    out << "Raw file\tScan number\tScan index\tSequence\tLength\tMissed cleavages\tModifications\t"
           "Modified sequence\tDeamidation (N) Probabilities\tOxidation (M) Probabilities\t"
           "Deamidation (N) Score diffs\tOxidation (M) Score diffs\tAcetyl (Protein N-term)\t"
           "Deamidation (N)\tOxidation (M)\tProteins\tCharge\tFragmentation\tMass analyzer\tType\t"
           "Scan event number\tIsotope index\tm/z\tMass\tMass error [ppm]";
    for (int c = 0; c < 35; ++c) out << "\tExtra " << c;
    out << "\n";
    const char* modified[] = {"_LC(ca)VLHEKTPVSEK_", "_(ac)AAN(de)GTKM(ox)PEDR_", "_VFDKDGNGYLSAAELR_",
                              "_QEPERN(de)ECFLQHK_", "_YLSALN(de)KTVEGR_", "_HVVPAQVHVN(de)GSALASER_"};
    for (int i = 0; i < kRows; ++i) {
      out << "run01\t" << 1000 + i << "\t" << i << "\t" << kPeptides[i % 6] << "\t13\t0\tUnmodified\t"
          << modified[i % 6] << "\tAAN(1)GTK\t\t52.1\t\t1\t1\t0\tsp|P02768|ALBU_HUMAN\t2\tHCD\tFTMS\tMULTI-MSMS\t"
          << "12\t0\t747.37\t1492.7349\t0.43";
      for (int c = 0; c < 35; ++c) out << "\t" << 100 + c;
      out << "\n";
    }
    return file;
  }();
  return path;
}

void UseSettings() {
  CConstructionParam& c = CParam::GetInstance().construction;
  c.N_glycan_motifs = {0, 1};
  c.mass_table_filename = (WorkDir() / "MassTable.ini").string();
}

long StatusKilobytes(const char* key) {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.rfind(key, 0) == 0) return std::stol(line.substr(std::string(key).size()));
  }
  return 0;
}

// Growth of the resident set at its peak while `work` runs, in bytes. The work
// runs in a child process, whose peak starts at the peak it inherits: this is
// measured before any benchmark has held a large tree.
template <typename Work>
double PeakGrowth(Work work) {
  int channel[2];
  if (::pipe(channel) != 0) return 0.0;
  const pid_t child = ::fork();
  if (child == 0) {
    ::close(channel[0]);
    const long before = StatusKilobytes("VmRSS:");
    work();
    const long growth = (StatusKilobytes("VmHWM:") - before) * 1024;
    (void)!::write(channel[1], &growth, sizeof growth);
    ::_exit(0);
  }
  ::close(channel[1]);
  long growth = 0;
  (void)!::read(channel[0], &growth, sizeof growth);
  ::close(channel[0]);
  ::waitpid(child, nullptr, 0);
  return static_cast<double>(growth);
}

// Keeps the readers' console lines out of the benchmark's report.
struct QuietStdout {
  QuietStdout() : saved(std::cout.rdbuf(sink.rdbuf())) {}
  ~QuietStdout() { std::cout.rdbuf(saved); }
  std::ostringstream sink;
  std::streambuf* saved;
};

std::size_t ReadPepXml(const std::string& file) {
  QuietStdout quiet;
  std::vector<CIdentifiedSpectrum> list;
  CPepXmlSpecListIO reader;
  CIdentificationFile entry{file, 0.5, 1};
  reader.Init(entry);
  reader.massTablePath = (WorkDir() / "MassTable.ini").string();
  reader.Read(list);
  return list.size();
}

double gXmlLoadPeak = 0.0;
double gPepXmlReadPeak = 0.0;

void BM_XmlLoad(benchmark::State& state) {
  const std::string file = PepXmlFile();
  const double bytes = static_cast<double>(fs::file_size(file));
  for (auto _ : state) {
    CXmlDocument document;
    document.LoadFile(file);
    benchmark::DoNotOptimize(document.children.size());
  }
  state.counters["file_MB"] = bytes / 1e6;
  state.counters["peak_over_file"] = gXmlLoadPeak / bytes;
  state.SetBytesProcessed(static_cast<int64_t>(bytes) * state.iterations());
}
BENCHMARK(BM_XmlLoad)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_PepXmlRead(benchmark::State& state) {
  UseSettings();
  CParam::GetInstance().construction.modification_remove = "N[115]";
  const std::string file = PepXmlFile();
  const double bytes = static_cast<double>(fs::file_size(file));
  std::size_t records = 0;
  for (auto _ : state) records = ReadPepXml(file);
  state.counters["records_kept"] = static_cast<double>(records);
  state.counters["queries_per_s"] =
      benchmark::Counter(static_cast<double>(kQueries) * state.iterations(), benchmark::Counter::kIsRate);
  state.counters["peak_over_file"] = gPepXmlReadPeak / bytes;
  state.SetBytesProcessed(static_cast<int64_t>(bytes) * state.iterations());
}
BENCHMARK(BM_PepXmlRead)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_MaxQuantRead(benchmark::State& state) {
  UseSettings();
  CParam::GetInstance().construction.modification_remove = "Deamidation[N]";
  const std::string file = MaxQuantFile();
  std::size_t records = 0;
  for (auto _ : state) {
    QuietStdout quiet;
    std::vector<CIdentifiedSpectrum> list;
    CMaxQuantSpecListIO reader;
    CIdentificationFile entry{file, 0.0, 6};
    reader.Init(entry);
    reader.Read(list);
    records = list.size();
  }
  state.counters["records_kept"] = static_cast<double>(records);
  state.counters["rows_per_s"] =
      benchmark::Counter(static_cast<double>(kRows) * state.iterations(), benchmark::Counter::kIsRate);
  state.SetBytesProcessed(static_cast<int64_t>(fs::file_size(file)) * state.iterations());
}
BENCHMARK(BM_MaxQuantRead)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  UseSettings();
  CParam::GetInstance().construction.modification_remove = "N[115]";
  const std::string file = PepXmlFile();
  gXmlLoadPeak = PeakGrowth([&file] {
    CXmlDocument document;
    document.LoadFile(file);
  });
  gPepXmlReadPeak = PeakGrowth([&file] { ReadPepXml(file); });
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  std::error_code error;
  fs::remove_all(WorkDir(), error);
  return 0;
}
