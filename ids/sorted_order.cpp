// Positions in increasing order of the values there.
#include "core/distribute.h"
#include "core/outputs.h"
#include "core/result.h"
#include "qel/gridwork/ids.h"

namespace qel::gridwork {

using namespace detail;

namespace {

bool sort_positions(const dense1D<unsigned>& values, dense1D<unsigned>& order, dense1D<unsigned>& offsets) {
  if (values.empty()) return offsets.resize(1, 0);
  const unsigned max = max_ID(values);
  const std::uint64_t count = values.size();
  if (max >= none - 3 || count >= none) return false;
  const unsigned* value = values.data();
  const auto walk = [=](auto visit) {
    for (unsigned i = 0; i < count; ++i) {
      if (value[i] != none) visit(value[i], i);
    }
  };
  return distribute(std::uint64_t{max} + 1, walk, order, offsets);
}

int sort(const dense1D<unsigned>& values, dense1D<unsigned>& order, dense1D<unsigned>& offsets) {
  order.clear();
  offsets.clear();
  if (sort_positions(values, order, offsets)) return 0;
  order.clear();
  offsets.clear();
  return out_of_memory;
}

}  // namespace

int get_sorted_order(const dense1D<unsigned>& values, dense1D<unsigned>& order, dense1D<unsigned>& offsets) {
  return sort(values, output(order, values), output(offsets, values, order));
}

}  // namespace qel::gridwork
