// What may be done from several threads at once. Most telling under ThreadSanitizer.
#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>
#include <vector>

#include "calls.h"
#include "facts.h"

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
        EXPECT_ALL(third, destroyed == 0);
      }
      owners[t] = nullptr;
    });
    ASSERT_EQ(destroyed, 1U);
  }
}

TEST(threads, some_thread_drops_the_last_view) {
  for (unsigned round = 0; round < 100; ++round) {
    std::vector<dense1D<unsigned>> views(thread_count, dense1D<unsigned>(100, round));
    in_threads([&](unsigned t) {
      dense1D<unsigned> grown(views[t]);
      EXPECT_ALL(views[t].sub_vector(50, 50)[49] == round, grown.reserve(2000), grown == views[t]);  // leaves
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

TEST(threads, every_call_on_shared_inputs) {
  for (const auto type : {gw::ELT_TRIA3, gw::ELT_SOLID_MIX}) {
    const auto in = make_inputs(type, gw::element_dim(type), 60);
    std::vector<outcome> expected;
    for_each_call(*in, [&](const trial& t, call_body, unsigned) { expected.push_back(t.result); });
    in_threads([&](unsigned) {
      auto next = expected.begin();
      for_each_call(*in, [&](const trial& t, call_body, unsigned) { EXPECT_TRUE(t.result == *next++) << t.name; });
    });
  }
}

}  // namespace
