#include <gtest/gtest.h>

#include <numeric>

#include "qel/gridwork.h"
#include "tests/facts.h"
#include "tests/random_meshes.h"
#include "tests/reference.h"

namespace qel::gridwork {
namespace {

using plane = vector_fixed<double, 2>;
using space = vector_fixed<double, 3>;
using exact_point = std::array<long double, 3>;
using random_meshes::with_gaps;
using reference::id_list;
using reference::none;

bool is_nothing(double x) { return x == 0 || std::isnan(x); }
bool is_nothing(const auto& v) {
  return std::all_of(v.begin(), v.end(), [](double x) { return is_nothing(x); });
}

// v turned by w: v + a (w x v) + b (w x (w x v)).
exact_point turned(const space& w, exact_point v) {
  const auto cross = [&w](const exact_point& u) -> exact_point {
    return {w[1] * u[2] - w[2] * u[1], w[2] * u[0] - w[0] * u[2], w[0] * u[1] - w[1] * u[0]};
  };
  const long double angle = std::hypot(std::hypot(1.0L * w[0], w[1]), w[2]), half = std::sin(angle / 2) / (angle / 2);
  const exact_point once = cross(v), twice = cross(once);
  for (unsigned k = 0; k < 3; ++k) v[k] += std::sin(angle) / angle * once[k] + half * half / 2 * twice[k];
  return v;
}

// Holds the three doors of a transform against change(p, k), the new k-th coordinate of a node at p.
void expect_transform(unsigned dim, bool moves, bool is_zoom, auto door, auto change) {
  random_meshes::generator random(3);
  const unsigned shapes[][3] = {{0, 4, 4}, {1, 40, 60}, {2, 0, 0}, {2, 40, 60}, {1, 9, 0}, {3, 1, 9}, {4, 40, 60}};
  for (const auto& [rows, count, size] : shapes) {
    const unsigned n = count;                      // which a lambda may capture
    const unsigned bound = n + (is_zoom ? 0 : 9);  // zoom does not test its entries
    const dense2D<unsigned> m = random_meshes::connectivity(random, 3, size, bound);
    id_list every(n), list = random_meshes::list(random, size, bound);
    std::iota(every.begin(), every.end(), 0);
    if (is_zoom) list.erase(std::remove(list.begin(), list.end(), none), list.end());
    dense2D<double> coords(rows, n);
    for (double& x : coords.as_vector()) x = 4 * random_meshes::real(random) - 2;
    const auto expect = [&](const id_list& nodes, bool counts, const auto&... selection) {
      dense2D<double> expected = random_meshes::deep_copy(coords), work = random_meshes::deep_copy(coords);
      if (!m.empty()) work = with_gaps(coords, 9.0);
      const bool acts = moves && !coords.empty() && !nodes.empty();
      ASSERT_TRUE(!acts || expected.resize(std::max<std::uint64_t>(coords.rows(), dim), n, 0.0));
      for (const unsigned id : acts ? nodes : id_list()) {
        if (id >= n) continue;
        const space p = {expected(0, id), expected(1, id), dim == 3 ? expected(dim - 1, id) : 0};
        for (unsigned k = 0; k < dim; ++k) expected(k, id) = static_cast<double>(change(p, k));
      }
      const auto hits = std::count_if(nodes.begin(), nodes.end(), [=](unsigned id) { return id < n; });
      ASSERT_EQ(door(work, selection...), acts && counts ? hits : 0);
      ASSERT_ALL(work.rows() == expected.rows(), work.cols() == n);
      for (std::uint64_t i = 0; i < work.size(); ++i) {
        const double a = work(i % work.rows(), i / work.rows()), b = expected.data()[i];
        ASSERT_TRUE(a == b || (std::isnan(a) && std::isnan(b)) || std::abs(a - b) <= 1e-13) << a << ", " << b;
      }
    };
    expect(every, true), expect(list, !is_zoom, reference::to_array(list));
    expect(reference::unique({m}), !is_zoom, with_gaps(m, 0U));
  }
}

template <class Vector, class Amount>
void expect_transforms(const Vector& v, const Vector& c, double factor, const Amount& by, const space& w) {
  constexpr unsigned dim = Vector::size();
  const auto shifted = [&](const space& p, unsigned k) { return p[k] + v[k]; };
  const auto scaled = [&](const space& p, unsigned k) { return p[k] + (factor - 1) * (p[k] - c[k]); };
  const auto rotated = [&](const space& p, unsigned k) {
    return c[k] + turned(w, {p[0] - c[0], p[1] - c[1], dim == 3 ? p[2] - c.values[dim - 1] : 0})[k];
  };
  const auto with_v = [&](auto& x, auto&... on) { return translate(x, v, on...); };
  expect_transform(dim, !is_nothing(v), false, with_v, shifted);
  const auto with_factor = [&](auto& x, auto&... on) { return zoom(x, c, factor, on...); };
  expect_transform(dim, !is_nothing(factor - 1), true, with_factor, scaled);
  const auto with_angle = [&](auto& x, auto&... on) { return rotate(x, c, by, on...); };
  expect_transform(dim, !is_nothing(by), false, with_angle, rotated);
}

TEST(transforms, agree_with_their_formulas) {
  for (const double x : {0.0, -0.0, random_meshes::not_a_number, 0.7, -40.0, 1e-9}) {
    expect_transforms(plane{x, 0}, plane{0.5, 2}, 1 + x, x, space{0, 0, x});
    expect_transforms(plane{1, x}, plane{-1, 1}, x, 1 - x, space{0, 0, 1 - x});
    for (const space& w : {space{0, x, 0}, space{x, -0.05, 0.04}}) expect_transforms(w, {1, 0, -1}, 1 - x, w, w);
  }
}

TEST(transforms, tiny_rotations_keep_their_digits) {
  for (double size = 3; size > 1e-300; size *= size > 0.005 ? 0.97 : 1e-3) {
    const space w = {0.3 * size, -0.5 * size, 0.8 * size};
    dense2D<double> units(3, 3, {1, 0, 0, 0, 1, 0, 0, 0, 1});
    const exact_point exact[] = {turned(w, {1, 0, 0}), turned(w, {0, 1, 0}), turned(w, {0, 0, 1})};
    ASSERT_EQ(rotate(units, space{0, 0, 0}, w), 3);
    for (unsigned i = 0; i < 9; ++i) {
      const double scale = i % 4 == 0 ? 1.0 : std::min(1.0, size);  // outside of the diagonal: of the displacement
      ASSERT_LE(std::abs(units.data()[i] - exact[i / 3][i % 3]), 1e-15 * scale) << size;
    }
  }
}

TEST(transforms, rows_are_added_to_one_view_and_nodes_move_in_all) {
  dense2D<double> whole(3, 4, 5.0), second = whole, part = whole.sub_matrix(0, 0, 2, 2);  // with gaps for a third row
  EXPECT_EQ(translate(part, space{1, 0, 1}, dense1D<unsigned>{0, 0, 9, none}), 2);
  EXPECT_EQ(part, dense2D<double>(3, 2, {7, 5, 2, 5, 5, 0}));
  EXPECT_EQ(whole, dense2D<double>(3, 4, 5.0));
  EXPECT_EQ(translate(second, space{1, 1, 1}), 4);
  EXPECT_EQ(whole, dense2D<double>(3, 4, 6.0));

  double callers[] = {1, 2, 9, 9, 3, 4, 9};
  dense2D<double> lent(2, 2, 4, callers);  // its gap would hold the third row
  EXPECT_EQ(translate(lent, space{1, 0, 1}), 2);
  EXPECT_EQ(lent, dense2D<double>(3, 2, {2, 2, 1, 4, 4, 1}));
  EXPECT_EQ(dense2D<double>(7, 1, callers), dense2D<double>(7, 1, {1, 2, 9, 9, 3, 4, 9}));
}

template <class Box>
void expect_boxes() {
  constexpr unsigned dim = sizeof(Box) / sizeof(double);
  for (const auto& cloud : random_meshes::clouds(dim, 10)) {
    const auto expect = [&](const id_list& nodes, const auto&... selection) {
      Box low = {random_meshes::infinity, 0.3}, high = {-low[0], 0.5}, expected[] = {low, high};
      for (std::size_t i = 0; i < dim * nodes.size(); ++i) {
        const double x = cloud.coords(i % dim, nodes[i / dim]);
        if (!(x >= expected[0][i % dim])) expected[0][i % dim] = x;
        if (x > expected[1][i % dim]) expected[1][i % dim] = x;
      }
      ASSERT_EQ(inc_bounding_box(with_gaps(cloud.coords, 1.0), selection..., low, high), 0);
      const Box box[] = {low, high};
      EXPECT_EQ(std::memcmp(box, expected, sizeof box), 0) << cloud.name;
    };
    expect({0, 1, 2, 3, 4, 5, 6, 7, 8, 9}), expect({3, 1, 3}, dense1D<unsigned>{3, 1, 3});
    expect({7, 5, 3, 9, 0}, dense2D<unsigned>(2, 4, {7, none, 5, 7, 3, 9, 7, 0}));
  }
}

TEST(inc_bounding_box, takes_nodes_in_order) { expect_boxes<plane>(), expect_boxes<space>(); }

TEST(inc_bounding_box, refuses) {
  const auto expect = [](std::uint64_t rows, auto low, int all, int listed) {
    auto high = low;
    const dense2D<double> x(rows, 0);
    const auto code = [&](const auto&... nodes) { return inc_bounding_box(x, nodes..., low, high); };
    EXPECT_ALL(code() == all, code(dense1D<unsigned>()) == 0, code(dense2D<unsigned>(3, 1, none)) == 0);
    EXPECT_ALL(code(dense1D<unsigned>{0}) == listed, code(dense2D<unsigned>(2, 1, {3, none})) == listed);
    EXPECT_EQ(low, high);
  };
  expect(2, plane{1, 2}, 0, -2), expect(3, plane{1, 2}, -1, -1);
  expect(3, space{1, 2, 3}, 0, -2), expect(2, space{1, 2, 3}, -1, -1);
}

}  // namespace
}  // namespace qel::gridwork
