// Clipped meshes beside what the definition makes of every element by itself.
#include "fuzz/input.h"
#include "tests/clip_reference.h"
#include "tests/topology_reference.h"

namespace {

using namespace fuzz;
using random_meshes::same_bits;
using reference::clip_model;
using reference::clipped_mesh;
using reference::id_list;
using reference::to_list;

constexpr element_type accepted[] = {ELT_EDGE2, ELT_TRIA3, ELT_QUAD4, ELT_FACE_MIX, ELT_TETRA4};

/// A number that lies on or beside others: a small integer, now and then off by some rounding, or any number.
double entry(input& in) {
  const unsigned byte = in.below(256);
  const double x = static_cast<double>(byte % 5) - 2;
  if (byte < 180) return x;
  if (byte < 210) return x + 1e-15 * in.below(3) - 1e-15;
  return byte < 240 ? x + 0.1 * in.below(10) : in.real();
}

dense2D<double> entries(input& in, unsigned rows, unsigned cols) {
  return in.matrix(rows, cols, [&in] { return entry(in); });
}

/// The nodes of reference::grid(), in their places but for some.
dense2D<double> lattice(input& in, unsigned rows, unsigned cells) {
  const unsigned n = cells + 1;
  dense2D<double> coords = entries(in, rows, n * n * n + cells * cells * cells);
  const bool in_place = in.flag();
  for (unsigned j = 0; j < n * n * n; ++j) {
    const unsigned place[] = {j % n, j / n % n, j / n / n};
    for (unsigned k = 0; k < 3 && k < rows; ++k) {
      if (in_place || in.below(8) != 0) coords(k, j) = place[k] - 1.0;
    }
  }
  return coords;
}

template <unsigned Dim>
qel::vector_fixed<double, Dim> direction(input& in) {
  qel::vector_fixed<double, Dim> v{};
  const unsigned kind = in.below(4);
  if (kind == 0) return in.reals<qel::vector_fixed<double, Dim>>();
  if (kind == 1)
    v[in.below(Dim)] = in.flag() ? 1 : -3;
  else if (kind == 2)
    v = 1;
  else
    for (double& x : v) x = entry(in);
  return v;
}

double tolerance(input& in) {
  constexpr double all[] = {0, 0, 0, 1e-9, 1e-15, 0.5, 1, 1e308, random_meshes::infinity, random_meshes::not_a_number};
  const unsigned pick = in.below(12);
  return pick < std::size(all) ? all[pick] : entry(in);
}

template <class Array, class Other>
bool same_values(const Array& a, const Other& b) {
  return a.size() == b.size() && (a.size() == 0 || std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0);
}

/// Arguments of a clip, with something in the outputs.
struct arguments {
  dense2D<double> coords;
  dense2D<unsigned> connectivity, out{1, 2, 7U}, edges{3, 1, 8U};
  dense1D<unsigned> elements{1, 2, 3};
  dense1D<double> weights{0.5};

  /// The matrix of elements is also the output, or shares its block.
  void share(input& in) {
    if (in.flag()) out = connectivity;
    if (in.flag() && connectivity.compact()) elements = connectivity.as_vector();
    if (in.flag()) edges = connectivity;
    if (in.flag() && coords.compact() && !coords.empty()) weights = coords.as_vector().sub_vector(0, 1);
  }
};

void check(const arguments& now, const arguments& before, const clipped_mesh& expected, bool exact) {
  const bool failed = expected.code < 0;
  CHECK(failed ? now.out == before.out : now.out == expected.out || (now.out.empty() && expected.out.empty()));
  CHECK(to_list(now.elements) == (failed ? to_list(before.elements) : expected.elements));
  CHECK(same_bits(now.coords, failed || !exact ? before.coords : expected.coords));
  if (failed || !exact) CHECK(now.edges == before.edges && same_values(now.weights, before.weights));
  if (failed || !exact) return;
  CHECK(now.edges == expected.edges || (now.edges.empty() && expected.edges.empty()));
  CHECK(same_values(now.weights, expected.weights));
}

arguments copy_of(const arguments& a) {
  arguments copy;
  copy.coords = deep_copy(a.coords), copy.connectivity = deep_copy(a.connectivity);
  copy.out = deep_copy(a.out), copy.edges = deep_copy(a.edges);
  CHECK(copy.elements.copy(a.elements) && copy.weights.copy(a.weights));
  return copy;
}

template <unsigned Dim>
void check_clips(input& in, arguments& a, element_type type) {
  using vector = qel::vector_fixed<double, Dim>;
  vector point;
  for (double& x : point) x = entry(in);
  const vector normal = direction<Dim>(in);
  const double tol = tolerance(in);
  const unsigned mode = in.below(4);
  a.share(in);
  const arguments before = copy_of(a);
  const auto to_vector = [](const vector& v) { return std::vector<double>(v.begin(), v.end()); };
  clip_model model(before.coords, to_vector(point), to_vector(normal), tol);

  arguments whole = a;
  const clipped_mesh expected_whole = model.whole(before.connectivity, mode);
  CHECK(clip(whole.coords, whole.out, point, normal, whole.connectivity, mode, tol, whole.elements) ==
        expected_whole.code);
  check(whole, before, expected_whole, false);

  arguments exact = in.flag() ? a : copy_of(a);
  const clipped_mesh expected = model.exact(before.connectivity, type);
  dense2D<unsigned>& out = in.flag() ? exact.connectivity : exact.out;
  CHECK(clip(exact.coords, out, point, normal, exact.connectivity, type, tol, exact.elements, exact.edges,
             exact.weights) == expected.code);
  if (&out == &exact.connectivity && expected.code >= 0) exact.out = out;
  check(exact, before, expected, true);
  CHECK(same_bits(a.coords, before.coords) && a.connectivity == before.connectivity);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  input in(data, size);
  arguments a;
  const unsigned dim = 2 + in.below(2), odd = in.below(32);
  const unsigned rows = odd == 0 ? 1 : dim + (odd < 4 ? odd - 1 : 0);
  element_type type = accepted[in.below(5)];
  if (in.below(4) != 0) {
    const unsigned cells = 1 + in.below(3);
    random_meshes::generator random(in.raw<std::uint16_t>());
    a.connectivity = in.view(reference::grid(type, cells, random));
    a.coords = lattice(in, rows, cells);
  } else {
    const unsigned n = in.below(20), some = in.below(8);
    if (some == 0) type = static_cast<element_type>(1 + in.below(22));
    a.coords = entries(in, rows, n);
    a.connectivity =
        in.matrix(nbr_nodes(type), in.below(40), [&] { return some == 1 ? in.node(n) : in.below(n + (n == 0)); });
    for (unsigned j = 0; type == ELT_FACE_MIX && j < a.connectivity.cols(); j += 2) a.connectivity(3, j) = none;
  }
  if (in.below(4) == 0 && type == ELT_TRIA3) type = ELT_FACE_MIX;
  if (in.below(4) == 0 && type == ELT_TETRA4) type = ELT_SOLID_MIX;
  dim == 2 ? check_clips<2>(in, a, type) : check_clips<3>(in, a, type);
  return 0;
}
