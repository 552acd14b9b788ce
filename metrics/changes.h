// Which nodes changed.
#ifndef QEL_GRIDWORK_METRICS_CHANGES_H
#define QEL_GRIDWORK_METRICS_CHANGES_H

#include "core/result.h"
#include "qel/dense.h"

namespace qel::gridwork::detail {

/// Lists the nodes below n for which is_changed(node), if a list is wanted, which is empty, then calls write(node) for
/// them: memory is asked for before the first write. Their number, or the code when memory ran out.
template <class IsChanged, class Write>
int store_changes(std::uint64_t n, IsChanged is_changed, Write write, dense1D<unsigned>* ids) {
  const auto visit = [n, is_changed](auto action) {
    for (std::uint64_t i = 0; i < n; ++i) {
      if (is_changed(i)) action(static_cast<unsigned>(i));
    }
  };
  std::uint64_t count = 0;
  visit([&count](unsigned) { ++count; });
  if (ids != nullptr && !ids->resize(count)) return out_of_memory;
  visit([write, next = ids != nullptr ? ids->data() : nullptr](unsigned i) mutable {
    if (next != nullptr) *next++ = i;
    write(i);
  });
  return static_cast<int>(count);
}

}  // namespace qel::gridwork::detail

#endif
