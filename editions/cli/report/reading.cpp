#include "reading.h"

namespace report {

refusal read_file(const char* path, loaded& file) {
  const file_bytes bytes(path);
  file.bytes = bytes.size();
  if (file.bytes == 0) return {"the file is empty", 0};
  file.facts = file.kind->look(bytes);
  const int result = file.kind->read(path, file.m);
  if (result < 0) return {file.kind->explain(result, bytes), result};
  // Damaged text may read as a sound binary file without triangles.
  if (file.facts.elements > 0 && file.m.blocks.empty()) return {file.kind->explain(0, bytes), 0};
  file.left_out = static_cast<std::uint64_t>(result);
  return {};
}

std::uint64_t count_removed(const loaded& file) {
  const std::uint64_t kept = count_elements(file.m);
  return file.facts.elements > kept ? file.facts.elements - kept : 0;
}

}  // namespace report
