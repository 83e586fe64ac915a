#pragma once
#include <iostream>
#include <sstream>

// Holds back what is printed on standard output while it lives: for a second
// reading of files whose problems were already reported, or whose misses the
// caller counts and reports itself.
class CQuietOutput {
 public:
  CQuietOutput() : saved(std::cout.rdbuf(sink.rdbuf())) {}
  ~CQuietOutput() { std::cout.rdbuf(saved); }
  CQuietOutput(const CQuietOutput&) = delete;
  CQuietOutput& operator=(const CQuietOutput&) = delete;

 private:
  std::ostringstream sink;
  std::streambuf* saved;
};
