#include <gtest/gtest.h>

#include "qel/gridwork.h"
#include "tests/facts.h"
#include "tests/random_meshes.h"
#include "tests/reference.h"

namespace qel::gridwork {
namespace {

using reference::none;
constexpr unsigned type_count = 23;

TEST(elements, tables) {
  const unsigned nodes[] = {0, 1, 2, 2, 3, 4, 3, 4, 6, 8, 9, 8, 4, 10, 5, 13, 14, 6, 15, 18, 8, 20, 27};
  const unsigned vertices[] = {0, 1, 2, 2, 2, 4, 3, 4, 3, 4, 4, 8, 4, 4, 5, 5, 5, 6, 6, 6, 8, 8, 8};
  const unsigned dims[] = {0, 0, 1, 1, 1, 2, 2, 2, 2, 2, 2, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3};
  const unsigned boundaries[] = {0, 0, 2, 2, 2, 4, 3, 4, 3, 4, 4, 6, 4, 4, 5, 5, 5, 5, 5, 5, 6, 6, 6};
  for (unsigned t = 0; t < type_count; ++t) {
    const auto type = static_cast<element_type>(t);
    EXPECT_ALL(nbr_nodes(type) == nodes[t], nbr_base_nodes(type) == vertices[t], element_dim(type) == dims[t],
               nbr_boundaries(type) == boundaries[t])
        << t;
  }
}

TEST(elements, version) {
  static_assert(QEL_GRIDWORK_VERSION >= QEL_GRIDWORK_VERSION_NUMBER(4, 8, 0));
  static_assert(QEL_GRIDWORK_VERSION < QEL_GRIDWORK_VERSION_NUMBER(QEL_GRIDWORK_VERSION_MAJOR + 1, 0, 0));
  EXPECT_EQ(version(), QEL_GRIDWORK_VERSION_STRING + std::string(".0"));
}

// Every type against every row count: only the shape counts when there is no bound.
TEST(check_IDs_of_a_type, shapes) {
  for (unsigned t = 0; t < type_count; ++t) {
    const auto type = static_cast<element_type>(t);
    EXPECT_ALL(check_IDs(dense2D<unsigned>(7, 0), type, 0), check_IDs(dense2D<unsigned>(0, 7), type, 0));
    for (unsigned rows = 1; rows <= 28; ++rows) {
      const dense2D<unsigned> huge(rows, 2, 4000000000U);
      for (const unsigned n : {none, 4000000001U, 4000000000U}) {
        EXPECT_EQ(check_IDs(huge, type, n), reference::check_column(reference::column(huge, 0), type, n)) << t << rows;
      }
    }
  }
}

// Every column of 3 to 8 rows whose entries are good, too large or none.
TEST(check_IDs_of_a_type, all_patterns) {
  constexpr unsigned n = 5;
  for (unsigned rows = 3, patterns = 27; rows <= 8; ++rows, patterns *= 3) {
    dense2D<unsigned> good(rows, 3, n - 1);
    dense2D<unsigned> m = random_meshes::with_gaps(good, 77U);
    for (unsigned pattern = 0; pattern < patterns; ++pattern) {
      unsigned digits = pattern;
      for (unsigned i = 0; i < rows; ++i, digits /= 3) m(i, 1) = digits % 3 == 0 ? n - 1 : digits % 3 == 1 ? n : none;
      for (unsigned t = 0; t < type_count; ++t) {
        const auto type = static_cast<element_type>(t);
        if (!reference::check_column(reference::column(good, 0), type, n)) continue;
        ASSERT_EQ(check_IDs(m, type, n), reference::check_column(reference::column(m, 1), type, n))
            << "type " << t << ", column " << testing::PrintToString(reference::column(m, 1));
      }
    }
  }
}

}  // namespace
}  // namespace qel::gridwork
