// What fails on one rank fails on all, and none waits for ever.
#include <filesystem>
#include <functional>

#include "core/limits.h"
#include "faults.h"
#include "mpi_events.h"
#include "shared_path.h"

using namespace parts;

namespace {

/// What functions on parts give.
struct outputs {
  mesh_part part;
  mpi::node_sharing sharing;
  dense2D<id_type> neighbors;
  dense2D<unsigned> edges;
  dense1D<id_type> ids, bins{5};
  dense1D<unsigned> offsets;
  dense1D<int> ranks;
  id_type count = 0;
  double value = 0;
  qel::vector_fixed<double, 3> lower, upper;

  /// All arrays but the bins, whose number is asked for.
  bool are_empty() const {
    return is_empty(part) && sharing.offsets.empty() && sharing.ranks.empty() && neighbors.empty() && edges.empty() &&
           ids.empty() && offsets.empty() && ranks.empty();
  }

  static bool is_empty(const mesh_part& p) {
    return p.coords.empty() && p.node_IDs.empty() && p.connectivity.empty() && p.element_IDs.empty();
  }
};

bool are_equal(const mesh_part& a, const mesh_part& b) {
  return a.coords == b.coords && a.node_IDs == b.node_IDs && a.connectivity == b.connectivity &&
         a.element_IDs == b.element_IDs;
}

struct call {
  std::function<int()> run;
  /// Whether outputs are as they should be on a negative result, and on success.
  /// @{
  std::function<bool()> failed_well = [] { return true; };
  std::function<bool()> is_right = [] { return true; };
  /// @}
};

/// All functions on parts, on a part that takes them.
class calls {
 public:
  explicit calls(const mesh& m)
      : type_(m.type),
        part_(part_of(m, layout::random)),
        untouched_(part_of(m, layout::random)),
        all_here_(part_.element_IDs.size(), rank()) {
    EXPECT_EQ(mpi::share_nodes(world, part_, sharing_), 0);
    EXPECT_EQ(mpi::get_neighbors(world, part_, type_, sharing_, true, neighbors_), 0);
  }

  template <class Check>
  void for_each(Check check) {
    const MPI_Comm comm = world;
    outputs& o = out_;
    for_each_of(
        {{"share_nodes", [&] { return mpi::share_nodes(comm, part_, o.sharing); }},
         {"get_neighbors", [&] { return mpi::get_neighbors(comm, part_, type_, sharing_, true, o.neighbors); }},
         {"make_part", [&] { return mpi::make_part(comm, part_.coords, part_.connectivity, o.part); }},
         {"get_subdomains",
          [&] { return mpi::get_subdomains(comm, part_, type_, sharing_, neighbors_, o.ids, o.count); }},
         {"number_edges", [&] { return mpi::number_edges(comm, part_, type_, o.edges, o.ids, o.count); }},
         {"get_connected_elements",
          [&] { return mpi::get_connected_elements(comm, part_, sharing_, o.offsets, o.ids); }},
         {"get_ghosts", [&] { return mpi::get_ghosts(comm, part_, sharing_, o.part, o.ranks); }},
         {"partition_by_curve", [&] { return mpi::partition_by_curve(comm, part_, 5, o.ranks); }},
         {"min_quality", [&] { return mpi::min_quality(comm, part_, type_, o.value, o.count); }},
         {"quality_histogram", [&] { return mpi::quality_histogram(comm, part_, type_, 0, 1, o.bins, o.value); }},
         {"bounding_box", [&] { return mpi::bounding_box(comm, part_, o.lower, o.upper); }}},
        [&] { return o.are_empty(); }, check);
    const auto copy = [&]() -> mesh_part& { return o.part = part_; };
    for_each_of(
        {{"merge", [&, copy] { return mpi::merge(comm, copy(), 1.1, o.count); }},
         {"remove_degenerated", [&, copy] { return mpi::remove_degenerated(comm, copy(), true, o.count); }},
         {"simplify", [&, copy] { return mpi::simplify(comm, copy(), o.count); }},
         {"migrate", [&, copy] { return mpi::migrate(comm, copy(), all_here_); }}},
        [&] { return are_equal(o.part, untouched_); }, check);
  }

 private:
  using named_call = std::pair<const char*, std::function<int()>>;

  template <class Check>
  void for_each_of(const std::vector<named_call>& list, const std::function<bool()>& failed_well, Check check) {
    for (const auto& [name, run] : list) {
      SCOPED_TRACE(name);
      out_ = outputs();
      ASSERT_NO_FATAL_FAILURE(check(call{run, failed_well}));
    }
  }

  element_type type_;
  mesh_part part_, untouched_;
  mpi::node_sharing sharing_;
  dense2D<id_type> neighbors_;
  dense1D<int> all_here_;
  outputs out_;
};

/// Makes the k-th allocation of one rank fail, for every k, until the call gets through.
void expect_same_code(const call& c) {
  ASSERT_EQ(c.run(), 0);
  const int failing = size() / 2;
  for (std::uint64_t k = 1;; ++k) {
    ASSERT_LT(k, 2000U);
    if (rank() == failing) faults::arm({faults::operation::allocate, k, false});
    const int code = c.run();
    const bool failed = sum(rank() == failing && faults::disarm() ? 1 : 0) != 0;
    ASSERT_TRUE(agreed(code)) << "allocation " << k;
    // What is asked for again, or was only advice, may be denied.
    ASSERT_TRUE(code == 0 || (failed && code == -199)) << "allocation " << k << ": " << code;
    ASSERT_TRUE(code == 0 ? c.is_right() : c.failed_well()) << "allocation " << k;
    if (!failed) break;
  }
}

/// Lets the event happen before the k-th call of MPI on each rank, for every k (with small limits, where calls are many, for
/// ever fewer), until no rank makes so many: check(code, k).
template <class Check>
void expect_with_event(const std::function<int()>& run, const std::function<int()>& event, Check check,
                       mpi_events::of which = mpi_events::of::collectives) {
  for (std::uint64_t k = 1;; k += qel::gridwork::detail::limits::are_small ? 1 + k / 2 : 1) {
    ASSERT_LT(k, 100000U);
    mpi_events::arm(k, event, which);
    const int code = run();
    if (sum(mpi_events::disarm() ? 1 : 0) == 0) break;
    ASSERT_TRUE(agreed(code)) << "call " << k << " of MPI: " << code;
    ASSERT_NO_FATAL_FAILURE(check(code, k));
  }
}

int fail() { return MPI_ERR_OTHER; }

/// The communicator's handler lets the call return; all ranks learn that it failed.
void expect_mpi_failed(const call& c) {
  expect_with_event(c.run, fail, [&](int code, std::uint64_t k) {
    ASSERT_EQ(code, -200) << "call " << k << " of MPI";
    ASSERT_TRUE(c.failed_well()) << "call " << k << " of MPI";
  });
}

const mesh& tetrahedra() {
  static const mesh m = box(ELT_TETRA4, 2, 2, 1);
  return m;
}

TEST(failures, of_memory_on_one_rank) { calls(tetrahedra()).for_each(expect_same_code); }

TEST(failures, of_MPI) { calls(tetrahedra()).for_each(expect_mpi_failed); }

TEST(failures, none_without_elements) {
  const mesh nothing{"nothing", dense2D<double>(3, 0), dense2D<unsigned>(4, 0), ELT_TETRA4};
  calls(nothing).for_each([](const call& c) { ASSERT_EQ(c.run(), 0); });
}

TEST(failures, of_memory_in_PT_Scotch_or_before_it) {
  const mesh_part part = part_of(box(ELT_TETRA4, 3, 2, 1), layout::random);
  mpi::node_sharing sharing;
  dense2D<id_type> neighbors;
  dense1D<int> targets;
  ASSERT_EQ(mpi::share_nodes(world, part, sharing), 0);
  ASSERT_EQ(mpi::get_neighbors(world, part, ELT_TETRA4, sharing, true, neighbors), 0);
  if (mpi::partition_graph(world, part, neighbors, 2, targets) == -202) GTEST_SKIP() << "built without PT-Scotch";
  expect_same_code(
      {[&] { return mpi::partition_graph(world, part, neighbors, 2, targets); }, [&] { return targets.empty(); }});
}

TEST(failures, while_a_file_is_read_and_written) {
  const shared_path file(".failing.stl");
  const mesh m = box(ELT_TRIA3, 2, 2, 1);
  mesh_part part;
  dense2D<double> coords;
  dense2D<unsigned> triangles;
  const mesh_part own = part_of(m, layout::ranges);
  // Which rank has a triangle may depend on what failed.
  const auto is_whole = [&] {
    bool right = sum(part.connectivity.cols()) == triangles.cols();
    for (id_type i = 0; right && i < part.connectivity.size(); ++i) {
      right = part.node_IDs[part.connectivity.data()[i]] == triangles(i % 3, part.element_IDs[i / 3]);
    }
    return right;
  };
  const call read{[&] { return mpi::STL_input(world, file.path(), part); }, [&] { return outputs::is_empty(part); },
                  is_whole};
  const call write{[&] { return mpi::STL_output(world, file.path(), own); }};
  for (const bool ascii : {false, true}) {
    file.write_STL(m.coords, m.connectivity, ascii);
    ASSERT_EQ(STL_input(file.path(), coords, triangles), 0);
    ASSERT_NO_FATAL_FAILURE(expect_same_code(read));
    ASSERT_NO_FATAL_FAILURE(expect_mpi_failed(read));
  }
  ASSERT_NO_FATAL_FAILURE(expect_same_code(write));
  ASSERT_NO_FATAL_FAILURE(expect_mpi_failed(write));
}

/// A disk that is full or out of reach, for all ranks or for one.
TEST(failures, of_files) {
  const shared_path file(".lost.stl");
  const mesh m = box(ELT_TRIA3, 3, 2, 2);
  mesh_part part = part_of(m, layout::ranges);
  constexpr int all = -1;
  for (const int failing : {all, 0, size() - 1}) {
    const bool fails = failing == all || failing == rank();
    const auto lose = [&] { return fails ? MPI_ERR_IO : MPI_SUCCESS; };
    const auto expect = [&](const std::function<int()>& run, int least) {
      for (std::uint64_t k = 1;; ++k) {
        mpi_events::arm(k, lose, mpi_events::of::files);
        const int code = run();
        const bool failed = sum(mpi_events::disarm() && fails ? 1 : 0) != 0;
        ASSERT_TRUE(agreed(code) && code >= least && (code < 0) == failed) << "call " << k << ": " << code;
        if (!failed) break;
      }
    };
    ASSERT_NO_FATAL_FAILURE(expect([&] { return mpi::STL_output(world, file.path(), part); }, -1));
    ASSERT_NO_FATAL_FAILURE(expect([&] { return mpi::STL_input(world, file.path(), part); }, -3));
  }
  for (const bool ascii : {false, true}) {
    file.write_STL(m.coords, m.connectivity, ascii);
    const bool is_lost = rank() == size() - 1;
    EXPECT_EQ(mpi::STL_input(world, is_lost ? "/nowhere/at/all" : file.path(), part), -1);
  }
}

TEST(failures, of_a_file_that_is_cut_while_it_is_read) {
  const shared_path file(".cut.stl");
  const mesh m = box(ELT_TRIA3, 3, 2, 2);
  mesh_part part;
  bool refused = false;
  const auto expect = [&](bool ascii, unsigned share, mpi_events::of which) {
    const auto read = [&] {
      file.write_STL(m.coords, m.connectivity, ascii);
      return mpi::STL_input(world, file.path(), part);
    };
    const auto cut = [&] {
      if (rank() == 0) std::filesystem::resize_file(file.path(), std::filesystem::file_size(file.path()) / share);
      return MPI_SUCCESS;
    };
    const auto check = [&](int code, std::uint64_t) {
      ASSERT_TRUE(code == 0 || code == -2 || code == -3) << code;
      ASSERT_TRUE(code == 0 || outputs::is_empty(part));
      refused = refused || code != 0;
    };
    ASSERT_NO_FATAL_FAILURE(expect_with_event(read, cut, check, which));
  };
  for (const bool ascii : {false, true}) {
    for (const unsigned share : {2U, 1000U}) {
      refused = false;
      ASSERT_NO_FATAL_FAILURE(expect(ascii, share, mpi_events::of::collectives));
      EXPECT_TRUE(refused);
    }
  }
  ASSERT_NO_FATAL_FAILURE(expect(false, 2, mpi_events::of::files));
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
