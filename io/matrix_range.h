// The matrices of a mesh, of one element type each, as writers take them; and the plain elements in mixed matrices.
#ifndef QEL_GRIDWORK_IO_MATRIX_RANGE_H
#define QEL_GRIDWORK_IO_MATRIX_RANGE_H

#include <cstdint>

#include "core/elements.h"
#include "core/result.h"
#include "qel/gridwork/elements.h"

namespace qel::gridwork::detail::io {

struct matrix_range {
  const dense2D<unsigned>* first;
  const dense2D<unsigned>* last;
  const int* types;
  std::uint64_t nbr_types;

  std::uint64_t size() const noexcept { return static_cast<std::uint64_t>(last - first); }

  /// The type of matrix i; a short mixed matrix is its pure type.
  element_type type(std::uint64_t i) const noexcept {
    return resolve_type(static_cast<element_type>(types[i]), first[i].rows());
  }
};

/// 0, or the code that the writers share: -4, -5 for a range that does not fit its types, -3 for a matrix that does not
/// fit its type or holds nodes from n on.
inline int check_matrices(const matrix_range& range, unsigned n) noexcept {
  if (range.first > range.last) return -4;
  if (range.size() != range.nbr_types) return -5;
  for (std::uint64_t i = 0; i < range.size(); ++i) {
    if (!is_element_type(range.types[i]) || !check_IDs(range.first[i], range.type(i), n)) return -3;
  }
  return 0;
}

/// The plain type of one column of a matrix of `type`: in a mixed one, the first unused row decides, whatever lies
/// before or behind; core/linear_shapes.h has the other ways to read a column, which differ on malformed ones.
constexpr element_type plain_type(element_type type, const unsigned* nodes) noexcept {
  if (type == ELT_FACE_MIX) return nodes[3] == none ? ELT_TRIA3 : ELT_QUAD4;
  if (type != ELT_SOLID_MIX) return type;
  if (nodes[4] == none) return ELT_TETRA4;
  if (nodes[5] == none) return ELT_PYRAMID5;
  return nodes[6] == none ? ELT_WEDGE6 : ELT_HEXA8;
}

constexpr bool is_mixed(element_type type) noexcept { return type == ELT_FACE_MIX || type == ELT_SOLID_MIX; }

/// True when a matrix of `type` may hold elements of the plain type.
constexpr bool may_hold(element_type type, element_type plain) noexcept {
  if (type == ELT_FACE_MIX) return plain == ELT_TRIA3 || plain == ELT_QUAD4;
  if (type != ELT_SOLID_MIX) return type == plain;
  return plain == ELT_TETRA4 || plain == ELT_PYRAMID5 || plain == ELT_WEDGE6 || plain == ELT_HEXA8;
}

inline bool has_1_to_3_rows(const dense2D<double>& coords) noexcept { return coords.rows() >= 1 && coords.rows() <= 3; }

/// Columns that hold elements: none in a matrix without rows.
inline std::uint64_t element_count(const dense2D<unsigned>& connectivity) noexcept {
  return connectivity.empty() ? 0 : connectivity.cols();
}

/// Calls action(nodes) for the elements of one plain type in a matrix of `type`, in order.
template <class Action>
void for_each_of(element_type plain, const dense2D<unsigned>& connectivity, element_type type, Action action) {
  if (!may_hold(type, plain)) return;
  const std::uint64_t count = element_count(connectivity);
  const bool all = type == plain;
  for (std::uint64_t j = 0; j < count; ++j) {
    const unsigned* nodes = connectivity.column(j);
    if (all || plain_type(type, nodes) == plain) action(nodes);
  }
}

/// How many elements of one plain type a matrix of `type` holds.
inline std::uint64_t count_of(element_type plain, const dense2D<unsigned>& connectivity, element_type type) noexcept {
  if (type == plain) return element_count(connectivity);
  std::uint64_t count = 0;
  for_each_of(plain, connectivity, type, [&](const unsigned*) { ++count; });
  return count;
}

/// Calls action(plain type) for all of them in increasing order, in which a mixed family's node counts increase as
/// well.
template <class Action>
void for_each_plain_type(Action action) {
  for (int code = ELT_UNKNOWN; code <= ELT_HEXA27; ++code) {
    if (!is_mixed(static_cast<element_type>(code))) action(static_cast<element_type>(code));
  }
}

}  // namespace qel::gridwork::detail::io

#endif
