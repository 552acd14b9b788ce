// What may be done from several threads at once. Most telling under ThreadSanitizer.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "digest.h"
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

/// Each function with outputs of its own; what it returns and leaves there, as one number.
TEST(threads, functions_on_shared_inputs) {
  const dense2D<double> points = random_points(3, 600, 5), plane = random_points(2, 600, 9),
                        frames = random_points(6, 600, 6);
  dense2D<unsigned> whole(8, 400);
  for (unsigned k = 0; k < whole.size(); ++k) whole.data()[k] = (5 * k + k / 7) % 600;
  const dense2D<unsigned> solids = whole, faces = whole.sub_matrix(1, 0, 4, 400);  // views of one block
  const dense1D<unsigned> ids = whole.sub_matrix(0, 0, 8, 50).as_vector();
  const dense1D<double> sizes = points.sub_matrix(0, 0, 3, 200).as_vector();
  const auto merged = [&](unsigned mode) {
    dense2D<double> coords;
    dense2D<unsigned> m;
    dense1D<unsigned> map, removed;
    EXPECT_TRUE(coords.copy(plane) && m.copy(faces));
    const int merged_nodes = gw::merge(plane, m, map, 8.0, mode), degenerate = gw::remove_degenerated(m, removed, true);
    EXPECT_GT(merged_nodes, 0);
    return digest_of(degenerate, gw::simplify(coords, m, 0), coords, m, map, removed);
  };
  const auto file = [](unsigned t) {
    return (std::filesystem::temp_directory_path() / ("gridwork_threads_" + std::to_string(::getpid() * 8 + t)))
        .string();
  };
  dense2D<unsigned> adjacent;
  ASSERT_EQ(gw::get_neighbors(solids, gw::ELT_HEXA8, true, adjacent), 0);
  const std::vector<std::function<std::uint64_t(unsigned)>> calls = {
      [&](unsigned) { return merged(0); },
      [&](unsigned) { return merged(1); },
      [&](unsigned) { return merged(2); },
      [&](unsigned) {
        dense2D<unsigned> neighbors, boundaries;
        const int code = gw::get_neighbors(solids, gw::ELT_HEXA8, true, neighbors);
        return digest_of(code, gw::get_mesh_boundaries(solids, adjacent, gw::ELT_HEXA8, boundaries), neighbors,
                         boundaries);
      },
      [&](unsigned) {
        dense2D<unsigned> edges;
        return digest_of(gw::copy_edges(faces, gw::ELT_QUAD4, edges), edges);
      },
      [&](unsigned) {
        dense1D<unsigned> offsets, graph;
        return digest_of(gw::get_node_graph(faces, offsets, graph), offsets, graph);
      },
      [&](unsigned) {
        dense1D<unsigned> distinct;
        return digest_of(gw::unique_indices(distinct, faces, ids), distinct);
      },
      [&](unsigned) {
        dense1D<double> quality;
        return digest_of(gw::shape_qualities(points, solids, gw::ELT_HEXA8, quality), quality);
      },
      [&](unsigned) {
        dense2D<double> tensors(3, 600);
        return digest_of(gw::metrics_iso_to_aniso2d(sizes, frames, tensors), tensors);
      },
      [&](unsigned) {
        dense2D<double> coords = points;
        dense2D<unsigned> copies;
        const int code = gw::copy_mesh(coords, copies, {1, 2, 3}, {0, 0, 0}, {0.1, 0.2, 0.3}, 2, faces);
        return digest_of(code, coords, copies);
      },
      [&](unsigned t) {
        dense2D<double> coords;
        dense2D<unsigned> triangles;
        const int code = gw::STL_output(file(t).c_str(), points, faces.sub_matrix(0, 0, 3, 400), t % 2 == 0);
        return digest_of(code, gw::STL_input(file(t).c_str(), coords, triangles), coords, triangles);
      }};
  std::vector<std::uint64_t> expected;
  for (const auto& call : calls) expected.push_back(call(0));
  in_threads([&](unsigned t) {
    for (std::size_t k = 0; k < 3 * calls.size(); ++k) {
      const std::size_t which = (k + t / 2) % calls.size();  // in pairs
      EXPECT_EQ(calls[which](t), expected[which]) << which;
    }
  });
  for (unsigned t = 0; t < thread_count; ++t) std::filesystem::remove(file(t));
}

}  // namespace
