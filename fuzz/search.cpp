// node_detector and merge beside their slow models.
#include "fuzz/input.h"
#include "tests/reference.h"

namespace {

using namespace fuzz;
using reference::id_list;
using reference::to_array;
using reference::to_list;

void ask(input& in, const node_detector& detector, const reference::tree& tree, const dense2D<double>& coords) {
  CHECK(detector.size() == tree.size());
  for (unsigned k = in.below(12); k > 0; --k) {
    auto low = in.reals<qel::vector_fixed<double, 3>>(), high = in.reals<qel::vector_fixed<double, 3>>();
    const unsigned node = in.below(60);
    if (in.flag() && node < coords.cols()) std::copy_n(coords.column(node), coords.rows(), low.begin());
    const qel::vector_fixed<double, 2> low2{low[0], low[1]}, high2{high[0], high[1]};
    CHECK(detector.find_closest(node) == tree.find_closest(node));
    CHECK(detector.find_closest(low) == tree.find_closest({low[0], low[1], low[2]}));
    CHECK(detector.find_closest(low2) == tree.find_closest({low[0], low[1], 0}));
    dense1D<unsigned> in_box, in_flat_box;
    detector.find_in_box(low, high, in_box);
    detector.find_in_box(low2, high2, in_flat_box);
    if (coords.rows() == 2) low[2] = high[2] = 0;
    CHECK(to_list(in_box) == tree.find_in_box({low[0], low[1], low[2]}, {high[0], high[1], high[2]}));
    CHECK(to_list(in_flat_box) == tree.find_in_box({low[0], low[1], 0}, {high[0], high[1], 0}));
  }
}

void detect(input& in, dense2D<double> coords) {
  const auto rows = coords.rows(), all = coords.cols();
  CHECK(coords.resize(rows, all / 2));
  node_detector detector(coords, dense1D<unsigned>());
  reference::tree tree(coords);
  for (unsigned round = 1 + in.below(4); round > 0; --round) {
    const id_list more = in.list(in.below(80), static_cast<unsigned>(coords.cols()) + 1);
    CHECK(detector.insert(to_array(more)) == tree.insert(more));
    ask(in, detector, tree, coords);
    for (unsigned k = in.below(4); k > 0 && coords.cols() < all; --k) {
      CHECK(coords.push_back_column(in.reals<qel::vector_fixed<double, 3>>().data()));
    }
  }
}

void merge_lists(input& in, const dense2D<double>& coords, double tol) {
  const auto n = static_cast<unsigned>(coords.cols());
  const id_list a = in.list(in.below(60), n), b = in.list(in.below(60), n), all = reference::identity(n);
  const auto two = reference::merge_near(coords, a, b, tol), every = reference::merge_near(coords, all, all, tol);
  dense1D<unsigned> map{1};
  CHECK(merge(coords, to_array(a), to_array(b), map, tol) == two.count && to_list(map) == two.new_ids);
  dense2D<double> moved = coords, expected = deep_copy(coords);
  for (unsigned j = 0; j < n; ++j) std::copy_n(coords.column(every.new_ids[j]), coords.rows(), expected.column(j));
  CHECK(merge(moved, map, tol) == every.count && to_list(map) == every.new_ids);
  CHECK(random_meshes::same_bits(moved, expected));
}

void merge_elements(input& in, const dense2D<double>& coords, double tol) {
  const auto n = static_cast<unsigned>(coords.cols());
  const dense2D<unsigned> a = in.nodes(1 + in.below(4), in.below(12), n), b = in.nodes(1 + in.below(9), in.below(8), n);
  for (unsigned mode = 0; mode < 3; ++mode) {
    std::vector<dense2D<unsigned>> ours = {deep_copy(a), deep_copy(b)}, expected = random_meshes::deep_copies(ours);
    const auto result = reference::merge(coords, expected, tol, mode);
    dense1D<unsigned> map{1};
    CHECK(merge(coords, ours[0], ours[1], map, tol, mode) == result.count);
    CHECK(to_list(map) == result.new_ids && ours == expected);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  input in(data, size);
  const unsigned task = in.below(3);
  const dense2D<double> coords = in.coords(in.flag() ? 2 : 3, in.below(60));
  const double tol = std::abs(in.real());
  if (task == 0) detect(in, deep_copy(coords));
  if (task == 1 && tol >= 0) merge_lists(in, coords, tol);
  if (task == 2 && tol >= 0) merge_elements(in, coords, tol);
  return 0;
}
