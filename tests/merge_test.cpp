#include <gtest/gtest.h>

#include <initializer_list>
#include <numeric>
#include <utility>

#include "tests/facts.h"
#include "tests/random_meshes.h"
#include "tests/reference.h"

namespace qel::gridwork {
namespace {

using namespace random_meshes;
using namespace reference;

using matrices = std::vector<dense2D<unsigned>>;

// The three groups of overloads with every fault; a fault is reported before those behind it.
const dense2D<double> plane(2, 2, {0, 0, 1, 1}), no_nodes(2, 0), line(1, 2), four(4, 2);

// What the forms without a map, too, return; the map is empty but where something is done.
void expect_code(int code, const dense1D<unsigned>& map, bool done, std::initializer_list<int> others) {
  EXPECT_EQ(map.size(), done ? 2U : 0U);
  for (const int other : others) EXPECT_EQ(other, code);
}

TEST(merge, leaves_the_coordinates_of_a_caller_and_fills_its_map) {
  const double values[] = {0, 0, 7, 1, 0, 7, 0, 0, 7};
  for (const double tol : {0.0, 0.1}) {
    double memory[9];
    unsigned filled[4] = {9, 9, 9, 9};
    std::copy(std::begin(values), std::end(values), memory);
    dense2D<double> coords(2, 3, 3, memory);  // a view with gaps
    dense1D<unsigned> map(4, filled), small(2, filled + 2);
    EXPECT_EQ(merge(coords, map, tol), 1);
    EXPECT_TRUE(std::equal(std::begin(values), std::end(values), memory));
    EXPECT_ALL(map.data() == filled, map.size() == 3, filled[0] == 0, filled[1] == 1, filled[2] == 0);
    EXPECT_EQ(merge(coords, small, tol), 1);
    EXPECT_ALL(small.size() == 3, filled[3] == 9) << "a map that does not fit goes elsewhere";
  }
}

// Whatever part of the nodes a choice of cells is made for, all of them are looked at: the first and the last one merge.
TEST(merge, a_pair_among_any_number_of_nodes) {
  for (unsigned n = 2; n < 4200; n += n == 40 ? 4050 : 1) {
    dense2D<double> coords(3, n, 0.0);
    for (unsigned i = 0; i < n; ++i) coords(0, i) = i + 1 < n ? 1000.0 * i : 0.5;
    dense1D<unsigned> new_IDs;
    ASSERT_EQ(merge(coords, new_IDs, 1.0), 1) << n;
    ASSERT_EQ(new_IDs[n - 1], 0U) << n;
  }
}

TEST(merge_result_codes, all_nodes) {
  const struct {
    const dense2D<double>& coords;
    double tol;
    int code;
  } cases[] = {
      {no_nodes, -1, 0},      {dense2D<double>(), -1, 0}, {line, -1, -1},       {four, -1, -1},  {plane, -1, -3},
      {plane, -infinity, -3}, {plane, not_a_number, -3},  {plane, -5e-324, -3}, {plane, -0.0, 0}};
  for (const auto& c : cases) {
    dense2D<double> work = deep_copy(c.coords);
    dense1D<unsigned> map{7};
    EXPECT_EQ(merge(work, map, c.tol), c.code);
    expect_code(c.code, map, c.code == 0 && !c.coords.empty(), {merge(work, c.tol)});
    EXPECT_EQ(work, c.coords);
  }
}

TEST(merge_result_codes, lists) {
  const dense1D<unsigned> good{0, 1, none}, bad{0, 2}, nothing, no_node{none};
  const struct {
    const dense2D<double>& coords;
    const dense1D<unsigned>&a, &b;
    double tol;
    int code;
  } cases[] = {{no_nodes, bad, bad, -1, 0},
               {line, bad, bad, -1, -1},
               {four, good, good, 0, -1},
               {plane, bad, bad, -1, -2},
               {plane, nothing, bad, -1, -3},
               {plane, good, nothing, -1, -4},
               {plane, good, good, not_a_number, -4},
               {plane, good, nothing, 0, 0},
               {plane, nothing, good, 0, 0},
               {plane, no_node, good, 9, 0},
               {plane, good, no_node, 9, 0},
               {plane, good, good, 0, 0}};
  for (const auto& c : cases) {
    dense1D<unsigned> map{7}, same;
    EXPECT_EQ(merge(c.coords, c.a, c.b, map, c.tol), c.code);
    const bool one_list = c.a == c.b;
    expect_code(c.code, map, c.code == 0 && !c.coords.empty() && !c.a.empty() && !c.b.empty(),
                {one_list ? merge(c.coords, c.a, same, c.tol) : c.code});
  }
}

TEST(merge_result_codes, connectivities) {
  const dense2D<unsigned> good(2, 1, {0, 1}), bad(2, 1, {2, 0}), no_node(2, 2, none), empty;
  const struct {
    const dense2D<double>& coords;
    const dense2D<unsigned>& elements;
    double tol;
    unsigned mode;
    int code;
  } cases[] = {{no_nodes, bad, -1, 9, 0},
               {line, bad, -1, 9, -1},
               {four, bad, -1, 9, -1},
               {plane, bad, -1, 9, -5},
               {plane, bad, not_a_number, 9, -5},
               {plane, bad, 0, 3, -6},
               {plane, empty, 0, none, -6},
               {plane, bad, 9, 0, -2},
               {plane, bad, 9, 2, -2},
               {plane, no_node, 9, 0, 0},
               {plane, no_node, 9, 1, 0},
               {plane, empty, 9, 2, 0},
               {plane, good, 0, 0, 0},
               {plane, good, 0, 1, 0},
               {plane, good, 0, 2, 0}};
  for (const auto& [c, e, tol, mode, code] : cases) {
    matrices m = deep_copies<unsigned>({e, e});
    dense1D<unsigned> map{7}, other;
    EXPECT_EQ(merge(c, m[0], map, tol, mode), code);
    expect_code(code, map, code == 0 && e == good,
                {merge(c, m[0], tol, mode), merge(c, m[0], m[1], other, tol, mode), merge(c, m[0], m[1], tol, mode),
                 merge(c, m.data(), m.data() + 2, other, tol, mode), merge(c, m.data(), m.data() + 2, tol, mode)});
    EXPECT_EQ(m, (matrices{e, e}));
    const int reversed = c.empty() ? 0 : c.rows() == 2 ? -3 : -1;
    EXPECT_EQ(merge(c, m.data() + 1, m.data(), other, -1, 9), reversed);
    EXPECT_EQ(merge(c, m.data() + 1, m.data(), -1, 9), reversed);
    EXPECT_EQ(merge(c, m.data(), m.data(), other, -1, 9), 0);
    EXPECT_TRUE(other.empty());
  }
}

// Random and repeated positions in numbers that make a library take its fast ways; tol = 0 has a simple answer.
TEST(merge, many_nodes) {
  constexpr unsigned n = 240000;
  generator random(4);
  for (const unsigned dim : {2U, 3U}) {
    for (const bool shuffled : {false, true}) {
      dense2D<double> coords(dim, n);
      for (unsigned j = 0; j < n; ++j) {
        for (unsigned k = 0; k < dim; ++k) coords(k, j) = j % 6 == 0 ? real(random) : coords(k, j - 1);
      }
      id_list order = identity(n);
      if (shuffled) std::shuffle(order.begin(), order.end(), random);
      id_list expected(n);
      id_list first_of_group(n / 6, none);
      for (unsigned id : order) {
        if (first_of_group[id / 6] == none) first_of_group[id / 6] = id;
        expected[id] = first_of_group[id / 6];
      }
      dense1D<unsigned> map;
      for (const double tol : {0.0, 1e-12}) {
        EXPECT_EQ(merge(coords, to_array(order), map, tol), int(n - n / 6));
        EXPECT_TRUE(to_list(map) == expected) << dim << " " << shuffled << " " << tol;
      }
    }
  }
}

// From more nodes within the tolerance of one another than cells can part to few that have others near. The first nodes lie
// closer than the others: in their own order, the last ones do not tell of them.
TEST(merge, dense_and_sparse) {
  constexpr unsigned n = 6000;
  generator random(5);
  for (const unsigned dim : {2U, 3U}) {
    for (const double spread : {0.01, 2.0, 20.0, 120.0, 450.0, 2000.0}) {
      dense2D<double> coords(dim, n);
      for (std::uint64_t i = 0; i < coords.size(); ++i) coords.data()[i] = spread * real(random);
      for (std::uint64_t i = 0; i < coords.size() / 4; ++i) coords.data()[i] *= 0.1;
      for (unsigned j = 0; j < n; j += 2) coords(0, j) += 1.9;
      for (unsigned j = 0; j < n; j += 100) coords(j % dim, j) = j % 3 == 0 ? infinity : not_a_number;
      const id_list ordered = identity(n);
      id_list shuffled = ordered;
      std::shuffle(shuffled.begin(), shuffled.end(), random);
      const id_list half(shuffled.begin(), shuffled.begin() + n / 2);
      const std::pair<id_list, id_list> lists[] = {{ordered, ordered}, {shuffled, shuffled}, {half, shuffled}};
      for (const auto& [moving, fixed] : lists) {
        const merge_result expected = merge_near(coords, moving, fixed, 1.0);
        dense1D<unsigned> map;
        EXPECT_EQ(merge(coords, to_array(moving), to_array(fixed), map, 1.0), expected.count);
        EXPECT_TRUE(to_list(map) == expected.new_ids) << dim << " " << spread << " " << moving.size();
        if (moving == fixed) {
          EXPECT_EQ(merge(coords, to_array(fixed), map, 1.0), expected.count);
          EXPECT_TRUE(to_list(map) == expected.new_ids) << dim << " " << spread;
        }
      }
    }
  }
}

// Along one axis, the difference of the outermost nodes is no number.
TEST(merge, nodes_farther_apart_than_numbers_reach) {
  for (const unsigned dim : {2U, 3U}) {
    for (unsigned axis = 0; axis < dim; ++axis) {
      dense2D<double> coords(dim, 40);
      for (unsigned j = 0; j < 40; ++j) {
        for (unsigned a = 0; a < dim; ++a) coords(a, j) = a != axis ? j / 2 : j % 4 < 2 ? -1.7e308 : 1.7e308;
      }
      const merge_result expected = merge_near(coords, identity(40), identity(40), 0.5);
      dense1D<unsigned> map;
      EXPECT_EQ(merge(coords, map, 0.5), expected.count);
      EXPECT_EQ(to_list(map), expected.new_ids);
    }
  }
}

// Elements of many rows, of which few nodes are near.
TEST(merge, tall_elements) {
  constexpr unsigned n = 6000;
  dense2D<double> coords(3, n);
  dense2D<unsigned> elements(n + 2, 1, none);
  for (unsigned j = 0; j < n; ++j) {
    coords(0, j) = j / 100, coords(1, j) = j % 100, coords(2, j) = 0;
    elements(n - j, 0) = j;
    if (j % 3 == 2) coords(0, j) = coords(0, j - 1), coords(1, j) = coords(1, j - 1) + 0.25;
  }
  elements(n + 1, 0) = 7;  // twice
  dense1D<unsigned> map;
  EXPECT_EQ(merge(coords, elements, map, 0.3, 2), int(n / 3));
  for (unsigned j = 0; j < n; ++j) ASSERT_EQ(map[j], j % 3 == 2 ? j - 1 : j);
}

TEST(merge, a_million_coincident_nodes) {
  constexpr unsigned n = 999999;
  dense2D<unsigned> triangles(3, n / 3);
  std::iota(triangles.data(), triangles.data() + n, 0U);
  for (const unsigned dim : {2U, 3U}) {
    const dense2D<double> coords(dim, n, 0.5);
    for (const double tol : {0.0, 0.1, infinity}) {
      dense1D<unsigned> map;
      dense2D<double> moved = deep_copy(coords);
      EXPECT_EQ(merge(moved, map, tol), int(n - 1));
      EXPECT_EQ(std::count(map.begin(), map.end(), 0U), n);
      dense2D<unsigned> work = deep_copy(triangles);
      EXPECT_EQ(merge(coords, work, map, tol, 0), int(n - 1));
      EXPECT_EQ(max_ID(work), 0U);
      work = deep_copy(triangles);
      EXPECT_EQ(merge(coords, work, map, tol, 2), int(n / 3 * 2));
      EXPECT_EQ(count_unique_indices(work), int(n / 3));
      EXPECT_EQ(map[n - 1], n - 3);
    }
  }
}

}  // namespace
}  // namespace qel::gridwork
