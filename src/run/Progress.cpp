#include "run/Progress.h"

#include <utility>

namespace {
ProgressSink& Sink() {
  static ProgressSink sink;
  return sink;
}
}  // namespace

void SetProgressSink(ProgressSink sink) { Sink() = std::move(sink); }

bool HasProgressSink() { return static_cast<bool>(Sink()); }

void ReportProgress(const std::string& task, uint64_t done, uint64_t total) {
  if (Sink()) Sink()(task, done, total);
}
