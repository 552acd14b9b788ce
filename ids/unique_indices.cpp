// Distinct indices in order of first appearance, and their number.
#include <algorithm>

#include "core/columns.h"
#include "core/index_set.h"
#include "core/result.h"
#include "qel/gridwork/ids.h"

namespace qel::gridwork {
namespace {

/// The input of all overloads: a list, or an array of matrices.
struct index_source {
  const dense1D<unsigned>* list = nullptr;
  const dense2D<unsigned>* first = nullptr;
  const dense2D<unsigned>* last = nullptr;

  template <class Action>
  void for_each_run(Action action) const {
    const auto run = [&](const unsigned* begin, const unsigned* end) {
      action(begin, end);
      return true;
    };
    if (list != nullptr) gridwork::for_each_run(*list, run);
    for (const dense2D<unsigned>* matrix = first; matrix != last; ++matrix) gridwork::for_each_run(*matrix, run);
  }
};

/// Upper bounds that decide which kind of set serves.
struct index_statistics {
  std::uint64_t count = 0;
  unsigned bound = 0;  // largest index + 1; `none` wraps to 0

  explicit index_statistics(const index_source& source) {
    source.for_each_run([this](const unsigned* begin, const unsigned* end) {
      bound = std::max(bound, index_bound(begin, end));
      count += static_cast<std::uint64_t>(end - begin);
    });
  }
};

/// Appends entries that a set has not held yet, growing the list by doubling.
class unique_appender {
 public:
  explicit unique_appender(dense1D<unsigned>& ids) : ids_(ids) {}

  template <class Set>
  void append(const unsigned* begin, const unsigned* end, Set& seen) {
    constexpr std::ptrdiff_t chunk = 4096;
    while (begin != end) {
      const unsigned* stop = end - begin > chunk ? begin + chunk : end;
      const std::uint64_t size = ids_.size();
      const auto most = static_cast<std::uint64_t>(stop - begin);
      if (!ids_.reserve(size + most, 2)) return;
      const std::uint64_t added = append_chunk(begin, stop, seen, ids_.data() + size);
      if (!ids_.resize(size + added)) return;
      begin = stop;
    }
  }

 private:
  template <class Set>
  static std::uint64_t append_chunk(const unsigned* begin, const unsigned* end, Set& seen, unsigned* out) {
    unsigned* next = out;
    seen.insert_run(begin, end, [&next](unsigned id) { *next++ = id; });
    return static_cast<std::uint64_t>(next - out);
  }

  dense1D<unsigned>& ids_;
};

/// Calls action(set) with an empty set of the kind that suits the input. False when memory ran out.
template <class Action>
bool with_index_set(const index_statistics& statistics, std::uint64_t extra, Action action) {
  if (flags_are_few(statistics.bound, statistics.count)) {
    index_flags set;
    if (!set.reset(statistics.bound)) return false;
    action(set);
    return true;
  }
  index_hash_set set;
  if (!set.reset(statistics.count + extra)) return false;
  action(set);
  return true;
}

int append_unique(dense1D<unsigned>& ids, const index_source& source, const dense1D<unsigned>& excluded) {
  const index_statistics statistics(source);
  const bool done = with_index_set(statistics, excluded.size(), [&](auto& seen) {
    for (const unsigned id : excluded) {
      if (id < statistics.bound) seen.insert(id);
    }
    unique_appender appender(ids);
    source.for_each_run([&](const unsigned* begin, const unsigned* end) { appender.append(begin, end, seen); });
  });
  return done ? 0 : out_of_memory;
}

}  // namespace

int unique_indices(dense1D<unsigned>& ids, const dense1D<unsigned>& values, dense1D<unsigned> excluded) {
  const dense1D<unsigned> input(values);  // stays as it is when `ids` is the same array
  return append_unique(ids, {&input, nullptr, nullptr}, excluded);
}

int unique_indices(dense1D<unsigned>& ids, const dense2D<unsigned>& connectivity, dense1D<unsigned> excluded) {
  return append_unique(ids, {nullptr, &connectivity, &connectivity + 1}, excluded);
}

int unique_indices(dense1D<unsigned>& ids, const dense2D<unsigned>* first, const dense2D<unsigned>* last,
                   dense1D<unsigned> excluded) {
  if (last < first) return -3;
  return append_unique(ids, {nullptr, first, last}, excluded);
}

int count_unique_indices(const dense2D<unsigned>& connectivity) {
  return count_unique_indices(&connectivity, &connectivity + 1);
}

int count_unique_indices(const dense2D<unsigned>* first, const dense2D<unsigned>* last) {
  if (last < first) return -2;
  const index_source source{nullptr, first, last};
  const index_statistics statistics(source);
  int count = 0;
  const bool done = with_index_set(statistics, 0, [&](auto& seen) {
    source.for_each_run([&](const unsigned* begin, const unsigned* end) {
      seen.insert_run(begin, end, [&count](unsigned) { ++count; });
    });
  });
  return done ? count : out_of_memory;
}

}  // namespace qel::gridwork
