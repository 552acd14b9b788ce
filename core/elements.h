// Internal helpers on element types.
#ifndef QEL_GRIDWORK_CORE_ELEMENTS_H
#define QEL_GRIDWORK_CORE_ELEMENTS_H

#include <cstdint>

#include "qel/gridwork/elements.h"

namespace qel::gridwork::detail {

/// True when a number, as lists of types hold them, is an enumerator.
constexpr bool is_element_type(int code) noexcept { return code >= ELT_UNKNOWN && code <= ELT_HEXA27; }

/// The type that a connectivity of `rows` rows really holds: a short mixed matrix is its pure type.
element_type resolve_type(element_type type, std::uint64_t rows) noexcept;

}  // namespace qel::gridwork::detail

#endif
