// Merging, removal of degenerate elements, new numbers.
#include <cmath>

#include "parts.h"
#include "random_meshes.h"

using namespace parts;

namespace {

/// Elements on the nodes of a cloud in order, and some at random.
mesh mesh_on(const random_meshes::cloud& cloud, unsigned rows) {
  std::mt19937 random(11);
  const auto n = static_cast<unsigned>(cloud.coords.cols());
  mesh m{cloud.name, cloud.coords, dense2D<unsigned>(rows, n), rows == 3 ? ELT_TRIA3 : ELT_TETRA4};
  for (unsigned j = 0; j < n; ++j) {
    for (unsigned i = 0; i < rows; ++i)
      m.connectivity(i, j) = i == 0 ? j : random() % 4 == 0 ? random() % n : (j + i) % n;
  }
  return m;
}

/// Serial merge of all nodes, with the map applied.
id_type merge_whole(mesh& m, double tol) {
  dense1D<unsigned> new_IDs;
  EXPECT_TRUE(m.coords.copy(m.coords));
  const int merged = merge(m.coords, new_IDs, tol);
  EXPECT_GE(merged, 0);
  change_indices(m.connectivity, new_IDs);
  return static_cast<id_type>(merged);
}

TEST(merge, is_that_of_the_whole_mesh) {
  for (const unsigned dim : {2U, 3U}) {
    for (const auto& cloud : random_meshes::clouds(dim, 150)) {
      for (const double factor : {0.0, 0.4, 1.0, 1.6, 40.0}) {
        const double tol = factor * cloud.step;
        if (std::isinf(tol * tol)) continue;
        SCOPED_TRACE(cloud.name + " by " + std::to_string(factor));
        mesh whole = mesh_on(cloud, dim + 1);
        const id_type shift = factor > 1 ? id_type{1} << 44 : 0;
        mesh_part part = part_of(whole,
                                 factor == 1  ? layout::ranges
                                 : factor > 1 ? layout::every_other
                                              : layout::random,
                                 shift);
        id_type merged = 0;
        ASSERT_EQ(mpi::merge(world, part, tol, merged), 0);
        ASSERT_EQ(merged, merge_whole(whole, tol));
        expect_part_of(part, whole.coords, whole.connectivity, shift);
        if (HasFatalFailure()) return;
      }
    }
  }
}

/// Distances so near to the tolerance that rounding lets one node reach the other, but not be reached: survivors may then
/// lie behind those that are merged to them, and be near to none, or to a third one. That is so at positions below the
/// tolerance only; two corners, which many ranks have, put a border of cells
/// there.
TEST(merge, nearness_that_is_not_mutual) {
  constexpr double tol = 0.13;  // the square of which is rounded up
  constexpr unsigned groups = 100, first_corner = 3 * groups, count = first_corner + 2, ties = 40;
  for (unsigned seed = 0; seed < 20; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    mesh whole{"groups of three", dense2D<double>(2, count, 0.0), dense2D<unsigned>(2, first_corner + ties), ELT_EDGE2};
    for (unsigned g = 0; g < groups; ++g) {
      double x = tol * (0.3 + 0.3 * static_cast<double>(random() % 1000) / 1000) * (seed % 2 == 0 ? 1 : -1);
      const bool is_third_near = random() % 2 == 0;
      for (unsigned i = 0; i < 3; ++i) {
        whole.coords(0, 3 * g + i) = x, whole.coords(1, 3 * g + i) = 0.3 * g;
        whole.connectivity(0, 3 * g + i) = 3 * g + i, whole.connectivity(1, 3 * g + i) = 3 * g + (i + 1) % 3;
        x += i == 0 ? tol : is_third_near ? 0.9 * tol : 3 * tol;
        for (unsigned ulps = random() % 3; ulps > 0; --ulps) x = std::nextafter(x, random() % 2);
      }
    }
    whole.coords(0, first_corner) = -10.0 - seed, whole.coords(0, first_corner + 1) = 10 + seed;
    for (unsigned e = first_corner; e < whole.connectivity.cols(); ++e) {
      whole.connectivity(0, e) = first_corner + e % 2, whole.connectivity(1, e) = e - first_corner;
    }
    whole = shuffled(whole, seed);
    mesh_part part = part_of(whole, layout::random);
    id_type merged = 0;
    ASSERT_EQ(mpi::merge(world, part, tol, merged), 0);
    ASSERT_EQ(merged, merge_whole(whole, tol));
    expect_part_of(part, whole.coords, whole.connectivity);
    if (HasFatalFailure()) return;
  }
}

/// Ways from within a rank that lead to others, and from the border into a rank: edges in a row, whose nodes are near to those
/// beside them but for a gap now and then, in the order of the row, against it, or nearly so.
TEST(merge, chains_that_lead_far) {
  constexpr unsigned count = 400, window = 8;
  for (unsigned seed = 0; seed < 12; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    mesh whole{"row", dense2D<double>(2 + seed % 2, count, 0.0), dense2D<unsigned>(2, count - 1), ELT_EDGE2};
    std::vector<unsigned> order(count);
    for (unsigned i = 0; i < count; ++i) order[i] = i;
    if (seed % 3 == 1) std::reverse(order.begin(), order.end());
    for (unsigned i = 0; seed % 3 == 2 && i < count; i += window) {
      std::shuffle(order.begin() + i, order.begin() + i + window, random);
    }
    double x = 0;
    for (unsigned i = 0; i < count; ++i) {
      whole.coords(0, order[i]) = x, whole.coords(1, order[i]) = 0.1 * x;
      x += random() % 60 == 0 ? 1.5 : 0.4 + 0.01 * static_cast<double>(random() % 40);
      if (i > 0) whole.connectivity(0, i - 1) = order[i - 1], whole.connectivity(1, i - 1) = order[i];
    }
    mesh_part part = part_of(whole, layout::ranges);
    id_type merged = 0;
    ASSERT_EQ(mpi::merge(world, part, 1, merged), 0);
    ASSERT_EQ(merged, merge_whole(whole, 1));
    expect_part_of(part, whole.coords, whole.connectivity);
    if (HasFatalFailure()) return;
  }
}

TEST(merge, then_degenerate_elements_then_unused_nodes) {
  for (const auto& cloud : random_meshes::clouds(3, 200)) {
    for (const layout l : layouts) {
      SCOPED_TRACE(cloud.name);
      mesh whole = mesh_on(cloud, 4);
      const double tol = 0.5 * cloud.step;
      if (std::isinf(tol * tol)) continue;
      mesh_part part = part_of(whole, l);
      id_type merged = 0, removed = 0, nodes = 0;
      merge_whole(whole, tol);
      ASSERT_EQ(mpi::merge(world, part, tol, merged), 0);
      ASSERT_EQ(static_cast<int>((mpi::remove_degenerated(world, part, false, removed), removed)),
                remove_degenerated(whole.connectivity, false));
      expect_part_of(part, whole.coords, whole.connectivity);
      ASSERT_EQ(mpi::simplify(world, part, nodes), 0);
      ASSERT_GE(simplify(whole.coords, whole.connectivity, 0), 0);
      ASSERT_EQ(nodes, whole.connectivity.empty() ? 0 : whole.coords.cols());
      expect_part_of(part, whole.coords, whole.connectivity);
      if (HasFatalFailure()) return;
    }
  }
}

TEST(remove_degenerated, counts_unused_rows_on_demand) {
  mesh whole = box(ELT_SOLID_MIX, 3, 3, 2);
  for (const bool strict : {true, false}) {
    mesh rest = whole;
    ASSERT_TRUE(rest.connectivity.copy(whole.connectivity));
    mesh_part part = part_of(whole, layout::random);
    id_type removed = 0;
    ASSERT_EQ(mpi::remove_degenerated(world, part, strict, removed), 0);
    ASSERT_EQ(static_cast<int>(removed), remove_degenerated(rest.connectivity, strict));
    expect_part_of(part, rest.coords, rest.connectivity);
  }
}

TEST(simplify, drops_nodes_that_no_element_uses) {
  const mesh whole = box(ELT_TETRA4, 3, 2, 2);
  mesh_part part = part_of(whole, layout::random);
  const mesh_part expected = part;
  const double p[] = {1, 2, 3};
  ASSERT_TRUE(part.coords.copy(part.coords) && part.node_IDs.copy(part.node_IDs));
  ASSERT_TRUE(part.coords.push_back_column(p) && part.node_IDs.push_back(1000));
  id_type nodes = 0;
  ASSERT_EQ(mpi::simplify(world, part, nodes), 0);
  EXPECT_EQ(nodes, whole.coords.cols());
  expect_part_of(part, whole.coords, whole.connectivity);
}

TEST(make_part, leaves_out_nodes_that_no_element_uses) {
  mesh_part part;
  const dense2D<double> coords(2, 5, 1.0);
  ASSERT_EQ(mpi::make_part(world, coords, dense2D<unsigned>(3, 1, {4, 0, 1}), part), 0);
  const id_type first = 5 * static_cast<id_type>(rank());
  EXPECT_EQ(std::vector<id_type>(part.node_IDs.begin(), part.node_IDs.end()),
            (std::vector<id_type>{first, first + 1, first + 4}));
  EXPECT_EQ(part.connectivity, (dense2D<unsigned>(3, 1, {2, 0, 1})));
}

TEST(make_part, puts_meshes_one_behind_the_other) {
  const mesh own = box(ELT_TETRA4, 1 + static_cast<unsigned>(rank()) % 3, 2, 1);
  mesh_part part;
  ASSERT_EQ(mpi::make_part(world, own.coords, own.connectivity, part), 0);
  id_type first = own.coords.cols();
  MPI_Exscan(MPI_IN_PLACE, &first, 1, MPI_UINT64_T, MPI_SUM, world);
  if (rank() == 0) first = 0;
  ASSERT_EQ(part.node_IDs.size(), own.coords.cols());
  for (id_type i = 0; i < part.node_IDs.size(); ++i) ASSERT_EQ(part.node_IDs[i], first + i);
  EXPECT_EQ(part.connectivity, own.connectivity);
  const bool wrong = rank() == size() - 1;
  EXPECT_EQ(mpi::make_part(world, own.coords, wrong ? dense2D<unsigned>(4, 1, 1000U) : own.connectivity, part), -1);
  EXPECT_TRUE(part.node_IDs.empty());
}

TEST(merge, refuses) {
  const mesh whole = box(ELT_TETRA4, 2, 2, 2);
  mesh_part part = part_of(whole, layout::random);
  id_type merged = 0;
  EXPECT_EQ(mpi::merge(world, part, -1, merged), -3);
  EXPECT_EQ(mpi::merge(world, part, std::nan(""), merged), -3);
  EXPECT_EQ(mpi::merge(world, part, 1e200, merged), -201);
  mesh_part spacetime = part_of(whole, layout::random);
  spacetime.coords = dense2D<double>(4, spacetime.coords.cols(), 0.0);
  EXPECT_EQ(mpi::merge(world, spacetime, -1, merged), -1);
  id_type removed = 0;
  if (size() > 1) {
    EXPECT_EQ(mpi::merge(world, part, rank() == 0 ? 0.5 : 0.6, merged), -3);
    EXPECT_EQ(mpi::remove_degenerated(world, part, rank() == 0, removed), -3);
  }
  expect_part_of(part, whole.coords, whole.connectivity);
}

}  // namespace
