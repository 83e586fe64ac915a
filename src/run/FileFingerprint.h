#pragma once
#include <cstdint>
#include <string>

// Size and CRC-32 of a file's content.
struct CFileIdentity {
  uint64_t size = 0;
  uint32_t crc = 0;
  bool operator==(const CFileIdentity&) const = default;
};
// The CRC-32 of the whole file, or `sampled`, of its first, middle and last
// MiB only: a library of hundreds of MiB is told from another by them as
// surely, and each shard would otherwise read it whole once more.
// False when the file can't be read.
bool IdentifyFile(const std::string& path, CFileIdentity& identity, bool sampled);

// The identity of a file's whole content as text, "size:crc" in decimal and
// hex. Empty when the path is no regular file that can be read.
// The run summary records the fingerprint of every output of a run, so that a
// reader can tell a file of that run from one that another run left.
std::string FileFingerprint(const std::string& path);

// A stamp that names one run: the start time (UTC) and a random part.
std::string NewRunStamp();
