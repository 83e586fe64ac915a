#include "run/Process.h"

#include "run/SafeOutputFile.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <thread>

void ExitProgram(int status) {
  // A run that ends early leaves no half-written output behind.
  RemovePendingTemporaries();
  std::cout.flush();
  std::exit(status);
}

void EnterExecutableFolder() {
  // The working directory is only checked, as the program always did.
  char current[4096];
  if (!::getcwd(current, sizeof current)) {
    int error = errno;
    if (error == ERANGE) {
      char* needed = ::getcwd(nullptr, 0);
      std::size_t length = needed ? std::char_traits<char>::length(needed) + 1 : 0;
      std::free(needed);
      std::cout << "Buffer too small; need " << length << " characters\n";
    } else {
      std::cout << "GetCurrentDirectory failed (" << error << ")\n";
    }
    ExitProgram(-1);
  }
  const std::string folder = ExecutableFolder();
  if (folder.empty()) {
    std::cout << "SetCurrentDirectory failed (" << errno << ")\n";
    ExitProgram(-1);
  }
  if (::chdir(folder.c_str()) != 0) {
    std::cout << "SetCurrentDirectory failed (" << errno << ")\n";
    ExitProgram(-1);
  }
}

std::string ExecutableFolder() {
  char exe[4096];
  ssize_t length = ::readlink("/proc/self/exe", exe, sizeof exe - 1);
  if (length <= 0) return std::string();
  std::string folder(exe, static_cast<std::size_t>(length));
  folder.erase(folder.rfind('/') + 1);  // keep the trailing separator
  return folder;
}

PathKind GetPathKind(const std::string& path) {
  struct stat info;
  if (::stat(path.c_str(), &info) != 0) return PathKind::Missing;
  if (S_ISREG(info.st_mode)) return PathKind::File;
  if (S_ISDIR(info.st_mode)) return PathKind::Directory;
  return PathKind::Other;
}

std::vector<std::string> ListDirectory(const std::string& path) {
  std::vector<std::string> names;
  std::error_code error;
  for (std::filesystem::directory_iterator it(path, error), end; !error && it != end;
       it.increment(error)) {
    names.push_back(it->path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::size_t LastSeparator(const std::string& path) {
  std::size_t slash = path.rfind('/');
  std::size_t backslash = path.rfind('\\');
  if (slash == std::string::npos) return backslash;
  if (backslash == std::string::npos) return slash;
  return std::max(slash, backslash);
}

void SleepMilliseconds(unsigned milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

void PreferHugePages() {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
  constexpr std::uintptr_t kHugePage = std::uintptr_t{1} << 21;  // 2 MiB
  constexpr int kCollapse = 25;  // MADV_COLLAPSE: makes the pages huge now
  std::ifstream maps("/proc/self/maps");
  std::string line;
  while (std::getline(maps, line)) {
    // "start-end perms offset device inode [name]"; anonymous memory has inode
    // 0 and no name, the heap is named [heap].
    unsigned long start = 0, end = 0, offset = 0, inode = 0;
    char perms[8] = {}, device[32] = {};
    int nameAt = 0;
    if (std::sscanf(line.c_str(), "%lx-%lx %7s %lx %31s %lu %n", &start, &end, perms, &offset,
                    device, &inode, &nameAt) < 6)
      continue;
    const std::string name = nameAt > 0 ? line.substr(static_cast<std::size_t>(nameAt)) : "";
    if (inode != 0 || std::string(perms) != "rw-p" || !(name.empty() || name == "[heap]"))
      continue;
    const std::uintptr_t first = (start + kHugePage - 1) & ~(kHugePage - 1);
    const std::uintptr_t last = end & ~(kHugePage - 1);
    if (last <= first) continue;
    void* at = reinterpret_cast<void*>(first);
    // Errors only mean that the system offers no huge pages here.
    if (madvise(at, last - first, MADV_HUGEPAGE) == 0) madvise(at, last - first, kCollapse);
  }
#endif
}


double ProcessCpuSeconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}
