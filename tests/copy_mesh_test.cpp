#include <gtest/gtest.h>

#include "qel/gridwork.h"
#include "tests/random_meshes.h"
#include "tests/reference.h"

// Requests beyond the address space must come back as null from the sanitizers' allocators, too.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }

namespace qel::gridwork {
namespace {

using plane = vector_fixed<double, 2>;
using space = vector_fixed<double, 3>;
using elements = dense2D<unsigned>;
using reference::none;

struct mesh {
  dense2D<double> coords;
  elements out;
};

mesh copied_slowly(const dense2D<double>& coords, const elements& part) {
  mesh m{random_meshes::deep_copy(coords), random_meshes::deep_copy(part)};
  reference::id_list map(coords.cols());
  for (const unsigned id : reference::unique({part})) {
    map[id] = static_cast<unsigned>(m.coords.cols());
    EXPECT_TRUE(m.coords.push_back_column(coords.column(id)));
  }
  for (unsigned& id : m.out.as_vector()) id = id == none ? none : map[id];
  return m;
}

// Holds run(coords, out, part) against n copies, each made, moved by move(k, coords, copy) and appended before the
// next.
void expect_copies(const mesh& start, const elements& part, unsigned n, auto run, auto move, bool appends = false) {
  mesh expected{start.coords, appends ? random_meshes::deep_copy(start.out) : elements()};
  for (unsigned k = 1; k <= n; ++k) {
    const mesh next = copied_slowly(expected.coords, part);
    move(k, expected.coords = next.coords, next.out);
    const std::uint64_t old = expected.out.cols(), rows = part.rows();
    ASSERT_TRUE(expected.out.resize(std::max(expected.out.rows(), rows), old + part.cols(), none));
    for (std::uint64_t i = 0; i < part.size(); ++i) expected.out(i % rows, old + i / rows) = next.out.data()[i];
  }
  mesh m{random_meshes::deep_copy(start.coords), random_meshes::deep_copy(start.out)};
  if (n % 2 == 1) m = {random_meshes::with_gaps(start.coords, 3.0), random_meshes::with_gaps(start.out, 4U)};
  ASSERT_EQ(run(m.coords, m.out, random_meshes::with_gaps(part, 5U)), 0);
  ASSERT_TRUE(random_meshes::same_bits(m.coords, expected.coords));
  ASSERT_EQ(m.out, expected.out);
}

double times(unsigned k, double x) { return k * x; }
plane times(unsigned k, const plane& v) { return {k * v[0], k * v[1]}; }
space times(unsigned k, const space& v) { return {k * v[0], k * v[1], k * v[2]}; }

template <class Vector>
void expect_pattern(const mesh& start, const elements& part, const Vector& shift, auto turn) {
  const Vector center{0.25, -0.5};
  const auto move = [&](unsigned k, auto& coords, const elements& copy) {
    rotate(coords, center, times(k, turn), copy);
    translate(coords, times(k, shift), copy);
  };
  for (unsigned n = 0; n < 6; ++n) {
    const auto run = [&](auto& x, auto& out, auto m) { return copy_mesh(x, out, shift, center, turn, n, m); };
    expect_copies(start, part, n, run, move, true);
  }
}

template <class Vector>
void expect_mirrored(const mesh& start, const elements& part, const Vector& normal) {
  const Vector point{0.5, -1};
  const auto mirror = [&](unsigned, auto& coords, const elements& copy) {
    const std::uint64_t dim = Vector::size();
    ASSERT_TRUE(coords.resize(std::max(coords.rows(), dim), coords.cols(), 0.0));
    for (const unsigned id : reference::unique({copy})) {
      double dot = 0, square = 0, *p = coords.column(id);
      for (unsigned k = 0; k < dim; ++k) dot += (p[k] - point[k]) * normal[k], square += normal[k] * normal[k];
      for (unsigned k = 0; k < dim; ++k) p[k] -= 2 * (dot / square) * normal[k];
    }
  };
  const auto run = [&](auto& x, auto& out, auto m) { return copy_sym_mesh(x, out, point, normal, m); };
  expect_copies(start, part, 1, run, mirror);
}

TEST(copy_mesh, all_forms_agree_with_their_steps) {
  random_meshes::generator random(9);
  for (const auto& part : {random_meshes::connectivity(random, 3, 12, 40), elements(), elements(5, 0),
                           elements(4, 2, {1, 2, 3, none, 3, 2, 9, 39}), elements(4, 2, none)}) {
    for (unsigned rows = 1; rows <= 4; ++rows) {
      const mesh start{dense2D<double>(rows, 40), elements(3 * rows - 3, rows - 1, 8U)};
      for (double& x : start.coords.as_vector()) x = random_meshes::real(random);
      const auto run = [](auto& x, auto& out, auto m) { return copy_mesh(x, out, m); };
      expect_copies(start, part, 1, run, [](auto&&...) {});
      expect_mirrored(start, part, plane{0.3, -2}), expect_mirrored(start, part, space{1, 2, 0.5});
      for (const double x : {0.0, random_meshes::not_a_number, 0.3, 1e-12}) {
        expect_pattern(start, part, plane{0, x}, 0.7), expect_pattern(start, part, plane{0, 0.1}, x);
        expect_pattern(start, part, space{0, x, 0}, space{}), expect_pattern(start, part, space{x}, space{x, 0.2, 1});
      }
    }
  }
}

TEST(copy_mesh, other_views_are_not_disturbed) {
  dense2D<double> whole(3, 9, 5.0), coords = whole.sub_matrix(0, 0, 3, 4);
  elements all(3, 4, 1U), part = all.sub_matrix(0, 0, 3, 2), out = part, self(2, 1, {1, 0});
  EXPECT_EQ(copy_mesh(coords, out, part), 0);
  EXPECT_EQ(copy_mesh(coords, part, plane{1, 0}, plane{0, 0}, 0, 1, part), 0);
  EXPECT_EQ(part, elements(3, 4, {1, 1, 1, 1, 1, 1, 5, 5, 5, 5, 5, 5}));
  EXPECT_EQ(whole, dense2D<double>(3, 9, 5.0));
  EXPECT_EQ(all, elements(3, 4, 1U));
  EXPECT_EQ(copy_mesh(coords, self, plane{1, 0}, plane{0, 0}, 0, 2, self), 0);
  EXPECT_EQ(self, elements(2, 3, {1, 0, 6, 7, 8, 9}));
  EXPECT_EQ(copy_mesh(coords, self, self), 0);
  EXPECT_EQ(self, elements(2, 3, {10, 11, 12, 13, 14, 15}));
}

TEST(copy_mesh, mirrors_across_normals_of_every_length) {
  for (const double length : {1e-161, 1e-160, 3e-154, 1.0, 2e154, 1e200, 1.7e308}) {
    dense2D<double> plain(2, 1, {1, 2}), solid(3, 1, {1, 2, 3});
    elements out, node(1, 1, {0});
    EXPECT_EQ(copy_sym_mesh(plain, out, plane{}, plane{length, length}, node), 0);
    EXPECT_EQ(copy_sym_mesh(solid, out, space{}, space{0, length, -length}, node), 0);
    for (unsigned k = 0; k < 2; ++k) EXPECT_NEAR(plain(k, 1), k == 0 ? -2 : -1, 1e-15) << length;
    for (unsigned k = 0; k < 3; ++k) EXPECT_NEAR(solid(k, 1), k == 0 ? 1 : k == 1 ? 3 : 2, 1e-15) << length;
  }
}

TEST(copy_mesh, refuses_or_ignores) {
  dense2D<double> coords(2, 4, 5.0), no_nodes(2, 0);
  elements out(3, 1, 7U), all_none(8, 1 << 20, none), triangle(3, 1, {0, 1, 2});
  EXPECT_EQ(copy_mesh(coords, out, plane{1, 0}, plane{0, 0}, 0, 1U << 31, triangle), -199) << "no more indices";
  EXPECT_EQ(copy_mesh(coords, out, space{1, 0}, space{0, 0}, space{1, 0}, none, all_none), -199);
  EXPECT_EQ(copy_mesh(no_nodes, out, plane{1, 0}, plane{0, 0}, 0, 3, triangle), 0);
  EXPECT_EQ(copy_sym_mesh(no_nodes, out, plane{1, 0}, plane{0, 0}, triangle), 0);
  EXPECT_EQ(copy_sym_mesh(coords, out, plane{1, 0}, plane{0, -0.0}, triangle), -4);
  EXPECT_EQ(copy_sym_mesh(coords, out, space{1, 0}, space{0, 1e-200, 0}, triangle), -4);
  EXPECT_EQ(coords, dense2D<double>(2, 4, 5.0));
  EXPECT_EQ(out, elements(3, 1, 7U));
  EXPECT_EQ(copy_sym_mesh(coords, out, plane{1, 0}, plane{0, random_meshes::not_a_number}, triangle), 0);
}

}  // namespace
}  // namespace qel::gridwork
