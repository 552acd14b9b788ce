// The bytes are NASTRAN bulk data.
#include "fuzz/identified.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::check_identified(std::string(reinterpret_cast<const char*>(data), size), fuzz::NASTRAN_input,
                         fuzz::NASTRAN_input, fuzz::NASTRAN_output);
  return 0;
}
