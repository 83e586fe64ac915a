#pragma once
#include <memory>
#include <string>

// On a terminal, the stages' plain progress lines ("Spectra: 300/900",
// "1000 / 5000") give way to one bar that redraws in place; every other line
// passes through unchanged. Off a terminal nothing changes.
class CProgressBar {
 public:
  // A bar on standard output if it is a terminal; nullptr otherwise.
  static std::unique_ptr<CProgressBar> StartIfTerminal();
  ~CProgressBar();  // clears the bar and gives standard output back

  CProgressBar(const CProgressBar&) = delete;
  CProgressBar& operator=(const CProgressBar&) = delete;

  class Impl;

 private:
  explicit CProgressBar(std::unique_ptr<Impl> impl);
  std::unique_ptr<Impl> impl_;
};

// Whether a console line is one of the plain progress lines the bar replaces.
bool IsProgressLine(const std::string& line);
