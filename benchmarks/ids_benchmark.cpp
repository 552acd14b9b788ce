// Distinct indices and sorted order, beside the plain standard-library solutions.
#include <algorithm>
#include <unordered_set>
#include <vector>

#include "compare.h"
#include "inputs.h"

namespace {

using qel::dense1D;
using qel::dense2D;

std::size_t unique_by_hash_set(const dense2D<unsigned>& connectivity) {
  std::unordered_set<unsigned> seen;
  std::vector<unsigned> ids;
  for (std::uint64_t i = 0; i < connectivity.size(); ++i) {
    if (seen.insert(connectivity.data()[i]).second) ids.push_back(connectivity.data()[i]);
  }
  return ids.size();
}

unsigned order_by_stable_sort(const dense2D<unsigned>& connectivity) {
  std::vector<unsigned> order(connectivity.size());
  for (unsigned i = 0; i < order.size(); ++i) order[i] = i;
  const unsigned* values = connectivity.data();
  std::stable_sort(order.begin(), order.end(), [&](unsigned a, unsigned b) { return values[a] < values[b]; });
  return order.back();
}

void add_benchmarks(const std::string& order, const dense2D<unsigned>& connectivity) {
  add_benchmark("unique_indices " + order, "ours", [=] {
    dense1D<unsigned> ids;
    qel::gridwork::unique_indices(ids, connectivity);
    return ids.size();
  });
  add_benchmark("unique_indices " + order, "std::unordered_set", [=] { return unique_by_hash_set(connectivity); });
  add_benchmark("get_sorted_order " + order, "ours", [=] {
    dense1D<unsigned> positions;
    dense1D<unsigned> offsets;
    qel::gridwork::get_sorted_order(connectivity.as_vector(), positions, offsets);
    return positions.size();
  });
  add_benchmark("get_sorted_order " + order, "std::stable_sort", [=] { return order_by_stable_sort(connectivity); });
}

}  // namespace

int main(int argc, char** argv) {
  add_benchmarks("natural", inputs::tetrahedra(55, false));
  add_benchmarks("shuffled", inputs::tetrahedra(55, true));
  return run_benchmarks(argc, argv);
}
