// What fails on one rank fails on all, and none waits for ever.
#include <filesystem>
#include <functional>

#include "core/limits.h"
#include "faults.h"
#include "mpi_events.h"
#include "shared_path.h"

using namespace parts;

namespace {

/// All functions on parts, on a part that takes them.
class calls {
 public:
  using call = std::function<int()>;

  calls() : part_(part_of(box(ELT_TETRA4, 2, 2, 1), layout::random)), all_here_(part_.element_IDs.size(), rank()) {
    EXPECT_EQ(mpi::share_nodes(world, part_, sharing_), 0);
    EXPECT_EQ(mpi::get_neighbors(world, part_, ELT_TETRA4, sharing_, true, neighbors_), 0);
  }

  template <class Check>
  void for_each(Check check) {
    const auto& comm = world;
    const element_type type = ELT_TETRA4;
    const auto copy_part = [&]() -> mesh_part& { return copy_ = part_; };
    const std::pair<const char*, call> all[] = {
        {"share_nodes", [&] { return mpi::share_nodes(comm, part_, sharing_of_copy_); }},
        {"get_neighbors", [&] { return mpi::get_neighbors(comm, part_, type, sharing_, true, found_); }},
        {"merge", [&] { return mpi::merge(comm, copy_part(), 1.1, count_); }},
        {"remove_degenerated", [&] { return mpi::remove_degenerated(comm, copy_part(), true, count_); }},
        {"simplify", [&] { return mpi::simplify(comm, copy_part(), count_); }},
        {"make_part", [&] { return mpi::make_part(comm, part_.coords, part_.connectivity, copy_); }},
        {"get_subdomains", [&] { return mpi::get_subdomains(comm, part_, type, sharing_, neighbors_, ids_, count_); }},
        {"number_edges", [&] { return mpi::number_edges(comm, part_, type, edges_, ids_, count_); }},
        {"get_connected_elements", [&] { return mpi::get_connected_elements(comm, part_, sharing_, offsets_, ids_); }},
        {"migrate", [&] { return mpi::migrate(comm, copy_part(), all_here_); }},
        {"get_ghosts", [&] { return mpi::get_ghosts(comm, part_, sharing_, copy_, ranks_); }},
        {"partition_by_curve", [&] { return mpi::partition_by_curve(comm, part_, 5, ranks_); }},
        {"min_quality", [&] { return mpi::min_quality(comm, part_, type, value_, count_); }},
        {"quality_histogram", [&] { return mpi::quality_histogram(comm, part_, type, 0, 1, bins_, value_); }},
        {"bounding_box", [&] { return mpi::bounding_box(comm, part_, lower_, upper_); }}};
    for (const auto& [name, each] : all) {
      SCOPED_TRACE(name);
      ASSERT_NO_FATAL_FAILURE(check(each));
    }
  }

 private:
  mesh_part part_, copy_;
  mpi::node_sharing sharing_, sharing_of_copy_;
  dense2D<id_type> neighbors_, found_;
  dense1D<int> all_here_, ranks_;
  dense1D<id_type> ids_, bins_{5};
  dense2D<unsigned> edges_;
  dense1D<unsigned> offsets_;
  id_type count_ = 0;
  double value_ = 0;
  qel::vector_fixed<double, 3> lower_, upper_;
};

/// Makes the k-th allocation of one rank fail, for every k, until the call gets through.
void expect_same_code(const calls::call& call) {
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

/// Lets the event happen before the k-th call of MPI on all ranks, for every k (with small limits, where calls are many, for
/// ever fewer), until the call makes no more: check(code, k).
template <class Check>
void expect_with_event(const calls::call& call, const std::function<int()>& event, Check check) {
  for (std::uint64_t k = 1;; k += qel::gridwork::detail::limits::are_small ? 1 + k / 2 : 1) {
    ASSERT_LT(k, 100000U);
    mpi_events::arm(k, event);
    const int code = call();
    if (!mpi_events::disarm()) break;
    ASSERT_TRUE(agreed(code)) << "call " << k << " of MPI: " << code;
    ASSERT_NO_FATAL_FAILURE(check(code, k));
  }
}

/// The communicator's handler lets the call return; all ranks learn that it failed.
void expect_mpi_failed(const calls::call& call) {
  expect_with_event(
      call, [] { return MPI_ERR_OTHER; },
      [](int code, std::uint64_t k) { ASSERT_EQ(code, -200) << "call " << k << " of MPI"; });
}

TEST(failures, of_memory_on_one_rank) { calls().for_each(expect_same_code); }

TEST(failures, of_MPI) { calls().for_each(expect_mpi_failed); }

TEST(failures, of_memory_in_PT_Scotch_or_before_it) {
  const mesh_part part = part_of(box(ELT_TETRA4, 3, 2, 1), layout::random);
  mpi::node_sharing sharing;
  dense2D<id_type> neighbors;
  dense1D<int> targets;
  ASSERT_EQ(mpi::share_nodes(world, part, sharing), 0);
  ASSERT_EQ(mpi::get_neighbors(world, part, ELT_TETRA4, sharing, true, neighbors), 0);
  if (mpi::partition_graph(world, part, neighbors, 2, targets) == -202) GTEST_SKIP() << "built without PT-Scotch";
  expect_same_code([&] { return mpi::partition_graph(world, part, neighbors, 2, targets); });
}

TEST(failures, of_memory_while_a_file_is_read_and_written) {
  const shared_path file(".memory.stl");
  const mesh m = box(ELT_TRIA3, 2, 2, 1);
  mesh_part part = part_of(m, layout::ranges);
  for (const bool ascii : {false, true}) {
    file.write_STL(m.coords, m.connectivity, ascii);
    expect_same_code([&] { return mpi::STL_input(world, file.path(), part); });
  }
  expect_same_code([&] { return mpi::STL_output(world, file.path(), part); });
}

TEST(failures, of_a_file_that_is_cut_while_it_is_read) {
  const shared_path file(".cut.stl");
  const mesh m = box(ELT_TRIA3, 3, 2, 2);
  mesh_part part;
  for (const bool ascii : {false, true}) {
    for (const unsigned share : {2U, 1000U}) {
      bool refused = false;
      const auto read = [&] {
        file.write_STL(m.coords, m.connectivity, ascii);
        return mpi::STL_input(world, file.path(), part);
      };
      const auto cut = [&] {
        if (rank() == 0) std::filesystem::resize_file(file.path(), std::filesystem::file_size(file.path()) / share);
        PMPI_Barrier(world);
        return MPI_SUCCESS;
      };
      ASSERT_NO_FATAL_FAILURE(expect_with_event(read, cut, [&](int code, std::uint64_t) {
        ASSERT_TRUE(code == 0 || code == -2 || code == -3) << code;
        ASSERT_EQ(part.element_IDs.empty(), code != 0 || part.connectivity.cols() == 0);
        refused = refused || code != 0;
      }));
      EXPECT_TRUE(refused);
    }
  }
}

TEST(failures, of_arguments_that_differ) {
  if (size() == 1) GTEST_SKIP() << "one rank cannot differ";
  const mesh m = box(ELT_TETRA4, 3, 2, 2);
  const mesh_part part = part_of(m, layout::ranges);
  const bool first = rank() == 0;
  mpi::node_sharing sharing;
  dense2D<id_type> neighbors;
  dense1D<id_type> ids, bins(4), more_bins(first ? 4 : 5);
  dense2D<unsigned> edges;
  dense1D<int> targets;
  id_type count = 0;
  double value = 0;
  ASSERT_EQ(mpi::share_nodes(world, part, sharing), 0);
  ASSERT_EQ(mpi::get_neighbors(world, part, ELT_TETRA4, sharing, false, neighbors), 0);
  const element_type type = first ? ELT_TETRA4 : ELT_QUAD4;
  EXPECT_EQ(mpi::get_subdomains(world, part, type, sharing, neighbors, ids, count), -3);
  EXPECT_EQ(mpi::number_edges(world, part, type, edges, ids, count), -3);
  EXPECT_EQ(mpi::partition_graph(world, part, neighbors, first ? 2 : 3, targets), -4);
  EXPECT_EQ(mpi::min_quality(world, part, type, value, count), -3);
  EXPECT_EQ(mpi::quality_histogram(world, part, type, 0, 1, bins, value), -3);
  EXPECT_EQ(mpi::quality_histogram(world, part, ELT_TETRA4, first ? 0 : 0.1, 1, bins, value), -4);
  EXPECT_EQ(mpi::quality_histogram(world, part, ELT_TETRA4, 0, first ? 1 : 2, bins, value), -5);
  EXPECT_EQ(mpi::quality_histogram(world, part, ELT_TETRA4, 0, 1, more_bins, value), -6);
  // Row counts, too.
  const mesh_part flat = part_of(first ? m : tangle(ELT_TRIA3, 9, 30, 1), layout::ranges);
  EXPECT_EQ(mpi::share_nodes(world, flat, sharing), -1);
  mesh_part low = part_of(m, layout::ranges);
  if (!first) low.coords = dense2D<double>(2, low.coords.cols(), 0.0);
  EXPECT_EQ(mpi::simplify(world, low, count), -1);
}

}  // namespace
