// node_detector, the merges and what clears up behind them, beside their slow models.
#include <set>

#include "fuzz/input.h"

namespace {

using namespace fuzz;
using reference::columns;
using reference::id_list;
using reference::to_array;
using reference::to_list;
using matrices = std::vector<dense2D<unsigned>>;
using plane = qel::vector_fixed<double, 2>;
using space = qel::vector_fixed<double, 3>;

/// Nodes of any coordinates, or of a kind that is unpleasant for searches.
struct nodes {
  dense2D<double> coords;
  double step;  ///< a scale for distances

  explicit nodes(input& in) {
    const unsigned dim = in.flag() ? 2 : 3, n = in.below(8) == 0 ? 600 : in.below(150);
    if (in.below(3) == 0) {
      coords = in.coords(dim, n % 60), step = 0.5;
    } else {
      const auto all = random_meshes::clouds(dim, n);
      const auto& cloud = all[in.below(static_cast<unsigned>(all.size()))];
      coords = in.view(cloud.coords), step = cloud.step;
    }
  }

  unsigned size() const { return static_cast<unsigned>(coords.cols()); }
};

double tolerance(input& in, double step) {
  const double all[] = {0,
                        1e-3 * step,
                        0.5 * step,
                        step,
                        1.5 * step,
                        2 * step,
                        1e3 * step,
                        std::numeric_limits<double>::max(),
                        random_meshes::infinity,
                        std::abs(in.real())};
  const double tol = all[in.below(std::size(all))];
  return tol >= 0 ? tol : 0;
}

/// Elements on n nodes, most of them near by index; or any.
dense2D<unsigned> elements(input& in, unsigned n) {
  const unsigned rows = in.below(8) == 0 ? 20 + in.below(20) : 1 + in.below(9), cols = in.below(80);
  if (in.flag()) return in.nodes(rows, cols % 12, n);
  random_meshes::generator random(in.raw<std::uint16_t>());
  return in.view(random_meshes::connectivity(random, rows, n == 0 ? 0 : cols, n));
}

/// A coordinate on, near or far from those of the nodes.
double near(input& in, const nodes& given) {
  if (given.size() == 0 || in.below(16) == 0) return in.real();
  const double step = given.step, offsets[] = {0, 0, step, -step, step / 2, -step / 2, step / 3, 9 * step};
  const unsigned row = in.below(static_cast<unsigned>(given.coords.rows()));
  return given.coords(row, in.raw<std::uint16_t>() % given.size()) + offsets[in.below(8)];
}

id_list box(const node_detector& detector, const auto& low, const auto& high) {
  dense1D<unsigned> found{77};
  detector.find_in_box(low, high, found);
  CHECK(found[0] == 77);
  return id_list(found.begin() + 1, found.end());
}

void ask(input& in, const node_detector& detector, const reference::tree& tree, const nodes& given) {
  CHECK(detector.size() == tree.size());
  for (unsigned k = in.below(24); k > 0; --k) {
    const unsigned node = in.raw<std::uint16_t>() % (given.size() + 2);
    reference::point p = {near(in, given), near(in, given), near(in, given)}, low = p, high = p;
    if (in.flag() && node < given.size()) p = reference::position(given.coords, node);
    const double sizes[] = {0, given.step, 3 * given.step, 20 * given.step, random_meshes::infinity, -given.step};
    const double size = sizes[in.below(6)];
    for (unsigned i = 0; i < 3; ++i) low[i] = in.flag() ? p[i] - size : p[i], high[i] = p[i] + size;
    CHECK(detector.find_closest(node) == tree.find_closest(node));
    CHECK(detector.find_closest(space{p[0], p[1], p[2]}) == tree.find_closest(p));
    CHECK(detector.find_closest(plane{p[0], p[1]}) == tree.find_closest({p[0], p[1], 0}));
    const auto in_space = box(detector, space{low[0], low[1], low[2]}, space{high[0], high[1], high[2]});
    CHECK(box(detector, plane{low[0], low[1]}, plane{high[0], high[1]}) ==
          tree.find_in_box({low[0], low[1], 0}, {high[0], high[1], 0}));
    if (given.coords.rows() == 2) low[2] = high[2] = 0;
    CHECK(in_space == tree.find_in_box(low, high));
  }
}

/// Insertions of lists and of elements while columns are appended; what is made of matrices.
void detect(input& in, nodes given) {
  const dense2D<double> all = random_meshes::deep_copy(given.coords);
  const auto rows = all.rows();
  const id_list start = in.list(in.below(40), given.size() / 2);
  const matrices m = {elements(in, given.size()), dense2D<unsigned>(), elements(in, given.size())};
  const bool whole = in.flag(), of_elements = in.flag();
  given.coords = given.coords.sub_matrix(0, 0, rows, whole || of_elements ? all.cols() : all.cols() / 2);
  reference::tree tree(given.coords);
  tree.insert(whole ? reference::identity(given.size()) : of_elements ? reference::unique(m) : start);
  node_detector detector(given.coords, to_array(start));
  if (whole) detector.reinit(given.coords);
  if (!whole && of_elements) detector.reinit(given.coords, m.data(), m.data() + 3);
  const node_detector copy(detector);
  const reference::tree tree_then = tree;
  for (unsigned round = 1 + in.below(4); round > 0; --round) {
    const bool element_list = in.below(4) == 0 && m[0].cols() != 0 && check_IDs(m[0], given.size());
    id_list more = in.list(in.below(8) == 0 ? 900 : in.below(80), given.size() + 1);
    if (element_list) more = reference::unique({m[0]});
    const unsigned added = element_list ? detector.insert(m[0]) : detector.insert(to_array(more));
    CHECK(added == tree.insert(more));
    ask(in, detector, tree, given);
    for (unsigned k = in.below(50); k > 0 && given.size() < all.cols(); --k) {
      CHECK(given.coords.push_back_column(all.column(given.size())));
    }
  }
  ask(in, copy, tree_then, given);
}

void merge_lists(input& in, const nodes& given) {
  const dense2D<double>& coords = given.coords;
  const unsigned n = given.size();
  const double tol = tolerance(in, given.step);
  const id_list a = in.list(in.below(90), n), b = in.list(in.below(90), n), all = reference::identity(n);
  const auto one = reference::merge_near(coords, a, a, tol), two = reference::merge_near(coords, a, b, tol),
             every = reference::merge_near(coords, all, all, tol);
  dense1D<unsigned> map{1};
  CHECK(merge(coords, to_array(a), map, tol) == one.count && to_list(map) == one.new_ids);
  CHECK(merge(coords, to_array(a), to_array(b), map, tol) == two.count && to_list(map) == two.new_ids);
  dense2D<double> moved = coords, without_map = coords, expected = random_meshes::deep_copy(coords);
  const dense2D<double> before = random_meshes::deep_copy(coords);
  for (unsigned j = 0; j < n; ++j) std::copy_n(before.column(every.new_ids[j]), coords.rows(), expected.column(j));
  CHECK(merge(moved, map, tol) == every.count && to_list(map) == every.new_ids);
  CHECK(merge(without_map, tol) == every.count && random_meshes::same_bits(without_map, expected));
  CHECK(random_meshes::same_bits(moved, expected) && random_meshes::same_bits(coords, before));  // in new blocks
}

void merge_elements(input& in, const nodes& given) {
  const matrices m = {elements(in, given.size()), elements(in, given.size()), elements(in, given.size())};
  const dense2D<double>& coords = given.coords;
  const double tol = tolerance(in, given.step);
  const unsigned mode = in.below(3);
  const auto expect = [&](const matrices& some, auto door) {
    matrices expected = random_meshes::deep_copies(some), views = some, copies = random_meshes::deep_copies(some);
    for (auto& view : views) view = random_meshes::with_gaps(view, 1U);
    const matrices other_views = views;
    const auto result = reference::merge(coords, expected, tol, mode);
    dense1D<unsigned> map{1};
    CHECK(door(views, map) == result.count && door(copies) == result.count);
    CHECK(to_list(map) == result.new_ids && views == expected && copies == expected);
    CHECK(other_views == expected);  // in place
  };
  expect(m, [&](auto& x, auto&... map) { return merge(coords, x.data(), x.data() + 3, map..., tol, mode); });
  expect({m[0], m[2]}, [&](auto& x, auto&... map) { return merge(coords, x[0], x[1], map..., tol, mode); });
  expect({m[1]}, [&](auto& x, auto&... map) { return merge(coords, x[0], map..., tol, mode); });
}

/// The definition: used or early nodes stay, in their order.
void clear_nodes(input& in, const nodes& given) {
  const dense2D<double>& coords = given.coords;
  matrices elements_of(1 + in.below(3));
  for (auto& m : elements_of) m = elements(in, given.size());
  const id_list used_ids = reference::unique(elements_of);
  const std::set<unsigned> used(used_ids.begin(), used_ids.end());
  const unsigned n = given.size(), first = in.raw<std::uint16_t>() % (n + 1);
  dense2D<double> kept(coords.rows(), 0);
  id_list map;
  for (unsigned i = 0; i < n; ++i) {
    const bool stays = i < first || used.count(i) != 0;
    map.push_back(stays ? static_cast<unsigned>(kept.cols()) : none);
    CHECK(!stays || kept.push_back_column(coords.column(i)));
  }
  if (n == 0 || first == n || elements_of[0].empty()) return;
  matrices expected = random_meshes::deep_copies(elements_of);
  for (auto& m : expected) {
    for (unsigned& id : m.as_vector()) id = id == none ? none : map[id];
  }
  const auto expect = [&](auto door, auto&... new_ids) {
    dense2D<double> work = random_meshes::with_gaps(coords, 1.0);
    matrices m = elements_of;
    for (auto& view : m) view = random_meshes::with_gaps(view, 0U);
    const matrices other_views = m;
    CHECK(door(work, m, new_ids...) == static_cast<int>(n - kept.cols()) && random_meshes::same_bits(work, kept));
    CHECK(m == expected && other_views == expected);  // in place
    CHECK(((to_list(new_ids) == map) && ...));
  };
  dense1D<unsigned> new_ids{1};
  expect([&](auto& c, auto& m, auto& ids) { return simplify(c, m.data(), m.data() + m.size(), ids, first); }, new_ids);
  const auto one = [&](auto& c, auto& m, auto&... ids) { return simplify(c, m[0], ids..., first); };
  if (elements_of.size() == 1) expect(one, new_ids), expect(one);
  if (elements_of.size() == 2) expect([&](auto& c, auto& m) { return simplify(c, m[0], m[1], first); });
}

/// Elements of any height, on few nodes or on many.
void clear_elements(input& in) {
  const unsigned rows = 1 + in.below(70), ranges[] = {2, rows, 3 * rows, rows * rows, none};
  random_meshes::generator random(in.raw<std::uint16_t>());
  const bool strict = in.flag();
  const auto m = in.view(random_meshes::connectivity(random, in.flag() ? rows : 1 + rows % 12, 60, ranges[rows % 5]));
  std::vector<id_list> kept;
  id_list map;
  for (const id_list& element : columns(m)) {
    const std::set<unsigned> distinct(element.begin(), element.end());
    const auto nones = static_cast<std::size_t>(std::count(element.begin(), element.end(), none));
    const bool twice = distinct.size() - distinct.count(none) != element.size() - nones;
    map.push_back(twice || (strict && nones > 1) ? none : static_cast<unsigned>(kept.size()));
    if (map.back() != none) kept.push_back(element);
  }
  dense1D<unsigned> new_elements{3, 3};
  dense2D<unsigned> work = m, without_map = random_meshes::deep_copy(m);
  const int removed = static_cast<int>(m.cols() - kept.size());
  CHECK(remove_degenerated(work, new_elements, strict) == removed && to_list(new_elements) == map);
  CHECK(remove_degenerated(without_map, strict) == removed && columns(without_map) == kept && work == without_map);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  input in(data, size);
  const unsigned task = in.below(5);
  if (task == 4) return clear_elements(in), 0;
  const nodes given(in);
  if (task == 0) detect(in, given);
  if (task == 1) merge_lists(in, given);
  if (task == 2) merge_elements(in, given);
  if (task == 3) clear_nodes(in, given);
  return 0;
}
