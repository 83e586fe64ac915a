#include "run/InputFailures.h"

#include <atomic>

namespace {
std::atomic<uint64_t> failures{0};
}  // namespace

void NoteInputFailure() { ++failures; }

uint64_t InputFailureCount() { return failures.load(); }
