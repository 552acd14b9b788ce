// Distribution of items over buckets by counting: two passes, no comparisons, stable.
#ifndef QEL_GRIDWORK_CORE_DISTRIBUTE_H
#define QEL_GRIDWORK_CORE_DISTRIBUTE_H

#include <cstdint>

#include "core/check.h"
#include "qel/dense.h"

namespace qel::gridwork::detail {

/// Sorts items into buckets.
///
/// `walk(visit)` calls visit(bucket, item) for every item, in the same order each time; there are less than 2^32 of
/// them. `items` and `offsets` become the compressed rows: bucket b has the items from offsets[b] up to offsets[b + 1].
/// False when memory ran out.
template <class Walk>
[[nodiscard]] bool distribute(std::uint64_t buckets, Walk walk, dense1D<unsigned>& items, dense1D<unsigned>& offsets) {
  // Counts go two places on, so that after the sums next[b] is where bucket b is to be written. When all items are
  // placed, it is where bucket b + 1 begins.
  offsets.clear();
  if (!offsets.resize(buckets + 2, 0)) return false;
  unsigned* next = offsets.data() + 1;
  walk([=](std::uint64_t bucket, unsigned) {
    QEL_GRIDWORK_CHECK(bucket < buckets);
    ++next[bucket + 1];
  });
  for (std::uint64_t b = 2; b <= buckets; ++b) next[b] += next[b - 1];
  if (!items.resize(next[buckets])) return false;
  unsigned* out = items.data();
  walk([next, out](std::uint64_t bucket, unsigned item) { out[next[bucket]++] = item; });
  QEL_GRIDWORK_CHECK(buckets == 0 || offsets[buckets] == items.size());
  return offsets.resize(buckets + 1);
}

}  // namespace qel::gridwork::detail

#endif
