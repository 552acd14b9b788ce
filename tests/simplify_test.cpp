#include <gtest/gtest.h>

#include "tests/facts.h"
#include "tests/random_meshes.h"
#include "tests/reference.h"

namespace qel::gridwork {
namespace {

using namespace random_meshes;
using namespace reference;

TEST(simplify, one_matrix_passed_twice_is_renumbered_once) {
  dense2D<double> coords(2, 5, {0, 0, 1, 0, 2, 0, 3, 0, 4, 0});
  dense2D<unsigned> mesh(3, 1, {1, 2, 4});
  EXPECT_EQ(simplify(coords, mesh, mesh, 0), 2);
  EXPECT_ALL(mesh(0, 0) == 0, mesh(1, 0) == 1, mesh(2, 0) == 2, coords(0, 2) == 4);
}

TEST(remove_degenerated, matrices_without_rows_or_columns) {
  for (const auto& [rows, cols] : {std::pair(0U, 0U), {0U, 4U}, {3U, 0U}}) {
    dense2D<unsigned> m(rows, cols);
    EXPECT_EQ(remove_degenerated(m, true), 0);
    EXPECT_ALL(m.rows() == rows, m.cols() == cols);
  }
}

TEST(simplify, refuses_or_ignores) {
  dense2D<double> coords(2, 3, {0, 0, 1, 0, 0, 1}), no_nodes(3, 0), no_rows(0, 3);
  const dense2D<double> old_coords = deep_copy(coords);
  dense2D<unsigned> m[] = {dense2D<unsigned>(2, 1, {2, none}), dense2D<unsigned>(2, 1, {1, 3}),
                           dense2D<unsigned>(2, 2, none)};
  const struct {
    dense2D<double>& coords;
    unsigned first, last, first_node;
    int code;
  } cases[] = {{coords, 0, 0, 0, 0},    {coords, 1, 0, 0, -3},  {coords, 0, 2, 0, -2}, {coords, 0, 2, 9, -2},
               {no_nodes, 0, 1, 0, -2}, {no_nodes, 2, 3, 0, 0}, {no_rows, 0, 1, 0, 0}, {coords, 0, 1, 3, 0}};
  dense1D<unsigned> new_ids;
  for (const auto& c : cases) {
    new_ids = dense1D<unsigned>{4};
    EXPECT_EQ(simplify(c.coords, m + c.first, m + c.last, new_ids, c.first_node), c.code);
    EXPECT_TRUE(new_ids.empty());
  }
  EXPECT_EQ(simplify(coords, m[1], 0), -2);
  EXPECT_EQ(simplify(coords, m[1], new_ids, 0), -2);
  EXPECT_EQ(simplify(coords, m[0], m[1], 0), -2);
  EXPECT_ALL(coords == old_coords, no_rows.cols() == 3);
  EXPECT_ALL(columns(m[0])[0] == id_list({2, none}), columns(m[1])[0] == id_list({1, 3}));
}

}  // namespace
}  // namespace qel::gridwork
