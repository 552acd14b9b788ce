// What may be done from several threads at once. Most telling under ThreadSanitizer.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "qel/gridwork.h"

namespace {

namespace gw = qel::gridwork;
using qel::dense1D;
using qel::dense2D;
using qel::vector_fixed;

constexpr unsigned thread_count = 8;

/// Calls f(0) to f(7) in threads that start together.
template <class Function>
void in_threads(const Function& f) {
  std::atomic<unsigned> waiting{thread_count};
  std::vector<std::thread> threads;
  for (unsigned t = 0; t < thread_count; ++t) {
    threads.emplace_back([&f, &waiting, t] {
      for (--waiting; waiting != 0;) std::this_thread::yield();
      f(t);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

dense2D<double> random_points(unsigned rows, unsigned n, unsigned seed) {
  std::mt19937 random(seed);
  dense2D<double> points(rows, n);
  for (unsigned k = 0; k < rows * n; ++k) points(k % rows, k / rows) = random() % 64;  // many ties and equal nodes
  return points;
}

/// Counts how often it is destroyed.
struct witness : qel::math1::ref_counted {
  explicit witness(std::atomic<unsigned>& count) noexcept : destroyed(count) {}
  ~witness() override { ++destroyed; }
  std::atomic<unsigned>& destroyed;
};

TEST(threads, a_block_lives_until_its_last_owner_leaves) {
  for (unsigned round = 0; round < 200; ++round) {
    std::atomic<unsigned> destroyed{0};
    std::vector<qel::Ptr<witness>> owners(thread_count, qel::Ptr<witness>(new witness(destroyed)));
    in_threads([&](unsigned t) {
      for (unsigned k = 0; k < 50; ++k) {
        qel::Ptr<witness> second(owners[t]), third;
        third = second;
        second = nullptr;
        EXPECT_TRUE(third && destroyed == 0);
      }
      owners[t] = nullptr;
    });
    ASSERT_EQ(destroyed, 1U);
  }
}

TEST(threads, views_of_one_block_come_and_go) {
  dense2D<unsigned> matrix(3, 400);
  for (unsigned k = 0; k < matrix.size(); ++k) matrix(k % 3, k / 3) = k;
  const unsigned* const data = matrix.data();
  in_threads([&](unsigned t) {
    for (unsigned k = 0; k < 1000; ++k) {
      const dense2D<unsigned> view(matrix);
      const dense2D<unsigned> part = view.sub_matrix(1, t, 2, 10 + k % 20);
      dense1D<unsigned> entries = view.as_vector().sub_vector(t, 5), grown(entries);
      EXPECT_TRUE(part(1, 0) == 3 * t + 2 && entries[4] == t + 4);
      EXPECT_TRUE(grown.reserve(2000) && grown == entries);  // leaves for a block of its own
    }
  });
  // Rows are moved in place only when there is one owner: all the others have gone.
  ASSERT_TRUE(matrix.resize(2, 400));
  EXPECT_TRUE(matrix.data() == data && matrix(1, 399) == 1198);

  for (unsigned round = 0; round < 100; ++round) {  // some thread drops the last view
    std::vector<dense1D<unsigned>> views(thread_count, dense1D<unsigned>(100, round));
    in_threads([&](unsigned t) {
      EXPECT_EQ(views[t].sub_vector(50, 50)[49], round);
      views[t].clear_hard();
    });
  }
}

template <unsigned Dim>
dense1D<unsigned> ask(const gw::node_detector& detector, unsigned seed) {
  std::mt19937 random(seed);
  dense1D<unsigned> found;
  for (unsigned k = 0; k < 300; ++k) {
    vector_fixed<double, Dim> low{}, high{};
    for (unsigned i = 0; i < Dim; ++i) {
      low[i] = random() % 128 / 2.0;
      high[i] = low[i] + random() % 16;
    }
    EXPECT_TRUE(found.push_back(detector.find_closest(low)));
    EXPECT_TRUE(found.push_back(detector.find_closest(random() % detector.size())));
    detector.find_in_box(low, high, found);
  }
  return found;
}

template <unsigned Dim>
void check_queries() {
  const dense2D<double> points = random_points(Dim, 2000, Dim);
  const gw::node_detector serial(points), shared(points);  // the serial answers come from a detector of their own
  std::vector<dense1D<unsigned>> expected(thread_count), found(thread_count);
  for (unsigned t = 0; t < thread_count; ++t) expected[t] = ask<Dim>(serial, t);
  in_threads([&](unsigned t) { found[t] = ask<Dim>(shared, t); });
  for (unsigned t = 0; t < thread_count; ++t) EXPECT_TRUE(found[t] == expected[t]) << t;
  EXPECT_GT(found[0].size(), 700U);
}

TEST(threads, queries_of_one_detector_in_the_plane) { check_queries<2>(); }
TEST(threads, queries_of_one_detector_in_space) { check_queries<3>(); }

TEST(threads, merging_shared_coordinates_into_separate_outputs) {
  const dense2D<double> points = random_points(2, 3000, 9);
  dense2D<unsigned> triangles(3, 1000);
  for (unsigned k = 0; k < 3000; ++k) triangles(k % 3, k / 3) = k;
  struct result {
    int codes[3];
    dense2D<double> coords;
    dense2D<unsigned> triangles;
    dense1D<unsigned> map;
  };
  const auto run = [&](unsigned mode) {
    result r;
    EXPECT_TRUE(r.coords.copy(points) && r.triangles.copy(triangles));
    r.codes[0] = gw::merge(points, r.triangles, r.map, 1.0, mode);
    r.codes[1] = gw::remove_degenerated(r.triangles, r.map, true);
    r.codes[2] = gw::simplify(r.coords, r.triangles, r.map, 0);
    return r;
  };
  std::vector<result> found(thread_count);
  in_threads([&](unsigned t) { found[t] = run(t % 3); });
  for (unsigned t = 0; t < thread_count; ++t) {
    const result expected = run(t % 3);
    EXPECT_TRUE(std::equal(found[t].codes, found[t].codes + 3, expected.codes) && expected.codes[0] > 0) << t;
    EXPECT_TRUE(found[t].coords == expected.coords && found[t].triangles == expected.triangles) << t;
    EXPECT_TRUE(found[t].map == expected.map) << t;
  }
}

TEST(threads, every_subsystem_on_shared_inputs) {
  const dense2D<double> points = random_points(3, 600, 5), frames = random_points(6, 600, 6);
  dense2D<unsigned> whole(8, 400);
  for (unsigned k = 0; k < whole.size(); ++k) whole.data()[k] = (5 * k + k / 7) % 600;
  const dense2D<unsigned> solids = whole, faces = whole.sub_matrix(1, 0, 4, 400);  // views of one block
  const dense1D<unsigned> ids = whole.sub_matrix(0, 0, 8, 50).as_vector();
  const dense1D<double> sizes = points.sub_matrix(0, 0, 3, 200).as_vector();
  struct result {
    std::vector<int> codes;
    dense2D<unsigned> neighbors, boundaries, edges, copies;
    dense2D<double> coords, tensors{3, 600};
    dense1D<unsigned> offsets, graph, distinct;
    dense1D<double> quality;
    bool operator==(const result& r) const {
      return codes == r.codes && neighbors == r.neighbors && boundaries == r.boundaries && edges == r.edges &&
             copies == r.copies && coords == r.coords && tensors == r.tensors && offsets == r.offsets &&
             graph == r.graph && distinct == r.distinct && quality == r.quality;
    }
  };
  const auto run = [&] {
    result r;
    r.codes = {gw::get_neighbors(solids, gw::ELT_HEXA8, true, r.neighbors),
               r.coords.copy(points),
               gw::get_mesh_boundaries(solids, r.neighbors, gw::ELT_HEXA8, r.boundaries),
               gw::copy_edges(faces, gw::ELT_QUAD4, r.edges),
               gw::get_node_graph(faces, r.offsets, r.graph),
               gw::unique_indices(r.distinct, faces, ids),
               gw::shape_qualities(points, solids, gw::ELT_HEXA8, r.quality),
               gw::metrics_iso_to_aniso2d(sizes, frames, r.tensors),
               gw::copy_mesh(r.coords, r.copies, {1, 2, 3}, {0, 0, 0}, {0.1, 0.2, 0.3}, 2, faces)};
    return r;
  };
  const result expected = run();
  EXPECT_EQ(expected.codes, (std::vector<int>{0, 1, 0, 0, 0, 0, 0, 0, 0}));
  in_threads([&](unsigned) { EXPECT_TRUE(run() == expected); });
}

TEST(threads, files_written_and_read_side_by_side) {
  const dense2D<double> points = random_points(3, 600, 4);
  dense2D<unsigned> triangles(3, 500);
  for (unsigned k = 0; k < 1500; ++k) triangles(k % 3, k / 3) = (7 * k + k / 5) % 600;
  const auto name = [](unsigned t) {
    const std::string file = "gridwork_threads_" + std::to_string(::getpid()) + "_" + std::to_string(t) + ".stl";
    return (std::filesystem::temp_directory_path() / file).string();
  };
  std::vector<dense2D<double>> coords(thread_count);
  std::vector<dense2D<unsigned>> connectivity(thread_count);
  std::vector<int> codes(thread_count, 1);
  in_threads([&](unsigned t) {
    if (gw::STL_output(name(t).c_str(), points, triangles, t % 2 == 0) != 0) return;
    for (unsigned k = 0; k < 3; ++k) codes[t] = gw::STL_input(name(t).c_str(), coords[t], connectivity[t]);
  });
  for (unsigned t = 0; t < thread_count; ++t) {
    EXPECT_TRUE(codes[t] == 0 && coords[t] == coords[0] && connectivity[t] == connectivity[0]) << t;
    std::filesystem::remove(name(t));
  }
  EXPECT_TRUE(coords[0].cols() > 100 && connectivity[0].cols() > 100);
}

}  // namespace
