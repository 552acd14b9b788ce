// Elements that a clip keeps or cuts, and the matrix of what is left.
#ifndef QEL_GRIDWORK_TRANSFORMS_SELECTED_ELEMENTS_H
#define QEL_GRIDWORK_TRANSFORMS_SELECTED_ELEMENTS_H

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <type_traits>

#include "core/append_columns.h"
#include "core/result.h"
#include "qel/dense.h"
#include "qel/fixed.h"
#include "transforms/half_space.h"

namespace qel::gridwork::detail {

/// The faults that both forms of clip() look for first.
template <unsigned Dim>
int check_plane(const dense2D<double>& coords, const vector_fixed<double, Dim>& point,
                const vector_fixed<double, Dim>& normal) noexcept {
  const auto finite = [](double x) { return std::isfinite(x); };
  if (coords.rows() < Dim) return -1;
  if (!std::all_of(point.begin(), point.end(), finite)) return -3;
  if (!std::all_of(normal.begin(), normal.end(), finite)) return -4;
  return largest_magnitude(normal.begin(), normal.end()) == 0 ? -4 : 0;
}

/// Calls action(rows) with the row counts of common elements as constants, which unrolls its loops.
template <class Action>
void visit_rows(std::uint64_t rows, Action action) {
  if (rows == 2) return action(std::integral_constant<std::uint64_t, 2>());
  if (rows == 3) return action(std::integral_constant<std::uint64_t, 3>());
  if (rows == 4) return action(std::integral_constant<std::uint64_t, 4>());
  if (rows == 8) return action(std::integral_constant<std::uint64_t, 8>());
  action(rows);
}

enum class fate : unsigned char { dropped, kept, cut };

/// What becomes of an element, by the joined sides of its nodes.
using fates = std::array<fate, sides_joined>;

template <class Rule>
constexpr fates make_fates(Rule rule) noexcept {
  fates all{};
  for (unsigned sides = 0; sides < sides_joined; ++sides) all[sides] = rule(sides);
  return all;
}

/// Elements that stay whole and those to cut, both in order.
struct selected_elements {
  dense1D<unsigned> kept, cut;

  [[nodiscard]] bool select(const dense2D<unsigned>& connectivity, const node_sides& sides, const fates& rule) {
    if (connectivity.cols() > none || !kept.resize(connectivity.cols()) || !cut.resize(connectivity.cols())) {
      return false;
    }
    visit_rows(connectivity.rows(), [&](auto rows) { list(connectivity, rows, sides, rule); });
    return true;
  }

 private:
  /// Every element is written behind both lists; the lists grow or do not: no branch that depends on the mesh.
  template <class Rows>
  void list(const dense2D<unsigned>& connectivity, Rows rows, const node_sides& sides, const fates& rule) {
    std::uint64_t kept_count = 0, cut_count = 0;
    const auto count = static_cast<unsigned>(connectivity.cols());
    unsigned *to_kept = kept.data(), *to_cut = cut.data();
    for (unsigned e = 0; e < count; ++e) {
      const unsigned* nodes = connectivity.column(e);
      unsigned joined = 0;
      for (std::uint64_t i = 0; i < rows; ++i) joined |= sides.of(nodes[i]);
      to_kept[kept_count] = e;
      to_cut[cut_count] = e;
      kept_count += rule[joined] == fate::kept ? 1 : 0;
      cut_count += rule[joined] == fate::cut ? 1 : 0;
    }
    (void)kept.resize(kept_count);  // smaller: cannot fail
    (void)cut.resize(cut_count);
  }
};

/// Columns that replace cut elements, by increasing source.
class element_pieces {
 public:
  explicit element_pieces(std::uint64_t rows) noexcept : columns_(rows, 0) {}

  /// The next piece, to be filled; null when memory ran out, then and ever after.
  unsigned* add(unsigned source) noexcept {
    complete_ = complete_ && sources_.push_back(source) && append_columns(columns_, columns_.rows(), 1);
    return complete_ ? columns_.column(columns_.cols() - 1) : nullptr;
  }

  bool complete() const noexcept { return complete_; }
  std::uint64_t count() const noexcept { return sources_.size(); }
  unsigned source(std::uint64_t k) const noexcept { return sources_[k]; }
  dense2D<unsigned>& columns() noexcept { return columns_; }
  const dense2D<unsigned>& columns() const noexcept { return columns_; }

 private:
  dense2D<unsigned> columns_;
  dense1D<unsigned> sources_;
  bool complete_ = true;
};

/// What is left of a mesh: elements that were kept, pieces in the place of those that were cut, and their sources.
struct clipped_elements {
  dense2D<unsigned> columns;
  dense1D<unsigned> sources;

  [[nodiscard]] bool assemble(const dense2D<unsigned>& connectivity, const dense1D<unsigned>& kept,
                              const element_pieces& pieces) {
    const std::uint64_t count = kept.size() + pieces.count();
    if (!columns.resize(connectivity.rows(), count) || !sources.resize(count)) return false;
    visit_rows(connectivity.rows(), [&](auto rows) { fill(connectivity, rows, kept, pieces); });
    return true;
  }

 private:
  template <class Rows>
  void fill(const dense2D<unsigned>& connectivity, Rows rows, const dense1D<unsigned>& kept,
            const element_pieces& pieces) {
    unsigned *to = columns.data(), *to_source = sources.data();
    const auto put = [&](const unsigned* nodes, unsigned source) {
      to = std::copy_n(nodes, static_cast<std::uint64_t>(rows), to);
      *to_source++ = source;
    };
    const unsigned *next = kept.begin(), *end = kept.end();
    for (std::uint64_t k = 0; k < pieces.count(); ++k) {
      for (; next != end && *next < pieces.source(k); ++next) put(connectivity.column(*next), *next);
      put(pieces.columns().column(k), pieces.source(k));
    }
    for (; next != end; ++next) put(connectivity.column(*next), *next);
  }
};

}  // namespace qel::gridwork::detail

#endif
