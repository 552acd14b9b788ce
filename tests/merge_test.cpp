#include <gtest/gtest.h>

#include <numeric>

#include "tests/random_meshes.h"
#include "tests/reference.h"

namespace qel::gridwork {
namespace {

using namespace random_meshes;
using namespace reference;

using matrices = std::vector<dense2D<unsigned>>;

// The three groups of overloads with every fault; a fault is reported before those behind it.
const dense2D<double> plane(2, 2, {0, 0, 1, 1}), empty(2, 0), line(1, 2), four(4, 2);

TEST(merge_result_codes, all_nodes) {
  dense1D<unsigned> map;
  const auto moving = [&](const dense2D<double>& c, double tol) {
    dense2D<double> work = deep_copy(c);
    map = dense1D<unsigned>{7};
    const int result = merge(work, map, tol);
    EXPECT_EQ(merge(work, tol), result);
    EXPECT_EQ(map.size(), result == 0 && !c.empty() ? 2U : 0U);
    EXPECT_EQ(work, c);
    return result;
  };
  EXPECT_EQ(moving(empty, -1), 0);
  EXPECT_EQ(moving(dense2D<double>(), -1), 0);
  EXPECT_EQ(moving(line, -1), -1);
  EXPECT_EQ(moving(four, -1), -1);
  for (const double tol : {-1.0, -infinity, not_a_number, -5e-324}) EXPECT_EQ(moving(plane, tol), -3);
  EXPECT_EQ(moving(plane, -0.0), 0);
}

TEST(merge_result_codes, lists) {
  const dense1D<unsigned> good{0, 1, none}, bad{0, 2}, nothing;
  dense1D<unsigned> map;
  const auto lists = [&](const dense2D<double>& c, const dense1D<unsigned>& a, const dense1D<unsigned>& b, double tol) {
    map = dense1D<unsigned>{7};
    const int result = merge(c, a, b, map, tol);
    EXPECT_EQ(map.size(), result == 0 && !c.empty() && !a.empty() && !b.empty() ? 2U : 0U);
    if (a == b) {
      EXPECT_EQ(merge(c, a, map, tol), result);
    }
    return result;
  };
  EXPECT_EQ(lists(empty, bad, bad, -1), 0);
  EXPECT_EQ(lists(line, bad, bad, -1), -1);
  EXPECT_EQ(lists(four, good, good, 0), -1);
  EXPECT_EQ(lists(plane, bad, bad, -1), -2);
  EXPECT_EQ(lists(plane, nothing, bad, -1), -3);
  EXPECT_EQ(lists(plane, good, nothing, -1), -4);
  EXPECT_EQ(lists(plane, good, good, not_a_number), -4);
  EXPECT_EQ(lists(plane, good, nothing, 0), 0);
  EXPECT_EQ(lists(plane, nothing, good, 0), 0);
  EXPECT_EQ(lists(plane, nothing, nothing, 0), 0);
  EXPECT_EQ(lists(plane, dense1D<unsigned>{none}, good, 9), 0);
  EXPECT_EQ(lists(plane, good, dense1D<unsigned>{none}, 9), 0);
  EXPECT_EQ(lists(plane, good, good, 0), 0);
}

TEST(merge_result_codes, connectivities) {
  const dense2D<unsigned> good_edge(2, 1, {0, 1}), bad_edge(2, 1, {2, 0}), no_node(2, 2, none);
  dense1D<unsigned> map;
  const auto elements = [&](const dense2D<double>& c, const dense2D<unsigned>& e, double tol, unsigned mode) {
    matrices work = deep_copies<unsigned>({e, e});
    map = dense1D<unsigned>{7};
    const int result = merge(c, work[0], map, tol, mode);
    EXPECT_EQ(map.size(), result == 0 && !c.empty() && e == good_edge ? 2U : 0U);
    EXPECT_EQ(merge(c, work[0], tol, mode), result);
    EXPECT_EQ(merge(c, work[0], work[1], map, tol, mode), result);
    EXPECT_EQ(merge(c, work[0], work[1], tol, mode), result);
    EXPECT_EQ(merge(c, work.data(), work.data() + 2, map, tol, mode), result);
    EXPECT_EQ(merge(c, work.data(), work.data() + 2, tol, mode), result);
    EXPECT_EQ(work, (matrices{e, e}));
    return result;
  };
  EXPECT_EQ(elements(empty, bad_edge, -1, 9), 0);
  EXPECT_EQ(elements(line, bad_edge, -1, 9), -1);
  EXPECT_EQ(elements(four, bad_edge, -1, 9), -1);
  EXPECT_EQ(elements(plane, bad_edge, -1, 9), -5);
  EXPECT_EQ(elements(plane, bad_edge, not_a_number, 9), -5);
  EXPECT_EQ(elements(plane, bad_edge, 0, 3), -6);
  EXPECT_EQ(elements(plane, dense2D<unsigned>(), 0, none), -6);
  for (unsigned mode = 0; mode <= 2; ++mode) {
    EXPECT_EQ(elements(plane, bad_edge, 9, mode), -2);
    EXPECT_EQ(elements(plane, no_node, 9, mode), 0);
    EXPECT_EQ(elements(plane, dense2D<unsigned>(3, 0), 9, mode), 0);
    EXPECT_EQ(elements(plane, good_edge, 0, mode), 0);
  }
  matrices range = deep_copies<unsigned>({bad_edge, bad_edge});
  for (const auto* c : {&line, &empty, &plane}) {
    const int reversed = c == &empty ? 0 : c == &line ? -1 : -3;
    EXPECT_EQ(merge(*c, range.data() + 1, range.data(), map, -1, 9), reversed);
    EXPECT_EQ(merge(*c, range.data() + 1, range.data(), -1, 9), reversed);
    EXPECT_EQ(merge(*c, range.data(), range.data(), map, -1, 9), 0);
    EXPECT_TRUE(map.empty());
  }
}

TEST(merge, survivors_by_list_order) {
  dense2D<double> coords(2, 6);
  for (unsigned j = 0; j < 6; ++j) coords(0, j) = j == 5 ? 3 : j;
  dense1D<unsigned> map;
  EXPECT_EQ(merge(coords, dense1D<unsigned>{3, 5}, map, 0), 1);
  EXPECT_EQ(to_list(map), id_list({0, 1, 2, 3, 4, 3}));
  EXPECT_EQ(merge(coords, dense1D<unsigned>{5, none, 3, 5}, map, 0), 1);
  EXPECT_EQ(to_list(map), id_list({0, 1, 2, 5, 4, 5}));
  EXPECT_EQ(merge(coords, dense1D<unsigned>{3}, dense1D<unsigned>{4, 2}, map, 1), 1);
  EXPECT_EQ(to_list(map), id_list({0, 1, 2, 4, 4, 5}));
  dense2D<double> same(3, 3, 0.5);
  EXPECT_EQ(merge(same, map, 0), 2);
  EXPECT_EQ(to_list(map), id_list({0, 0, 0}));
}

// Merged matrices stay where they are, and every view of their storage sees the new numbers.
TEST(merge, two_matrices_keep_their_storage) {
  const dense2D<double> coords(2, 4, {0, 0, 1, 0, 0, 0, 1, 0});
  for (const double tol : {0.0, 1e-9}) {
    for (unsigned mode = 0; mode <= 2; ++mode) {
      for (const bool without_map : {false, true}) {
        dense2D<unsigned> whole(2, 4, {0, 1, 2, 3, 3, 2, 2, 0});
        dense2D<unsigned> m1 = whole.sub_matrix(0, 0, 2, 2), m2 = whole.sub_matrix(0, 2, 2, 2);
        dense1D<unsigned> map;
        const int count = without_map ? merge(coords, m1, m2, tol, mode) : merge(coords, m1, m2, map, tol, mode);
        EXPECT_EQ(count, mode == 0 ? 2 : 1);
        EXPECT_EQ(columns(whole), mode == 0 ? (std::vector<id_list>{{0, 1}, {0, 1}, {1, 0}, {0, 0}})
                                            : (std::vector<id_list>{{0, 1}, {0, 3}, {3, 0}, {0, 0}}));
        EXPECT_TRUE(m1.data() == whole.data() && m2.data() == whole.column(2));
      }
    }
  }
}

// The first pass merges nodes 0 and 1; only then has node 2 an element in common with a node that is left.
TEST(merge, element_passes_repeat) {
  const dense2D<double> coords(2, 4, {0, 0, 0, 0, 0.5, 0, 0.5, 0});
  for (unsigned mode = 0; mode <= 2; ++mode) {
    dense2D<unsigned> edges(2, 2, {0, 1, 1, 2});
    dense1D<unsigned> map;
    EXPECT_EQ(merge(coords, edges, map, 0.5, mode), mode == 1 ? 1 : 2);
    EXPECT_EQ(to_list(map), mode == 1 ? id_list({0, 0, 2, 3}) : id_list({0, 0, 0, 3}));
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
    for (const cloud& c : clouds(dim, 4000)) {
      if (c.step < 1e-3 || c.step > 1) continue;
      const id_list all = identity(4000);
      const merge_result expected = merge_near(c.coords, all, all, 0.4 * c.step);
      dense1D<unsigned> map;
      EXPECT_EQ(merge(c.coords, to_array(all), map, 0.4 * c.step), expected.count);
      EXPECT_TRUE(to_list(map) == expected.new_ids) << c.name;
    }
  }
}

// More nodes within the tolerance of one another than cells can part: about two points, and all over a small cube.
TEST(merge, crowds) {
  constexpr unsigned n = 3000;
  generator random(5);
  for (const unsigned dim : {2U, 3U}) {
    for (const double spread : {0.01, 2.0}) {
      dense2D<double> coords(dim, n);
      for (std::uint64_t i = 0; i < coords.size(); ++i) coords.data()[i] = spread * real(random);
      for (unsigned j = 0; j < n; j += 2) coords(0, j) += 1.9;
      for (unsigned j = 0; j < n; j += 100) coords(j % dim, j) = j % 3 == 0 ? infinity : not_a_number;
      id_list order = identity(n);
      std::shuffle(order.begin(), order.end(), random);
      const id_list half(order.begin(), order.begin() + n / 2);
      for (const id_list& moving : {order, half}) {
        const merge_result expected = merge_near(coords, moving, order, 1.0);
        dense1D<unsigned> map;
        EXPECT_EQ(merge(coords, to_array(moving), to_array(order), map, 1.0), expected.count);
        EXPECT_TRUE(to_list(map) == expected.new_ids) << dim << " " << spread << " " << moving.size();
      }
    }
  }
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
