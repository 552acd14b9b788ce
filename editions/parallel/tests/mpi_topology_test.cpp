// Sharing, neighbours and boundaries.
#include <functional>

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
  // What is no part.
  const std::function<void(mesh_part&)> damages[] = {
      [](mesh_part& p) { std::swap(p.node_IDs[0], p.node_IDs[1]); },
      [](mesh_part& p) { p.element_IDs[1] = p.element_IDs[0]; },
      [](mesh_part& p) { p.connectivity(0, 0) = 1000; },
      [](mesh_part& p) { p.node_IDs[p.node_IDs.size() - 1] = id_type{1} << 63; },
      [](mesh_part& p) { p.element_IDs[p.element_IDs.size() - 1] = id_type{1} << 60; },
      [](mesh_part& p) { ASSERT_TRUE(p.node_IDs.push_back(100000)); },
      [](mesh_part& p) { ASSERT_TRUE(p.element_IDs.push_back(100000)); }};
  for (const auto& damage : damages) {
    mesh_part broken = part_of(m, layout::random);
    if (last) damage(broken);
    EXPECT_EQ(mpi::share_nodes(world, broken, none), -1);
  }
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

TEST(topology, refuses_a_sharing_of_another_part) {
  const mesh m = box(ELT_TETRA4, 3, 3, 3);
  const mesh_part part = part_of(m, layout::random);
  mpi::node_sharing sharing;
  ASSERT_EQ(mpi::share_nodes(world, part, sharing), 0);
  const auto expect_refused = [&](const mpi::node_sharing& wrong) {
    dense2D<id_type> neighbors;
    dense1D<unsigned> offsets;
    dense1D<id_type> elements;
    mesh_part ghosts;
    dense1D<int> owners;
    EXPECT_EQ(mpi::get_neighbors(world, part, ELT_TETRA4, wrong, false, neighbors), -4);
    EXPECT_EQ(mpi::get_connected_elements(world, part, wrong, offsets, elements), -3);
    EXPECT_EQ(mpi::get_ghosts(world, part, wrong, ghosts, owners), -3);
  };
  const auto one_more = [](mpi::node_sharing& s, int stranger) {
    EXPECT_TRUE(s.ranks.push_back(stranger));
    ++s.offsets[s.offsets.size() - 1];
  };
  const std::function<void(mpi::node_sharing&)> damages[] = {
      [](mpi::node_sharing& s) { s.offsets[0] = 1; },
      [](mpi::node_sharing& s) { ++s.offsets[s.offsets.size() - 1]; },
      [](mpi::node_sharing& s) { s.offsets[1] = 100000; },
      [](mpi::node_sharing& s) { EXPECT_TRUE(s.offsets.push_back(s.offsets[s.offsets.size() - 1])); },
      [&](mpi::node_sharing& s) { one_more(s, -1); },
      [&](mpi::node_sharing& s) { one_more(s, size()); },
      [&](mpi::node_sharing& s) { one_more(s, rank()); }};
  for (const auto& damage : damages) {
    mpi::node_sharing wrong;
    ASSERT_TRUE(wrong.offsets.copy(sharing.offsets) && wrong.ranks.copy(sharing.ranks));
    if (rank() == size() - 1) damage(wrong);
    expect_refused(wrong);
  }
  // One that cannot be told from the right one does no harm.
  if (size() == 1) return;
  mpi::node_sharing stale;
  ASSERT_TRUE(stale.offsets.resize(sharing.offsets.size(), 0) && stale.ranks.resize(sharing.offsets.size() - 1));
  for (unsigned i = 0; i < stale.ranks.size(); ++i) {
    stale.ranks[i] = (rank() + 1) % size();
    stale.offsets[i + std::uint64_t{1}] = i + 1;
  }
  dense1D<unsigned> offsets;
  dense1D<id_type> elements;
  EXPECT_EQ(mpi::get_connected_elements(world, part, stale, offsets, elements), 0);
  EXPECT_EQ(offsets[part.node_IDs.size()], elements.size());
}

TEST(topology, parts_that_were_never_filled) {
  const mesh m = box(ELT_TETRA4, 2, 2, 2);
  const mesh_part part = rank() == size() - 1 ? part_of(m, layout::last) : mesh_part();
  mpi::node_sharing sharing;
  dense2D<id_type> neighbors;
  EXPECT_EQ(mpi::share_nodes(world, part, sharing), 0);
  EXPECT_EQ(mpi::get_neighbors(world, part, ELT_TETRA4, sharing, false, neighbors), 0);
}

TEST(get_mesh_boundaries, refuses) {
  const mesh m = box(ELT_TETRA4, 2, 2, 2);
  mesh_part part = part_of(m, layout::ranges);
  const bool has_elements = !part.element_IDs.empty();
  dense2D<id_type> neighbors(4, part.element_IDs.size(), no_ID), boundaries;
  dense1D<id_type> slots;
  const auto code = [&](element_type type) {
    return mpi::get_mesh_boundaries(part, type, neighbors, boundaries, slots);
  };
  EXPECT_EQ(code(ELT_TETRA4), 0);
  EXPECT_EQ(slots.size(), 4 * part.element_IDs.size());
  EXPECT_EQ(code(ELT_HEXA8), has_elements ? -1 : 0);
  EXPECT_TRUE(boundaries.empty() && slots.empty());
  for (const id_type more : {0U, 1U}) {
    neighbors = dense2D<id_type>(4 - more, part.element_IDs.size() + 1 - more, no_ID);
    EXPECT_EQ(code(ELT_TETRA4), has_elements ? -2 : 0);
  }
  part.node_IDs.clear();
  EXPECT_EQ(code(ELT_TETRA4), has_elements ? -1 : 0);
}

}  // namespace
