// Throughput of the line-based list readers (tab-txt, quorin, Mascot, Lanvek
// with its FASTA database) on large generated lists.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "idlist/LanvekSpecListIO.h"
#include "idlist/MascotSpecListIO.h"
#include "idlist/QuorinSpecListIO.h"
#include "idlist/TabTxtSpecListIO.h"
#include "molecule/ProteinDatabase.h"
#include "run/Param.h"

namespace {

namespace fs = std::filesystem;

const int kRecords = 200000;
const int kProteins = 20000;

const char* kPeptides[] = {"LCVLHEKTPVSEK", "AANGTKMPEDR", "VFDKDGNGYLSAAELR", "QEPERNECFLQHK",
                           "YLSALNKTVEGR", "HVVPAQVHVNGSALASER"};
const int kSite[] = {0, 3, 0, 0, 7, 10};  // 1-based N of a sequon, 0 for none

fs::path WorkDir() {
  static fs::path dir = [] {
    fs::path d = fs::temp_directory_path() / ("quorin_bench_textlists_" + std::to_string(::getpid()));
    fs::create_directories(d);
    CConstructionParam& c = CParam::GetInstance().construction;
    c.modification_remove = "Deamidated[N]";
    c.N_glycan_motifs = {0, 1};
    return d;
  }();
  return dir;
}

std::string Mods(int i, bool paren) {
  int site = kSite[i % 6];
  if (site == 0) return paren ? "null" : "-";
  std::string pos = std::to_string(site);
  return paren ? pos + ",N(Deamidated[N]);" : pos + ",Deamidated[N];";
}

std::string Name(int i) {
  return "run1." + std::to_string(i) + "." + std::to_string(i) + ".2.dta";
}

std::string MakeFile(const std::string& name, const std::string& content) {
  std::string path = (WorkDir() / name).string();
  std::ofstream(path, std::ios::binary) << content;
  return path;
}

template <class Reader>
void ReadAll(benchmark::State& state, const std::string& path, std::size_t bytes) {
  for (auto _ : state) {
    std::vector<CIdentifiedSpectrum> list;
    Reader reader;
    reader.Init({path, 0.0, 0});
    reader.Read(list);
    benchmark::DoNotOptimize(list.data());
    state.counters["records"] = static_cast<double>(list.size());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

void BM_TabTxt(benchmark::State& state) {
  static std::string content = [] {
    std::string s = "Name\tCharge\tSequence\tModifications\n";
    for (int i = 0; i < kRecords; ++i)
      s += Name(i) + "\t2\t" + kPeptides[i % 6] + "\t" + Mods(i, true) + "\n";
    return s;
  }();
  static std::string path = MakeFile("list.tab", content);
  ReadAll<CTabTxtSpecListIO>(state, path, content.size());
}

void BM_Quorin(benchmark::State& state) {
  static std::string content = [] {
    std::string s = "Spectrum Name\tSequencet\tModification\tCharge\n";
    for (int i = 0; i < kRecords; ++i)
      s += Name(i) + "\t" + kPeptides[i % 6] + "\t" + Mods(i, false) + "\t2\n";
    return s;
  }();
  static std::string path = MakeFile("list.quorin", content);
  ReadAll<CQuorinSpecListIO>(state, path, content.size());
}

void BM_Mascot(benchmark::State& state) {
  static std::string content = [] {
    std::string s =
        "Variable modifications,---\n\nIdentifier,Name,Delta\n1,Oxidation (M),15.99\n"
        "2,Deamidated (N),0.98\n\nProtein hits,---\n\n"
        "prot_hit_num,prot_acc,prot_desc,pep_score,pep_seq,pep_var_mod_pos,pep_scan_title,"
        "a,b,c,d,e,f,g,h\n";
    for (int i = 0; i < kRecords; ++i) {
      std::string seq = kPeptides[i % 6];
      std::string pos(seq.size(), '0');
      if (kSite[i % 6]) pos[static_cast<std::size_t>(kSite[i % 6] - 1)] = '2';
      s += "1,\"sp|P1\",\"some protein\",45.2," + seq + ",0." + pos + ".0,\"" + Name(i) +
           " from run1\",1,2,3,4,5,6,7,8\n";
    }
    return s;
  }();
  static std::string path = MakeFile("list.csv", content);
  ReadAll<CMascotSpecListIO>(state, path, content.size());
}

std::string FastaContent() {
  std::string s;
  for (int p = 0; p < kProteins; ++p) {
    s += ">P" + std::to_string(p) + " protein number " + std::to_string(p) + "\n";
    for (int k = 0; k < 6; ++k) s += std::string(kPeptides[(p + k) % 6]) + "GGR\n";
  }
  return s;
}

void BM_FastaLoad(benchmark::State& state) {
  static std::string content = FastaContent();
  static std::string path = MakeFile("db.fasta", content);
  for (auto _ : state) {
    CProteinDatabase db;
    db.path = path;
    db.Load();
    benchmark::DoNotOptimize(db.proteins.size());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * content.size()));
}

void BM_Lanvek(benchmark::State& state) {
  static std::string fasta = MakeFile("lanvek.fasta", FastaContent());
  static std::string content = [] {
    std::string s = "h1\nh2\n";
    for (int i = 0; i < kRecords; ++i) {
      s += std::to_string(i) + "\t" + Name(i) + "\t1\n";
      s += std::string("*\t1\t") + kPeptides[i % 6] + "\t1000.5\t" + Mods(i, true) +
           "\t1\t1\t1\t1\tREVERSE_P1/P" + std::to_string(i % kProteins) + "\n";
      s += "*\t2\tWWW\t1\tnull\t1\t1\t1\t1\tP1\n";
    }
    return s;
  }();
  static std::string path = MakeFile("list.lanvek", content);
  CParam::GetInstance().construction.protein_database = fasta;
  ReadAll<CLanvekSpecListIO>(state, path, content.size());
}

}  // namespace

BENCHMARK(BM_TabTxt)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Quorin)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Mascot)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FastaLoad)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Lanvek)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
