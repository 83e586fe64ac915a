// The MGF reader (block index, parser), on arbitrary bytes.
#include "SpectrumFileFuzz.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fuzz::SilenceOutput();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const std::string& path = fuzz::ScratchPath(".mgf");
  fuzz::WriteFile(path, fuzz::Bytes(data, size));
  fuzz::ReadEverySpectrum(2, path);
  return 0;
}
