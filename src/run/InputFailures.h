#pragma once
#include <cstdint>

// Inputs that failed during a run without ending it: a list or dataset that
// could not be opened, a list skipped as faulty. The run goes on as it always
// did; the command line turns a count above zero into a non-zero exit status.
void NoteInputFailure();
uint64_t InputFailureCount();
