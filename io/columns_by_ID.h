// Columns of nodes by their identifiers in a file.
#ifndef QEL_GRIDWORK_IO_COLUMNS_BY_ID_H
#define QEL_GRIDWORK_IO_COLUMNS_BY_ID_H

#include <algorithm>
#include <cstdint>

#include "core/limits.h"
#include "core/result.h"
#include "qel/dense.h"

namespace qel::gridwork::detail::io {

/// Finds the first column of an identifier: by a difference where identifiers increase by one, in a table where they
/// are not much larger than their number, else in a sorted list. No memory by the largest of them. Identifiers are
/// below 2^31 (scan_ID), or have up to nine digits (scan_plain_unsigned), so that none is `none` and the one behind the
/// largest is still a number.
class columns_by_ID {
 public:
  /// Looks at the identifiers; before anything else. False when memory ran out.
  [[nodiscard]] bool prepare(const dense1D<unsigned>& IDs) noexcept {
    table_.clear();
    pairs_.clear();
    first_ = IDs.empty() ? 0 : IDs[0];
    count_ = static_cast<unsigned>(IDs.size());
    if (increases_by_one(IDs)) return true;
    const unsigned largest = *std::max_element(IDs.begin(), IDs.end());
    return largest / limits::places_per_ID < IDs.size() ? make_table(IDs, largest) : make_pairs(IDs);
  }

  /// The first column of an identifier; `none` when there is none.
  unsigned operator()(unsigned ID) const noexcept {
    if (!table_.empty()) return ID < table_.size() ? table_[ID] : none;
    if (!pairs_.empty()) return search(ID);
    return ID - first_ < count_ ? ID - first_ : none;
  }

 private:
  static bool increases_by_one(const dense1D<unsigned>& IDs) noexcept {
    const auto is_no_step = [](unsigned a, unsigned b) { return b != a + 1; };
    return std::adjacent_find(IDs.begin(), IDs.end(), is_no_step) == IDs.end();
  }

  bool make_table(const dense1D<unsigned>& IDs, unsigned largest) noexcept {
    if (!table_.resize(std::uint64_t{largest} + 1, none)) return false;
    for (std::uint64_t j = IDs.size(); j-- > 0;) table_[IDs[j]] = static_cast<unsigned>(j);
    return true;
  }

  bool make_pairs(const dense1D<unsigned>& IDs) noexcept {
    if (!pairs_.resize(IDs.size())) return false;
    for (std::uint64_t j = 0; j < IDs.size(); ++j) pairs_[j] = std::uint64_t{IDs[j]} << 32 | j;
    std::sort(pairs_.begin(), pairs_.end());
    return true;
  }

  unsigned search(unsigned ID) const noexcept {
    const std::uint64_t* const pair = std::lower_bound(pairs_.begin(), pairs_.end(), std::uint64_t{ID} << 32);
    return pair != pairs_.end() && *pair >> 32 == ID ? static_cast<unsigned>(*pair) : none;
  }

  unsigned first_ = 0, count_ = 0;
  dense1D<unsigned> table_;       // column by identifier
  dense1D<std::uint64_t> pairs_;  // identifier << 32 | column, increasing
};

}  // namespace qel::gridwork::detail::io

#endif
