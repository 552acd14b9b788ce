// Largest index, bound check, shift, renumbering and permutation.
#include <algorithm>

#include "core/columns.h"
#include "core/outputs.h"
#include "core/result.h"
#include "qel/gridwork/ids.h"

namespace qel::gridwork {

using namespace detail;

namespace {

template <class Array>
unsigned largest_ID(const Array& ids) {
  if (ids.empty()) return none;
  const unsigned bound = index_bound(ids);
  return bound == 0 ? 0 : bound - 1;
}

template <class Array>
bool all_none_or_below(const Array& ids, unsigned n) {
  if (n == none) return true;
  return for_each_run(ids, [n](const unsigned* begin, const unsigned* end) { return index_bound(begin, end) <= n; });
}

template <class Array>
void shift_used(Array& ids, unsigned shift) {
  change_each_run(ids, [shift](unsigned* begin, unsigned* end) {
    for (unsigned* p = begin; p != end; ++p) *p = *p == none ? none : *p + shift;
  });
}

template <class Array>
void renumber(Array& ids, const dense1D<unsigned>& new_ids) {
  const input source(new_ids, ids);
  if (!source.is_ready()) return;
  const unsigned* table = static_cast<const dense1D<unsigned>&>(source).data();
  const std::uint64_t size = new_ids.size();
  change_each_run(ids, [=](unsigned* begin, unsigned* end) {
    for (unsigned* p = begin; p != end; ++p) {
      if (*p < size) *p = table[*p];
    }
  });
}

template <class T>
int permute(dense1D<T>& values, const dense1D<unsigned>& perm) {
  if (values.empty()) return 0;
  dense1D<T> moved;
  if (!moved.copy(values)) return out_of_memory;
  const std::uint64_t n = values.size();
  const std::uint64_t count = std::min(n, perm.size());
  for (std::uint64_t i = 0; i < count; ++i) {
    if (perm[i] < n && perm[i] != i) moved[perm[i]] = values[i];
  }
  return values.copy(moved) ? 0 : out_of_memory;
}

}  // namespace

unsigned max_ID(const dense1D<unsigned>& ids) { return largest_ID(ids); }
unsigned max_ID(const dense2D<unsigned>& connectivity) { return largest_ID(connectivity); }

bool check_IDs(const dense1D<unsigned>& ids, unsigned n) { return all_none_or_below(ids, n); }
bool check_IDs(const dense2D<unsigned>& connectivity, unsigned n) { return all_none_or_below(connectivity, n); }

int shift_indices(dense1D<unsigned>& ids, int shift) {
  if (shift != 0) shift_used(ids, static_cast<unsigned>(shift));
  return 0;
}

int shift_indices(dense2D<unsigned>& connectivity, int shift, element_type type) {
  if (shift == 0) return 0;
  if (type == ELT_FACE_MIX || type == ELT_SOLID_MIX) {
    shift_used(connectivity, static_cast<unsigned>(shift));
  } else {
    change_each_run(connectivity, [shift](unsigned* begin, unsigned* end) {
      for (unsigned* p = begin; p != end; ++p) *p += static_cast<unsigned>(shift);
    });
  }
  return 0;
}

void change_indices(dense1D<unsigned>& ids, const dense1D<unsigned>& new_ids) { renumber(ids, new_ids); }
void change_indices(dense2D<unsigned>& connectivity, const dense1D<unsigned>& new_ids) {
  renumber(connectivity, new_ids);
}

int permutation(dense1D<unsigned>& values, const dense1D<unsigned>& perm) { return permute(values, perm); }
int permutation(dense1D<double>& values, const dense1D<unsigned>& perm) { return permute(values, perm); }

}  // namespace qel::gridwork
