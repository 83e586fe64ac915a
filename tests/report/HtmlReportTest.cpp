// The HTML report of a small generated run: what it holds, how it fails, and
// what a browser makes of it (headless Chromium, where installed).
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "common/TestUtil.h"
#include "report/HtmlReport.h"
#include "run/FileFingerprint.h"
#include "run/Param.h"

namespace {

using testutil::Fields;
using testutil::ReadFile;
using testutil::ReadLines;
using testutil::TempDir;


// "b2+;y10++;" as its names, sorted.
std::vector<std::string> IonNames(const std::string& list) {
  std::vector<std::string> names;
  std::string name;
  for (char c : list) c == ';' ? (names.push_back(name), name.clear()) : name.push_back(c);
  std::sort(names.begin(), names.end());
  return names;
}

// The JSON data the page carries.
nlohmann::json PageData(const std::string& html) {
  const std::string open = "<script type=\"application/json\" id=\"report-data\">";
  const std::size_t from = html.find(open) + open.size();
  return nlohmann::json::parse(html.substr(from, html.find("</script>", from) - from));
}

// One demo run, searched and ranked by the real program, for all tests here.
class HtmlReportTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    dir_ = new TempDir();
    const std::string bin = *dir_ / "bin", data = *dir_ / "data";
    std::filesystem::create_directories(bin);
    const std::string exe = testutil::InstallProgram(bin);
    testutil::RunProgram(QUORIN_DATAGEN, "", ".", {"demo", data, "--masstable", bin + "/MassTable.ini"});
    const auto run = testutil::RunProgram(exe, data + "/demo.conf\n");
    ASSERT_EQ(run.exitCode, 0) << run.output;
    CParam& param = CParam::GetInstance();
    param.configure_filename = data + "/demo.conf";
    param.Load();
    // A q-value file naming the first three queries (the third, at FDR 1 %,
    // is a chance hit for the q-values), and a run summary with a stage this
    // report does not know.
    const auto lines = ResultLines();
    testutil::WriteFile(data + "/demo_result_qvalues.txt",
                        "QuerySpecName\tTarget/DecoyHit\tScore\tPeptideQ\tGlycanQ\tGlycopeptideQ\t"
                        "IsobaricGlycans\tSiteProbability\tSiteCandidates\tGlycoLoc\tGlycanMassErrorPpm\t"
                        "GlycanName\n" +
                            lines[0][0] + "\tT\t9\t0.001\t0.002\t0.003\t\t0.97\t\t" + lines[0][10] + "\t1.5\t" +
                            lines[0][9] + "\n" + lines[1][0] + "\tT\t8\t0.2\tNaN\t0.004\t4-5-1-0-0\t0.5\t3;9\t2\t-3\t"
                            "4-5-1-0-0\n" + lines[2][0] + "\tT\t7\t1\t1\t1\t\t\t\t\t\t\n");
    testutil::WriteFile(data + "/demo_result_summary.json",
                        R"({"search":{"queries_read":400,"result_lines":253,"seconds":0.25},"later":{"x_y":1},)"
                        R"("mass_table":"/m.ini"})");
  }
  static void TearDownTestSuite() { delete dir_; }

  static CReportRequest Request(const std::string& out, int topN = 0) {
    const CParam& param = CParam::GetInstance();
    CReportRequest request;
    request.construction = &param.construction;
    request.search = &param.search;
    request.resultPath = param.search.output_result_filename;
    request.libraryPath = param.search.input_speclib_filename;
    request.queryDatasets = param.search.query_datasets;
    request.qvaluesPath = *dir_ / "data/demo_result_qvalues.txt";
    request.summaryPath = *dir_ / "data/demo_result_summary.json";
    request.outPath = out;
    request.topN = topN;
    return request;
  }
  // The data lines of the ranked result file.
  static std::vector<std::vector<std::string>> ResultLines() {
    std::vector<std::vector<std::string>> lines;
    for (const std::string& line : ReadLines(*dir_ / "data/demo_result.txt"))
      if (!line.empty()) lines.push_back(Fields(line));
    lines.erase(lines.begin());
    return lines;
  }
  static TempDir* dir_;
};
TempDir* HtmlReportTest::dir_ = nullptr;

TEST_F(HtmlReportTest, ShowsTheHitsAtTheCutWithTheirSpectraMatchedAsTheSearchMatchedThem) {
  const auto lines = ResultLines();
  std::size_t atOnePercent = 0, targetsAtOnePercent = 0;
  for (const auto& fields : lines) {
    atOnePercent += std::stod(fields[27]) <= 0.01;
    targetsAtOnePercent += std::stod(fields[27]) <= 0.01 && fields[20] == "T";
  }
  ASSERT_GT(atOnePercent, 50u);
  ASSERT_LT(atOnePercent, lines.size());
  struct Case {
    int topN;
    bool qvalues;
    std::size_t shown;
    std::string headline;
  };
  // By default the hits at the cut of the q-values, where there are any.
  for (const Case& c : {Case{0, false, atOnePercent, std::to_string(targetsAtOnePercent) + " target hits at FDR ≤ 1 %"},
                        Case{0, true, 2, "2 target glycopeptides at GlycopeptideQ ≤ 1 %"},
                        Case{5, true, 5, "passes " + std::to_string(targetsAtOnePercent) + " at 1 %"}}) {
    SCOPED_TRACE(c.topN);
    const std::string out = *dir_ / ("top" + std::to_string(c.topN) + std::to_string(c.qvalues) + ".html");
    CReportRequest request = Request(out, c.topN);
    if (!c.qvalues) request.qvaluesPath.clear();
    ASSERT_EQ(WriteHtmlReport(request), 0);
    const std::string html = ReadFile(out);
    const nlohmann::json data = PageData(html);
    ASSERT_EQ(data["hits"].size(), c.shown);
    EXPECT_NE(html.find(c.headline), std::string::npos);
    if (!c.qvalues) continue;
    for (std::size_t i = 0; i < c.shown; ++i)
      EXPECT_EQ(data["hits"][i][0], lines[i][0]);
    // Every hit has its spectra, and matching them again named the very ions
    // of its result line (a hit whose ions differ carries a note).
    EXPECT_TRUE(data["notes"].empty()) << data["notes"].dump();
    const std::size_t hitBlock = html.find("id=\"hit-peaks\">\n") + 16;
    const std::string hitLines = html.substr(hitBlock, html.find("</script>", hitBlock) - hitBlock);
    EXPECT_EQ(std::count(hitLines.begin(), hitLines.end(), '\n'), static_cast<long>(c.shown));
    EXPECT_EQ(hitLines.find('!'), std::string::npos);
    // Self-contained: no reference to anything outside the file.
    EXPECT_FALSE(std::regex_search(html, std::regex(R"((src|href)\s*=\s*["']?(https?:|//|file:))")));
    EXPECT_EQ(data["qvalues"]["GlycopeptideQ"], nlohmann::json::parse("[[1,0.003],[2,0.004],[3,1]]"));
    EXPECT_EQ(data["hits"][1][29],
              nlohmann::json::parse(R"(["0.2","NaN","0.004","4-5-1-0-0","0.5","3;9","2","-3","4-5-1-0-0"])"));
    EXPECT_NE(html.find("<th>targets at GlycopeptideQ 1 %</th><td>2</td>"), std::string::npos);
    // Readable labels, also for what this report doesn't know.
    EXPECT_NE(html.find("<caption>Search</caption>\n<tr><th>query spectra read</th><td>400</td>"), std::string::npos);
    EXPECT_NE(html.find("<th>x y</th><td>1</td>"), std::string::npos);
    EXPECT_NE(html.find("<th>mass table</th><td>/m.ini</td>"), std::string::npos);
  }
  const nlohmann::json first5 = PageData(ReadFile(*dir_ / "top51.html"));
  EXPECT_EQ(first5["hits"][3][29], nlohmann::json::parse(R"(["","","","","","","","",""])"));
  // Without its query spectra the report still lists every hit, each with a
  // note in place of its plot.
  CReportRequest request = Request(*dir_ / "noqueries.html");
  request.queryDatasets = {{*dir_ / "gone.mgf", 2}};
  request.qvaluesPath.clear();
  ASSERT_EQ(WriteHtmlReport(request), 0);
  const nlohmann::json data = PageData(ReadFile(*dir_ / "noqueries.html"));
  EXPECT_EQ(data["notes"].size(), atOnePercent);
  EXPECT_EQ(data["notes"]["0"], "query spectrum not found in the query datasets");
}

TEST_F(HtmlReportTest, RefusesWhatItCannotReportAndLeavesNoPartialFile) {
  const std::string unranked = *dir_ / "unranked.txt";
  std::string text;
  for (const std::string& line : ReadLines(*dir_ / "data/demo_result.txt")) {
    text += line.substr(0, line.rfind('\t'));  // the search's 27 columns
    text += '\n';
  }
  testutil::WriteFile(unranked, text);
  // Files that are no regular files, and files of two different runs.
  const std::string fifo = *dir_ / "fifo.txt", folder = *dir_ / "folder.json",
                    zero = *dir_ / "zero.json", mixed = *dir_ / "mixed.json";
  ::mkfifo(fifo.c_str(), 0644);
  std::filesystem::create_directory(folder);
  std::filesystem::create_symlink("/dev/zero", zero);
  const std::string result = CParam::GetInstance().search.output_result_filename;
  testutil::WriteFile(mixed, R"({"run":{"stamp":"r1","result_fingerprint":")" +
                                 FileFingerprint(result) + R"(","qvalues_fingerprint":"1:0"}})");
  const std::string other = *dir_ / "other.txt";
  const std::string ranked = testutil::ReadFile(result);
  testutil::WriteFile(other, ranked.substr(0, ranked.rfind('\n', ranked.size() - 2) + 1));
  struct Case {
    std::string name, result, summary, out, message;
  };
  const std::vector<Case> cases = {
      {"missing result", *dir_ / "none.txt", "", *dir_ / "r1.html", "cannot read the result file"},
      {"not ranked", unranked, "", *dir_ / "r2.html", "no FDR column"},
      {"unwritable", "", "", *dir_ / "no/such/folder/r3.html", "cannot write the report"},
      {"result is a FIFO", fifo, "", *dir_ / "r4.html", fifo + " is not a regular file"},
      {"summary is a folder", "", folder, *dir_ / "r5.html", folder + " is not a regular file"},
      {"summary is /dev/zero", "", zero, *dir_ / "r6.html", zero + " is not a regular file"},
      {"q-values of another run", "", mixed, *dir_ / "r7.html",
       "demo_result_qvalues.txt is not the qvalues file that the run r1 of " + mixed},
      {"result of another run", other, mixed, *dir_ / "r8.html",
       other + " is not the result file that the run r1"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    CReportRequest request = Request(c.out);
    if (!c.result.empty()) request.resultPath = c.result;
    if (!c.summary.empty()) request.summaryPath = c.summary;
    testing::internal::CaptureStdout();
    EXPECT_NE(WriteHtmlReport(request), 0);
    EXPECT_NE(testing::internal::GetCapturedStdout().find(c.message), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(c.out));
  }
  for (const auto& entry : std::filesystem::directory_iterator(dir_->path()))
    EXPECT_EQ(entry.path().filename().string().find(".part-"), std::string::npos) << entry.path();
  EXPECT_EQ(DefaultReportPath("/a.b/run/result.txt"), "/a.b/run/result_report.html");
  EXPECT_EQ(DefaultReportPath("/a.b/run/result"), "/a.b/run/result_report.html");
}

// Runs headless Chromium on a page; its DOM after the scripts ran, and its log.
struct CBrowserResult {
  std::string dom, log;
};
CBrowserResult OpenInChromium(const std::string& chromium, const std::string& url, const TempDir& dir) {
  const std::string profile = dir / "profile", log = dir / "chromium.log";
  const std::string command =
      "timeout 120 " + chromium + " --headless --no-sandbox --disable-gpu --disable-quic --no-first-run"
      " --disable-background-networking --disable-component-update --disable-sync"
      " --enable-logging=stderr --v=0 --user-data-dir=" + profile + " --dump-dom '" + url + "' 2>" + log;
  CBrowserResult result;
  FILE* pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr) return result;
  char buffer[65536];
  for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) result.dom.append(buffer, n);
  ::pclose(pipe);
  result.log = ReadFile(log);
  return result;
}

TEST_F(HtmlReportTest, OpensInABrowserWithTheTableAndTheAnnotatedPlotOfAHit) {
  const std::string chromium = "/usr/bin/chromium";
  if (!std::filesystem::exists(chromium))
    GTEST_SKIP() << "chromium is not installed (" << chromium << " is missing)";
  // The table of every hit at FDR 1 %: without q-values.
  const std::string out = *dir_ / "browser.html";
  CReportRequest request = Request(out);
  request.qvaluesPath.clear();
  ASSERT_EQ(WriteHtmlReport(request), 0);
  const auto lines = ResultLines();
  const nlohmann::json data = PageData(ReadFile(out));
  // The best hit, and the first with b/y ions matched with the glycan.
  std::vector<std::size_t> picks = {0};
  for (std::size_t i = 0; i < data["hits"].size(); ++i) {
    const std::string ions = lines[i][21];
    if (std::stod(lines[i][27]) <= 0.01 && lines[i][5].find('J') != std::string::npos && i > 0 &&
        ions.find("++") != std::string::npos) {
      picks.push_back(i);
      break;
    }
  }
  bool shiftedDrawn = false;  // b/y ions matched with the glycan are told apart
  for (std::size_t pick : picks) {
    SCOPED_TRACE(pick);
    TempDir browser;
    const CBrowserResult page = OpenInChromium(chromium, "file://" + out + "#hit=" + std::to_string(pick + 1), browser);
    ASSERT_NE(page.dom.find("</html>"), std::string::npos) << page.log;
    // The script ran to its end and opened the hit, and nothing threw.
    EXPECT_NE(page.log.find("hits ready after"), std::string::npos) << page.log;
    EXPECT_NE(page.log.find("hit " + std::to_string(pick + 1) + " drawn"), std::string::npos) << page.log;
    EXPECT_EQ(page.log.find("Uncaught"), std::string::npos) << page.log;
    const std::size_t body = page.dom.find("<tbody>", page.dom.find("id=\"hittable\""));
    const std::string rows = page.dom.substr(body, page.dom.find("</tbody>", body) - body);
    std::size_t rowCount = 0;
    for (std::size_t at = rows.find("<tr"); at != std::string::npos; at = rows.find("<tr", at + 1)) ++rowCount;
    EXPECT_EQ(rowCount, data["hits"].size());
    // The query peaks that matched carry the names of the line's DPSIon list.
    std::vector<std::string> labels;
    const std::regex label(R"(<text [^>]*class="ion( shifted)?"[^>]*>([^<]*)</text>)");
    for (auto it = std::sregex_iterator(page.dom.begin(), page.dom.end(), label); it != std::sregex_iterator(); ++it) {
      labels.push_back((*it)[2]);
      shiftedDrawn = shiftedDrawn || (*it)[1].matched;
    }
    std::sort(labels.begin(), labels.end());
    EXPECT_EQ(labels, IonNames(lines[pick][21]));
    // Oxonium ions are labelled, and the glycan is drawn by its residues.
    EXPECT_NE(page.dom.find("class=\"oxo\""), std::string::npos);
    std::size_t residues = 0;
    for (const char* name : {"Hex", "HexNAc", "NeuAc", "NeuGc", "dHex"})
      residues += page.dom.find("data-residue=\"" + std::string(name) + "\"") != std::string::npos;
    std::size_t kinds = 0;
    const std::regex dash("-");
    for (auto it = std::sregex_token_iterator(lines[pick][9].begin(), lines[pick][9].end(), dash, -1);
         it != std::sregex_token_iterator(); ++it)
      kinds += std::stoi(*it) > 0;
    EXPECT_EQ(residues, kinds);
  }
  EXPECT_TRUE(shiftedDrawn);

  // With q-values the hit tells its glycopeptide q, its site and the glycan's mass error.
  const std::string withQ = *dir_ / "browserq.html";
  ASSERT_EQ(WriteHtmlReport(Request(withQ)), 0);
  TempDir browser;
  const CBrowserResult page = OpenInChromium(chromium, "file://" + withQ + "#hit=2", browser);
  EXPECT_EQ(page.log.find("Uncaught"), std::string::npos) << page.log;
  for (const char* fact : {"<th>glycopeptide q</th><td>0.004 — target hit</td>",
                                  "<th>FDR (target-decoy estimate)</th>",
                                  "probability 0.5; not told apart from 3, 9</td>",
                                  "the q-values call 4-5-1-0-0: -3 ppm</td>",
                                  "class=\"sorted-asc\">glycopeptide q</th><th data-key=\"27\" class=\"\">FDR (target-decoy)</th>"})
    EXPECT_NE(page.dom.find(fact), std::string::npos) << fact;
}

}  // namespace
