// The bytes are a FEMAP neutral file.
#include "core/limits.h"
#include "fuzz/identified.h"

namespace {

/// True when no line is cut even if there are two bytes for each.
bool has_short_lines(const std::string& bytes) {
  std::size_t line = 0;
  for (const char c : bytes) {
    line = c == '\n' ? 0 : line + 1;
    if (2 * line >= qel::gridwork::detail::limits::longest_record) return false;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  // with blanks, no record is read where it lies
  const std::string unusual = has_short_lines(bytes) ? fuzz::replaced(bytes, ',', ", ") : bytes;
  fuzz::check_identified(bytes, unusual, fuzz::FEMAP_input, fuzz::FEMAP_input, fuzz::FEMAP_output);
  return 0;
}
