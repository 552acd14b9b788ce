// Memory that runs out at the first, second, third ... request, in every function: what comes out is -199 or what the
// function's documentation says, nothing leaks, arguments are as promised, and the next call succeeds.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <iostream>

#include "calls.h"
#include "core/limits.h"
#include "facts.h"

namespace {

using namespace qel::gridwork;
using qel::dense1D;
using qel::dense2D;
using ids = dense1D<unsigned>;
using matrix = dense2D<unsigned>;
using nodes = dense2D<double>;

unsigned long points = 0, absorbed = 0;

/// True for codes that messages.h has for the function, or the functions, that a call names.
bool is_known(const std::string_view call, int code) {
  bool is_named = false;
  for (const operation_name& name : operation_names) {
    if (call.find(std::string(name.function) + "(") == call.npos) continue;
    is_named = true;
    if (message(name.call, code) != sentences::unknown) return true;
  }
  return !is_named;
}

/// Lets the n-th request of one call fail, once and from then on, for all n.
void sweep(const trial& clean, call_body body, unsigned turn, const inputs& in) {
  for (const bool onwards : {false, true}) {
    for (std::uint64_t n = 1;; ++n) {
      const std::uint64_t blocks = faults::live_blocks(), streams = faults::live_streams();
      trial faulty(turn, {faults::operation::allocate, n, onwards}, &clean.result);
      body(faulty, in);
      if (faults::live_blocks() != blocks || faults::live_streams() != streams) faulty.broken = "a leak";
      if (faulty.broken != nullptr) {
        ADD_FAILURE() << faulty.broken << ": " << clean.name << ", request " << n << (onwards ? " on" : "") << ", code "
                      << faulty.result.code << ", type " << in.type << ", " << in.dim << "-D, " << in.mesh.cols();
        break;
      }
      EXPECT_TRUE(is_known(clean.name, faulty.result.code)) << clean.name << " gives " << faulty.result.code;
      if (!faulty.failed) break;
      ++points;
      absorbed += faulty.result == clean.result ? 1 : 0;
    }
  }
}

TEST(allocation, every_request_may_fail) {
  // Every type in one dimension, then in the other, until there are enough.
  for (unsigned run = 0; run < ELT_HEXA27 || (points < 50000 && run < 2 * ELT_HEXA27); ++run) {
    const unsigned type = ELT_NODE + run % ELT_HEXA27;
    const unsigned dim = 2 + (type + run / ELT_HEXA27) % 2;
    const auto in = make_inputs(element_type(type), dim, 1 + 3 * type + (type / 2 % 2 == 0 ? 40 : 0));
    const auto constants = [&] { return digest_of(in->mesh, in->other, in->near, in->sparse); };
    const std::uint64_t before = constants();
    for_each_call(*in, [&](const trial& t, call_body body, unsigned turn) { sweep(t, body, turn, *in); });
    EXPECT_EQ(before, constants());
  }
  std::cout << points << " points, of which " << absorbed << " did not show\n";
  EXPECT_GE(points, 50000U);
}

/// Requests from the n-th on fail, for all n: the list keeps what it has room for. Returns how often the call failed.
int refusals_of_unique_indices(const ids& excluded) {
  ids values(40), whole;
  for (unsigned i = 0; i < 40; ++i) values[i] = 7 * (i % 30);
  EXPECT_EQ(unique_indices(whole, values, excluded), 0);
  for (int n = 1, refusals = 0;; ++n) {
    ids list;
    EXPECT_TRUE(list.reserve(10));
    faults::arm({faults::operation::allocate, std::uint64_t(n), true});
    const int code = unique_indices(list, values, excluded);
    if (!faults::disarm()) return refusals;
    refusals += code == -199 ? 1 : 0;
    EXPECT_TRUE(code == -199 ? list.empty() : list.size() >= 10) << n;
    EXPECT_TRUE(std::equal(list.begin(), list.end(), whole.begin())) << n;
  }
}

TEST(allocation, unique_indices_fills_the_room_there_is) {
  const int refusals = refusals_of_unique_indices({});
  EXPECT_GT(refusals, 0);
  const int with_excluded = refusals_of_unique_indices({1, 1000000});
  if (!qel::gridwork::detail::limits::are_small) {
    EXPECT_GT(with_excluded, refusals) << "the excluded indices need memory, too";
  }
}

// A list that cannot grow, for once or from then on, keeps what was found first.
TEST(allocation, find_in_box_leaves_out_the_last_nodes) {
  constexpr unsigned n = 3000;
  nodes coords(2, n);
  for (unsigned j = 0; j < n; ++j) coords(0, j) = j % 60, coords(1, j) = j / 60;
  using plane = qel::vector_fixed<double, 2>;
  const node_detector detector(coords);
  const auto find_all = [&](ids& found) { detector.find_in_box(plane{-1, -1}, plane{60, 60}, found); };
  ids all;
  find_all(all);
  ASSERT_EQ(all.size(), n);
  for (const bool onwards : {false, true}) {
    bool failed = true;
    for (std::uint64_t at = 1; failed; ++at) {
      ids found;
      ASSERT_TRUE(found.reserve(5));
      faults::arm({faults::operation::allocate, at, onwards});
      bool threw = false;
      try {
        find_all(found);
      } catch (const std::bad_alloc&) {
        threw = true;  // with small limits, what waits to be searched needs memory in every tree
        EXPECT_TRUE(qel::gridwork::detail::limits::are_small);
      }
      failed = faults::disarm();
      if (threw) continue;
      EXPECT_EQ(found, all.sub_vector(0, found.size())) << at;
      EXPECT_GE(found.size(), 5U);
    }
  }
}

#ifndef QEL_SANITIZED  // sanitizers need the address space themselves
/// How a process with little memory ends in which f() is called: 99 for -199, 0 for success, negative for a signal.
template <class Function>
int in_little_memory(std::uint64_t bytes, Function f) {
  const pid_t child = ::fork();
  if (child == 0) {
    const rlimit limit{bytes, bytes};
    ::setrlimit(RLIMIT_AS, &limit);
    int result = 1;
    try {
      result = f();
    } catch (const std::bad_alloc&) {
      result = -199;
    }
    ::_exit(result == -199 ? 99 : result == 0 ? 0 : 1);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

TEST(allocation, a_limit_of_the_address_space_is_no_reason_to_abort) {
  const unsigned n = 150000;
  nodes coords(3, n);
  matrix mesh(4, n);
  for (unsigned j = 0; j < n; ++j) {
    for (unsigned i = 0; i < 4; ++i) mesh(i, j) = (j * 7 + i) % n, coords(i % 3, j) = j % 1000 + 0.001 * i * j;
  }
  const qel::vector_fixed<double, 3> v{0.5, 1, 2};
  matrix out, more;
  ids x, y;
  node_detector d;
  bool short_of_memory = false, enough = false;
  for (std::uint64_t mib = 40; mib <= 360; mib += 40) {
    const auto attempt = [&](auto call) {
      const int status = in_little_memory(mib << 20, call);
      EXPECT_TRUE(status == 99 || status == 0) << status << " with " << mib << " MiB";
      short_of_memory |= status == 99;
      enough |= status == 0;
    };
    attempt([&] { return get_neighbors(mesh, ELT_TETRA4, true, out); });
    attempt([&] { return copy_edges(mesh, ELT_TETRA4, out); });
    attempt([&] { return get_node_graph(mesh, x, y); });
    attempt([&] { return d.reinit(coords); });
    attempt([&] { return std::min(merge(coords, x, 0.01), 0); });
    attempt([&] { return copy_mesh(coords, more, v, v, v, 5, mesh); });
  }
  EXPECT_ALL(short_of_memory, enough);
}
#endif

}  // namespace
