// Nodes of a file that names them by identifiers.
#ifndef QEL_GRIDWORK_IO_IDENTIFIED_NODES_H
#define QEL_GRIDWORK_IO_IDENTIFIED_NODES_H

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

#include "core/result.h"
#include "io/column_appender.h"
#include "io/columns_by_ID.h"
#include "io/input_result.h"
#include "qel/dense.h"

namespace qel::gridwork::detail::io {

/// Collects nodes; then finds them.
class identified_nodes {
 public:
  /// Appends a node at a point of a coordinate system. False when memory ran out.
  [[nodiscard]] bool append(unsigned ID, unsigned system, const double* point, const file_progress& file) noexcept {
    const unsigned labels[] = {ID, system};
    return lists_->points.append(point, 3, file) && lists_->labels.append(labels, 2, file);
  }

  /// True when a node can be appended without new memory.
  bool has_room() const noexcept { return lists_->points.room() != nullptr && lists_->labels.room() != nullptr; }

  /// Ends the collection; nodes of the system `none` get the default one. A node that is there once more is dropped. 0,
  /// out_of_memory, or node_differs when the other one has another point or system.
  [[nodiscard]] int finish(unsigned default_system) noexcept {
    lists_.reset();
    for (std::uint64_t j = 0; j < labels_.cols(); ++j)
      labels_(1, j) = labels_(1, j) == none ? default_system : labels_(1, j);
    if (labels_.cols() >= none || !find_IDs()) return out_of_memory;
    bool has_twins = false;
    for (unsigned j = 0; j < count(); ++j) {
      const unsigned first = columns_(IDs_[j]);
      has_twins = has_twins || first != j;
      if (first != j && !is_same(j, first)) return node_differs;
    }
    return !has_twins || drop_twins() ? 0 : out_of_memory;
  }

  /// The column of a node; `none` when there is none.
  unsigned find(unsigned ID) const noexcept { return columns_(ID); }

  unsigned count() const noexcept { return static_cast<unsigned>(IDs_.size()); }
  double* point(unsigned j) noexcept { return coords_.column(j); }
  unsigned& system(unsigned j) noexcept { return labels_(1, j); }

  void deliver(dense2D<double>& coords, dense1D<unsigned>& IDs) noexcept {
    coords = std::move(coords_);
    IDs = std::move(IDs_);
  }

 private:
  struct appenders {
    column_appender<double> points;
    column_appender<unsigned> labels;
    appenders(dense2D<double>& p, dense2D<unsigned>& l) noexcept : points(p), labels(l) {}
  };

  bool find_IDs() noexcept {
    if (!IDs_.resize(labels_.cols())) return false;
    for (std::uint64_t j = 0; j < IDs_.size(); ++j) IDs_[j] = labels_(0, j);
    return columns_.prepare(IDs_);
  }

  bool is_same(unsigned j, unsigned first) const noexcept {
    return labels_(1, j) == labels_(1, first) &&
           std::equal(coords_.column(j), coords_.column(j) + 3, coords_.column(first));
  }

  bool drop_twins() noexcept {
    unsigned kept = 0;
    for (unsigned j = 0; j < count(); ++j) {
      if (columns_(IDs_[j]) != j) continue;
      std::copy_n(coords_.column(j), 3, coords_.column(kept));
      std::copy_n(labels_.column(j), 2, labels_.column(kept++));
    }
    return coords_.resize(3, kept) && labels_.resize(2, kept) && find_IDs();
  }

  dense2D<double> coords_;
  dense2D<unsigned> labels_;  // identifier and system
  std::optional<appenders> lists_{std::in_place, coords_, labels_};
  dense1D<unsigned> IDs_;
  columns_by_ID columns_;
};

}  // namespace qel::gridwork::detail::io

#endif
