// Elements of a file, by type as they come, and the blocks of one matrix that they make.
#ifndef QEL_GRIDWORK_IO_ELEMENT_COLLECTOR_H
#define QEL_GRIDWORK_IO_ELEMENT_COLLECTOR_H

#include <algorithm>
#include <cstdint>
#include <utility>

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

  /// True when an element of a plain type is kept and can be appended without new memory.
  bool has_room(element_type plain) const noexcept {
    if (!keeps(plain)) return false;
    const list& all = lists_[only_ == ELT_UNKNOWN ? plain : only_];
    bool has_room = all.columns.room() != nullptr;
    for (unsigned k = 0; k < nbr_labels_; ++k) has_room = has_room && all.label_entries[k].room() != nullptr;
    return has_room;
  }

  /// Appends an element of a type that is kept. False when memory ran out, or for the 2^32 - 1st.
  [[nodiscard]] bool append(element_type plain, const unsigned* nodes, const unsigned* labels,
                            const file_progress& file) noexcept {
    QEL_GRIDWORK_CHECK(keeps(plain));
    const element_type type = only_ == ELT_UNKNOWN ? plain : only_;
    list& all = lists_[type];
    unsigned fresh[most_nodes];
    unsigned* const room = all.columns.room();
    const unsigned rows = room != nullptr ? static_cast<unsigned>(all.columns.rows()) : nbr_nodes(type);
    const unsigned count = plain == type ? rows : nbr_nodes(plain);
    unsigned* const column = room != nullptr ? room : fresh;
    for (unsigned k = 0; k < count; ++k) column[k] = nodes[k];  // short: copies by a call take longer
    for (unsigned k = count; k < rows; ++k) column[k] = none;
    if (++count_ >= none) return false;
    for (unsigned k = 0; k < nbr_labels_; ++k) {
      if (!push(all.label_entries[k], labels[k], file)) return false;
    }
    if (room == nullptr) return all.columns.append(fresh, rows, file);
    all.columns.commit();
    return true;
  }

  /// Appends `count` elements of a type that is kept, whose nodes lie one behind the other: node k of an element is put at
  /// order[k], or at k without an order. Their one label counts up from `label`. False when memory ran out, or for the
  /// 2^32 - 1st; nothing is appended then.
  [[nodiscard]] bool append_run(element_type plain, const unsigned* nodes, const unsigned char* order,
                                std::uint64_t count, unsigned label, const file_progress& file) noexcept {
    QEL_GRIDWORK_CHECK(keeps(plain) && nbr_labels_ <= 1);
    const element_type type = only_ == ELT_UNKNOWN ? plain : only_;
    list& all = lists_[type];
    const unsigned size = nbr_nodes(plain), rows = nbr_nodes(type);
    unsigned* column = all.columns.room_for(count, rows, file);
    if (column == nullptr || count >= none - count_ || !push_labels(all, count, label, file)) return false;
    for (std::uint64_t i = 0; i < count; ++i, nodes += size, column += rows) {
      for (unsigned k = 0; k < size; ++k) column[order != nullptr ? order[k] : k] = nodes[k];
      for (unsigned k = size; k < rows; ++k) column[k] = none;
    }
    all.columns.commit(count);
    count_ += count;
    return true;
  }

  /// True when elements of a type are kept as they are, and there is none yet.
  bool may_take(element_type plain) const noexcept {
    return keeps(plain) && (only_ == ELT_UNKNOWN || only_ == plain) && lists_[plain].columns.count() == 0;
  }

  /// Makes a matrix the elements of a type for which that holds, with one label that counts up from `label`. False when
  /// memory ran out.
  [[nodiscard]] bool take(element_type plain, dense2D<unsigned>&& nodes, unsigned label) noexcept {
    QEL_GRIDWORK_CHECK(may_take(plain) && nodes.rows() == nbr_nodes(plain) && nbr_labels_ <= 1);
    list& all = lists_[plain];
    const std::uint64_t count = nodes.cols();
    if (count >= none - count_ || !push_labels(all, count, label, {0, 0})) return false;
    all.columns.take(std::move(nodes));
    count_ += count;
    return true;
  }

  /// Calls change(node) for the nodes of all elements that have one, while it is true. True when it always was.
  template <class Change>
  [[nodiscard]] bool change_nodes(Change change) noexcept {
    for (int type = 0; type < nbr_types; ++type) {
      list& all = lists_[type];
      const unsigned rows = nbr_nodes(static_cast<element_type>(type));
      for (std::uint64_t j = 0; j < all.columns.count(); ++j) {
        unsigned* const nodes = all.nodes.column(j);
        for (unsigned k = 0; k < rows && nodes[k] != none; ++k) {
          if (!change(nodes[k])) return false;
        }
      }
    }
    return true;
  }

  /// Hands out one block of each type that there is, in the order of element_type, `none` below shorter columns. The
  /// elements of a mesh of one type are not copied. Nothing can be appended any more. False when memory ran out.
  [[nodiscard]] bool deliver(element_blocks& out) noexcept {
    if (!out.offsets.push_back(0)) return false;
    std::uint64_t end = 0;
    for (int type = 0; type < nbr_types; ++type) {
      const std::uint64_t count = lists_[type].columns.count();
      if (count == 0) continue;
      end += count;
      if (!out.types.push_back(type) || !out.offsets.push_back(static_cast<unsigned>(end))) return false;
    }
    if (out.types.size() != 1) return copy_blocks(out);
    list& all = lists_[out.types[0]];
    all.columns.finish();
    out.connectivity = std::move(all.nodes);
    for (unsigned k = 0; k < nbr_labels_; ++k) {
      all.label_entries[k].finish();
      out.labels[k] = std::move(all.labels[k]).as_vector();
    }
    return true;
  }

 private:
  static constexpr unsigned most_nodes = 27, most_labels = 2;
  static constexpr int nbr_types = ELT_HEXA27 + 1;

  struct list {
    dense2D<unsigned> nodes, labels[most_labels];  // labels in one row
    column_appender<unsigned> columns{nodes};
    column_appender<unsigned> label_entries[most_labels] = {column_appender(labels[0]), column_appender(labels[1])};
  };

  /// The one label of `count` elements, which counts up from `label`, if there is one.
  [[nodiscard]] bool push_labels(list& all, std::uint64_t count, unsigned label, const file_progress& file) noexcept {
    const auto next_label = [label](std::uint64_t i) { return label + static_cast<unsigned>(i); };
    return nbr_labels_ == 0 || push_each(all.label_entries[0], count, file, next_label);
  }

  /// Makes one matrix of the elements of several types, or of none.
  bool copy_blocks(element_blocks& out) const noexcept {
    unsigned rows = 0;
    for (const int type : out.types) rows = std::max(rows, nbr_nodes(static_cast<element_type>(type)));
    if (rows != 0 && !out.connectivity.resize(rows, count_)) return false;
    for (unsigned k = 0; k < nbr_labels_; ++k) {
      if (!out.labels[k].resize(count_)) return false;
    }
    for (unsigned b = 0; b < out.types.size(); ++b) copy_block(lists_[out.types[b]], out.types[b], out.offsets[b], out);
    return true;
  }

  void copy_block(const list& all, int type, std::uint64_t first, element_blocks& out) const noexcept {
    const unsigned rows = nbr_nodes(static_cast<element_type>(type));
    const std::uint64_t count = all.columns.count();
    for (std::uint64_t j = 0; j < count; ++j) {
      unsigned* const column = out.connectivity.column(first + j);
      std::fill(std::copy_n(all.nodes.column(j), rows, column), column + out.connectivity.rows(), none);
    }
    for (unsigned k = 0; k < nbr_labels_; ++k) std::copy_n(all.labels[k].data(), count, out.labels[k].begin() + first);
  }

  list lists_[nbr_types];
  std::uint64_t count_ = 0;
  element_type only_ = ELT_UNKNOWN;
  unsigned nbr_labels_;
};

}  // namespace qel::gridwork::detail::io

#endif
