// Prints a hash of the results of every exported function on fixed inputs. Builds by different compilers and at
// different optimisation levels must print the same (scripts/check.sh compares two); exports_test.sh finds functions
// without a line.
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "qel/gridwork.h"
#include "qel/lapack.h"
#include "tests/topology_reference.h"

namespace {

using namespace qel::gridwork;
using qel::dense1D;
using qel::dense2D;
using random_meshes::deep_copy;
using random_meshes::generator;
using random_meshes::real;
using ids = dense1D<unsigned>;
using matrix = dense2D<unsigned>;
using points = dense2D<double>;
template <unsigned N>
using vec = qel::vector_fixed<double, N>;
template <unsigned N>
using tensor = qel::symmetric_fixed<double, N>;

/// A line: the name of a function, and the FNV-1a hash of its results. Every NaN counts as the same one.
class line {
 public:
  explicit line(const char* name) : name_(name) {}
  ~line() { std::printf("%s %016llx\n", name_, static_cast<unsigned long long>(hash_)); }

  template <class... Results>
  void operator()(const Results&... results) {
    (add(results), ...);
  }

 private:
  template <class T>
  void add(const T& x) {
    if constexpr (std::is_same_v<T, double>) {
      std::uint64_t bits = 1;
      if (x == x) std::memcpy(&bits, &x, sizeof bits);
      add(bits);
    } else if constexpr (std::is_integral_v<T>) {
      for (unsigned k = 0; k < sizeof x; ++k) hash_ = (hash_ ^ (x >> (8 * k) & 255)) * 1099511628211ULL;
    } else {
      add(std::uint64_t{x.size()});
      for (const auto& entry : x) add(entry);
    }
  }

  template <class T>
  void add(const dense2D<T>& m) {
    (*this)(m.rows(), m.cols());
    for (std::uint64_t k = 0; k < m.size(); ++k) add(m(k % m.rows(), k / m.rows()));
  }

  const char* name_;
  std::uint64_t hash_ = 14695981039346656037ULL;
};

constexpr unsigned nodes = 300;
constexpr unsigned types = ELT_HEXA27 + 1;

/// Numbers with many digits, and some that are equal.
points random_points(unsigned rows, unsigned seed) {
  generator random(seed);
  points p(rows, nodes);
  for (std::uint64_t k = 0; k < p.size(); ++k) p.data()[k] = random() % 4 == 0 ? random() % 8 / 8.0 : real(random);
  return p;
}

/// Tensors of which most are positive definite.
points random_tensors(unsigned dim) {
  points m = random_points(dim * (dim + 1) / 2, dim);
  for (unsigned k = 0; k < dim; ++k) {
    for (unsigned j = 0; j < nodes; ++j) m(k * (k + 3) / 2, j) += j % 8 / 4.0;
  }
  return m;
}

const points plane = random_points(2, 1), space = random_points(3, 2),
             tensors[] = {random_tensors(2), random_tensors(3)};
const dense1D<double> sizes = random_points(1, 3).as_vector();
const ids list = [] {
  generator random(4);
  return reference::to_array(random_meshes::list(random, 200, nodes));
}();
const std::vector<matrix> meshes = [] {  // of each type, in order; the linear ones are lattices of cells
  generator random(5);
  std::vector<matrix> all;
  for (unsigned t = 0; t < types; ++t) {
    const auto type = static_cast<element_type>(t);
    const bool linear = reference::local_boundaries.count(reference::members(type)[0]) != 0;
    all.push_back(linear ? reference::grid(type, 4, random) : reference::random_elements(type, 60, 0, nodes, random));
  }
  return all;
}();

template <class Visit>
void each_mesh(Visit visit) {
  for (unsigned t = 0; t < types; ++t) visit(meshes[t], static_cast<element_type>(t));
}

template <unsigned N>
tensor<N> tensor_at(unsigned j) {
  tensor<N> M;
  std::copy_n(tensors[N - 2].column(j), M.size(), M.begin());
  return M;
}

/// The content of a file that write(path) makes, after read(path).
template <class Write, class Read>
std::string file(Write write, Read read) {
  const auto path = std::filesystem::temp_directory_path() / ("determinism_" + std::to_string(::getpid()));
  std::string content = std::to_string(write(path.c_str()));
  std::ifstream stream(path, std::ios::binary);
  content.append(std::istreambuf_iterator<char>(stream), {});
  read(path.c_str());
  std::filesystem::remove(path);
  return content;
}

void print_catalogue_and_ids() {
  line("version")(std::string(version()));
  line table[] = {line("nbr_nodes"), line("nbr_base_nodes"), line("element_dim"), line("nbr_boundaries")};
  line check("check_IDs"), most("max_ID"), shift("shift_indices"), change("change_indices");
  each_mesh([&](const matrix& m, element_type type) {
    table[0](nbr_nodes(type)), table[1](nbr_base_nodes(type)), table[2](element_dim(type)),
        table[3](nbr_boundaries(type));
    check(check_IDs(m, type, 140), check_IDs(m, 140), check_IDs(m, type, nodes), check_IDs(list, nodes));
    most(max_ID(m), max_ID(list));
    matrix work = deep_copy(m);
    shift(shift_indices(work, -7, type), work);
    change_indices(work, list);
    change(work);
  });
  ids a, b;
  dense1D<double> values = random_points(1, 5).as_vector();
  line("permutation")(permutation(values, list), values);
  line("unique_indices")(unique_indices(a, &meshes[6], &meshes[9], list), a);
  line("count_unique_indices")(count_unique_indices(&meshes[3], &meshes[9]));
  line("get_sorted_order")(get_sorted_order(list, a, b), a, b);
  line match("get_IDs");
  match(get_IDs(list, meshes[ELT_QUAD4].as_vector(), a, b), a, b);
  generator random(6);
  match(get_IDs(meshes[ELT_EDGE2], reference::grid(ELT_EDGE2, 3, random), a, b, false), a, b);
}

void print_search() {
  const node_detector flat(plane), spatial(space, meshes[ELT_SOLID_MIX]);
  ids found, map;
  line detector("node_detector"), merged("merge"), degenerate("remove_degenerated"), simple("simplify");
  for (unsigned j = 0; j < nodes; ++j) {
    const vec<2> p{space(1, j), space(2, j)};
    const vec<3> q{space(1, j), plane(0, j), space(2, j)};
    detector(flat.find_closest(p), flat.find_closest(j), spatial.find_closest(q), spatial.find_closest(j));
    flat.find_in_box(p, {p[0] + 0.1, p[1] + 0.2}, found);
    spatial.find_in_box(q, {q[0] + 0.3, q[1] + 0.2, q[2] + 0.1}, found);
  }
  detector(found);
  for (const double tol : {0.0, 0.05}) {
    points work = deep_copy(plane);
    merged(merge(work, map, tol), work, map);
    merged(merge(space, list, meshes[ELT_QUAD4].as_vector(), map, tol), map);
    for (const unsigned mode : {0U, 1U, 2U}) {
      matrix m = deep_copy(meshes[ELT_QUAD4]), m2 = deep_copy(meshes[ELT_SOLID_MIX]);
      merged(merge(plane, m, m2, map, 3 * tol, mode), map, m, m2);
      degenerate(remove_degenerated(m, map, true), map, m);
      simple(simplify(work, m2, map, 7), map, work, m2);
    }
  }
}

void print_transforms() {
  line shift("translate"), turn("rotate"), scale("zoom"), box("inc_bounding_box"), copy("copy_mesh"),
      mirror("copy_sym_mesh");
  const vec<2> o{0.3, -0.2}, n{0.1, 0.7};
  const vec<3> center{0.1, 0.2, -0.3}, axis{0.4, -1.1, 0.2};
  for (const points* coords : {&plane, &space}) {
    points p = deep_copy(*coords);
    matrix out;
    vec<3> low{1, 1, 1}, high{};
    shift(translate(p, o), p);
    shift(translate(p, axis, list), p);
    turn(rotate(p, o, 0.77), p);
    turn(rotate(p, o, 1e5, meshes[ELT_QUAD4]), p);
    turn(rotate(p, center, axis), p);
    turn(rotate(p, center, {1e-9, 2e-9, -1e-9}, list), p);
    scale(zoom(p, o, 1.3), p);
    scale(zoom(p, center, -0.7, meshes[ELT_QUAD4]), p);
    box(inc_bounding_box(p, meshes[ELT_TETRA4], low, high), low, high);
    copy(copy_mesh(p, out, meshes[ELT_TRIA3]), p, out);
    copy(copy_mesh(p, out, n, o, 0.2, 5, meshes[ELT_TRIA3]), p, out);
    copy(copy_mesh(p, out, center, axis, center, 4, meshes[ELT_TRIA3]), p, out);
    mirror(copy_sym_mesh(p, out, o, n, meshes[ELT_QUAD4]), p, out);
    mirror(copy_sym_mesh(p, out, center, axis, meshes[ELT_QUAD4]), p, out);
  }
}

void print_topology() {
  line adjacent("get_neighbors"), all("get_element_boundaries"), free("get_mesh_boundaries");
  line bounding("get_mesh_bounding_elements"), on("get_elements_on_boundaries"), last("get_ancestors");
  line connected("get_connected_elements"), graph("get_node_graph"), edge("copy_edges");
  each_mesh([&](const matrix& m, element_type type) {
    matrix neighbors, boundaries, every, edges;
    ids slots, ancestors, offsets, rows;
    unsigned B;
    adjacent(get_neighbors(m, type, false, neighbors), neighbors);
    adjacent(get_neighbors(m, type, true, neighbors), neighbors);
    all(get_element_boundaries(m, type, every), every);
    free(get_mesh_boundaries(m, neighbors, type, boundaries), boundaries);
    bounding(get_mesh_bounding_elements(m, neighbors, type, slots, B), slots, B);
    last(get_ancestors(m, ancestors), ancestors);
    on(get_elements_on_boundaries(every, m, neighbors, ancestors, type, slots, B), slots, B);
    connected(get_connected_elements(m, offsets, rows), offsets, rows);
    graph(get_node_graph(m, offsets, rows), offsets, rows);
    edge(copy_edges(m, type, edges), edges);
  });
}

void print_quality() {
  line shape("shape_qualities"), worst("min_quality"), jacobian("jacobians"), one("edge_quality"),
      all("edge_qualities");
  line counts("histogram");
  for (const points* p : {&plane, &space}) {
    each_mesh([&](const matrix& m, element_type type) {
      dense1D<double> q;
      double least;
      unsigned at;
      shape(shape_qualities(*p, m, type, q), q);
      worst(min_quality(*p, m, type, least, at), least, at);
      jacobian(jacobians(*p, m, type, q), q);
    });
    qel::misc::histogram H(0, 8, 40);
    const dense1D<int> codes{ELT_TRIA3, ELT_QUAD4};
    all(edge_qualities(*p, &meshes[ELT_TRIA3], &meshes[ELT_TRIA3] + 2, codes, sizes, H, meshes[ELT_EDGE2]));
    all(edge_qualities(*p, meshes[ELT_SOLID_MIX], ELT_SOLID_MIX, tensors[p->rows() - 2], H, {}));
    counts(H.min(), H.max(), H.mean(), H.count(), H.below(), H.above());
    for (unsigned k = 0; k < H.bins(); ++k) counts(H.bin(k), H.bin_lower(k));
  }
  for (unsigned j = 1; j < nodes; ++j) {
    double q = 0;
    one(edge_quality(space(0, j), sizes[j], sizes[j - 1], q), q);
  }
}

template <unsigned N>
void print_tensors(line (&lines)[8]) {
  const qel::matrix_fixed<double, 3, 2> frame{0.6, 0.8, 0, -0.3, 0.2, 0.9};
  for (unsigned j = 1; j < nodes; ++j) {
    const auto A = tensor_at<N>(j), B = tensor_at<N>(j - 1);
    tensor<N> M = A;
    tensor<2> flat;
    vec<N> w;
    qel::matrix_fixed<double, N, N> V;
    lines[0](is_valid_metric(A));
    if (eigen_pairs(A, w, V)) lines[1](w, V);
    if (eigen_pairs(A, B, w, V)) lines[1](w, V);
    lines[2](bound_metric(M, 0.6, 1.3), M);
    lines[3](minimum_metric(A, B, M), M);
    lines[4](maximum_metric(A, B, M), M);
    metric_iso_to_aniso(sizes[j], M), metric_iso_to_aniso2d(sizes[j], frame, flat);
    lines[5](M), lines[6](flat);
    if constexpr (N == 3) metric_aniso3d_to_aniso2d(A, frame, flat), lines[7](flat);
  }
}

void print_metrics() {
  line one[] = {line("is_valid_metric"),       line("eigen_pairs"),
                line("bound_metric"),          line("minimum_metric"),
                line("maximum_metric"),        line("metric_iso_to_aniso"),
                line("metric_iso_to_aniso2d"), line("metric_aniso3d_to_aniso2d")};
  print_tensors<2>(one);
  print_tensors<3>(one);
  line first("first_invalid_metric"), all("are_valid_metrics"), valid("valid_metrics"), bound("bound_metrics");
  line repair("overwrite_invalid_metrics"), solver("dspev");
  for (const points& m : tensors) {
    points work = deep_copy(m);
    ids changed;
    first(first_invalid_metric(m), first_invalid_metric(list, m), first_invalid_metric(list, sizes));
    all(are_valid_metrics(m), are_valid_metrics(sizes));
    valid_metrics(m, changed), valid(changed);
    repair(overwrite_invalid_metrics(work, sizes), work);
    bound(bound_metrics(work, 0.5, 1.5, changed), changed, work);
  }
  points flat = deep_copy(tensors[0]), spatial = deep_copy(tensors[1]);
  const points frames = random_points(6, 7);
  line("metrics_iso_to_aniso2d")(metrics_iso_to_aniso2d(sizes, frames, flat), flat);
  line("metrics_iso_to_aniso3d")(metrics_iso_to_aniso3d(sizes, spatial), spatial);
  line("metrics_aniso3d_to_aniso2d")(metrics_aniso3d_to_aniso2d(tensors[1], frames, flat), flat);
  generator random(8);
  for (unsigned round = 0; round < 400; ++round) {
    const long n = 1 + round % 8;
    std::vector<double> ap(36), w(8), z(64), work(24);
    for (double& x : ap) x = real(random) - 0.5;
    long info;
    solver(qel::lapack::dspev('V', round % 3 != 0 ? 'U' : 'L', n, ap.data(), w.data(), z.data(), n, work.data(), info),
           w, z);
  }
}

void print_files() {
  line stl_out("STL_output"), stl_in("STL_input"), obj_out("WavefrontOBJ_output"), obj_in("WavefrontOBJ_input");
  line vtk("vtk_output"), cell("vtk_convert"), medit("medit_output"), nastran("NASTRAN_output"),
      ensight("ensight_output");
  points a, b, c;
  matrix m3, m4;
  const auto ignore = [](const char*) {};
  for (const bool text : {true, false}) {
    stl_out(file([&](auto path) { return STL_output(path, space, meshes[ELT_TRIA3], text); },
                 [&](auto path) { stl_in(STL_input(path, a, m3), a, m3); }));
  }
  obj_out(file([&](auto path) { return WavefrontOBJ_output(path, plane, space, plane, meshes[6], meshes[7]); },
               [&](auto path) { obj_in(WavefrontOBJ_input(path, a, b, c, m3, m4), a, b, c, m3, m4); }));
  each_mesh([&](const matrix& m, element_type type) {
    unsigned n = 0;
    ids cells, codes;
    cell(vtk_convert(m, type, n, cells, codes), n, cells, codes);
    vtk(file([&](auto path) { return vtk_output(path, space, m, type); }, ignore));
    medit(file([&](auto path) { return medit_output(path, plane, m, type); }, ignore));
    nastran(file([&](auto path) { return NASTRAN_output(path, space, m, type); }, ignore));
    ensight(file([&](auto path) { return ensight_output(path, plane, m, type); }, ignore));
  });
  line("medit_scalar")(file([](auto path) { return medit_scalar(path, 3, sizes); }, ignore));
  line("medit_vector")(file([](auto path) { return medit_vector(path, 3, space); }, ignore));
  line("medit_tensor")(file([](auto path) { return medit_tensor(path, tensors[1]); }, ignore));
}

}  // namespace

int main() {
  print_catalogue_and_ids();
  print_search();
  print_transforms();
  print_topology();
  print_quality();
  print_metrics();
  print_files();
}
