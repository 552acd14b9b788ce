#include "core/result.h"
#include "qel/gridwork/ids.h"

namespace qel::gridwork {
namespace {

int fail(dense1D<unsigned>& order, dense1D<unsigned>& offsets) {
  order.clear();
  offsets.clear();
  return out_of_memory;
}

}  // namespace

int get_sorted_order(const dense1D<unsigned>& values, dense1D<unsigned>& order, dense1D<unsigned>& offsets) {
  order.clear();
  offsets.clear();
  if (values.empty()) return offsets.resize(1, 0) ? 0 : fail(order, offsets);
  const unsigned max = max_ID(values);
  if (max >= none - 3 || values.size() >= none) return fail(order, offsets);
  if (!order.resize(values.size()) || !offsets.resize(std::uint64_t{max} + 4, 0)) return fail(order, offsets);

  // Counts are kept two places on, so that after the sums next[v] is where value v goes and, after the placing, where
  // value v + 1 starts. `none` would count and go past the end; it gets the last slot, which is cut off.
  const std::uint64_t n = values.size();
  const unsigned* value = values.data();
  unsigned* count = offsets.data() + 2;
  for (std::uint64_t i = 0; i < n; ++i) ++count[value[i] == none ? max + 1 : value[i]];
  for (unsigned v = 1; v <= max; ++v) count[v] += count[v - 1];
  const unsigned used = count[max];
  unsigned* next = offsets.data() + 1;
  unsigned* position = order.data();
  for (std::uint64_t i = 0; i < n; ++i) {
    if (value[i] != none) position[next[value[i]]++] = static_cast<unsigned>(i);
  }
  return offsets.resize(std::uint64_t{max} + 2) && order.resize(used) ? 0 : fail(order, offsets);
}

}  // namespace qel::gridwork
