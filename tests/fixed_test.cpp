// The small fixed-size arrays.
#include "qel/fixed.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

using qel::matrix_fixed;
using qel::symmetric_fixed;
using qel::vector_fixed;

TEST(fixed, types_are_plain_aggregates_without_padding) {
  EXPECT_TRUE((std::is_aggregate_v<vector_fixed<unsigned, 4>> && std::is_trivial_v<vector_fixed<double, 2>>));
  EXPECT_TRUE((std::is_aggregate_v<symmetric_fixed<double, 3>> && std::is_aggregate_v<matrix_fixed<double, 3, 2>>));
  EXPECT_EQ(sizeof(vector_fixed<double, 9>), 9 * sizeof(double));
  EXPECT_EQ(sizeof(symmetric_fixed<double, 2>), 3 * sizeof(double));
  EXPECT_EQ(sizeof(symmetric_fixed<double, 3>), 6 * sizeof(double));
  EXPECT_EQ(sizeof(matrix_fixed<double, 3, 2>), 6 * sizeof(double));
}

TEST(fixed, vector_assigns_copies_and_compares) {
  vector_fixed<double, 3> a{1.0, 2.0};
  EXPECT_EQ(a[2], 0.0);
  vector_fixed<double, 3> b;
  b = a;
  EXPECT_TRUE(b == a);
  b[1] = 7;
  EXPECT_TRUE(b != a && a[1] == 2.0);
  static_assert(std::is_same_v<decltype(b = 4.5), double>);
  EXPECT_EQ(b = 4.5, 4.5);
  for (const double value : b) EXPECT_EQ(value, 4.5);
  vector_fixed<unsigned, 2> ids{};
  EXPECT_EQ(ids = 3, 3U);
  EXPECT_EQ(ids.begin() + 2, ids.end());
}

TEST(fixed, symmetric_matrix_is_the_packed_upper_triangle_by_columns) {
  const symmetric_fixed<double, 2> two{11, 12, 22};
  const symmetric_fixed<double, 3> three{11, 12, 22, 13, 23, 33};
  for (unsigned i = 0; i < 3; ++i) {
    for (unsigned j = 0; j < 3; ++j) {
      const unsigned low = i < j ? i : j, high = i < j ? j : i;
      EXPECT_EQ(three(i, j), 10.0 * (low + 1) + high + 1) << i << ' ' << j;
      if (high < 2) {
        EXPECT_EQ(two(i, j), three(i, j)) << i << ' ' << j;
      }
    }
  }
  EXPECT_TRUE(three[0] == 11 && three[2] == 22 && three[5] == 33);
  symmetric_fixed<double, 3> copy{};
  copy = three;
  copy(2, 0) = -1;
  EXPECT_TRUE(copy[3] == -1 && copy(0, 2) == -1 && three[3] == 13 && copy != three);
}

TEST(fixed, matrix_is_column_major) {
  matrix_fixed<double, 3, 2> m{11, 21, 31, 12, 22, 32};
  for (unsigned i = 0; i < 3; ++i) {
    for (unsigned j = 0; j < 2; ++j) EXPECT_EQ(m(i, j), 10.0 * (i + 1) + j + 1) << i << ' ' << j;
  }
  m(2, 0) = 5;
  EXPECT_EQ(m[2], 5.0);
  EXPECT_TRUE(m.rows() == 3 && m.cols() == 2 && m.size() == 6);
}

}  // namespace
