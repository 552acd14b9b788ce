// What tests of readers of files with identifiers have in common.
#ifndef QEL_TESTS_IDENTIFIED_READING_H
#define QEL_TESTS_IDENTIFIED_READING_H

#include <gtest/gtest.h>

#include <string>

#include "identified_mesh.h"

namespace identified {

/// What a reader returns for a text.
inline int code_of(reader input, const std::string& text) {
  mesh m;
  const int code = read(input, text, m);
  EXPECT_TRUE(code < 0 ? m.is_empty() : m.is_complete()) << text;
  return code;
}

/// The type of the first element of a text, and its nodes as the file names them; or the code.
inline std::string first_element(reader input, const std::string& text, mesh& m) {
  const int code = read(input, text, m);
  if (code != 0 || m.types.empty()) return "code " + std::to_string(code);
  std::string found = std::to_string(m.types[0]) + ":";
  for (unsigned i = 0; i < m.connectivity.rows(); ++i) found += " " + std::to_string(m.node_IDs[m.connectivity(i, 0)]);
  return found;
}

/// Writes a mesh and reads it: what is written then has the same bytes. Each block by itself, too: elements keep their
/// identifiers, properties and, but for those that a format drops, their nodes. Returns what was read.
inline mesh expect_round_trip(reader input, writer output, const mesh& m) {
  mesh all, back;
  const std::string first = write(output, m);
  EXPECT_EQ(read(input, first, all), 0);
  EXPECT_TRUE(all.is_complete());
  EXPECT_EQ(write(output, all), first);
  for (unsigned b = 0; b < m.types.size() && !::testing::Test::HasFailure(); ++b) {
    mesh one = m;
    one.types = m.types.sub_vector(b, 1);
    one.offsets = {m.offsets[b], m.offsets[b + 1]};
    EXPECT_EQ(read(input, write(output, one), back), 0);
    const unsigned column = m.offsets[b], count = m.offsets[b + 1] - column;
    EXPECT_EQ(back.connectivity, m.connectivity.sub_matrix(0, column, back.connectivity.rows(), count))
        << "type " << m.types[b];
    EXPECT_EQ(back.property_IDs, m.property_IDs.sub_vector(column, count));
    for (unsigned j = 0; j < count; ++j) EXPECT_EQ(back.element_IDs[j], column + j + 1);
  }
  return all;
}

}  // namespace identified

#endif
