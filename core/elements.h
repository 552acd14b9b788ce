// Internal helpers on element types.
#ifndef QEL_GRIDWORK_CORE_ELEMENTS_H
#define QEL_GRIDWORK_CORE_ELEMENTS_H

#include <cstdint>

#include "qel/gridwork/elements.h"

namespace qel::gridwork::detail {

/// True when a number, as lists of types hold them, is an enumerator.
constexpr bool is_element_type(int code) noexcept { return code >= ELT_UNKNOWN && code <= ELT_HEXA27; }

/// Nodes of the largest boundary of an element: the rows of a matrix of boundaries.
unsigned nbr_boundary_nodes(element_type type) noexcept;

/// The type that a connectivity of `rows` rows really holds: a short mixed matrix is its pure type. Always an
/// enumerator: ELT_UNKNOWN for a number that is none.
element_type resolve_type(element_type type, std::uint64_t rows) noexcept;

}  // namespace qel::gridwork::detail

#endif
