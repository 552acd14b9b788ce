// Gradation, H-shock and generated sizes of any mesh beside what the definitions make of it; and the bounds that are
// documented of tensors, by formulas that the library does not use.
#include "fuzz/tensors.h"
#include "tests/gradation_reference.h"

namespace {

using namespace fuzz;
using reference::edge_model;
using ids = dense1D<unsigned>;
using random_meshes::infinity;
using random_meshes::real;

struct recorder : histogram {
  std::vector<double> values;
  void process(double v) override { values.push_back(v); }
};

struct mesh {
  element_type type;
  double scale;
  dense2D<double> coords;
  dense2D<unsigned> connectivity, edges;

  unsigned nodes() const { return static_cast<unsigned>(coords.cols()); }
};

/// Elements of any type on few nodes, which lie anywhere, at any scale, on a lattice or on special places.
mesh make_mesh(input& in, generator& random) {
  constexpr unsigned solids[] = {4, 5, 6, 8};
  mesh m;
  const unsigned dim = 2 + in.below(2), n = 1 + in.below(14), rule = in.below(6);
  m.scale = rule == 1 ? std::pow(10, 300 * real(random) - 150) : 1;
  m.type = static_cast<element_type>(in.flag() ? int{ELT_TETRA4} : in.flag() ? int{ELT_EDGE2} : 1 + int(in.below(22)));
  m.coords = rule == 0 ? in.coords(dim, n)
                       : in.matrix(dim, n, [&] { return m.scale * (rule == 2 ? in.below(3) : real(random)); });
  m.connectivity = dense2D<unsigned>(nbr_nodes(m.type), in.below(20));
  for (unsigned j = 0; j < m.connectivity.cols(); ++j) {
    std::generate(m.connectivity.begin_column(j), m.connectivity.end_column(j), [&] { return in.below(n); });
    const unsigned used = m.type == ELT_FACE_MIX ? 3 + in.below(2) : m.type == ELT_SOLID_MIX ? solids[in.below(4)] : 99;
    for (unsigned i = used; i < m.connectivity.rows(); ++i) m.connectivity(i, j) = none;
  }
  m.connectivity = in.view(m.connectivity);
  CHECK(copy_edges(m.connectivity, m.type, m.edges) == 0);
  return m;
}

void check_generation(const mesh& m) {
  for (const size_rule rule : {SIZE_MEAN, SIZE_SHORTEST, SIZE_LONGEST}) {
    dense1D<double> sizes{7};
    int expected_count = 0;
    const int count = metrics_gen_iso(m.coords, m.connectivity, m.type, sizes, rule);
    const edge_model model(m.coords, m.edges, [](unsigned) { return true; });
    CHECK(sizes.size() == m.nodes());
    for (unsigned node = 0; node < m.nodes(); ++node) {
      std::vector<double> lengths;
      model.visit([&](unsigned from, unsigned, double l) { l > 0 && from == node ? lengths.push_back(l) : void(); });
      expected_count += lengths.empty() ? 0 : 1;
      if (lengths.empty() || rule != SIZE_MEAN) {
        const auto [least, most] = std::minmax_element(lengths.begin(), lengths.end());
        CHECK(sizes[node] == (lengths.empty() ? 0 : rule == SIZE_SHORTEST ? *least : *most));
        continue;
      }
      long double sum = 0;
      for (const double l : lengths) sum += l;
      const long double mean = sum / static_cast<long double>(lengths.size());
      const auto tolerance = static_cast<long double>(lengths.size() + 3) * 0x1p-53L * mean + 0x1p-1074L;
      CHECK(std::isfinite(sizes[node]) && std::abs(sizes[node] - mean) <= tolerance);
    }
    CHECK(count == expected_count);
  }
}

/// What H_shock() and the bounds return and list, of values that are allowed to change like `expected`.
template <class Array>
void check_shock(const mesh& m, const Array& sizes, const edge_model& model, const std::vector<double>& shocks,
                 double tolerance) {
  recorder H;
  double largest = 7;
  const int code = model.all_sound ? static_cast<int>(model.edges.size()) : -4;
  CHECK(H_shock(m.coords, m.connectivity, m.type, sizes, H) == code && H.values.size() == shocks.size());
  CHECK(H_shock(m.coords, m.connectivity, m.type, sizes, largest) == code);
  double most = 1;
  for (std::size_t k = 0; k < shocks.size(); ++k) {
    most = std::max(most, H.values[k]);
    const bool both_are_large = H.values[k] > 1e100 && shocks[k] > 1e100;
    CHECK(H.values[k] >= 1 &&
          (both_are_large || H.values[k] == shocks[k] || std::abs(H.values[k] - shocks[k]) <= tolerance * shocks[k]));
  }
  CHECK(largest == most);
}

/// The same mesh under other numbers of its nodes and elements; node i is called names[i].
struct renumbered_mesh : mesh {
  ids names;

  renumbered_mesh(const mesh& m, generator& random) : mesh(m), names(shuffled(random, m.nodes())) {
    coords = moved(m.coords, names);
    connectivity = moved(m.connectivity, shuffled(random, static_cast<unsigned>(m.connectivity.cols())));
    change_indices(connectivity, names);
  }

  static ids shuffled(generator& random, unsigned n) {
    ids names(n);
    for (unsigned i = 0; i < n; ++i) names[i] = i;
    std::shuffle(names.begin(), names.end(), random);
    return names;
  }

  template <class T>
  static dense2D<T> moved(const dense2D<T>& columns, const ids& names) {
    dense2D<T> result(columns.rows(), columns.cols());
    for (unsigned j = 0; j < names.size(); ++j) std::copy_n(columns.column(j), columns.rows(), result.column(names[j]));
    return result;
  }
};

bool same_bits(const dense1D<double>& a, const dense1D<double>& b) {
  return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0);
}

ids changes(const auto& count, auto differs) {
  ids all;
  for (unsigned i = 0; i < count; ++i) CHECK(!differs(i) || all.push_back(i));
  return all;
}

void check_sizes(input& in, generator& random, const mesh& m) {
  dense1D<double> sizes(in.below(8) == 0 ? in.below(20) : m.nodes() + in.below(2));
  const double digits = in.flag() ? 600 : 2;
  const unsigned broken = in.flag() ? 256 : 1 + in.below(30);
  for (double& h : sizes) h = in.below(broken) == 0 ? in.real() : std::pow(10, digits * (real(random) - 0.5));
  const auto has = [&](unsigned node) { return node < sizes.size() && reference::is_size(sizes[node]); };
  const edge_model model(m.coords, m.edges, has);
  std::vector<double> shocks;
  for (const auto& e : model.edges) {
    if (!e.sound) continue;
    const double h1 = sizes[e.a], h2 = sizes[e.b];
    shocks.push_back(7);
    CHECK(H_shock(e.length, h1, h2, shocks.back()) == 0);
    CHECK(shocks.back() == (h1 == h2 ? 1 : detail::exponential(std::abs(h2 - h1) / e.length)));
  }
  check_shock(m, sizes, model, shocks, 0);

  const double gradation = in.below(6) == 0 ? 1 : 1 + 2 * real(random), variation = detail::logarithm(gradation);
  dense1D<double> expected, bounded, varied;
  CHECK(expected.copy(sizes) && bounded.copy(sizes) && varied.copy(sizes));
  reference::bound_sizes(model, variation, expected);
  const ids expected_changes = changes(sizes.size(), [&](unsigned i) { return expected[i] < sizes[i]; });
  const int code = model.all_sound ? static_cast<int>(expected_changes.size()) : -4;
  ids changed{9, 9};
  CHECK(bound_metric_gradations(m.coords, m.connectivity, m.type, bounded, gradation, changed) == code);
  CHECK(changed == expected_changes && same_bits(bounded, expected));
  CHECK(bound_metric_variations(m.coords, m.connectivity, m.type, varied, variation) == code);
  CHECK(same_bits(varied, expected));
  CHECK(bound_metric_gradations(m.coords, m.connectivity, m.type, bounded, gradation, changed) == std::min(code, 0));
  CHECK(changed.empty() && same_bits(bounded, expected));
  if (sizes.size() < m.nodes()) return;
  const renumbered_mesh other(m, random);
  dense1D<double> same;
  CHECK(same.copy(sizes));
  for (unsigned i = 0; i < m.nodes(); ++i) same[other.names[i]] = sizes[i];
  CHECK(bound_metric_variations(other.coords, other.connectivity, m.type, same, variation) == code);
  for (unsigned i = 0; i < m.nodes(); ++i) CHECK(std::memcmp(&same[other.names[i]], &expected[i], sizeof(double)) == 0);
}

/// L with L L' = M, or not.
template <unsigned N>
bool is_positive(const long double (&M)[N][N]) {
  long double l[N][N];
  for (unsigned i = 0; i < N; ++i) {
    for (unsigned j = 0; j <= i; ++j) {
      long double rest = M[i][j];
      for (unsigned k = 0; k < j; ++k) rest -= l[i][k] * l[j][k];
      if (i == j && !(rest > 0)) return false;
      l[i][j] = i == j ? std::sqrt(rest) : rest / l[j][j];
    }
  }
  return true;
}

/// True when `dense` has in no direction sizes above those of `sparse`, to a relative tolerance.
template <unsigned N, class Sparse>
bool is_denser(const tensor<N>& dense, Sparse sparse, double tolerance) {
  long double difference[N][N];
  for (unsigned k = 0; k < N * N; ++k) {
    difference[k % N][k / N] = (1 + tolerance) * static_cast<long double>(dense(k % N, k / N)) - sparse(k % N, k / N);
  }
  return is_positive<N>(difference);
}

template <unsigned N>
long double length_in(const tensor<N>& A, const dense2D<double>& coords, unsigned a, unsigned b) {
  long double sum = 0;
  for (unsigned k = 0; k < N * N; ++k) {
    sum += static_cast<long double>(coords(k % N, b) - coords(k % N, a)) * A(k % N, k / N) *
           (coords(k / N, b) - coords(k / N, a));
  }
  return std::sqrt(std::max(sum, 0.0L));
}

/// The largest relative error that rounding may make of a tensor, and whether there is any sense in it.
template <unsigned N>
double rounding(const tensor<N>& M) {
  qel::vector_fixed<double, N> w;
  qel::matrix_fixed<double, N, N> V;
  CHECK(eigen_pairs(M, w, V));
  return w[0] > 0 ? 1e-11 + 1e-14 * (w[N - 1] / w[0]) : infinity;
}

/// B is bounded by A, as documented of each law.
template <unsigned N>
void check_bound(const tensor<N>& A, const tensor<N>& B, const dense2D<double>& coords, unsigned a, unsigned b,
                 double length, double rate, bool keeps_shape) {
  const double tolerance = 1e-6 + rounding(A) + rounding(B);
  if (tolerance > 1e-3) return;
  const long double factor = 1 / (1 + rate * length_in(A, coords, a, b));
  qel::vector_fixed<double, N> w;
  qel::matrix_fixed<double, N, N> V;
  CHECK(eigen_pairs(A, w, V));
  const auto allowed = [&](unsigned i, unsigned j) {
    if (keeps_shape) return A(i, j) * factor * factor;
    long double sum = 0;
    for (unsigned k = 0; k < N; ++k) {
      const long double size = 1 / std::sqrt(static_cast<long double>(w[k])) + rate * length;
      sum += V(i, k) / size * (V(j, k) / size);
    }
    return sum;
  };
  CHECK(is_denser(B, allowed, tolerance));
}

template <unsigned N>
dense2D<double> make_tensors(input& in, generator& random, const mesh& m) {
  dense2D<double> tensors(tensor<N>::size(), 0);
  const unsigned broken = in.flag() ? 256 : 1 + in.below(30), kind = in.below(4);
  const double digits = kind == 0 ? 0 : kind == 1 ? 12 : 5;
  for (unsigned n = in.below(8) == 0 ? in.below(20) : m.nodes() + in.below(2); n > 0; --n) {
    auto M = positive<N>(random, digits * real(random));
    const double sizes = std::ldexp(m.scale, 4 - static_cast<int>(in.below(10)));
    for (double& entry : M) entry = entry / sizes / sizes;
    if (in.below(broken) == 0) M = in.reals<tensor<N>>();
    CHECK(tensors.push_back_column(M.data()));
  }
  return in.view(tensors);
}

template <unsigned N>
void check_tensor_shock(const mesh& m, const dense2D<double>& tensors, const edge_model& model) {
  std::vector<double> shocks;
  double tolerance = 1e-12;
  const auto at = [&](unsigned node) { return detail::tensor_at<N>(tensors, node); };
  for (const auto& e : model.edges) {
    if (!e.sound) continue;
    const tensor<N> A = at(e.a), B = at(e.b);
    const long double la = length_in(A, m.coords, e.a, e.b), lb = length_in(B, m.coords, e.a, e.b);
    const bool coincide = e.length == 0;
    const long double logarithm = coincide ? (A == B ? 0 : infinity) : std::abs(1 / la - 1 / lb);
    shocks.push_back(static_cast<double>(std::exp(logarithm)));
    const double error = rounding(A) + rounding(B);
    tolerance = std::max(tolerance, coincide ? 0 : error * static_cast<double>(1 / la + 1 / lb));
  }
  if (tolerance < 1e-3) check_shock(m, tensors, model, shocks, tolerance);
}

template <unsigned N, class Law>
void check_tensor_bounds(const mesh& m, const dense2D<double>& tensors, const edge_model& model, double gradation,
                         generator& random, bool keeps_shape) {
  const double rate = detail::logarithm(gradation);
  const auto bound = [&](const mesh& on, dense2D<double>& bounded, ids& changed) {
    return keeps_shape ? bound_metric_gradations(on.coords, on.connectivity, on.type, bounded, gradation, changed)
                       : bound_metric_variations(on.coords, on.connectivity, on.type, bounded, rate, changed);
  };
  dense2D<double> expected = deep_copy(tensors), bounded = deep_copy(tensors);
  const auto at = [](const dense2D<double>& all, unsigned node) { return detail::tensor_at<N>(all, node); };
  reference::bound_tensors<N, Law>(model, m.coords, rate, expected);
  const ids expected_changes = changes(tensors.cols(), [&](unsigned j) {
    return std::memcmp(tensors.column(j), expected.column(j), sizeof(tensor<N>)) != 0;
  });
  const int code = model.all_sound ? static_cast<int>(expected_changes.size()) : -4;
  ids changed{9, 9};
  CHECK(bound(m, bounded, changed) == code && changed == expected_changes);
  CHECK(random_meshes::same_bits(bounded, expected));
  CHECK(bound(m, bounded, changed) == std::min(code, 0) && changed.empty());
  model.visit([&](unsigned a, unsigned b, double length) {
    check_bound<N>(at(bounded, a), at(bounded, b), m.coords, a, b, length, rate, keeps_shape);
  });
  for (const unsigned j : expected_changes) {
    const double tolerance = rounding(at(bounded, j)) + rounding(at(tensors, j));
    CHECK(is_denser(at(bounded, j), at(tensors, j), tolerance) || tolerance > 1e-3);
  }
  dense2D<double> places = deep_copy(m.coords);
  if (tensors.cols() < m.nodes() || merge(places, changed, 0) != 0) return;  // nodes in one place are told by numbers
  const renumbered_mesh other(m, random);
  dense2D<double> same = deep_copy(tensors);
  for (unsigned i = 0; i < m.nodes(); ++i) std::copy_n(tensors.column(i), tensors.rows(), same.column(other.names[i]));
  CHECK(bound(other, same, changed) == code);
  for (unsigned i = 0; i < m.nodes(); ++i) {
    CHECK(std::memcmp(same.column(other.names[i]), expected.column(i), sizeof(tensor<N>)) == 0);
  }
}

template <unsigned N>
void check_tensors(input& in, generator& random, const mesh& m) {
  const dense2D<double> tensors = make_tensors<N>(in, random, m);
  const edge_model model(m.coords, m.edges, [&](unsigned node) {
    return node < tensors.cols() && is_valid_metric(detail::tensor_at<N>(tensors, node));
  });
  check_tensor_shock<N>(m, tensors, model);
  const double gradation = in.below(6) == 0 ? 1 : 1 + 2 * real(random);
  check_tensor_bounds<N, detail::proportional_growth<N>>(m, tensors, model, gradation, random, true);
  check_tensor_bounds<N, detail::additive_growth<N>>(m, tensors, model, gradation, random, false);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  input in(data, size);
  generator random(in.raw<std::uint16_t>());
  const mesh m = make_mesh(in, random);
  check_generation(m);
  check_sizes(in, random, m);
  m.coords.rows() == 2 ? check_tensors<2>(in, random, m) : check_tensors<3>(in, random, m);
  return 0;
}
