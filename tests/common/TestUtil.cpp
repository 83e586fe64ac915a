#include "common/TestUtil.h"

#include <sys/wait.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <unistd.h>

namespace fs = std::filesystem;

namespace testutil {

TempDir::TempDir() {
  static std::atomic<int> counter{0};
  dir_ = fs::temp_directory_path() /
         ("quorin_test_" + std::to_string(::getpid()) + "_" + std::to_string(counter++));
  fs::remove_all(dir_);
  fs::create_directories(dir_);
}

TempDir::~TempDir() {
  std::error_code ec;
  fs::remove_all(dir_, ec);
}

void WriteFile(const std::string& path, const std::string& content) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << content;
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

std::vector<std::string> ReadLines(const std::string& path) {
  std::vector<std::string> lines;
  std::ifstream in(path, std::ios::binary);
  std::string line;
  while (std::getline(in, line)) lines.push_back(line);
  return lines;
}

std::vector<std::string> Fields(const std::string& line) {
  std::vector<std::string> fields(1);
  for (char c : line) c == '\t' ? void(fields.emplace_back()) : fields.back().push_back(c);
  return fields;
}

bool FileExists(const std::string& path) { return fs::exists(path); }

static std::string Quote(const std::string& s) {
  std::string q = "'";
  for (char c : s) {
    if (c == '\'') q += "'\\''";
    else q += c;
  }
  return q + "'";
}

RunResult RunProgram(const std::string& program, const std::string& stdinText,
                     const std::string& workingDir, const std::vector<std::string>& args) {
  TempDir io;
  std::string inPath = io / "stdin.txt";
  WriteFile(inPath, stdinText);
  std::string cmd = "cd " + Quote(workingDir) + " && " + Quote(program);
  for (const auto& a : args) cmd += " " + Quote(a);
  cmd += " < " + Quote(inPath) + " 2>&1";
  RunResult result;
  FILE* pipe = ::popen(cmd.c_str(), "r");
  if (!pipe) return result;
  char buffer[4096];
  size_t n;
  while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) result.output.append(buffer, n);
  int status = ::pclose(pipe);
  result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return result;
}

std::string InstallProgram(const std::string& dir) {
  fs::path exe = QUORIN_BINARY;
  fs::path target = fs::path(dir) / "QuorinGlyco";
  fs::copy_file(exe, target, fs::copy_options::overwrite_existing);
  fs::path table = exe.parent_path() / "MassTable.ini";
  if (!fs::exists(table)) table = fs::path(QUORIN_SOURCE_DIR) / "data" / "MassTable.ini";
  fs::copy_file(table, fs::path(dir) / "MassTable.ini", fs::copy_options::overwrite_existing);
  return target.string();
}

RunResult GenerateDemo(const std::string& dir) {
  return RunProgram(QUORIN_DATAGEN, "", ".",
                    {"demo", dir, "--masstable", std::string(QUORIN_SOURCE_DIR) + "/data/MassTable.ini"});
}

void PrintToStderr() {
  std::cout.flush();
  ::dup2(STDERR_FILENO, STDOUT_FILENO);
}

void ExpectCutsKeepWholeRecords(const RecordReader& read, const std::string& head,
                                const std::vector<std::string>& records, bool nameInherited) {
  TempDir dir;
  const std::string path = dir / "cut";
  std::string whole = head;
  for (std::size_t k = 0; k <= records.size(); ++k) {
    WriteFile(path, whole);
    std::string keptPrinted, printed;
    const std::vector<std::string> kept = read(path, keptPrinted);
    const std::string next = k < records.size() ? records[k] : "";
    for (std::size_t cut = whole.size() + 1; cut < whole.size() + next.size(); ++cut) {
      WriteFile(path, whole + next.substr(0, cut - whole.size()));
      const std::vector<std::string> got = read(path, printed);
      EXPECT_EQ(printed.substr(0, keptPrinted.size()), keptPrinted) << "cut at byte " << cut;
      int replaced = 0;
      for (const std::string& record : kept) {
        if (std::find(got.begin(), got.end(), record) != got.end()) continue;
        const std::string name = record.substr(0, record.find(' ') + 1);
        const bool taken = std::any_of(got.begin(), got.end(), [&](const std::string& g) {
          return g.rfind(name, 0) == 0;
        });
        EXPECT_TRUE(nameInherited && taken && ++replaced == 1)
            << "cut at byte " << cut << " lost or changed: " << record << "\n"
            << ::testing::PrintToString(got);
      }
      if (::testing::Test::HasFailure()) return;
    }
    whole += next;
  }
}

std::string RealData(const std::string& relative) {
  return (fs::path(QUORIN_REALDATA_DIR) / relative).string();
}

std::string RealDataMissing() {
  const fs::path folder = fs::path(QUORIN_REALDATA_DIR).lexically_normal();
  if (fs::is_directory(folder)) return "";
  return "the real-data folder ../shared/realdata (" + folder.string() + ") is absent";
}

}  // namespace testutil
