// What must hold for a reader of a format with identifiers and for its writer, whatever the bytes.
#ifndef QEL_FUZZ_IDENTIFIED_H
#define QEL_FUZZ_IDENTIFIED_H

#include "fuzz/input.h"
#include "tests/identified_mesh.h"

namespace fuzz {

using reader_of_type = int (*)(const char*, dense2D<double>&, dense2D<unsigned>&, element_type);

/// Replaces a character.
inline std::string replaced(const std::string& bytes, char old, const char* text) {
  std::string result;
  for (const char c : bytes) c == old ? result += text : result += c;
  return result;
}

/// A mesh or nothing; the same of the same file in another, less usual form; the short form with the same elements; what
/// is written comes back as it was written.
inline void check_identified(const std::string& bytes, const std::string& unusual, identified::reader read,
                             reader_of_type read_type, identified::writer write) {
  static const memory_file file;
  identified::mesh m, back;
  const int code = identified::read(read, bytes, m);
  CHECK(code >= -6 && code != -1 && code != -4);
  CHECK(code < 0 ? m.is_empty() : m.is_complete());
  CHECK(identified::read(read, unusual, back) == code && back.digest() == m.digest());
  file.write(bytes);
  for (unsigned b = 0; code >= 0 && b < m.types.size(); ++b) {
    dense2D<double> coords;
    dense2D<unsigned> elements;
    CHECK(read_type(file.path(), coords, elements, element_type(m.types[b])) == code);
    CHECK(random_meshes::same_bits(coords, m.coords) && elements == m.block(b));
  }
  if (code < 0 || m.connectivity.empty()) return;
  const std::string written = identified::write(write, m);
  CHECK(identified::read(read, written, back) == 0 && back.is_complete());
  CHECK(identified::write(write, back) == written);
  CHECK(back.property_IDs == m.property_IDs);
}

}  // namespace fuzz

#endif
