#include "run/SafeOutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <utility>

#include "run/Process.h"

namespace {

// Paths of the temporaries in flight, kept as plain character arrays so that a
// signal handler can unlink them without allocating.
constexpr int kSlots = 64;
constexpr std::size_t kPathRoom = 4096;
std::array<std::atomic<bool>, kSlots> slotUsed{};
std::array<std::array<char, kPathRoom>, kSlots> slotPath{};
std::mutex slotMutex;

int TakeSlot(const std::string& path) {
  if (path.size() >= kPathRoom) return -1;
  std::lock_guard<std::mutex> lock(slotMutex);
  for (int i = 0; i < kSlots; ++i) {
    if (slotUsed[i].load()) continue;
    std::memcpy(slotPath[i].data(), path.c_str(), path.size() + 1);
    slotUsed[i].store(true);
    return i;
  }
  return -1;
}

void ReleaseSlot(int slot) {
  if (slot >= 0) slotUsed[slot].store(false);
}

// The permissions a plain create would give: those of the file being replaced,
// else 0666 less the umask.
mode_t CreationMode(const std::string& target) {
  struct stat info;
  if (::stat(target.c_str(), &info) == 0 && S_ISREG(info.st_mode)) return info.st_mode & 07777;
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return 0666 & ~mask;
}

void OnSignal(int signal) {
  RemovePendingTemporaries();
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

}  // namespace

CSafeOutputFile::~CSafeOutputFile() { Discard(); }

bool CSafeOutputFile::Open(const std::string& path, std::ios::openmode mode) {
  Discard();
  target = path;
  failure.clear();
  // Only a regular file is replaced: never a directory, and never a device or
  // FIFO that the rename would swap for a plain file.
  const PathKind kind = GetPathKind(path);
  if (path.empty() || (kind != PathKind::Missing && kind != PathKind::File)) {
    failure = kind == PathKind::Directory ? std::strerror(EISDIR) : "not a regular file";
    return false;
  }
  const std::size_t cut = LastSeparator(path);
  const std::string folder = cut == std::string::npos ? std::string() : path.substr(0, cut + 1);
  const std::string name = cut == std::string::npos ? path : path.substr(cut + 1);
  std::string pattern = folder + "." + name + ".partXXXXXX";
  int fd = ::mkstemp(pattern.data());
  if (fd < 0) {
    failure = std::strerror(errno);
    return false;
  }
  ::fchmod(fd, CreationMode(path));
  ::close(fd);
  temporary = pattern;
  slot = TakeSlot(temporary);
  stream.open(temporary, mode | std::ios::out | std::ios::trunc);
  if (!stream.is_open()) {
    failure = std::strerror(errno);
    Discard();
    return false;
  }
  return true;
}

bool CSafeOutputFile::Commit() {
  if (temporary.empty()) return false;
  errno = 0;
  stream.flush();
  bool ok = static_cast<bool>(stream);
  stream.close();
  ok = ok && !stream.fail();
  if (ok && std::rename(temporary.c_str(), target.c_str()) != 0) ok = false;
  if (!ok) {
    if (errno != 0) failure = std::strerror(errno);
    Discard();
    return false;
  }
  temporary.clear();
  ReleaseSlot(slot);
  slot = -1;
  return true;
}

void CSafeOutputFile::Discard() {
  if (stream.is_open()) stream.close();
  stream.clear();
  if (!temporary.empty()) std::remove(temporary.c_str());
  temporary.clear();
  ReleaseSlot(slot);
  slot = -1;
}

CScratchName::CScratchName(std::string name) : path(std::move(name)), slot(TakeSlot(path)) {}

CScratchName::~CScratchName() {
  std::remove(path.c_str());
  ReleaseSlot(slot);
}

std::string FailureLine(const CSafeOutputFile& file) {
  return file.Failure().empty() ? std::string() : "\t" + file.Failure() + "\n";
}

void RemovePendingTemporaries() {
  for (int i = 0; i < kSlots; ++i) {
    if (slotUsed[i].load()) ::unlink(slotPath[i].data());
  }
}

void RemoveTemporariesOnSignals() {
  for (int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) std::signal(signal, OnSignal);
}
