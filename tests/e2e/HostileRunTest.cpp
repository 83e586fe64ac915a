// Runs that must fail: each ends with its message and status, reads no device,
// and leaves every input and every earlier output byte for byte as it was,
// with no temporary file behind.
#include <gtest/gtest.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "common/TestUtil.h"

namespace fs = std::filesystem;

namespace {

using Files = std::map<std::string, std::string>;

// Every regular file below `dir`, by relative path (links are not followed).
Files Snapshot(const fs::path& dir) {
  Files files;
  for (const auto& entry : fs::recursive_directory_iterator(dir)) {
    if (entry.is_regular_file() && !entry.is_symlink())
      files[fs::relative(entry.path(), dir).string()] = testutil::ReadFile(entry.path().string());
  }
  return files;
}

struct HostileCase {
  const char* name;
  std::vector<std::pair<std::string, std::string>> keys;  // "@" stands for the run's folder
  std::function<void(const fs::path&)> prepare;
  const char* configName;  // on standard input; nullptr: the run's configuration
  int exitCode;
  std::vector<std::string> messages;  // "@" stands for the run's folder
};

std::string Expand(std::string text, const std::string& dir) {
  for (std::size_t at = text.find('@'); at != std::string::npos; at = text.find('@', at + dir.size()))
    text.replace(at, 1, dir);
  return text;
}

// The demo configuration with some keys replaced.
std::string Configure(const std::string& demoConf, const HostileCase& c, const std::string& dir) {
  std::string out;
  std::size_t start = 0;
  while (start < demoConf.size()) {
    std::size_t end = demoConf.find('\n', start);
    if (end == std::string::npos) end = demoConf.size();
    std::string line = demoConf.substr(start, end - start);
    for (const auto& [key, value] : c.keys) {
      if (line.rfind(key + " =", 0) == 0) line = key + " = " + Expand(value, dir);
    }
    out += line + "\n";
    start = end + 1;
  }
  return out;
}

// Locks held as another run would hold them, until the suite ends.
std::vector<int> heldLocks;
void HoldLock(const fs::path& path) {
  const int fd = ::open(path.c_str(), O_RDWR | O_CREAT, 0644);
  ASSERT_EQ(::flock(fd, LOCK_EX), 0);
  heldLocks.push_back(fd);
}

const std::string kOverInput = ") would overwrite an input of this run: ";
const std::string kNotRegular = ", which is not a regular file or folder (a device, FIFO or socket)";

const HostileCase kCases[] = {
    {"a list that ends the run after the library was opened",
     {{"identification_format", "pilot"}}, nullptr, nullptr, 1,
     {"[Error]: The identification format pilot has no reader."}},
    {"result over a query dataset", {{"output_result_filename", "@/glyco_run1.mgf"}}, nullptr,
     nullptr, 1,
     {"[Error]: \"output_result_filename\" in section \"search\" (@/glyco_run1.mgf" + kOverInput +
      "\"query_dataset_pathname_1\" in section \"search\""}},
    {"library over a list through ..", {{"output_speclib_filename", "@/sub/../lib_ids.txt"}},
     [](const fs::path& dir) { fs::create_directory(dir / "sub"); }, nullptr, 1,
     {kOverInput + "\"identification_filename_1\" in section \"construction\""}},
    {"library over the configuration", {{"output_speclib_filename", "@/run.conf"}}, nullptr,
     nullptr, 1, {kOverInput + "the configuration file"}},
    {"result through a link to the mass table", {{"output_result_filename", "@/link.txt"}},
     [](const fs::path& dir) { fs::create_symlink(dir / "MassTable.ini", dir / "link.txt"); },
     nullptr, 1, {kOverInput + "the mass table"}},
    {"result as a hard link of the FASTA", {{"output_result_filename", "@/hard.txt"}},
     [](const fs::path& dir) { fs::create_hard_link(dir / "demo_proteins.fasta", dir / "hard.txt"); },
     nullptr, 1, {kOverInput + "\"protein_database\" in section \"construction\""}},
    {"result over the library searched", {{"construction", "no"}, {"output_result_filename", "@/demo.quolib"}},
     nullptr, nullptr, 1, {kOverInput + "\"input_speclib_filename\" in section \"search\""}},
    {"result and library in one file", {{"output_result_filename", "@/demo.quolib"}}, nullptr,
     nullptr, 1, {"name the same file (@/demo.quolib)"}},
    {"library in a folder that doesn't exist",
     {{"output_speclib_filename", "@/missing/lib.quolib"}}, nullptr, nullptr, 1,
     {"\nCDtasIO error: failed to open Dtas file @/missing/lib.quolib\n"
      "\tthe folder @/missing/ can't be used: No such file or directory\n"}},
    {"library path is a directory", {{"output_speclib_filename", "@/libdir.quolib"}},
     [](const fs::path& dir) { fs::create_directory(dir / "libdir.quolib"); }, nullptr, 1,
     {"CDtasIO error: failed to open Dtas file @/libdir.quolib"}},
    {"companion path is a directory", {},
     [](const fs::path& dir) {
       fs::remove(dir / "demo_libcomp.txt");
       fs::create_directory(dir / "demo_libcomp.txt");
     },
     nullptr, 1, {"[Error]: The library's companion file @/demo_libcomp.txt can't be written."}},
    {"result in a folder that doesn't exist",
     {{"output_result_filename", "@/missing/result.txt"}}, nullptr, nullptr, 1,
     {"Output search result error: failed to open file @/missing/result.txt"}},
    {"query dataset is /dev/zero", {{"query_dataset_pathname_1", "/dev/zero"}}, nullptr, nullptr,
     1, {"\"query_dataset_pathname_1\" in section \"search\" names /dev/zero" + kNotRegular}},
    {"list is a FIFO", {{"identification_filename_1", "@/fifo.txt"}},
     [](const fs::path& dir) { ::mkfifo((dir / "fifo.txt").c_str(), 0644); }, nullptr, 1,
     {"names @/fifo.txt" + kNotRegular}},
    {"an mzML file given as MGF query dataset", {{"query_dataset_pathname_1", "@/q.mgf"}},
     [](const fs::path& dir) { testutil::WriteFile(dir / "q.mgf", "<?xml version=\"1.0\"?>\n<indexedmzML>"); },
     nullptr, 1,
     {"[Error]: \"query_dataset_pathname_1\" in section \"search\" names @/q.mgf, which is not an MGF file as "
      "\"query_dataset_format\" in section \"search\" says: it is an mzML file. Nothing was read."}},
    {"an image given as MGF library dataset", {{"library_dataset_pathname_2", "@/lib_run2.png"}},
     [](const fs::path& dir) { testutil::WriteFile(dir / "lib_run2.png", "\x89PNG\r\n\x1a\n\x00\x00"); },
     nullptr, 1, {"names @/lib_run2.png, which is not an MGF file as \"library_dataset_format\""}},
    {"a mass table of garbage", {},
     [](const fs::path& dir) { testutil::WriteFile(dir / "MassTable.ini", "[AA]\nG = x\nhello\n"); }, nullptr, 255,
     {"Error when reading \"MassTable.ini\".\n[Error]: the mass table lacks the residue masses of "
      "ACDEFGHIKLMNPQRSTVWY, H2O, Proton, glycans"}},
    {"configuration is /dev/zero", {}, nullptr, "/dev/zero", 255,
     {"Error when reading \"/dev/zero\"."}},
    {"a misspelled modification_remove builds an empty library",
     {{"modification_remove", "Deamidatd[N]"}}, nullptr, nullptr, 1,
     {"[Warning]: No library entry was built; the earlier library @/demo.quolib and its "
      "companion file are kept as they were, and nothing is searched."}},
    {"another run holds the result", {},
     [](const fs::path& dir) { HoldLock(dir / ".demo_result.txt.lock"); }, nullptr, 1,
     {"[Error]: Another run is writing @/demo_result.txt (\"output_result_filename\" in section "
      "\"search\") now; this run is refused."}},
};

class HostileRun : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    demo = new testutil::TempDir;
    ASSERT_EQ(testutil::GenerateDemo(demo->path().string()).exitCode, 0);
  }
  static void TearDownTestSuite() {
    for (int fd : heldLocks) ::close(fd);
    delete demo;
  }
  static testutil::TempDir* demo;
};
testutil::TempDir* HostileRun::demo = nullptr;

TEST_F(HostileRun, EndsWithItsMessageAndLeavesEveryFileAsItWas) {
  const std::string demoConf = testutil::ReadFile(*demo / "demo.conf");
  for (const HostileCase& c : kCases) {
    SCOPED_TRACE(c.name);
    testutil::TempDir run;
    const std::string dir = run.path().string();
    for (const auto& entry : fs::directory_iterator(demo->path()))
      fs::copy_file(entry.path(), run.path() / entry.path().filename());
    std::string conf = Configure(demoConf, c, dir);
    for (std::size_t at; (at = conf.find(demo->path().string())) != std::string::npos;)
      conf.replace(at, demo->path().string().size(), dir);
    testutil::WriteFile(run / "run.conf", conf);
    const std::string program = testutil::InstallProgram(dir);
    // Outputs of an earlier run, which a failed run must not touch.
    testutil::WriteFile(run / "demo.quolib", "earlier library\n");
    testutil::WriteFile(run / "demo_libcomp.txt", "earlier companion\n");
    testutil::WriteFile(run / "demo_result.txt", "earlier result\n");
    if (c.prepare) c.prepare(run.path());
    const Files before = Snapshot(run.path());

    const std::string name = c.configName ? c.configName : run / "run.conf";
    const testutil::RunResult result = testutil::RunProgram(program, name + "\n", dir);
    EXPECT_EQ(result.exitCode, c.exitCode) << result.output;
    for (const std::string& message : c.messages)
      EXPECT_NE(result.output.find(Expand(message, dir)), std::string::npos) << result.output;
    EXPECT_EQ(result.output.find("Finish!"), std::string::npos);
    EXPECT_TRUE(Snapshot(run.path()) == before) << "a file was changed, added or removed";
  }
}

}  // namespace
