// The mzML reader, plain and gzipped, on arbitrary bytes.
#include "SpectrumFileFuzz.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fuzz::SilenceOutput();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  fuzz::ReadPlainAndGzipped(4, ".mzML", data, size);
  return 0;
}
