#pragma once
#include <string>

// The identity of a file's content: its size and CRC-32, as "size:crc" in
// decimal and hex. Empty when the path is no regular file that can be read.
// The run summary records the fingerprint of every output of a run, so that a
// reader can tell a file of that run from one that another run left.
std::string FileFingerprint(const std::string& path);

// A stamp that names one run: the start time (UTC) and a random part.
std::string NewRunStamp();
