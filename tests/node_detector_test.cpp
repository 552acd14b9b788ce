#include <gtest/gtest.h>

#include "tests/random_meshes.h"
#include "tests/reference.h"

namespace qel::gridwork {
namespace {

using namespace random_meshes;
using namespace reference;

vector_fixed<double, 2> flat(const point& p) { return {p[0], p[1]}; }
vector_fixed<double, 3> spatial(const point& p) { return {p[0], p[1], p[2]}; }

id_list box(const node_detector& detector, unsigned query_dim, const point& low, const point& high) {
  dense1D<unsigned> found{77};
  if (query_dim == 2) detector.find_in_box(flat(low), flat(high), found);
  if (query_dim == 3) detector.find_in_box(spatial(low), spatial(high), found);
  EXPECT_EQ(found[0], 77U);
  return id_list(found.begin() + 1, found.end());
}

// A coordinate on, near or far from those of the nodes.
double query_value(generator& random, const dense2D<double>& coords, double step) {
  const double rare[] = {infinity, -infinity, not_a_number, 1e308, -0.0};
  if (coords.cols() == 0 || below(random, 60) == 0) return rare[below(random, 5)];
  const double x = coords(below(random, coords.rows()), below(random, coords.cols()));
  const double offsets[] = {0, 0, step, -step, step / 2, -step / 2, step * (real(random) - 0.5), 9 * step};
  return x + offsets[below(random, 8)];
}

void expect_same(const node_detector& detector, const tree& tree, const dense2D<double>& coords, double step,
                 unsigned queries) {
  generator random(queries);
  const bool planar = coords.rows() == 2;
  ASSERT_EQ(detector.size(), tree.size());
  for (unsigned q = 0; q < queries; ++q) {
    const unsigned node = below(random, coords.cols() + 2);
    ASSERT_EQ(detector.find_closest(node), tree.find_closest(node)) << "node " << node;

    point p{0, 0, 0}, low, high;
    for (double& x : p) x = query_value(random, coords, step);
    if (q % 3 == 0 && node < coords.cols()) p = position(coords, node);
    const double sizes[] = {0, step, 3 * step, 20 * step, infinity, -step};
    const double size = sizes[below(random, 6)];
    for (unsigned k = 0; k < 3; ++k) {
      low[k] = p[k] - (below(random, 2) != 0 ? size : 0);
      high[k] = p[k] + size;
    }
    ASSERT_EQ(detector.find_closest(flat(p)), tree.find_closest({p[0], p[1], 0})) << testing::PrintToString(p);
    ASSERT_EQ(detector.find_closest(spatial(p)), tree.find_closest(p)) << testing::PrintToString(p);
    ASSERT_EQ(box(detector, planar ? 2 : 3, low, high), tree.find_in_box(low, high))
        << testing::PrintToString(low) << testing::PrintToString(high);
    if (q % 8 != 0) continue;
    if (planar) low[2] = infinity;
    if (!planar) low[2] = high[2] = 0;
    ASSERT_EQ(box(detector, planar ? 3 : 2, low, high), tree.find_in_box(low, high)) << "other dimension";
  }
}

TEST(node_detector, agrees_with_one_by_one_insertion) {
  for (const unsigned dim : {2U, 3U}) {
    for (const unsigned n : {0U, 1U, 2U, 3U, 40U, 700U}) {
      for (const cloud& c : clouds(dim, n)) {
        SCOPED_TRACE(c.name + ", n = " + std::to_string(n));
        tree tree(c.coords);
        tree.insert(identity(n));
        expect_same(node_detector(c.coords), tree, c.coords, c.step, 30 + n / 4);
        if (HasFatalFailure()) return;
      }
    }
  }
}

// Columns are appended and inserted, in small and in large lists, with IDs that are repeated or out of range.
TEST(node_detector, agrees_after_further_insertions) {
  generator random(3);
  for (const unsigned dim : {2U, 3U}) {
    for (const cloud& c : clouds(dim, 400)) {
      SCOPED_TRACE(c.name);
      dense2D<double> coords = with_gaps(c.coords, not_a_number).sub_matrix(0, 0, dim, 60);
      const id_list start = list(random, 30, 60);
      node_detector detector(coords, to_array(start));
      tree tree(coords);
      tree.insert(start);
      for (const unsigned length : {1U, 5U, 40U, 300U, 2U, 900U, 7U}) {
        for (unsigned j = 0; j < 50 && coords.cols() < c.coords.cols(); ++j) {
          ASSERT_TRUE(coords.push_back_column(c.coords.column(coords.cols())));
        }
        id_list ids = list(random, length, static_cast<unsigned>(coords.cols()));
        if (length == 5) ids[2] = static_cast<unsigned>(coords.cols());
        if (length == 40) ids.assign(40, 7);
        ASSERT_EQ(detector.insert(to_array(ids)), tree.insert(ids));
        expect_same(detector, tree, coords, c.step, 40);
        if (HasFatalFailure()) return;
      }
    }
  }
}

TEST(node_detector, takes_the_distinct_nodes_of_connectivities) {
  generator random(4);
  const cloud c = clouds(3, 300)[1];
  const std::vector<dense2D<unsigned>> matrices = {connectivity(random, 3, 40, 200), dense2D<unsigned>(),
                                                   connectivity(random, 8, 20, 250)};
  tree one(c.coords), all(c.coords);
  one.insert(unique({matrices[0]}));
  all.insert(unique(matrices));
  node_detector detector(c.coords, matrices[0]);
  expect_same(detector, one, c.coords, c.step, 100);
  EXPECT_EQ(detector.insert(matrices[2]), one.insert(unique({matrices[2]})));
  expect_same(detector, one, c.coords, c.step, 100);
  expect_same(node_detector(c.coords, matrices.data(), matrices.data() + 3), all, c.coords, c.step, 100);
}

TEST(node_detector, failed_reinit) {
  const dense2D<double> coords(2, 4, {0, 0, 1, 0, 0, 1, 1, 1}), line(1, 4), four(4, 4), empty(3, 0);
  const dense2D<unsigned> good(2, 1, {0, 3}), bad(2, 1, {0, 4});
  node_detector detector(coords);
  const auto kept = [&] { return detector.size() == 4 && detector.find_closest(flat({0.9, 0.1, 0})) == 1; };
  for (const auto* wrong : {&line, &four}) {
    EXPECT_EQ(detector.reinit(*wrong, dense1D<unsigned>{0}), -1);
    EXPECT_EQ(detector.reinit(*wrong, dense1D<unsigned>{9}), -1);
    EXPECT_EQ(detector.reinit(*wrong, good), -1);
    EXPECT_EQ(detector.reinit(*wrong, &good, &good + 1), -1);
    EXPECT_EQ(detector.reinit(*wrong, &good + 1, &good), -3);
  }
  EXPECT_EQ(detector.reinit(coords, dense1D<unsigned>{0, 4}), -2);
  EXPECT_EQ(detector.reinit(coords, bad), -2);
  EXPECT_EQ(detector.reinit(coords, &bad, &bad + 1), -2);
  EXPECT_EQ(detector.reinit(coords, &good + 1, &good), -3);
  EXPECT_TRUE(kept());
  EXPECT_EQ(detector.reinit(coords, dense1D<unsigned>{2, none, 2}), 0);
  EXPECT_EQ(detector.size(), 2U);
  EXPECT_EQ(detector.reinit(coords, &good, &good), 0);
  EXPECT_EQ(detector.size(), 0U);
  EXPECT_EQ(detector.insert(dense1D<unsigned>{1, 4, none}), 1U);  // there is a tree, and it can grow
  for (const auto* wrong : {&line, &four}) {
    EXPECT_EQ(detector.reinit(coords), 0);
    EXPECT_EQ(detector.reinit(*wrong), -1);
    EXPECT_EQ(detector.size(), 0U);
    EXPECT_EQ(detector.insert(dense1D<unsigned>{1}), 0U);
    EXPECT_EQ(node_detector(*wrong).size(), 0U);
  }
  EXPECT_EQ(node_detector(coords, bad).size() + node_detector(coords, dense1D<unsigned>{4}).size(), 0U);
  EXPECT_EQ(detector.reinit(empty), 0);
  EXPECT_EQ(detector.size(), 0U);
  EXPECT_EQ(detector.find_closest(spatial({0.0, 0.0, 0.0})), none);
}

TEST(node_detector, without_or_with_one_node) {
  const dense2D<double> coords(2, 3, {0, 0, 1, 0, 1, 0});
  node_detector detector;
  EXPECT_EQ(detector.size(), 0U);
  EXPECT_EQ(detector.find_closest(flat({0.0, 0.0, 0})), none);
  EXPECT_EQ(detector.find_closest(spatial({0.0, 0.0, 0.0})), none);
  EXPECT_EQ(detector.find_closest(0), none);
  EXPECT_TRUE(box(detector, 2, {-9, -9, -9}, {9, 9, 9}).empty() && box(detector, 3, {-9, -9, -9}, {9, 9, 9}).empty());
  ASSERT_EQ(detector.reinit(coords, dense1D<unsigned>{1, 1}), 0);
  EXPECT_EQ(detector.find_closest(1), none);
  EXPECT_EQ(detector.find_closest(2), 1U);  // another node of the same position; node 2 is not in the tree
  EXPECT_EQ(detector.find_closest(3), none);
  EXPECT_EQ(box(detector, 2, {1, 0, 0}, {1, 0, 0}), id_list({1, 1}));
  EXPECT_TRUE(box(detector, 2, {2, 0, 0}, {0, 0, 0}).empty());
  detector.clear();
  EXPECT_EQ(detector.size(), 0U);
}

TEST(node_detector, copies_are_independent_but_share_the_coordinates) {
  for (const unsigned dim : {2U, 3U}) {
    const cloud c = clouds(dim, 300)[2];
    dense2D<double> coords = deep_copy(c.coords);
    ASSERT_TRUE(coords.resize(dim, 200));
    const dense2D<double> other(5 - dim, 9);
    tree tree(coords);
    tree.insert(identity(200));
    node_detector original(coords), assigned(other);
    assigned = original;
    node_detector copy(original);
    node_detector& self = copy;
    copy = self;
    EXPECT_EQ(original.insert(dense1D<unsigned>{1, 2, 3}), 3U);
    original.clear();
    for (node_detector* d : {&copy, &assigned}) {
      expect_same(*d, tree, coords, c.step, 100);
      reference::tree grown = tree;
      for (unsigned j = 200; j < 300; ++j) ASSERT_TRUE(coords.push_back_column(c.coords.column(j)));
      id_list added(100);
      for (unsigned j = 0; j < 100; ++j) added[j] = 200 + j;
      EXPECT_EQ(d->insert(to_array(added)), grown.insert(added));
      expect_same(*d, grown, coords, c.step, 100);
      ASSERT_TRUE(coords.resize(dim, 200));
    }
    copy = original;
    EXPECT_EQ(copy.size(), 0U);
    EXPECT_EQ(copy.insert(dense1D<unsigned>{0}), 0U);
    node_detector nothing(original);
    EXPECT_EQ(nothing.size(), 0U);
    assigned = node_detector(other);
    EXPECT_EQ(assigned.size(), 9U);
  }
}

// All nodes in one place make a chain in the order of insertion, whose first node answers every query.
TEST(node_detector, a_million_coincident_nodes) {
  constexpr unsigned n = 1000000;
  for (const unsigned dim : {2U, 3U}) {
    const dense2D<double> coords(dim, n, 0.5);
    const id_list order = shuffled(identity(n));
    node_detector detector(coords);
    ASSERT_EQ(detector.size(), n);
    EXPECT_EQ(detector.find_closest(spatial({0.5, 0.5, 0.5})), order[0]);
    EXPECT_EQ(detector.find_closest(flat({9.0, 9.0, 0})), order[0]);
    EXPECT_EQ(detector.find_closest(flat({-9.0, 0.5, 0})), order[0]);
    EXPECT_EQ(detector.find_closest(order[0]), order[1]);
    EXPECT_EQ(detector.find_closest(order[n - 1]), order[0]);
    EXPECT_TRUE(box(detector, dim, {0.5, 0.5, 0.5}, {0.5, 0.5, 0.5}) == order);
    EXPECT_TRUE(box(detector, dim, {0.6, 0, 0}, {1, 1, 1}).empty());
    EXPECT_EQ(detector.insert(dense1D<unsigned>{3}), 1U);
    const id_list found = box(detector, dim, {0, 0, 0}, {1, 1, 1});
    EXPECT_EQ(found.size(), n + 1);
    EXPECT_EQ(found.back(), 3U);
    const node_detector copy(detector);
    EXPECT_EQ(copy.find_closest(3), order[0] == 3 ? order[1] : order[0]);
  }
}

}  // namespace
}  // namespace qel::gridwork
