// The bytes are NASTRAN bulk data.
#include "fuzz/identified.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  // with comments, whose commas are none of a card, no line is read where it lies
  fuzz::check_identified(bytes, fuzz::replaced(bytes, '\n', "$,\n"), fuzz::NASTRAN_input, fuzz::NASTRAN_input,
                         fuzz::NASTRAN_output);
  return 0;
}
