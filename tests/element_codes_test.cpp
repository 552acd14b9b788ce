// Numbers that are no element type: no table is read outside, and every function refuses them with a code it documents.
#include <gtest/gtest.h>

#include <initializer_list>

#include "facts.h"
#include "mesh_files.h"
#include "qel/gridwork.h"

namespace {

using namespace mesh_files;

/// Beyond the enumerators.
constexpr int wrong_codes[] = {23, 24, 31, 32, 255, 1 << 20, 2147483647, -1, -23, -2147483647 - 1};

class element_codes : public ::testing::TestWithParam<int> {
 protected:
  /// A matrix of triangles, as its type `wrong`, among others.
  const mesh m{5};
  const matrix& t = m.triangles;
  const element_type wrong = static_cast<element_type>(GetParam());
  const dense1D<int> codes{ELT_TRIA3, GetParam()};
  const memory_file file;
  const char* const path = file.path();
};

TEST_P(element_codes, have_no_nodes) {
  EXPECT_EQ(nbr_nodes(wrong) + nbr_base_nodes(wrong) + element_dim(wrong) + nbr_boundaries(wrong), 0U);
  for (unsigned rows = 1; rows < 30; ++rows) {
    EXPECT_FALSE(check_IDs(matrix(rows, 2), wrong, 1) || check_IDs(matrix(rows, 2), wrong, ~0U)) << rows;
  }
  EXPECT_TRUE(check_IDs(matrix(3, 0), wrong, 1));
  matrix shifted(2, 1, {4, ~0U});
  EXPECT_ALL(shift_indices(shifted, 2, wrong) == 0, shifted == matrix(2, 1, {6, 1}));
}

TEST_P(element_codes, are_refused_by_queries) {
  const matrix neighbors(3, 5, ~0U);
  const dense1D<unsigned> ancestors(7, 0);
  matrix out;
  dense1D<unsigned> slots;
  dense1D<double> values;
  unsigned bound = 0, jmin = 0;
  double qmin = 0;
  histogram H;
  EXPECT_EQ(get_neighbors(t, wrong, true, out), -1);
  EXPECT_EQ(get_element_boundaries(t, wrong, out), -1);
  EXPECT_EQ(get_mesh_boundaries(t, neighbors, wrong, out), -1);
  EXPECT_EQ(get_mesh_bounding_elements(t, neighbors, wrong, slots, bound), -1);
  EXPECT_EQ(get_elements_on_boundaries(matrix(2, 1, {0, 1}), t, neighbors, ancestors, wrong, slots, bound), -1);
  EXPECT_EQ(copy_edges(t, wrong, out), -1);
  EXPECT_EQ(copy_edges(m.both, m.both + 2, codes, out), -1);
  EXPECT_EQ(shape_qualities(m.coords, t, wrong, values), -2);
  EXPECT_EQ(min_quality(m.coords, t, wrong, qmin, jmin), -2);
  EXPECT_EQ(jacobians(m.coords, t, wrong, values), -2);
  const dense1D<double> sizes(7, 1);
  const dense2D<double> metrics(6, 7, 1);
  EXPECT_EQ(edge_qualities(m.coords, t, wrong, sizes, H, {}), -2);
  EXPECT_EQ(edge_qualities(m.coords, t, wrong, metrics, H, {}), -2);
  EXPECT_EQ(edge_qualities(m.coords, m.both, m.both + 2, codes, sizes, H, {}), -2);
  EXPECT_EQ(edge_qualities(m.coords, m.both, m.both + 2, codes, metrics, H, {}), -2);
  const dense1D<unsigned> colors(5, 0), walls;
  matrix pairs;
  EXPECT_EQ(get_subdomains(t, neighbors, wrong, walls, slots), -1);
  EXPECT_EQ(get_subdomains(t, neighbors, wrong, matrix(), slots), -1);
  EXPECT_EQ(get_colors_boundaries(t, neighbors, wrong, colors, 0, slots, pairs), -1);
  EXPECT_EQ(get_colors_boundaries(t, neighbors, wrong, colors, 0, out, pairs), -1);
  EXPECT_ALL(out.empty(), pairs.empty(), slots.empty(), values.empty(), bound == 0);
}

TEST_P(element_codes, are_refused_along_edges_and_by_cuts) {
  dense1D<double> sizes(7, 1), values{3};
  dense2D<double> tensors(6, 7, 1), coords;
  dense1D<unsigned> ids{3};
  double shock = 7;
  histogram H;
  EXPECT_EQ(metrics_gen_iso(m.coords, t, wrong, values), -2);
  EXPECT_EQ(H_shock(m.coords, t, wrong, sizes, shock), -2);
  EXPECT_EQ(H_shock(m.coords, t, wrong, tensors, shock), -2);
  EXPECT_EQ(H_shock(m.coords, t, wrong, sizes, H), -2);
  EXPECT_EQ(H_shock(m.coords, t, wrong, tensors, H), -2);
  EXPECT_EQ(bound_metric_variations(m.coords, t, wrong, sizes, 0.1), -2);
  EXPECT_EQ(bound_metric_variations(m.coords, t, wrong, sizes, 0.1, ids), -2);
  EXPECT_EQ(bound_metric_variations(m.coords, t, wrong, tensors, 0.1), -2);
  EXPECT_EQ(bound_metric_variations(m.coords, t, wrong, tensors, 0.1, ids), -2);
  EXPECT_EQ(bound_metric_gradations(m.coords, t, wrong, sizes, 1.1), -2);
  EXPECT_EQ(bound_metric_gradations(m.coords, t, wrong, sizes, 1.1, ids), -2);
  EXPECT_EQ(bound_metric_gradations(m.coords, t, wrong, tensors, 1.1), -2);
  EXPECT_EQ(bound_metric_gradations(m.coords, t, wrong, tensors, 1.1, ids), -2);
  EXPECT_ALL(values.empty(), shock == 1, H.count() == 0, sizes == dense1D<double>(7, 1), ids.empty());
  matrix out, edges;
  using point = qel::vector_fixed<double, 3>;
  ASSERT_TRUE(coords.copy(m.coords));
  EXPECT_EQ(clip(coords, out, point{1, 0, 0}, point{1, 0, 0}, t, wrong, 0, ids, edges, values), -5);
  EXPECT_ALL(coords == m.coords, out.empty(), edges.empty());
}

TEST_P(element_codes, are_refused_by_readers) {
  using reader = int(const char*, dense2D<double>&, matrix&, element_type);
  for (reader* const read : std::initializer_list<reader*>{NASTRAN_input, FEMAP_input, medit_input, vtk_input}) {
    dense2D<double> coords(3, 2);
    matrix out(3, 2);
    EXPECT_EQ(read(path, coords, out, wrong), -4);
    EXPECT_ALL(coords.empty(), out.empty());
  }
}

TEST_P(element_codes, are_refused_by_writers) {
  const auto &c = m.coords, empty = dense2D<double>();
  const auto* both = m.both;
  unsigned count = 0;
  dense1D<unsigned> cells, types;
  EXPECT_EQ(vtk_convert(t, wrong, count, cells, types), -1);
  EXPECT_EQ(vtk_convert(matrix(), wrong, count, cells, types), -2);
  EXPECT_EQ(vtk_output(path, c, t, wrong), -3);
  EXPECT_EQ(vtk_output(path, c, t, t, ELT_TRIA3, wrong), -3);
  EXPECT_EQ(vtk_output(path, c, both, both + 2, codes), -3);
  EXPECT_EQ(medit_output(path, c, t, wrong), -3);
  EXPECT_EQ(medit_output(path, c, t, t, wrong, ELT_TRIA3), -3);
  EXPECT_EQ(medit_output(path, c, both, both + 2, codes), -3);
  EXPECT_EQ(medit_output(path, c, t, wrong, m.references), -3);
  EXPECT_EQ(medit_output(path, c, t, wrong, dense1D<unsigned>(5, ~0U)), -3);
  EXPECT_EQ(ensight_output(path, c, t, wrong), -3);
  EXPECT_EQ(ensight_output(path, c, t, t, wrong, ELT_TRIA3), -3);
  EXPECT_EQ(ensight_output(path, c, both, both + 2, codes), -3);
  EXPECT_EQ(NASTRAN_output(path, c, t, wrong), -3);
  EXPECT_EQ(NASTRAN_output(path, c, t, t, wrong, wrong), -3);
  EXPECT_EQ(NASTRAN_output(path, c, t, matrix(), ELT_TRIA3, wrong), -3);
  EXPECT_EQ(NASTRAN_output(path, c, matrix(), matrix(), wrong, wrong), 0);
  EXPECT_EQ(NASTRAN_output(path, c, t, {0, 5, 5}, codes, m.references), -3);
  EXPECT_EQ(FEMAP_output(path, c, t, wrong), -3);
  EXPECT_EQ(FEMAP_output(path, c, t, t, wrong, wrong), -3);
  EXPECT_EQ(FEMAP_output(path, c, t, {0, 5, 5}, codes, m.references), -3);
  EXPECT_EQ(file.content(), "");
  EXPECT_EQ(WavefrontOBJ_output(path, empty, t, wrong), -2);
  EXPECT_EQ(WavefrontOBJ_output(path, c, t, wrong), 0);
  EXPECT_EQ(WavefrontOBJ_output(path, c, t, t, wrong, wrong), 0);
  EXPECT_EQ(file.content().find('f'), std::string::npos) << "no faces, as for any other type";
}

INSTANTIATE_TEST_SUITE_P(wrong, element_codes, ::testing::ValuesIn(wrong_codes));

}  // namespace
