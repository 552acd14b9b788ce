// Every exported function, called on inputs of any type, small enough that each request for memory can be made to fail.
#include "calls.h"

#include "mesh_files.h"
#include "qel/lapack.h"
#include "random_meshes.h"

namespace {

using namespace qel::gridwork;
using qel::dense1D;
using qel::dense2D;
using random_meshes::real;
using plane = qel::vector_fixed<double, 2>;
using space = qel::vector_fixed<double, 3>;
using ids = dense1D<unsigned>;
using reals = dense1D<double>;
using matrix = dense2D<unsigned>;
using nodes = dense2D<double>;

int code(bool done) { return done ? 0 : -199; }

template <class T>
dense1D<T> own(const dense1D<T>& a) {
  dense1D<T> copy;
  if (!copy.copy(a)) std::abort();
  return copy;
}

constexpr element_type members[][4] = {{ELT_TRIA3, ELT_QUAD4, ELT_TRIA3, ELT_TRIA3},
                                       {ELT_TETRA4, ELT_PYRAMID5, ELT_WEDGE6, ELT_HEXA8}};

/// Elements of neighbouring nodes, so that many share boundaries.
matrix make_mesh(random_meshes::generator& random, element_type type, unsigned count, unsigned n) {
  matrix m(nbr_nodes(type), count, ~0U);
  for (unsigned j = 0; j < count; ++j) {
    const bool mixed = type == ELT_FACE_MIX || type == ELT_SOLID_MIX;
    const unsigned used = mixed ? nbr_nodes(members[type == ELT_SOLID_MIX][j % 4]) : nbr_nodes(type);
    const unsigned start = random_meshes::below(random, n);
    for (unsigned i = 0; i < used; ++i) m(i, j) = (start + i) % n;
  }
  return m;
}

const plane p2{0.5, 1}, q2{2, 3};
const space p3{0.5, 1, 2}, q3{2, 3, 4};

void arrays(trial& t, const inputs& in) {
  ids a = own(in.list), shared = a.sub_vector(1, a.size() - 2), alone = own(in.more), fresh;
  nodes c = in.own(in.coords), part = c.sub_matrix(1, 1, 1, 5), target;
  qel::vector_num<double> block;
  unsigned values[4] = {1, 2, 3, 4};
  for (ids* x : {&shared, &alone, &fresh}) {
    CALL(code(x->resize(5000, 7)), kept(*x));
    CALL(code(x->reserve(5000, 2)), kept(*x));
    CALL(code(x->copy(in.list)), kept(*x));
    CALL(code(x->push_back_n(3, 5000)), kept(*x));
    CALL(code(x->resize(600000, 3) && x->resize(1)), kept(*x));  // huge pages
  }
  for (nodes* x : {&c, &part, &target}) {
    CALL(code(x->resize(x->rows() + 1, x->cols() + 50, 1.5)), kept(*x));
    CALL(code(x->resize(x->rows() == 0 ? 0 : x->rows() - 1, x->cols())), kept(*x));
    CALL(code(x->reserve(9, 500)), kept(*x));
    CALL(code(x->copy(in.tensors)), kept(*x));
    CALL(code(x->push_back_column(x->cols() == 0 ? p3.data() : x->column(0))), kept(*x));
  }
  CALL(code(target.push_back_column({1.0, 2.0})), kept(target));
  CALL(code(block.__grow(10, 0, 2)));
  CALL((fresh = ids(70), 0), also(0), emptied(fresh));
  CALL((fresh = ids(70, 7U), 0), also(0), emptied(fresh));
  CALL((fresh = ids({1, 2, 3}), 0), also(0), emptied(fresh));
  CALL((fresh = ids(4, values), 0), also(0), emptied(fresh));
  CALL((target = nodes(3, 30), 0), also(0), emptied(target));
  CALL((target = nodes(3, 30, 2.5), 0), also(0), emptied(target));
  CALL((target = nodes(2, 1, {1.0, 2.0}), 0), also(0), emptied(target));
  unsigned bins = 0;
  histogram H(0, 5), copy(0, 1, 7);
  H.process(1);
  CALL((bins = histogram(0, 1, 9).bins(), 0), also(0), anything(bins));
  CALL((bins = histogram(H).bins(), 0), also(0), anything(bins));
  CALL((copy = H, 0), also(0), anything(copy));
}

void index_tools(trial& t, const inputs& in) {
  ids a = own(in.list), appended{5, 6}, x, y;
  reals r = own(in.sizes);
  matrix m = in.own(in.sparse);
  CALL(max_ID(in.list) + 3 * max_ID(in.mesh) + 5 * check_IDs(in.list, 9));
  CALL(check_IDs(in.mesh, 5) + 2 * check_IDs(in.mesh, in.type, 40) + 4 * check_IDs(in.mesh, in.type, 999));
  CALL(shift_indices(a, 3), kept(a));
  CALL(shift_indices(m, 3, in.type), kept(m));
  CALL((change_indices(a, in.more), change_indices(m, in.more), 0), kept(a), kept(m));
  CALL(permutation(a, in.more), kept(a));
  CALL(permutation(r, in.list), kept(r));
  ids part = a.sub_vector(1, a.size() - 2);  // of a block with another view
  CALL(permutation(part, in.list), kept(part), kept(a));
  CALL(get_IDs(in.list, in.more, x, y), emptied(x), emptied(y));
  for (const bool exact : {false, true}) CALL(get_IDs(in.mesh, m, x, y, exact), emptied(x), emptied(y), kept(m));
  // Without room in the list itself, entries are dropped.
  CALL((appended.clear(), unique_indices(appended, in.list, in.more)), also(0), anything(appended));
  CALL((appended.clear(), unique_indices(appended, in.list)), also(0), anything(appended));
  CALL((appended.clear(), unique_indices(appended, m, in.more)), also(0), anything(appended), kept(m));
  CALL((appended.clear(), unique_indices(appended, in.both, in.both + 2)), also(0), anything(appended));
  CALL(count_unique_indices(m));
  CALL(count_unique_indices(in.both, in.both + 2));
  CALL(get_sorted_order(in.list, x, y), emptied(x), emptied(y));
  CALL(get_sorted_order(ids(), x, y), emptied(x), emptied(y));
}

void transforms(trial& t, const inputs& in) {
  nodes c = in.own(in.coords);
  matrix out = in.own(in.other);
  plane low{9, 9}, high{-9, -9};
  space low3{9, 9, 9}, high3{-9, -9, -9};
  const matrix& m = in.mesh;
  const auto move = [&](const auto& p, const auto& turn, const auto&... which) {
    CALL(translate(c, p, which...), also(0), kept(c));
    CALL(rotate(c, p, turn, which...), also(0), kept(c));
    CALL(zoom(c, p, 3, which...), also(0), kept(c));
  };
  const auto enlarge = [&](auto& from, auto& to, const auto&... which) {
    CALL(inc_bounding_box(c, which..., from, to), kept(from), kept(to));
  };
  move(p2, 0.5), move(p2, 0.5, in.list), move(p2, 0.5, m);
  move(p3, q3), move(p3, q3, in.list), move(p3, q3, m);
  enlarge(low, high), enlarge(low, high, in.list), enlarge(low, high, m);
  enlarge(low3, high3), enlarge(low3, high3, in.list), enlarge(low3, high3, m);
  CALL(copy_mesh(c, out, in.mesh), kept(c), kept(out));
  CALL(copy_mesh(c, out, p2, q2, 0.5, 3, in.mesh), kept(c), kept(out));
  CALL(copy_mesh(c, out, p3, q3, p3, 3, in.mesh), kept(c), kept(out));
  CALL(copy_sym_mesh(c, out, p2, q2, in.mesh), kept(c), kept(out));
  CALL(copy_sym_mesh(c, out, p3, q3, in.mesh), kept(c), kept(out));
  ids sources{1, 2};
  matrix edges(3, 1, 9U);
  reals weights{3};
  const auto cut = [&](const auto& p, const auto& normal) {
    CALL(clip(c, out, p, normal, in.mesh, 1, 0.01, sources), kept(c), kept(out), kept(sources));
    CALL(clip(c, out, p, normal, in.mesh, in.type, 0.01, sources, edges, weights), kept(c), kept(out), kept(sources),
         kept(edges), kept(weights));
  };
  cut(plane{2, 2}, p2), cut(space{2, 2, 2}, p3);
}

void detector(trial& t, const inputs& in) {
  node_detector d(in.tree), chain(in.chain);
  ids found{7};
  unsigned node = 0;
  const nodes& c = in.coords;
  CALL((d = node_detector(c), 0), also(0), emptied(d));
  CALL((d = node_detector(c, in.list), 0), also(0), emptied(d));
  CALL((d = node_detector(c, in.mesh), 0), also(0), emptied(d));
  CALL((d = node_detector(c, in.both, in.both + 2), 0), also(0), emptied(d));
  CALL((d = node_detector(in.chain), 0), also(0), emptied(d));
  CALL((d = chain, 0), also(0), emptied(d));
  CALL(d.reinit(c), emptied(d));
  CALL(d.reinit(c, in.list), emptied(d));
  CALL(d.reinit(c, in.mesh), kept_or_emptied(d));
  CALL(d.reinit(c, in.both, in.both + 2), kept_or_emptied(d));
  CALL(d.insert(in.more), also(0), kept(d));
  CALL(d.insert(in.mesh), also(0), kept(d));
  CALL(d.insert(in.more.sub_vector(0, 1)), also(0), kept(d));
  CALL((d.clear(), 0), emptied(d));
  const auto ask = [&](auto p) {  // as often as it takes to build the tree for queries
    node = 0;
    for (unsigned k = 0; k < 60; ++k) node = d.find_closest(p) + 31 * node;
    return 0;
  };
  CALL(ask(p2), anything(node));
  CALL(ask(p3), anything(node));
  CALL(ask(2U), anything(node));
  const double far = 1e4;
  CALL((node = chain.find_closest(plane{far, far}), 0), anything(node));
  CALL((node = chain.find_closest(space{far, far, far}), 0), anything(node));
  CALL((node = chain.find_closest(178U), 0), anything(node));
  CALL((found.clear(), chain.find_in_box(plane{-far, -far}, plane{far, far}, found), 0), also(0), anything(found));
  CALL((found.clear(), chain.find_in_box(space{-1, -1, -1}, space{far, far, far}, found), 0), also(0), anything(found));
  CALL((found.clear(), d.find_in_box(p3, q3, found), 0), also(0), anything(found));
}

void merging(trial& t, const inputs& in) {
  nodes c = in.own(in.coords);
  matrix m = in.own(in.mesh), n = in.own(in.near), o = in.own(in.other), range[] = {m, o};
  ids map{1, 2};
  CALL(merge(c, map, 1e200), kept(c), emptied(map));
  for (const double tol : {0.0, 0.015}) {
    CALL(merge(c, map, tol), kept(c), emptied(map));
    CALL(merge(c, tol), kept(c));
    CALL(merge(c, in.list, in.more, map, tol), emptied(map));
    CALL(merge(c, in.list, map, tol), emptied(map));
    for (const unsigned mode : {0U, 1U}) {
      CALL(merge(c, range, range + 2, map, tol, mode), emptied(map), kept(range[0]), kept(range[1]));
      CALL(merge(c, range, range + 2, tol, mode), kept(range[0]), kept(range[1]));
      CALL(merge(c, m, map, tol, mode), emptied(map), kept(m));
      CALL(merge(c, m, tol, mode), kept(m));
      CALL(merge(c, m, o, map, tol, mode), emptied(map), kept(m), kept(o));
      CALL(merge(c, m, o, tol, mode), kept(m), kept(o));
    }
    CALL(merge(c, n, map, tol, 2), emptied(map), spoilt(n));  // completed passes stay
  }
  for (const bool strict : {false, true}) {
    for (matrix* x : {&m, &n}) CALL(remove_degenerated(*x, map, strict), kept(*x), anything(map));
    CALL(remove_degenerated(m, strict), kept(m));
  }
  matrix high(40, 3);
  CALL(remove_degenerated(high, map, true), kept(high), anything(map));
  CALL(simplify(c, range, range + 2, map, 0), kept(c), kept(range[0]), kept(range[1]), emptied(map));
  CALL(simplify(c, n, map, 3), kept(c), kept(n), emptied(map));
  CALL(simplify(c, n, 0), kept(c), kept(n));
  CALL(simplify(c, m, o, 0), kept(c), kept(m), kept(o));
}

void topology(trial& t, const inputs& in) {
  const element_type type = in.type;
  matrix neighbors(1, 1), boundaries = in.own(in.boundaries), edges = in.own(in.edges), none, pairs;
  ids slots = own(in.more), lists{1}, x, fresh, offsets{1};
  unsigned B = 7;
  for (const bool pair : {false, true}) CALL(get_neighbors(in.sparse, type, pair, neighbors), blank(neighbors));
  for (matrix* b : {&boundaries, &none}) {
    CALL(get_element_boundaries(in.sparse, type, *b), kept(*b));
    CALL(get_mesh_boundaries(in.sparse, in.neighbors, type, *b), kept(*b));
  }
  CALL(get_mesh_bounding_elements(in.sparse, in.neighbors, type, slots, B), kept(slots), anything(B));
  CALL(get_elements_on_boundaries(in.boundaries, in.sparse, in.neighbors, in.ancestors, type, slots, B), emptied(slots),
       anything(B));
  for (matrix* walls : {&boundaries, &none}) CALL(get_subdomains(in.sparse, in.neighbors, type, *walls, x), emptied(x));
  CALL(get_subdomains(in.neighbors, x), emptied(x));
  CALL(get_subdomains(in.sparse, in.neighbors, type, in.more, x), emptied(x));
  ids colors(in.sparse.cols());
  for (unsigned e = 0; e < colors.size(); ++e) colors[e] = e / 3 % 3;
  for (const unsigned mode : {0U, 1U, 2U}) {
    CALL(get_colors_boundaries(in.sparse, in.neighbors, type, colors, mode, slots, edges), kept(slots), kept(edges),
         kept(colors));
    CALL(get_colors_boundaries(in.sparse, in.neighbors, type, colors, mode, boundaries, pairs), kept(boundaries),
         kept(pairs), kept(colors));
  }
  ids sides = own(in.more);
  CALL(sort_elfes(in.neighbors, colors, sides, x, pairs, offsets), kept(sides), kept(x), kept(pairs), kept(offsets),
       kept(colors));
  CALL(get_ancestors(in.sparse, fresh), kept(fresh));
  CALL(get_connected_elements(in.sparse, lists, x), emptied(lists), emptied(x));
  CALL(get_node_graph(in.sparse, lists, x), emptied(lists), emptied(x));
  for (matrix* e : {&edges, &none}) {
    CALL(copy_edges(in.sparse, type, *e), kept(*e));
    CALL(copy_edges(in.both, in.both + 2, in.types, *e), kept(*e));
  }
}

void quality_and_metrics(trial& t, const inputs& in) {
  reals q{1, 2}, sizes = own(in.sizes);
  nodes tensors = in.own(in.tensors), tensors2d = in.own(in.tensors2d);
  ids x{1};
  histogram H(0, 3, 11);
  double qmin = 0;
  unsigned jmin = 0;
  CALL(shape_qualities(in.coords, in.mesh, in.type, q), emptied(q));
  CALL(jacobians(in.coords, in.mesh, in.type, q), emptied(q));
  CALL(min_quality(in.coords, in.mesh, in.type, qmin, jmin), anything(qmin), anything(jmin));
  CALL((H.clear(), edge_qualities(in.coords, in.both, in.both + 2, in.types, in.sizes, H, in.edges)), spoilt(H));
  CALL((H.clear(), edge_qualities(in.coords, in.both, in.both + 2, in.types, in.tensors, H, in.edges)), spoilt(H));
  CALL((H.clear(), edge_qualities(in.coords, in.mesh, in.type, in.sizes, H, in.edges)), spoilt(H));
  CALL((H.clear(), edge_qualities(in.coords, in.mesh, in.type, in.tensors, H, in.edges)), spoilt(H));
  CALL(first_invalid_metric(in.sizes) + 99 * first_invalid_metric(in.tensors));
  CALL(first_invalid_metric(in.list, in.sizes) + 99 * first_invalid_metric(in.list, in.tensors));
  CALL(are_valid_metrics(in.sizes) + 2 * are_valid_metrics(in.tensors));
  CALL(are_valid_metrics(in.list, in.sizes) + 2 * are_valid_metrics(in.list, in.tensors));
  CALL((x.clear(), valid_metrics(in.tensors, x), 0), also(0), anything(x));
  CALL(bound_metrics(sizes, 0.5, 1), kept(sizes));
  CALL(bound_metrics(sizes, 0.5, 1, x), kept(sizes), emptied(x));
  CALL(bound_metrics(tensors, 0.7, 1), kept(tensors));
  CALL(bound_metrics(tensors, 0.7, 1, x), kept(tensors), emptied(x));
  CALL(metrics_iso_to_aniso2d(sizes, tensors2d), kept(tensors2d));
  CALL(metrics_iso_to_aniso2d(sizes, in.frames, tensors2d), kept(tensors2d));
  CALL(metrics_iso_to_aniso3d(sizes, tensors), kept(tensors));
  CALL(metrics_aniso3d_to_aniso2d(in.tensors, in.frames, tensors2d), kept(tensors2d));
  CALL(overwrite_invalid_metrics(sizes, in.sizes), kept(sizes));
  CALL(overwrite_invalid_metrics(tensors, in.tensors), kept(tensors));
  CALL(overwrite_invalid_metrics(tensors, in.sizes), kept(tensors));
}

void along_edges(trial& t, const inputs& in) {
  const nodes &c = in.coords, &M = in.tensors;
  const matrix& m = in.mesh;
  const element_type type = in.type;
  reals generated{1, 2}, sizes = own(in.sizes);
  nodes tensors = in.own(M), other_tensors = in.own(M);
  for (unsigned i = 0; i < sizes.size(); i += 3) sizes[i] *= 100;
  for (unsigned j = 0; j < M.cols(); ++j) {
    for (unsigned k = 0; k < M.rows(); ++k) tensors(k, j) = other_tensors(k, j) *= 1 + j % 7;
  }
  ids x{1};
  double shock = 0;
  histogram H(0, 9, 11);
  for (const size_rule rule : {SIZE_MEAN, SIZE_SHORTEST}) {
    CALL(metrics_gen_iso(c, m, type, generated, rule), emptied(generated));
  }
  CALL(H_shock(c, m, type, in.sizes, shock), anything(shock));
  CALL(H_shock(c, m, type, M, shock), anything(shock));
  CALL((H.clear(), H_shock(c, m, type, in.sizes, H)), spoilt(H));
  CALL((H.clear(), H_shock(c, m, type, M, H)), spoilt(H));
  reals other_sizes = own(sizes);
  CALL(bound_metric_variations(c, m, type, sizes, 0.3), kept(sizes));
  CALL(bound_metric_variations(c, m, type, other_sizes, 0.2, x), kept(other_sizes), emptied(x));
  CALL(bound_metric_gradations(c, m, type, sizes, 1.1), kept(sizes));
  CALL(bound_metric_gradations(c, m, type, other_sizes, 1.05, x), kept(other_sizes), emptied(x));
  CALL(bound_metric_gradations(c, m, type, tensors, 1.4), kept(tensors));
  CALL(bound_metric_gradations(c, m, type, other_tensors, 1.3, x), kept(other_tensors), emptied(x));
  CALL(bound_metric_variations(c, m, type, tensors, 0.2), kept(tensors));
  CALL(bound_metric_variations(c, m, type, other_tensors, 0.1, x), kept(other_tensors), emptied(x));
}

template <unsigned N>
void of_tensors(const inputs& in, const auto& each) {
  using tensor = qel::symmetric_fixed<double, N>;
  static constexpr qel::matrix_fixed<double, 3, 2> frame{0.6, 0.8, 0, -0.3, 0.2, 0.9};
  const auto at = [&in](unsigned j) {
    tensor M;
    std::copy_n(in.tensors.column(j), M.size(), M.begin());
    return M;
  };
  const auto changed = [&](const char* name, auto change) {
    each(name, [&](unsigned j, digest& d) {
      tensor M = at(j);
      d.add(int(change(M, at(j - 1), in.sizes[j]))), d.add(M);
    });
  };
  const auto pairs = [](digest& d, const auto&... M) {
    qel::vector_fixed<double, N> w;
    qel::matrix_fixed<double, N, N> V;
    if (eigen_pairs(M..., w, V)) d.add(w), d.add(V);
  };
  each("is_valid_metric", [&](unsigned j, digest& d) { d.add(is_valid_metric(at(j))); });
  each("eigen_pairs", [&](unsigned j, digest& d) { pairs(d, at(j)), pairs(d, at(j), at(j - 1)); });
  changed("bound_metric", [](tensor& M, const tensor&, double) { return bound_metric(M, 0.6, 1.3); });
  changed("minimum_metric", [](tensor& M, const tensor& B, double) { return minimum_metric(tensor(M), B, M); });
  changed("maximum_metric", [](tensor& M, const tensor& B, double) { return maximum_metric(tensor(M), B, M); });
  changed("metric_iso_to_aniso", [](tensor& M, const tensor&, double h) { return metric_iso_to_aniso(h, M), 0; });
  each("metric_iso_to_aniso2d, metric_aniso3d_to_aniso2d", [&](unsigned j, digest& d) {
    qel::symmetric_fixed<double, 2> M;
    metric_iso_to_aniso2d(in.sizes[j], frame, M), d.add(M);
    if constexpr (N == 3) metric_aniso3d_to_aniso2d(at(j), frame, M), d.add(M);
  });
}

/// What needs no memory.
void formulas(trial& t, const inputs& in) {
  const auto each = [&](const char* name, auto f) {
    digest d;
    const auto all = [&] {
      for (unsigned j = 1; j < 40; ++j) f(j, d);
      return 0;
    };
    t.run(name, all, {anything(d)});
  };
  in.dim == 2 ? of_tensors<2>(in, each) : of_tensors<3>(in, each);
  each("edge_quality", [&](unsigned j, digest& d) {
    double q = 0;
    d.add(edge_quality(in.coords(0, j), in.sizes[j], in.sizes[j - 1], q)), d.add(q);
  });
  each("H_shock", [&](unsigned j, digest& d) {
    double shock = 0;
    d.add(H_shock(in.coords(0, j), in.sizes[j], in.sizes[j - 1], shock)), d.add(shock);
  });
  histogram H(0, 4, 7);
  each("histogram", [&](unsigned j, digest& d) {
    H.process(in.sizes[j]);
    d.add(H), d.add(H.bin(j % 7)), d.add(H.below()), d.add(H.above()), d.add(H.bin_lower(j % 7));
  });
  each("dspev", [&](unsigned j, digest& d) {
    const long n = 1 + j % 8;
    double ap[36], w[8] = {}, z[64] = {}, work[24];
    for (unsigned k = 0; k < 36; ++k) ap[k] = in.coords(0, (j + k) % 40) - in.coords(1, j);
    long info;
    d.add(qel::lapack::dspev('V', j % 3 != 0 ? 'U' : 'L', n, ap, w, z, n, work, info)), d.add(w), d.add(z);
  });
  CALL((version()[0] + nbr_nodes(in.type) + 31 * nbr_base_nodes(in.type) + 991 * element_dim(in.type) +
        nbr_boundaries(in.type)));
}

void files(trial& t, const inputs& in) {
  const mesh_files::mesh m(unsigned(in.mesh.cols()));
  const memory_file file;
  nodes a(1, 1), b(1, 1), e(1, 1);
  matrix f(1, 1), g(1, 1);
  mesh_files::mesh without_heights(unsigned(in.mesh.cols()));
  std::fill_n(without_heights.coords.data(), without_heights.coords.size(), 0.0);
  for (const mesh_files::mesh* surface : {&m, static_cast<const mesh_files::mesh*>(&without_heights)}) {
    for (unsigned format = 0; format < 2; ++format) {
      const memory_file stl(written(mesh_files::writers[format], *surface));
      std::uint64_t nbr_triangles = 0;
      CALL(STL_input(stl.path(), a, f), emptied(a), emptied(f));
      CALL(STL_input(stl.path(), a, f, nbr_triangles), emptied(a), emptied(f));
    }
  }
  const memory_file obj("vt 1 2\n" + written(mesh_files::writers[2], m));
  CALL(WavefrontOBJ_input(obj.path(), a, b, e, f, g), anything(a), anything(b), anything(e), anything(f), anything(g));
  const memory_file medit(written(mesh_files::writers[11], m)), solution(written(mesh_files::writers[15], m));
  ids offsets, references, node_references;
  dense1D<int> kinds, block_types;
  CALL(medit_input(medit.path(), a, f, offsets, block_types, references, node_references), emptied(a), emptied(f),
       emptied(offsets), emptied(block_types), emptied(references), emptied(node_references));
  CALL(medit_input(medit.path(), a, f, ELT_QUAD4), emptied(a), emptied(f));
  const memory_file vtk(written(mesh_files::writers[8], m));
  CALL(vtk_input(vtk.path(), a, f, offsets, block_types, references), emptied(a), emptied(f), emptied(offsets),
       emptied(block_types), emptied(references));
  CALL(vtk_input(vtk.path(), a, f, ELT_FACE_MIX), emptied(a), emptied(f));
  ids element_IDs;
  const memory_file deck(written(mesh_files::writers[17], m) + "CORD2R,1,,,,,,,1.\n,1.\nGRID,9999,1\n");
  CALL(NASTRAN_input(deck.path(), a, f, offsets, block_types, references, element_IDs, node_references), emptied(a),
       emptied(f), emptied(offsets), emptied(block_types), emptied(references), emptied(element_IDs),
       emptied(node_references));
  CALL(NASTRAN_input(deck.path(), a, f, ELT_FACE_MIX), emptied(a), emptied(f));
  const memory_file neutral(written(mesh_files::writers[20], m));
  CALL(FEMAP_input(neutral.path(), a, f, offsets, block_types, references, element_IDs, node_references), emptied(a),
       emptied(f), emptied(offsets), emptied(block_types), emptied(references), emptied(element_IDs),
       emptied(node_references));
  CALL(FEMAP_input(neutral.path(), a, f, ELT_FACE_MIX), emptied(a), emptied(f));
  unsigned dim = 0;
  CALL(medit_solution_input(solution.path(), dim, a, kinds), emptied(a), emptied(kinds));
  for (const auto& w : mesh_files::writers) {
    t.run(w.name, [&] { return w.write(file.path(), m); }, {also(-6), emptied(file)});
  }
  CALL(vtk_output(file.path(), in.coords, in.mesh, in.type), emptied(file));
  CALL(medit_output(file.path(), in.coords, in.mesh, in.type), emptied(file));
  CALL(NASTRAN_output(file.path(), in.coords, in.mesh, in.type), also(-6), emptied(file));
  CALL(FEMAP_output(file.path(), in.coords, in.mesh, in.type), also(-6), emptied(file));
  CALL(ensight_output(file.path(), in.coords, in.mesh, in.type), emptied(file));
  ids cells, types;
  unsigned n = 1;
  CALL((cells.clear(), types.clear(), n = 1, vtk_convert(in.mesh, in.type, n, cells, types)), emptied(cells),
       emptied(types), kept(n));
}

}  // namespace

std::unique_ptr<inputs> make_inputs(element_type type, unsigned dim, unsigned count) {
  auto made = std::make_unique<inputs>();
  inputs& in = *made;
  random_meshes::generator random(type * 10 + dim + count);
  const unsigned n = 40 + count / 2;
  in.dim = dim, in.type = type, in.gaps = (type + dim) % 2 == 1;
  in.coords = nodes(dim, n), in.tensors = nodes(dim == 2 ? 3 : 6, n), in.frames = nodes(6, n, 0.5);
  in.tensors2d = nodes(3, n), in.sizes = reals(n);
  for (unsigned j = 0; j < n; ++j) {
    for (unsigned k = 0; k < dim; ++k)
      in.coords(k, j) = random_meshes::below(random, 5) + 0.01 * (random() % 3) + (j % 3 == 0 ? real(random) : 0);
    for (unsigned k = 0; k < in.tensors.rows(); ++k)
      in.tensors(k, j) = k == 0 || k == 2 || k == 5 ? random() % 4 * (1 + real(random)) : 0.1 * real(random);
    in.sizes[j] = (double(random() % 5) - 1) * (1 + real(random) / 9);
  }
  in.mesh = make_mesh(random, type, count, n), in.other = make_mesh(random, ELT_QUAD4, count / 2 + 1, n);
  in.near = make_mesh(random, ELT_TRIA3, count, n), in.edges = make_mesh(random, ELT_EDGE2, 3, n);
  in.both[0] = in.mesh, in.both[1] = in.other;
  in.types = {type, ELT_QUAD4};
  in.sparse = random_meshes::deep_copy(in.mesh);
  for (unsigned& node : in.sparse.as_vector()) node = node == ~0U ? node : node * (count % 2 == 0 ? 601 : 1);
  in.list = ids(count + 3), in.more = ids(count / 2 + 2);
  for (ids* list : {&in.list, &in.more}) {
    for (unsigned& id : *list) id = random_meshes::below(random, n);
  }
  if (get_neighbors(in.sparse, type, true, in.neighbors) == 0) {
    (void)get_mesh_boundaries(in.sparse, in.neighbors, type, in.boundaries);
    (void)get_ancestors(in.sparse, in.ancestors);
  }
  (void)in.tree.reinit(in.coords, in.list);
  constexpr unsigned links = 90;  // a spine to the right, of which each node has a left child
  in.chain_coords = nodes(dim, 2 * links);
  for (unsigned j = 0; j < 2 * links; ++j) {
    for (unsigned k = 0; k < dim; ++k) in.chain_coords(k, j) = j % 2 == 0 ? j : j - 1.5;
  }
  (void)in.chain.reinit(in.chain_coords, ids{0});
  for (unsigned j = 2; j < 2 * links; j += 2) in.chain.insert(ids{j});
  for (unsigned j = 1; j < 2 * links; j += 2) in.chain.insert(ids{j});
  return made;
}

const std::vector<call_body> all_calls = {arrays,   index_tools,         transforms,  detector, merging,
                                          topology, quality_and_metrics, along_edges, formulas, files};
