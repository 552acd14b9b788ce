// Sharing, neighbours and boundaries.
#include "parts.h"

using namespace parts;

namespace {

TEST(share_nodes, finds_all_other_ranks_of_a_node) {
  for_each_part([](const mesh& m, const mesh_part& part, const mpi::node_sharing& sharing, id_type shift) {
    std::vector<id_type> has(m.coords.cols() * static_cast<id_type>(size()), 0);
    for (const id_type id : part.node_IDs)
      has[(id - shift) * static_cast<id_type>(size()) + static_cast<id_type>(rank())] = 1;
    MPI_Allreduce(MPI_IN_PLACE, has.data(), static_cast<int>(has.size()), MPI_UINT64_T, MPI_MAX, world);
    ASSERT_EQ(sharing.offsets.size(), part.node_IDs.size() + 1);
    for (id_type i = 0; i < part.node_IDs.size(); ++i) {
      std::vector<int> others;
      for (int r = 0; r < size(); ++r) {
        if (r != rank() &&
            has[(part.node_IDs[i] - shift) * static_cast<id_type>(size()) + static_cast<id_type>(r)] != 0)
          others.push_back(r);
      }
      ASSERT_EQ(others, std::vector<int>(sharing.ranks.data() + sharing.offsets[i],
                                         sharing.ranks.data() + sharing.offsets[i + 1]));
    }
  });
}

TEST(get_neighbors, are_those_of_the_whole_mesh) {
  for_each_part([](const mesh& m, const mesh_part& part, const mpi::node_sharing& sharing, id_type shift) {
    for (const bool pair : {false, true}) {
      dense2D<unsigned> whole;
      dense2D<id_type> found;
      ASSERT_EQ(get_neighbors(m.connectivity, m.type, pair, whole), 0);
      ASSERT_EQ(mpi::get_neighbors(world, part, m.type, sharing, pair, found), 0);
      ASSERT_EQ(found.cols(), part.element_IDs.size());
      for (id_type e = 0; e < found.cols(); ++e) {
        for (unsigned k = 0; k < whole.rows(); ++k) {
          const unsigned expected = whole(k, part.element_IDs[e] - shift);
          ASSERT_EQ(found(k, e), expected == ~0U ? no_ID : expected + shift) << "boundary " << k << " of " << e;
        }
      }
    }
  });
}

TEST(get_mesh_boundaries, are_those_of_the_whole_mesh) {
  for_each_part([](const mesh& m, const mesh_part& part, const mpi::node_sharing& sharing, id_type shift) {
    dense2D<unsigned> neighbors, whole;
    dense2D<id_type> found, boundaries;
    dense1D<id_type> slots;
    ASSERT_EQ(mpi::get_neighbors(world, part, m.type, sharing, false, found), 0);
    ASSERT_EQ(mpi::get_mesh_boundaries(part, m.type, found, boundaries, slots), 0);
    ASSERT_EQ(get_neighbors(m.connectivity, m.type, false, neighbors), 0);
    ASSERT_EQ(get_mesh_boundaries(m.connectivity, neighbors, m.type, whole), 0);
    ASSERT_EQ(sum(slots.size()), whole.cols());
    // The slots of the whole, in the order of its columns: those that their elements have.
    std::map<id_type, id_type> columns;
    for (id_type e = 0; e < m.connectivity.cols(); ++e) {
      dense2D<unsigned> own;
      ASSERT_EQ(get_element_boundaries(m.connectivity.sub_matrix(0, e, m.connectivity.rows(), 1), m.type, own), 0);
      for (unsigned k = 0; k < own.cols(); ++k) {
        if (neighbors(k, e) == ~0U) columns.emplace((e + shift) * nbr_boundaries(m.type) + k, columns.size());
      }
    }
    for (id_type j = 0; j < slots.size(); ++j) {
      ASSERT_TRUE(columns.count(slots[j]) == 1);
      for (unsigned i = 0; i < whole.rows(); ++i) {
        const unsigned node = whole(i, columns[slots[j]]);
        ASSERT_EQ(boundaries(i, j), node == ~0U ? no_ID : node + shift);
      }
    }
  });
}

TEST(topology, refuses_on_all_ranks_what_is_wrong_on_one) {
  const mesh m = box(ELT_TETRA4, 3, 3, 3);
  const mesh_part part = part_of(m, layout::random);
  const bool first = rank() == 0, last = rank() == size() - 1;
  mpi::node_sharing sharing, none;
  dense2D<id_type> neighbors;
  ASSERT_EQ(mpi::share_nodes(world, part, sharing), 0);
  EXPECT_EQ(mpi::get_neighbors(world, part, ELT_TETRA10, sharing, false, neighbors), -1);
  EXPECT_EQ(mpi::get_neighbors(world, part, ELT_TETRA4, last ? none : sharing, false, neighbors), -4);
  EXPECT_TRUE(neighbors.empty());
  if (size() > 1) {
    EXPECT_EQ(mpi::get_neighbors(world, part, first ? ELT_TETRA4 : ELT_SOLID_MIX, sharing, false, neighbors), -3);
    EXPECT_EQ(mpi::get_neighbors(world, part, ELT_TETRA4, sharing, first, neighbors), -5);
  }
  mesh_part broken = part_of(m, layout::random);
  if (last) std::swap(broken.node_IDs[0], broken.node_IDs[1]);
  EXPECT_EQ(mpi::share_nodes(world, broken, none), -1);
  broken = part_of(m, layout::random);
  if (last) broken.connectivity(0, 0) = 1000;
  EXPECT_EQ(mpi::get_neighbors(world, broken, ELT_TETRA4, sharing, false, neighbors), -1);
  broken = part_of(m, layout::random);
  if (last) broken.node_IDs[broken.node_IDs.size() - 1] = id_type{1} << 63;
  EXPECT_EQ(mpi::share_nodes(world, broken, none), -1);
  // The first check that fails counts.
  id_type parts = 0;
  dense1D<id_type> colors;
  EXPECT_EQ(mpi::get_subdomains(world, part, ELT_TETRA10, none, neighbors, colors, parts), -1);
  EXPECT_EQ(mpi::get_subdomains(world, part, ELT_TETRA4, last ? none : sharing, neighbors, colors, parts), -4);
  EXPECT_EQ(mpi::get_subdomains(world, part, ELT_TETRA4, sharing, neighbors, colors, parts), -5);
  const mesh quads = tangle(ELT_QUAD9, 20, 10, 1);
  const mesh_part quadratic = part_of(quads, layout::ranges);
  ASSERT_EQ(mpi::share_nodes(world, quadratic, sharing), 0);
  EXPECT_EQ(mpi::get_neighbors(world, quadratic, ELT_QUAD9, none, false, neighbors), -2);
  EXPECT_EQ(mpi::get_subdomains(world, quadratic, ELT_QUAD9, none, neighbors, colors, parts), -2);
}

}  // namespace
