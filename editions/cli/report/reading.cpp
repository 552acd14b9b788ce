#include "reading.h"

namespace report {

refusal read_file(const char* path, loaded& file) {
  const file_bytes bytes(path);
  file.bytes = bytes.size();
  if (file.bytes == 0) return {"the file is empty", 0};
  file.is_text = file.kind->is_text(bytes);
  const int result = file.kind->read(path, file.m);
  if (result < 0) return {file.kind->explain(result, bytes), result};
  file.left_out = static_cast<std::uint64_t>(result);
  return {};
}

}  // namespace report
