// What fails on one rank fails on all, and none waits for ever.
#include <unistd.h>

#include <cstdio>
#include <functional>

#include "faults.h"
#include "parts.h"

using namespace parts;

namespace {

/// Makes the k-th allocation of one rank fail, for every k, until the call gets through.
void expect_same_code(const char* name, const std::function<int()>& call) {
  SCOPED_TRACE(name);
  ASSERT_EQ(call(), 0);
  const int failing = size() / 2;
  for (std::uint64_t k = 1;; ++k) {
    ASSERT_LT(k, 2000U);
    if (rank() == failing) faults::arm({faults::operation::allocate, k, false});
    const int code = call();
    const bool failed = sum(rank() == failing && faults::disarm() ? 1 : 0) != 0;
    ASSERT_TRUE(agreed(code)) << "allocation " << k;
    // What is asked for again, or was only advice, may be denied.
    ASSERT_TRUE(code == 0 || (failed && code == -199)) << "allocation " << k << ": " << code;
    if (!failed) break;
  }
}

const mesh& tetrahedra() {
  static const mesh m = box(ELT_TETRA4, 2, 2, 1);
  return m;
}

TEST(failures, of_memory_on_one_rank) {
  const mesh_part part = part_of(tetrahedra(), layout::random);
  mpi::node_sharing sharing;
  dense2D<id_type> neighbors;
  ASSERT_EQ(mpi::share_nodes(world, part, sharing), 0);
  ASSERT_EQ(mpi::get_neighbors(world, part, ELT_TETRA4, sharing, true, neighbors), 0);
  id_type count = 0;
  dense1D<id_type> ids;
  dense2D<unsigned> edges;
  dense1D<unsigned> offsets;
  dense1D<int> ranks, all_here(part.element_IDs.size(), rank());
  mesh_part copy;
  const auto with_copy = [&](auto change) {
    return [&, change] {
      copy = part;
      return change();
    };
  };
  expect_same_code("share_nodes", [&] { return mpi::share_nodes(world, part, sharing); });
  expect_same_code("get_neighbors",
                   [&] { return mpi::get_neighbors(world, part, ELT_TETRA4, sharing, true, neighbors); });
  expect_same_code("merge", with_copy([&] { return mpi::merge(world, copy, 1.1, count); }));
  expect_same_code("remove_degenerated", with_copy([&] { return mpi::remove_degenerated(world, copy, true, count); }));
  expect_same_code("simplify", with_copy([&] { return mpi::simplify(world, copy, count); }));
  expect_same_code("make_part",
                   [&] { return mpi::make_part(world, tetrahedra().coords, tetrahedra().connectivity, copy); });
  expect_same_code("get_subdomains",
                   [&] { return mpi::get_subdomains(world, part, ELT_TETRA4, sharing, neighbors, ids, count); });
  expect_same_code("number_edges", [&] { return mpi::number_edges(world, part, ELT_TETRA4, edges, ids, count); });
  expect_same_code("get_connected_elements",
                   [&] { return mpi::get_connected_elements(world, part, sharing, offsets, ids); });
  expect_same_code("migrate", with_copy([&] { return mpi::migrate(world, copy, all_here); }));
  expect_same_code("get_ghosts", [&] { return mpi::get_ghosts(world, part, sharing, copy, ranks); });
  expect_same_code("partition_by_curve", [&] { return mpi::partition_by_curve(world, part, 5, ranks); });
}

TEST(failures, of_memory_while_a_file_is_read_and_written) {
  int process = getpid();
  MPI_Bcast(&process, 1, MPI_INT, 0, world);
  const std::string path = testing::TempDir() + "qel_mpi_failure_" + std::to_string(process) + ".stl";
  const mesh m = box(ELT_TRIA3, 2, 2, 1);
  mesh_part part = part_of(m, layout::ranges);
  for (const bool ascii : {false, true}) {
    const bool writes = rank() == 0;
    EXPECT_EQ(writes ? STL_output(path.c_str(), m.coords, m.connectivity, ascii) : 0, 0);
    MPI_Barrier(world);
    expect_same_code("STL_input", [&] { return mpi::STL_input(world, path.c_str(), part); });
  }
  expect_same_code("STL_output", [&] { return mpi::STL_output(world, path.c_str(), part); });
  MPI_Barrier(world);
  if (rank() == 0) std::remove(path.c_str());
}

}  // namespace
