#include <gtest/gtest.h>

#include "tests/random_meshes.h"
#include "tests/reference.h"

namespace qel::gridwork {
namespace {

using namespace random_meshes;
using namespace reference;

TEST(remove_degenerated, matrices_without_rows_or_columns) {
  for (const auto& [rows, cols] : {std::pair(0U, 0U), {0U, 4U}, {3U, 0U}}) {
    dense2D<unsigned> m(rows, cols);
    EXPECT_EQ(remove_degenerated(m, true), 0);
    EXPECT_TRUE(m.rows() == rows && m.cols() == cols);
  }
}

TEST(simplify, refuses_or_ignores) {
  dense2D<double> coords(2, 3, {0, 0, 1, 0, 0, 1}), no_nodes(3, 0), no_rows(0, 3);
  const dense2D<double> old_coords = deep_copy(coords);
  dense2D<unsigned> m[] = {dense2D<unsigned>(2, 1, {2, none}), dense2D<unsigned>(2, 1, {1, 3})};
  dense1D<unsigned> new_ids;
  const auto run = [&](dense2D<double>& c, dense2D<unsigned>* first, dense2D<unsigned>* last, unsigned first_node) {
    new_ids = dense1D<unsigned>{4};
    const int result = simplify(c, first, last, new_ids, first_node);
    EXPECT_TRUE(new_ids.empty());
    return result;
  };
  EXPECT_EQ(run(coords, m, m, 0), 0);
  EXPECT_EQ(run(coords, m + 1, m, 0), -3);
  EXPECT_EQ(run(coords, m, m + 2, 0), -2);
  EXPECT_EQ(run(coords, m, m + 2, 9), -2);
  EXPECT_EQ(run(no_nodes, m, m + 1, 0), -2);
  EXPECT_EQ(run(no_rows, m, m + 1, 0), 0);
  EXPECT_EQ(run(coords, m, m + 1, 3), 0);
  EXPECT_EQ(simplify(coords, m[1], 0), -2);
  EXPECT_EQ(simplify(coords, m[1], new_ids, 0), -2);
  EXPECT_EQ(simplify(coords, m[0], m[1], 0), -2);
  dense2D<unsigned> only_none(2, 2, none);
  EXPECT_EQ(run(no_nodes, &only_none, &only_none + 1, 0), 0);
  EXPECT_EQ(coords, old_coords);
  EXPECT_EQ(columns(m[0]), (std::vector<id_list>{{2, none}}));
  EXPECT_EQ(columns(m[1]), (std::vector<id_list>{{1, 3}}));
  EXPECT_EQ(no_rows.cols(), 3U);
}

}  // namespace
}  // namespace qel::gridwork
