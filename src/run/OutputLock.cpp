#include "run/OutputLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <iostream>

#include "run/Process.h"

namespace {

std::string LockFileName(const std::string& path) {
  const std::size_t cut = LastSeparator(path);
  const std::string folder = cut == std::string::npos ? std::string() : path.substr(0, cut + 1);
  return folder + "." + path.substr(cut == std::string::npos ? 0 : cut + 1) + ".lock";
}

}  // namespace

COutputLock::~COutputLock() {
  // The name goes first: a process that opened the file before then finds,
  // once it holds the lock, that the name no longer leads to its file.
  for (CHeld& entry : held) {
    entry.name.reset();
    ::close(entry.fd);
  }
}

bool COutputLock::Lock(const std::string& path) {
  const std::string name = LockFileName(path);
  for (;;) {
    const int fd = ::open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    // Where no lock file can be made, the run's own checks of the folder speak.
    if (fd < 0) return true;
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
      ::close(fd);
      return false;
    }
    // The holder before us may have removed the name after we opened it:
    // then the lock is on a file nobody else will find, and we start anew.
    struct stat opened, named;
    if (::fstat(fd, &opened) == 0 && ::stat(name.c_str(), &named) == 0 &&
        opened.st_dev == named.st_dev && opened.st_ino == named.st_ino) {
      CHeld& entry = held.emplace_back();
      entry.fd = fd;
      entry.name = std::make_unique<CScratchName>(name);
      return true;
    }
    ::close(fd);
  }
}

void LockRunOutputs(const CRunPaths& paths, COutputLock& lock) {
  for (const CNamedPath& output : paths.outputs) {
    if (!output.locked) continue;
    if (lock.Lock(output.path)) continue;
    std::cout << "[Error]: Another run is writing " << output.path << " (" << output.what
              << ") now; this run is refused. Nothing was written." << std::endl;
    ExitProgram(1);
  }
}
