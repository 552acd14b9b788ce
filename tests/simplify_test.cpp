#include <gtest/gtest.h>

#include <set>

#include "tests/random_meshes.h"
#include "tests/reference.h"

namespace qel::gridwork {
namespace {

using namespace random_meshes;
using namespace reference;
using matrices = std::vector<dense2D<unsigned>>;

bool is_degenerate(const id_list& element, bool strict) {
  const std::set<unsigned> distinct(element.begin(), element.end());
  const auto nones = static_cast<std::size_t>(std::count(element.begin(), element.end(), none));
  return distinct.size() - distinct.count(none) != element.size() - nones || (strict && nones > 1);
}

// Removes the degenerate elements of m and checks the result and the map against is_degenerate().
void expect_removal(const dense2D<unsigned>& m, bool strict) {
  std::vector<id_list> kept;
  id_list map;
  for (const id_list& element : columns(m)) {
    map.push_back(is_degenerate(element, strict) ? none : static_cast<unsigned>(kept.size()));
    if (map.back() != none) kept.push_back(element);
  }
  for (dense2D<unsigned> work : {deep_copy(m), with_gaps(m, 5U)}) {
    dense1D<unsigned> new_elements{3, 3};
    dense2D<unsigned> without_map = deep_copy(work);
    ASSERT_EQ(remove_degenerated(work, new_elements, strict), int(m.cols() - kept.size()));
    ASSERT_EQ(remove_degenerated(without_map, strict), int(m.cols() - kept.size()));
    ASSERT_EQ(to_list(new_elements), map);
    ASSERT_EQ(columns(work), kept);
    ASSERT_EQ(work, without_map);
    ASSERT_EQ(work.rows(), m.rows());
  }
}

TEST(remove_degenerated, examples) {
  dense2D<unsigned> triangles(3, 4, {3, 3, 7, 0, 1, 2, 5, 4, 5, 6, 7, 8});
  EXPECT_EQ(remove_degenerated(triangles, false), 2);
  EXPECT_EQ(columns(triangles), (std::vector<id_list>{{0, 1, 2}, {6, 7, 8}}));
  const dense2D<unsigned> faces(4, 2, {1, 2, 3, none, 1, 2, 1, none});
  const dense2D<unsigned> solid(8, 1, {0, 1, 2, 3, none, none, none, none});
  for (const bool strict : {false, true}) {
    for (const auto& m : {faces, solid, dense2D<unsigned>(), dense2D<unsigned>(0, 4), dense2D<unsigned>(3, 0),
                          dense2D<unsigned>(1, 3, 6U), dense2D<unsigned>(1, 3, none), dense2D<unsigned>(2, 2, none)}) {
      expect_removal(m, strict);
    }
  }
}

TEST(remove_degenerated, random_elements_of_any_height) {
  generator random(1);
  for (unsigned rows = 1; rows <= 70; rows += rows < 12 ? 1 : 9) {
    for (const unsigned nodes : {2U, rows, 3 * rows, rows * rows, none}) {
      const dense2D<unsigned> m = connectivity(random, rows, 60, nodes);
      for (const bool strict : {false, true}) expect_removal(m, strict);
    }
  }
}

struct simplified {
  dense2D<double> coords;
  matrices elements;
  id_list map;
};

// The definition: used or early nodes stay, in their order.
simplified simplify_slowly(const dense2D<double>& coords, const matrices& elements, unsigned first) {
  const id_list used_ids = unique(elements);
  const std::set<unsigned> used(used_ids.begin(), used_ids.end());
  simplified result{deep_copy(coords), deep_copies(elements), id_list(coords.cols(), none)};
  unsigned kept = 0;
  for (unsigned i = 0; i < coords.cols(); ++i) {
    if (i >= first && used.count(i) == 0) continue;
    std::copy_n(coords.column(i), coords.rows(), result.coords.column(kept));
    result.map[i] = kept++;
  }
  EXPECT_TRUE(result.coords.resize(coords.rows(), kept));
  renumber(result.elements, result.map);
  return result;
}

void expect_simplification(const dense2D<double>& coords, const matrices& given, unsigned first) {
  const simplified expected = simplify_slowly(coords, given, first);
  const auto expect = [&](auto door, auto&... new_ids) {
    dense2D<double> nodes = with_gaps(coords, 1.0);
    matrices work = given;
    for (auto& m : work) m = with_gaps(m, 0U);
    const matrices other_views = work;
    ASSERT_EQ(door(nodes, work, new_ids...), int(coords.cols() - expected.coords.cols()));
    ASSERT_TRUE(same_bits(nodes, expected.coords));
    ASSERT_EQ(work, expected.elements);
    ASSERT_EQ(other_views, expected.elements) << "the matrices were not renumbered in place";
    ASSERT_TRUE(((to_list(new_ids) == expected.map) && ...));
  };
  dense1D<unsigned> new_ids{1}, of_one{1};
  expect([&](auto& c, auto& m, auto& ids) { return simplify(c, m.data(), m.data() + m.size(), ids, first); }, new_ids);
  const auto one = [&](auto& c, auto& m, auto&... ids) { return simplify(c, m[0], ids..., first); };
  if (given.size() == 1) expect(one, of_one), expect(one);
  if (given.size() == 2) expect([&](auto& c, auto& m) { return simplify(c, m[0], m[1], first); });
}

TEST(simplify, keeps_used_and_early_nodes) {
  generator random(2);
  for (unsigned round = 0; round < 60; ++round) {
    const unsigned n = 1 + below(random, 200);
    const auto all = clouds(2 + round % 2, n);
    const dense2D<double>& coords = all[round % all.size()].coords;
    matrices elements;
    for (unsigned k = 0; k < 1 + round % 3; ++k) {
      elements.push_back(connectivity(random, 1 + below(random, 8), below(random, 40), n));
    }
    for (const unsigned first : {0U, 1U, n / 2, n - 1}) {
      if (first >= n) continue;
      expect_simplification(coords, elements, first);
      if (HasFatalFailure()) FAIL() << "n = " << n << ", first = " << first;
    }
  }
  expect_simplification(dense2D<double>(5, 3, 2.0), {dense2D<unsigned>(2, 1, {2, 0})}, 0);
  expect_simplification(dense2D<double>(2, 64, 2.0), {dense2D<unsigned>(1, 1, none)}, 0);
  expect_simplification(dense2D<double>(2, 3), {dense2D<unsigned>(3, 1, {2, 1, 0})}, 0);
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
