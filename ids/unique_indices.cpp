// Distinct indices in order of first appearance, and their number.
#include <algorithm>
#include <numeric>

#include "core/columns.h"
#include "core/limits.h"
#include "core/outputs.h"
#include "core/result.h"
#include "ids/growing_index_set.h"
#include "qel/gridwork/ids.h"

namespace qel::gridwork {

using namespace detail;

namespace {

/// The input of all overloads: a list, or an array of matrices.
struct index_source {
  const dense1D<unsigned>* list = nullptr;
  const dense2D<unsigned>* first = nullptr;
  const dense2D<unsigned>* last = nullptr;

  std::uint64_t count() const noexcept {
    return std::accumulate(first, last, list != nullptr ? list->size() : std::uint64_t{0},
                           [](std::uint64_t sum, const dense2D<unsigned>& matrix) { return sum + matrix.size(); });
  }

  /// Calls action(begin, end) for runs of entries as long as it returns true. False when it did not.
  template <class Action>
  bool for_each_run(Action action) const {
    if (list != nullptr && !detail::for_each_run(*list, action)) return false;
    return std::all_of(first, last,
                       [action](const dense2D<unsigned>& matrix) { return detail::for_each_run(matrix, action); });
  }
};

/// Appends the entries of a run that are not in the set yet, growing the list by doubling. Where it cannot grow, those
/// that have no room are dropped. False when the set could not grow.
bool append_new(dense1D<unsigned>& ids, const unsigned* begin, const unsigned* end, growing_index_set& seen) {
  while (begin != end) {
    const std::uint64_t size = ids.size();
    std::uint64_t portion = std::min(static_cast<std::uint64_t>(end - begin), limits::unique_portion);
    if (!ids.reserve(size + portion, 2)) portion = std::min(portion, ids.capacity() - size);
    if (portion == 0) return true;
    const unsigned* stop = begin + portion;
    unsigned* next = ids.data() + size;
    if (!seen.insert_run(begin, stop, [&next](unsigned id) { *next++ = id; })) return false;
    if (!ids.resize(static_cast<std::uint64_t>(next - ids.data()))) return true;
    begin = stop;
  }
  return true;
}

int append_unique(appended<dense1D<unsigned>>&& list, const index_source& source, const dense1D<unsigned>& excluded) {
  if (!list.keep_entries()) return out_of_memory;
  dense1D<unsigned>& ids = list;
  const std::uint64_t old_size = ids.size();
  growing_index_set seen;
  if (!seen.prepare(source.count() + excluded.size())) return out_of_memory;
  if (!seen.insert_run(excluded.begin(), excluded.end(), [](unsigned) {})) return out_of_memory;
  if (source.for_each_run(
          [&](const unsigned* begin, const unsigned* end) { return append_new(ids, begin, end, seen); })) {
    return 0;
  }
  static_cast<void>(ids.resize(old_size));  // shrinking cannot fail
  return out_of_memory;
}

}  // namespace

int unique_indices(dense1D<unsigned>& ids, const dense1D<unsigned>& values, dense1D<unsigned> excluded) {
  return append_unique(appended(ids, values, excluded), {&values, nullptr, nullptr}, excluded);
}

int unique_indices(dense1D<unsigned>& ids, const dense2D<unsigned>& connectivity, dense1D<unsigned> excluded) {
  return append_unique(appended(ids, connectivity, excluded), {nullptr, &connectivity, &connectivity + 1}, excluded);
}

int unique_indices(dense1D<unsigned>& ids, const dense2D<unsigned>* first, const dense2D<unsigned>* last,
                   dense1D<unsigned> excluded) {
  if (last < first) return -3;
  return append_unique(appended(ids, input_matrices{first, last}, excluded), {nullptr, first, last}, excluded);
}

int count_unique_indices(const dense2D<unsigned>& connectivity) {
  return count_unique_indices(&connectivity, &connectivity + 1);
}

int count_unique_indices(const dense2D<unsigned>* first, const dense2D<unsigned>* last) {
  if (last < first) return -2;
  const index_source source{nullptr, first, last};
  growing_index_set seen;
  int count = 0;
  const bool done =
      seen.prepare(source.count()) && source.for_each_run([&](const unsigned* begin, const unsigned* end) {
        return seen.insert_run(begin, end, [&count](unsigned) { ++count; });
      });
  return done ? count : out_of_memory;
}

}  // namespace qel::gridwork
