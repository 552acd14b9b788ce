// Partitions, migration, ghosts; edges, elements of nodes, connected parts; qualities and extents.
#include <array>
#include <cmath>

#include "parts.h"

using namespace parts;

namespace {

TEST(migrate, moves_elements_and_changes_no_result) {
  for_each_part([](const mesh& m, mesh_part part, const mpi::node_sharing&, id_type shift) {
    std::mt19937 random(static_cast<unsigned>(rank()));
    for (unsigned round = 0; round < 3; ++round) {
      dense1D<int> targets(part.element_IDs.size());
      for (int& target : targets) target = static_cast<int>(random() % static_cast<unsigned>(size()));
      ASSERT_EQ(mpi::migrate(world, part, targets), 0);
      ASSERT_NO_FATAL_FAILURE(expect_part_of(part, m.coords, m.connectivity, shift));
    }
    for (const int nobody : {-1, size()}) {
      dense1D<int> wrong(part.element_IDs.size(), nobody);
      EXPECT_EQ(mpi::migrate(world, part, wrong), sum(wrong.size()) != 0 ? -3 : 0);
    }
    dense1D<int> too_many(part.element_IDs.size() + 1, 0);
    EXPECT_EQ(mpi::migrate(world, part, too_many), -3);
  });
}

/// Places of centroids in the box around all of them, 21 bits an axis, which take turns from the highest on.
std::vector<id_type> curve_keys(const mesh& m) {
  std::vector<std::array<double, 3>> centroids(m.connectivity.cols());
  std::array<double, 3> low, high;
  low.fill(HUGE_VAL), high.fill(-HUGE_VAL);
  for (id_type e = 0; e < centroids.size(); ++e) {
    unsigned nodes = 0;
    for (; nodes < m.connectivity.rows() && m.connectivity(nodes, e) != ~0U; ++nodes) {
      for (unsigned a = 0; a < 3; ++a) centroids[e][a] += m.coords(a, m.connectivity(nodes, e));
    }
    for (unsigned a = 0; a < 3; ++a) {
      const double x = centroids[e][a] /= nodes;
      if (std::isfinite(x)) low[a] = std::min(low[a], x), high[a] = std::max(high[a], x);
    }
  }
  std::vector<id_type> keys(centroids.size());
  for (id_type e = 0; e < keys.size(); ++e) {
    for (unsigned bit = 63; bit-- > 0;) {
      const unsigned a = 2 - bit % 3;
      const double place = (centroids[e][a] - low[a]) * (0x1p21 / (high[a] - low[a]));
      keys[e] = 2 * keys[e] + (place > 0 ? static_cast<id_type>(std::min(place, 0x1p21 - 1)) >> bit / 3 & 1 : 0);
    }
  }
  return keys;
}

/// Each part begins at the key that stands where it should among all of them, sorted.
std::vector<int> parts_of(const std::vector<id_type>& keys, unsigned count) {
  std::vector<id_type> sorted = keys;
  std::vector<int> parts(keys.size());
  std::sort(sorted.begin(), sorted.end());
  for (unsigned part = 1; part < count; ++part) {
    const id_type first = sorted[keys.size() * part / count];
    for (id_type e = 0; e < keys.size(); ++e) parts[e] += keys[e] >= first ? 1 : 0;
  }
  return parts;
}

TEST(partition_by_curve, depends_on_the_mesh_alone) {
  for (const mesh& m : meshes()) {
    SCOPED_TRACE(m.name);
    for (const int count : {1, 7, size()}) {
      const std::vector<int> expected = parts_of(curve_keys(m), static_cast<unsigned>(count));
      for (const layout l : layouts) {
        const mesh_part part = part_of(m, l);
        dense1D<int> targets;
        ASSERT_EQ(mpi::partition_by_curve(world, part, count, targets), 0);
        std::vector<int> all(m.connectivity.cols(), 0);
        for (id_type e = 0; e < targets.size(); ++e) {
          ASSERT_TRUE(targets[e] >= 0 && targets[e] < count);
          all[part.element_IDs[e]] = targets[e];
        }
        MPI_Allreduce(MPI_IN_PLACE, all.data(), static_cast<int>(all.size()), MPI_INT, MPI_SUM, world);
        ASSERT_EQ(all, expected);
      }
    }
  }
  mesh_part part = part_of(box(ELT_TETRA4, 6, 6, 6), layout::random);
  dense1D<int> targets;
  EXPECT_EQ(mpi::partition_by_curve(world, part, 0, targets), -3);
  EXPECT_EQ(mpi::partition_by_curve(world, part, 1 + rank(), targets), size() > 1 ? -3 : 0);
  ASSERT_EQ(mpi::partition_by_curve(world, part, size(), targets), 0);
  ASSERT_EQ(mpi::migrate(world, part, targets), 0);
  EXPECT_NEAR(static_cast<double>(part.element_IDs.size()), 1296.0 / size(), 12);
}

/// They leave the others as they are.
TEST(partition_by_curve, nodes_without_a_place) {
  mesh m = box(ELT_TETRA4, 6, 6, 6);
  m.coords(0, 0) = HUGE_VAL, m.coords(1, 100) = -HUGE_VAL, m.coords(2, 200) = std::nan("");
  const mesh_part part = part_of(m, layout::random);
  dense1D<int> targets;
  ASSERT_EQ(mpi::partition_by_curve(world, part, 5, targets), 0);
  const std::vector<int> expected = parts_of(curve_keys(m), 5);
  for (id_type e = 0; e < targets.size(); ++e) ASSERT_EQ(targets[e], expected[part.element_IDs[e]]);
}

TEST(partition_graph, gives_each_part_its_share) {
  mesh_part part = part_of(box(ELT_TETRA4, 6, 6, 6), layout::random);
  mpi::node_sharing sharing;
  dense2D<id_type> neighbors;
  dense1D<int> targets, targets_of_broken;
  ASSERT_EQ(mpi::share_nodes(world, part, sharing), 0);
  ASSERT_EQ(mpi::get_neighbors(world, part, ELT_TETRA4, sharing, false, neighbors), 0);
  EXPECT_EQ(mpi::partition_graph(world, part, neighbors, 0, targets), -4);
  EXPECT_EQ(mpi::partition_graph(world, part, dense2D<id_type>(4, 1), 2, targets), -3);
  const int code = mpi::partition_graph(world, part, neighbors, size(), targets);
#ifdef QEL_GRIDWORK_HAVE_PTSCOTCH
  ASSERT_EQ(code, 0);
  for (id_type i = 0; i < neighbors.size(); i += 7) neighbors.data()[i] = id_type{i} << 50;  // IDs that nobody has
  EXPECT_EQ(mpi::partition_graph(world, part, neighbors, size(), targets_of_broken), 0);
  ASSERT_EQ(mpi::migrate(world, part, targets), 0);
  EXPECT_NEAR(static_cast<double>(part.element_IDs.size()), 1296.0 / size(), 130.0 / size() + 10);
#else
  ASSERT_EQ(code, -202);
#endif
}

TEST(get_ghosts, are_the_elements_of_others_that_touch_the_part) {
  for_each_part([](const mesh& m, const mesh_part& part, const mpi::node_sharing& sharing, id_type shift) {
    mesh_part ghosts;
    dense1D<int> owners;
    ASSERT_EQ(mpi::get_ghosts(world, part, sharing, ghosts, owners), 0);
    std::vector<int> homes(m.connectivity.cols(), 0);
    for (const id_type id : part.element_IDs) homes[id - shift] = rank();
    MPI_Allreduce(MPI_IN_PLACE, homes.data(), static_cast<int>(homes.size()), MPI_INT, MPI_SUM, world);
    const std::set<id_type> nodes(part.node_IDs.begin(), part.node_IDs.end());
    std::vector<id_type> expected;
    for (unsigned e = 0; e < m.connectivity.cols(); ++e) {
      const bool touches = std::any_of(m.connectivity.begin_column(e), m.connectivity.end_column(e),
                                       [&](unsigned node) { return nodes.count(node + shift) != 0; });
      if (touches && homes[e] != rank()) expected.push_back(e + shift);
    }
    ASSERT_EQ(std::vector<id_type>(ghosts.element_IDs.begin(), ghosts.element_IDs.end()), expected);
    for (id_type j = 0; j < expected.size(); ++j) {
      ASSERT_EQ(owners[j], homes[expected[j] - shift]);
      for (unsigned i = 0; i < m.connectivity.rows(); ++i) {
        const unsigned node = ghosts.connectivity(i, j), whole = m.connectivity(i, expected[j] - shift);
        ASSERT_EQ(node == ~0U ? ~0U : ghosts.node_IDs[node] - shift, whole);
        ASSERT_TRUE(node == ~0U || ghosts.coords(0, node) == m.coords(0, whole));
      }
    }
  });
}

TEST(number_edges, as_copy_edges_lists_them) {
  for_each_part([](const mesh& m, const mesh_part& part, const mpi::node_sharing&, id_type shift) {
    dense2D<unsigned> whole, edges;
    dense1D<id_type> numbers;
    id_type total = 0;
    ASSERT_EQ(copy_edges(m.connectivity, m.type, whole), 0);
    ASSERT_EQ(mpi::number_edges(world, part, m.type, edges, numbers, total), 0);
    ASSERT_EQ(total, whole.cols());
    ASSERT_EQ(numbers.size(), edges.cols());
    for (id_type j = 0; j < numbers.size(); ++j) {
      for (unsigned i = 0; i < 2; ++i) ASSERT_EQ(part.node_IDs[edges(i, j)] - shift, whole(i, numbers[j]));
    }
  });
  mesh_part part = part_of(box(ELT_TETRA4, 2, 2, 2), layout::random);
  dense2D<unsigned> edges;
  dense1D<id_type> numbers;
  id_type total = 0;
  EXPECT_EQ(mpi::number_edges(world, part, ELT_HEXA8, edges, numbers, total), -1);
}

TEST(get_connected_elements, of_all_ranks) {
  for_each_part([](const mesh& m, const mesh_part& part, const mpi::node_sharing& sharing, id_type shift) {
    dense1D<unsigned> whole_offsets, whole, offsets;
    dense1D<id_type> elements;
    ASSERT_EQ(get_connected_elements(m.connectivity, whole_offsets, whole), 0);
    ASSERT_EQ(mpi::get_connected_elements(world, part, sharing, offsets, elements), 0);
    ASSERT_EQ(offsets.size(), part.node_IDs.size() + 1);
    for (id_type i = 0; i < part.node_IDs.size(); ++i) {
      const id_type node = part.node_IDs[i] - shift;
      ASSERT_EQ(offsets[i + 1] - offsets[i], whole_offsets[node + 1] - whole_offsets[node]);
      for (unsigned k = 0; k < offsets[i + 1] - offsets[i]; ++k) {
        ASSERT_EQ(elements[offsets[i] + k] - shift, whole[whole_offsets[node] + k]);
      }
    }
  });
}

void expect_whole_colors(const mesh& m, const mesh_part& part, const mpi::node_sharing& sharing, bool pair,
                         id_type shift) {
  dense2D<unsigned> whole_neighbors;
  dense1D<unsigned> whole;
  dense2D<id_type> neighbors;
  dense1D<id_type> colors;
  id_type parts = 0;
  ASSERT_EQ(get_neighbors(m.connectivity, m.type, pair, whole_neighbors), 0);
  const int count = get_subdomains(whole_neighbors, whole);
  ASSERT_EQ(mpi::get_neighbors(world, part, m.type, sharing, pair, neighbors), 0);
  ASSERT_EQ(mpi::get_subdomains(world, part, m.type, sharing, neighbors, colors, parts), 0);
  ASSERT_EQ(static_cast<int>(parts), count);
  for (id_type e = 0; e < colors.size(); ++e) ASSERT_EQ(colors[e], whole[part.element_IDs[e] - shift]);
}

TEST(get_subdomains, same_colors_as_the_whole_mesh) {
  for_each_part([](const mesh& m, const mesh_part& part, const mpi::node_sharing& sharing, id_type shift) {
    for (const bool pair : {false, true}) expect_whole_colors(m, part, sharing, pair, shift);
  });
  // A path through all ranks and back, its elements in no order; and many small parts.
  for (const unsigned gap : {0U, 5U}) {
    mesh path{"path", dense2D<double>(3, 400, 0.0), dense2D<unsigned>(2, 300), ELT_EDGE2};
    for (unsigned j = 0; j < 300; ++j) {
      const unsigned e = j * 97 % 300;
      path.connectivity(0, e) = j, path.connectivity(1, e) = gap != 0 && j % gap == 0 ? 399 - j / gap : j + 1;
    }
    for (const layout l : layouts) {
      const mesh_part part = part_of(path, l);
      mpi::node_sharing sharing;
      ASSERT_EQ(mpi::share_nodes(world, part, sharing), 0);
      expect_whole_colors(path, part, sharing, true, 0);
    }
  }
}

TEST(qualities, of_the_whole_mesh) {
  for_each_part([](const mesh& m, const mesh_part& part, const mpi::node_sharing&, id_type shift) {
    double whole = 0, found = 0, mean = 0;
    unsigned first = 0;
    id_type element = 0;
    ASSERT_EQ(min_quality(m.coords, m.connectivity, m.type, whole, first), 0);
    ASSERT_EQ(mpi::min_quality(world, part, m.type, found, element), 0);
    ASSERT_EQ(found, whole);
    ASSERT_EQ(element, first == ~0U ? no_ID : first + shift);
    qel::misc::histogram histogram(-0.5, 1, 7);
    dense1D<double> qualities;
    ASSERT_EQ(shape_qualities(m.coords, m.connectivity, m.type, qualities), 0);
    for (const double q : qualities) histogram.process(q);
    dense1D<id_type> bins(7);
    ASSERT_EQ(mpi::quality_histogram(world, part, m.type, -0.5, 1, bins, mean), 0);
    for (unsigned k = 0; k < 7; ++k) ASSERT_EQ(bins[k], histogram.bin(k));
    ASSERT_NEAR(mean, histogram.mean(), 1e-13);
    // To the last bit on all ranks, and in whatever layout.
    static std::map<const mesh*, double> means;
    ASSERT_EQ(means.emplace(&m, mean).first->second, mean);
  });
  const mesh_part part = part_of(box(ELT_TETRA4, 2, 2, 2), layout::random);
  double q = 0;
  id_type element = 0;
  EXPECT_EQ(mpi::min_quality(world, part, ELT_TETRA10, q, element), -2);
  EXPECT_EQ(q, 1);
  dense1D<id_type> bins(3);
  EXPECT_EQ(mpi::quality_histogram(world, mesh_part(), ELT_TETRA4, 0, 1, bins, q), 0);
  EXPECT_EQ(q, 0);
  EXPECT_EQ(mpi::quality_histogram(world, part, ELT_TETRA4, 1, 1, bins, q), -5);
  EXPECT_EQ(mpi::quality_histogram(world, part, ELT_TETRA4, 0, std::nan(""), bins, q), -5);
}

TEST(bounding_box, in_the_plane_and_of_nothing) {
  mesh flat = box(ELT_TRIA3, 4, 3, 1);
  dense2D<double> plane(2, flat.coords.cols());
  for (unsigned i = 0; i < plane.cols(); ++i) std::copy_n(flat.coords.column(i), 2, plane.column(i));
  flat.coords = plane;
  qel::vector_fixed<double, 3> low, high;
  ASSERT_EQ(mpi::bounding_box(world, part_of(flat, layout::every_other), low, high), 0);
  EXPECT_TRUE(low[0] == 0 && low[1] == 0 && low[2] == 0 && high[0] == 4 + 0.1 * 3 && high[1] == 0.7 * 3 &&
              high[2] == 0);
  ASSERT_EQ(mpi::bounding_box(world, mesh_part(), low, high), 0);
  EXPECT_TRUE(low[0] == HUGE_VAL && high[2] == -HUGE_VAL);
}

TEST(bounding_box, of_the_whole_mesh) {
  for_each_part([](const mesh&, const mesh_part& part, const mpi::node_sharing&, id_type) {
    qel::vector_fixed<double, 3> low, high;
    ASSERT_EQ(mpi::bounding_box(world, part, low, high), 0);
    double ends[6] = {HUGE_VAL, HUGE_VAL, HUGE_VAL, HUGE_VAL, HUGE_VAL, HUGE_VAL};
    for (id_type i = 0; i < part.coords.cols(); ++i) {
      for (unsigned a = 0; a < 3; ++a) {
        ends[a] = std::min(ends[a], part.coords(a, i)), ends[3 + a] = std::min(ends[3 + a], -part.coords(a, i));
      }
    }
    MPI_Allreduce(MPI_IN_PLACE, ends, 6, MPI_DOUBLE, MPI_MIN, world);
    for (unsigned a = 0; a < 3; ++a) ASSERT_TRUE(low[a] == ends[a] && high[a] == -ends[3 + a]);
  });
}

}  // namespace
