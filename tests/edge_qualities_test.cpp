#include <gtest/gtest.h>

#include <cmath>
#include <utility>
#include <vector>

#include "facts.h"
#include "qel/gridwork.h"

namespace qel::gridwork {
namespace {

struct recorder : histogram {
  std::vector<double> values;
  void process(double v) override { values.push_back(v); }
};

TEST(edge_quality, is_the_length_over_the_logarithmic_mean) {
  double q = 5;
  EXPECT_EQ(edge_quality(1, 0, 1, q), -2);
  EXPECT_EQ(edge_quality(1, 1, std::nan(""), q), -3);
  EXPECT_EQ(q, 5);
  for (double ratio : {1.0, 1.05, 1.0999999, 1.1, 1.2, 4.0, 1e6}) {
    ASSERT_EQ(edge_quality(3, 2 * ratio, 2, q), 0);
    const double mean = ratio == 1 ? 2 : 2 * (ratio - 1) / std::log(ratio);
    EXPECT_NEAR(q * mean / 3, 1, 3e-7) << ratio;
  }
  const double infinity = HUGE_VAL;
  for (const auto& [h1, h2] : {std::pair(1.0, infinity), {infinity, infinity}, {1e-300, 1e300}}) {
    EXPECT_ALL(edge_quality(1, h1, h2, q) == 0, q == 0) << h1;
  }
  EXPECT_ALL(edge_quality(infinity, 1, 2, q) == 0, q == infinity);
}

/// Two triangles, a quadrangle and an excluded edge; sizes and tensors that mean the same must give the same values.
TEST(edge_qualities, every_edge_once_in_order) {
  for (const unsigned dim : {2U, 3U}) {
    dense2D<double> coords(dim, 6, 0.0), metrics(dim * (dim + 1) / 2, 6);
    for (unsigned j = 0; j < 6; ++j) coords(0, j) = j % 3, coords(1, j) = j / 3 * 0.5;
    dense1D<double> sizes{1, 2, 0.5, 1.05, 1, 3};
    ASSERT_EQ((dim == 2 ? metrics_iso_to_aniso2d(sizes, metrics) : metrics_iso_to_aniso3d(sizes, metrics)), 0);
    const dense2D<unsigned> meshes[] = {dense2D<unsigned>(3, 2, {4, 0, 1, 3, 0, 4}),
                                        dense2D<unsigned>(4, 1, {1, 2, 5, 4})};
    const dense1D<int> types{ELT_TRIA3, ELT_QUAD4};
    const dense2D<unsigned> nothing, excluded(2, 3, {4, 0, 5, 3, 0, 4});
    const unsigned expected[][2] = {{0, 1}, {0, 3}, {1, 2}, {1, 4}, {2, 5}, {3, 4}, {4, 5}};
    recorder H, K, one;
    const auto single = [&](const auto& prescribed, element_type type, const dense2D<unsigned>& out) {
      return edge_qualities(coords, meshes[0], type, prescribed, one, out);
    };
    const auto both = [&](const dense1D<int>& codes, const auto& prescribed, recorder& into, const auto& out) {
      return edge_qualities(coords, meshes, meshes + 2, codes, prescribed, into, out);
    };
    EXPECT_ALL(both(types, sizes, H, excluded) == 7, both(types, metrics, K, excluded) == 7);
    ASSERT_EQ(H.values.size(), 7U);
    for (unsigned k = 0; k < 7; ++k) {
      const auto [a, b] = expected[k];
      double q;
      ASSERT_EQ(
          edge_quality(std::hypot(coords(0, a) - coords(0, b), coords(1, a) - coords(1, b)), sizes[a], sizes[b], q), 0);
      EXPECT_NEAR(H.values[k], q, 1e-15);
      EXPECT_NEAR(K.values[k], q, 1e-6);
    }
    EXPECT_EQ(single(sizes, ELT_TRIA3, nothing), 5);
    metrics(0, 1) = 0, sizes[1] = std::nan("");  // three edges meet in node 1
    EXPECT_ALL(both(types, sizes, H, nothing) == -5, both(types, metrics, K, nothing) == -5);
    EXPECT_ALL(H.values.size() == 7 + 5, K.values.size() == 7 + 5);
    EXPECT_EQ(single(sizes, ELT_TRIA3, nothing), -4);
    EXPECT_EQ(single(dense1D<double>(), ELT_TRIA3, nothing), -4);  // no node has a size,
    EXPECT_EQ(single(coords, ELT_TRIA3, nothing), -4);             // or a tensor of this dimension
    EXPECT_EQ(single(sizes, ELT_TRIA3, meshes[0]), -6);
    EXPECT_EQ(single(sizes, ELT_QUAD4, nothing), -2);
    EXPECT_EQ(both(types, sizes, one, meshes[1]), -7);
    EXPECT_EQ(both({ELT_TRIA3}, sizes, one, meshes[1]), -4);
    EXPECT_EQ(both({ELT_TRIA3, -1}, sizes, one, meshes[1]), -2);
    EXPECT_EQ(edge_qualities(coords, meshes + 1, meshes, types, sizes, one, meshes[1]), -4);
    EXPECT_EQ(edge_qualities(dense2D<double>(4, 6), meshes, meshes + 2, types, sizes, one, excluded), -1);
    EXPECT_EQ(edge_qualities(dense2D<double>(), meshes, meshes, types, sizes, one, excluded), 0);
  }
}

}  // namespace
}  // namespace qel::gridwork
