#include <gtest/gtest.h>

#include <numeric>

#include "search/tree/node_tree.h"
#include "tests/facts.h"
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

TEST(node_detector, failed_reinit) {
  const dense2D<double> coords(2, 4, {0, 0, 1, 0, 0, 1, 1, 1}), line(1, 4), four(4, 4), empty(3, 0);
  const dense2D<unsigned> good(2, 1, {0, 3}), bad(2, 1, {0, 4});
  const dense1D<unsigned> beyond{0, 4};
  node_detector detector(coords);
  EXPECT_EQ(detector.reinit(coords, beyond), -2);
  EXPECT_EQ(detector.reinit(coords, bad), -2);
  EXPECT_EQ(detector.reinit(coords, &bad, &bad + 1), -2);
  EXPECT_EQ(detector.reinit(coords, &good + 1, &good), -3);
  for (const auto* wrong : {&line, &four}) {
    EXPECT_EQ(detector.reinit(*wrong, beyond), -1);
    EXPECT_EQ(detector.reinit(*wrong, good), -1);
    EXPECT_EQ(detector.reinit(*wrong, &good, &good + 1), -1);
    EXPECT_EQ(detector.reinit(*wrong, &good + 1, &good), -3);
    EXPECT_ALL(detector.size() == 4, detector.find_closest(flat({0.9, 0.1, 0})) == 1) << "as it was";
    EXPECT_EQ(detector.reinit(*wrong), -1);
    EXPECT_EQ(detector.size() + detector.insert(dense1D<unsigned>{1}) + node_detector(*wrong).size(), 0U);
    EXPECT_EQ(detector.reinit(coords), 0);
  }
  EXPECT_EQ(node_detector(coords, bad).size() + node_detector(coords, beyond).size(), 0U);
  EXPECT_EQ(detector.reinit(coords, &good, &good), 0);
  EXPECT_EQ(detector.insert(dense1D<unsigned>{1, 4, none}), 1U);  // there is a tree, and it can grow
  EXPECT_EQ(detector.reinit(empty), 0);
  EXPECT_EQ(detector.find_closest(spatial({0.0, 0.0, 0.0})), none);
}

template <class Coords, class... Nodes>
constexpr bool accepts = std::is_constructible_v<node_detector, Coords, Nodes...>&& requires(node_detector d,
                                                                                             Coords&& coords,
                                                                                             Nodes... nodes) {
  d.reinit(static_cast<Coords&&>(coords), nodes...);
};

// The detector would refer to coordinates that are gone.
template <class... Nodes>
constexpr bool refuses_temporaries = accepts<dense2D<double>&, Nodes...>&& accepts<const dense2D<double>&, Nodes...> &&
                                     !accepts<dense2D<double>, Nodes...> && !accepts<const dense2D<double>, Nodes...>;

static_assert(refuses_temporaries<> && refuses_temporaries<dense1D<unsigned>> &&
              refuses_temporaries<dense2D<unsigned>> &&
              refuses_temporaries<const dense2D<unsigned>*, const dense2D<unsigned>*>);

TEST(node_detector, without_or_with_one_node) {
  const dense2D<double> coords(2, 3, {0, 0, 1, 0, 1, 0});
  node_detector detector;
  EXPECT_EQ(detector.size(), 0U);
  EXPECT_EQ(detector.find_closest(flat({0.0, 0.0, 0})), none);
  EXPECT_EQ(detector.find_closest(spatial({0.0, 0.0, 0.0})), none);
  EXPECT_EQ(detector.find_closest(0), none);
  EXPECT_ALL(box(detector, 2, {-9, -9, -9}, {9, 9, 9}).empty(), box(detector, 3, {-9, -9, -9}, {9, 9, 9}).empty());
  ASSERT_EQ(detector.reinit(coords, dense1D<unsigned>{1, 1}), 0);
  EXPECT_EQ(detector.find_closest(1), none);
  EXPECT_EQ(detector.find_closest(2), 1U);  // another node of the same position; node 2 is not in the tree
  detector.clear();
  EXPECT_EQ(detector.size(), 0U);
}

TEST(node_detector, assignment_to_itself_from_nothing_and_across_dimensions) {
  const dense2D<double> plane(2, 4, {0, 0, 1, 0, 0, 1, 1, 1}), space(3, 9);
  node_detector original(plane), assigned(space);
  assigned = original;
  node_detector& self = assigned;
  assigned = self;
  original.clear();
  EXPECT_ALL(assigned.find_closest(flat({0.9, 0.1, 0})) == 1, assigned.size() == 4);
  assigned = original;
  EXPECT_EQ(assigned.insert(dense1D<unsigned>{0}) + assigned.size() + node_detector(original).size(), 0U);
  assigned = node_detector(space);
  EXPECT_EQ(assigned.size(), 9U);
}

// What comes later is appended below the tree; the balanced tree, which many queries lead to, knows no order for it.
TEST(node_detector, boxes_keep_their_order_when_nodes_come_later) {
  generator random(21);
  for (unsigned round = 0; round < 50; ++round) {
    dense2D<double> coords(2, 40);
    for (double& x : coords.as_vector()) x = real(random);
    const id_list early = identity(36), late = {36, 37, 38, 39};
    tree expected(coords);
    node_detector detector(coords, to_array(early));
    expected.insert(early), expected.insert(late);
    EXPECT_EQ(detector.insert(to_array(late)), 4U);
    for (unsigned k = 0; k < 40; ++k) detector.find_closest(k);
    for (unsigned k = 0; k < 40; ++k) {
      const point low = {real(random), real(random), 0}, high = {low[0] + 0.2, low[1] + 0.2, 0};
      ASSERT_EQ(box(detector, 2, low, high), expected.find_in_box(low, high));
    }
  }
}

// Nodes on a line make a chain, down which each insertion walks. Building the tree anew does not shorten it: that is done
// as it grows, not for the steps of single nodes; but for those of a list, of which what is left is built in at once.
TEST(node_detector, nodes_below_a_chain) {
  constexpr unsigned n = 4000;
  dense2D<double> coords(3, n + n / 8);
  for (unsigned j = 0; j < coords.cols(); ++j) coords(0, j) = coords(1, j) = coords(2, j) = j;
  node_detector detector(coords, dense1D<unsigned>());
  detail::node_tree<3> inner(coords);
  tree plain(coords);
  unsigned builds = 0;
  for (unsigned j = 0; j < n; ++j) {
    const std::uint64_t built = inner.built_count();
    ASSERT_TRUE(inner.insert(dense1D<unsigned>{j}));
    builds += inner.built_count() != built ? 1 : 0;
    detector.insert(dense1D<unsigned>{j});
    plain.insert({j});
  }
  EXPECT_LT(builds, 60U);
  id_list list(n / 8);
  std::iota(list.begin(), list.end(), n);
  const std::uint64_t built = inner.built_count();
  ASSERT_TRUE(inner.insert(to_array(list)));
  EXPECT_NE(inner.built_count(), built);
  detector.insert(to_array(list));
  plain.insert(list);
  EXPECT_EQ(box(detector, 3, {0, 0, 0}, {2.0 * n, 2.0 * n, 2.0 * n}),
            plain.find_in_box({0, 0, 0}, {2.0 * n, 2.0 * n, 2.0 * n}));
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
