// Elements of a file, by type as they come, and the blocks of one matrix that they make.
#ifndef QEL_GRIDWORK_IO_ELEMENT_COLLECTOR_H
#define QEL_GRIDWORK_IO_ELEMENT_COLLECTOR_H

#include <algorithm>
#include <cstdint>

#include "core/check.h"
#include "core/result.h"
#include "io/column_appender.h"
#include "io/matrix_range.h"
#include "qel/dense.h"
#include "qel/gridwork/elements.h"

namespace qel::gridwork::detail::io {

/// Elements in blocks, as readers return them. A label is what a file says of an element beside its nodes: an
/// identifier, a reference.
struct element_blocks {
  dense2D<unsigned> connectivity;
  dense1D<unsigned> offsets;
  dense1D<int> types;
  dense1D<unsigned> labels[2];  // one entry a column
};

/// Keeps elements of all plain types, or of one type, which may be a mixed one; the latter without labels.
///
/// Memory follows what the file has, whatever it claims to have.
class element_collector {
 public:
  /// Keeps all plain types, with so many labels.
  explicit element_collector(unsigned nbr_labels) noexcept : nbr_labels_(nbr_labels) {
    QEL_GRIDWORK_CHECK(nbr_labels <= most_labels);
  }

  /// Keeps elements of `only`; those of all types for ELT_UNKNOWN, with so many labels.
  element_collector(element_type only, unsigned nbr_labels) noexcept
      : only_(only), nbr_labels_(only == ELT_UNKNOWN ? nbr_labels : 0) {}

  /// True when elements of a plain type are kept.
  bool keeps(element_type plain) const noexcept { return only_ == ELT_UNKNOWN || may_hold(only_, plain); }

  /// Appends an element of a type that is kept. False when memory ran out, or for the 2^32 - 1st.
  [[nodiscard]] bool append(element_type plain, const unsigned* nodes, const unsigned* labels,
                            const file_progress& file) noexcept {
    QEL_GRIDWORK_CHECK(keeps(plain));
    const element_type type = only_ == ELT_UNKNOWN ? plain : only_;
    const unsigned count = nbr_nodes(plain), rows = nbr_nodes(type);
    column_appender<unsigned>& columns = lists_[type].columns;
    unsigned fresh[most_nodes + most_labels];
    unsigned* const room = columns.room();
    unsigned* const record = room != nullptr ? room : fresh;
    for (unsigned k = 0; k < count; ++k) record[k] = nodes[k];  // short: copies by a call take longer
    for (unsigned k = count; k < rows; ++k) record[k] = none;
    for (unsigned k = 0; k < nbr_labels_; ++k) record[rows + k] = labels[k];
    if (++count_ >= none) return false;
    if (room == nullptr) return columns.append(fresh, rows + nbr_labels_, file);
    columns.commit();
    return true;
  }

  /// Calls change(node) for the nodes of all elements that have one, while it is true. True when it always was.
  template <class Change>
  [[nodiscard]] bool change_nodes(Change change) noexcept {
    for (int type = 0; type < nbr_types; ++type) {
      list& all = lists_[type];
      const unsigned rows = nbr_nodes(static_cast<element_type>(type));
      for (std::uint64_t j = 0; j < all.columns.count(); ++j) {
        unsigned* const nodes = all.records.column(j);
        for (unsigned k = 0; k < rows && nodes[k] != none; ++k) {
          if (!change(nodes[k])) return false;
        }
      }
    }
    return true;
  }

  /// Makes one block of each type that there is, in the order of element_type, `none` below shorter columns. False when
  /// memory ran out.
  [[nodiscard]] bool deliver(element_blocks& out) const noexcept {
    const std::uint64_t rows = most_rows();
    if (rows != 0 && !out.connectivity.resize(rows, count_)) return false;
    for (unsigned k = 0; k < nbr_labels_; ++k) {
      if (!out.labels[k].resize(count_)) return false;
    }
    if (!out.offsets.push_back(0)) return false;
    std::uint64_t end = 0;
    for (int type = 0; type < nbr_types; ++type) {
      const std::uint64_t count = lists_[type].columns.count();
      if (count == 0) continue;
      copy_block(type, end, out);
      end += count;
      if (!out.types.push_back(type) || !out.offsets.push_back(static_cast<unsigned>(end))) return false;
    }
    return true;
  }

 private:
  static constexpr unsigned most_nodes = 27, most_labels = 2;
  static constexpr int nbr_types = ELT_HEXA27 + 1;

  struct list {
    dense2D<unsigned> records;  // nodes, then labels
    column_appender<unsigned> columns{records};
  };

  std::uint64_t most_rows() const noexcept {
    unsigned rows = 0;
    for (int type = 0; type < nbr_types; ++type) {
      if (lists_[type].columns.count() != 0) rows = std::max(rows, nbr_nodes(static_cast<element_type>(type)));
    }
    return rows;
  }

  void copy_block(int type, std::uint64_t first, element_blocks& out) const noexcept {
    const list& all = lists_[type];
    const unsigned rows = nbr_nodes(static_cast<element_type>(type));
    for (std::uint64_t j = 0; j < all.columns.count(); ++j) {
      const unsigned* const record = all.records.column(j);
      unsigned* const column = out.connectivity.column(first + j);
      std::fill(std::copy_n(record, rows, column), column + out.connectivity.rows(), none);
      for (unsigned k = 0; k < nbr_labels_; ++k) out.labels[k][first + j] = record[rows + k];
    }
  }

  list lists_[nbr_types];
  std::uint64_t count_ = 0;
  element_type only_ = ELT_UNKNOWN;
  unsigned nbr_labels_;
};

}  // namespace qel::gridwork::detail::io

#endif
