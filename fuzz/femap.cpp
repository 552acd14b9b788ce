// The bytes are a FEMAP neutral file.
#include "fuzz/identified.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::check_identified(std::string(reinterpret_cast<const char*>(data), size), fuzz::FEMAP_input, fuzz::FEMAP_input,
                         fuzz::FEMAP_output);
  return 0;
}
