#pragma once

// A hint that `address` will soon be read; no effect on results. Candidates lie
// scattered over the whole library, and without the hint each one starts with
// a few waits for memory.
inline void Prefetch(const void* address) {
#if defined(__GNUC__)
  __builtin_prefetch(address, 0);
#else
  (void)address;
#endif
}
