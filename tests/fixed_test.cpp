// The small fixed-size arrays.
#include "qel/fixed.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "facts.h"

namespace {

using qel::matrix_fixed;
using qel::symmetric_fixed;
using qel::vector_fixed;

TEST(fixed, types_are_plain_aggregates_without_padding) {
  EXPECT_TRUE((std::is_aggregate_v<vector_fixed<unsigned, 4>> && std::is_trivial_v<vector_fixed<double, 2>>));
  EXPECT_TRUE((std::is_aggregate_v<symmetric_fixed<double, 3>> && std::is_aggregate_v<matrix_fixed<double, 3, 2>>));
  EXPECT_ALL(sizeof(vector_fixed<double, 9>) == 72, sizeof(symmetric_fixed<double, 3>) == 48,
             sizeof(matrix_fixed<double, 3, 2>) == 48);
}

TEST(fixed, vector_assigns_and_compares) {
  vector_fixed<double, 3> a{1.0, 2.0}, b = a;
  EXPECT_ALL(b == a, a[2] == 0);
  b[1] = 7;
  EXPECT_ALL(b != a, a[1] == 2.0);
  static_assert(std::is_same_v<decltype(b = 4.5), double>);
  EXPECT_EQ(b = 4.5, 4.5);
  for (const double value : b) EXPECT_EQ(value, 4.5);
}

TEST(fixed, matrices_are_packed_by_columns) {
  const symmetric_fixed<double, 2> two{11, 12, 22};
  symmetric_fixed<double, 3> three{11, 12, 22, 13, 23, 33};
  matrix_fixed<double, 3, 2> m{11, 21, 31, 12, 22, 32};
  for (unsigned i = 0; i < 3; ++i) {
    for (unsigned j = 0; j < 3; ++j) {
      const double upper = i < j ? 10 * i + j + 11 : 10 * j + i + 11;
      EXPECT_ALL(three(i, j) == upper, (i == 2 || j == 2 || two(i, j) == upper)) << i << ' ' << j;
      EXPECT_TRUE(j == 2 || m(i, j) == 10 * i + j + 11) << i << ' ' << j;
    }
  }
  three(2, 0) = -1, m(2, 0) = 5;
  EXPECT_ALL(three[3] == -1, three(0, 2) == -1, m[2] == 5, m.rows() == 3, m.cols() == 2, m.size() == 6);
}

}  // namespace
