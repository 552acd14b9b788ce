#include "io/triangle_soup.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "core/check.h"
#include "core/compact_columns.h"
#include "core/growth.h"
#include "core/limits.h"
#include "core/result.h"
#include "qel/gridwork/ids.h"
#include "search/merging/proximity_merge.h"

namespace qel::gridwork::detail::io {
namespace {

/// Room for `count` columns and, if memory allows, for all that are likely to come.
template <class T>
bool widen(dense2D<T>& matrix, std::uint64_t count, std::uint64_t likely) {
  const std::uint64_t more = std::max(count, matrix.cols() + matrix.cols() / 2);
  return matrix.resize(3, std::max(more, likely)) || matrix.resize(3, more) || matrix.resize(3, count);
}

}  // namespace

/// After a whole block without any height, what a file of nothing else takes is asked for at once: a sparse file that
/// claims more than there is memory for is refused before it has filled it.
bool triangle_soup::keep_raw(const triangle& t) {
  const std::uint64_t count = raw_.cols();
  if (9 * (count + 1) > raw_.capacity()) {
    const std::uint64_t wanted = std::max(2 * count + 4, count < block_size ? 0 : expected_);
    if (3 * wanted >= none || !raw_.reserve(9, wanted)) return false;
  }
  if (!raw_.resize(9, count + 1)) return false;
  double* corners = raw_.column(count);
  for (const vector3& corner : t.corners) corners = std::copy_n(corner.data(), 3, corners);
  return true;
}

bool triangle_soup::merge_raw() {
  for (std::uint64_t i = 0; i < raw_.cols(); ++i) {
    triangle t;
    for (unsigned k = 0; k < 3; ++k) std::copy_n(raw_.column(i) + 3 * k, 3, t.corners[k].data());
    if (!enqueue(t)) return false;
  }
  raw_.clear_hard();
  return true;
}

/// Room for the queue's triangles and their corners, in the outputs and in the table.
bool triangle_soup::make_room() {
  constexpr std::uint64_t at_least = limits::fewest_triangles;
  static_assert(block_size % queue_size == 0);
  if (triangle_count_ + queue_size > connectivity_.cols() &&
      !widen(connectivity_, triangle_count_ + at_least, expected_ + queue_size))
    return false;
  if (node_count_ + 3 * queue_size > coords_.cols()) {
    // A closed surface has half as many nodes as triangles; the share so far tells more.
    const double share =
        triangle_count_ < at_least ? 0.5 : static_cast<double>(node_count_) / static_cast<double>(triangle_count_);
    const auto likely = static_cast<std::uint64_t>(1.02 * share * static_cast<double>(expected_));
    if (node_count_ + at_least >= none || !widen(coords_, node_count_ + at_least, likely)) return false;
  }
  const bool block_begins = triangle_count_ == 0 || (first_ + triangle_count_) % block_size == 0;
  if (block_begins && !table_.reset(table_.used())) return false;
  return table_.make_room(3 * queue_size);
}

/// The node of the block at this position, which becomes one if there is none. No other is at a position that is not
/// finite.
unsigned triangle_soup::node_at(const vector3& p, std::uint64_t hash) {
  const auto next = static_cast<unsigned>(node_count_);
  if (is_finite<3>(p.data())) {
    const auto is_here = [&](unsigned held) { return same_position<3>(coords_.column(held), p.data()); };
    const unsigned node = table_.find_or_insert(hash, next, is_here);
    if (node != next) return node;
  }
  double* column = coords_.column(node_count_++);
  for (unsigned a = 0; a < 3; ++a) column[a] = p[a];
  return next;
}

bool triangle_soup::merge_queue() {
  if (!make_room()) return false;
  QEL_GRIDWORK_CHECK(in_queue_ <= queue_size && triangle_count_ + in_queue_ - skipped_ <= connectivity_.cols());
  QEL_GRIDWORK_CHECK(node_count_ + 3 * (in_queue_ - skipped_) <= coords_.cols());
  for (unsigned i = skipped_; i < in_queue_; ++i) {
    unsigned* nodes = connectivity_.column(triangle_count_++);
    for (unsigned k = 0; k < 3; ++k) nodes[k] = node_at(queue_[i].t.corners[k], queue_[i].hashes[k]);
  }
  in_queue_ = skipped_ = 0;
  return true;
}

int triangle_soup::merge_near_nodes() {
  dense1D<unsigned> new_IDs;
  index_flags used;
  const int merged = proximity_merge(coords_, node_list::all(node_count_), new_IDs, 0.05 * std::sqrt(smallest_height_));
  if (merged < 0) return merged;
  if (!used.reset(node_count_)) return out_of_memory;
  const std::uint64_t triangles = renumber_triangles(connectivity_, new_IDs, used);
  if (merged == 0 && triangles == triangle_count_) return 0;
  const std::uint64_t nodes = compact_columns(coords_, used, new_IDs);
  if (!connectivity_.resize(3, triangles) || !coords_.resize(3, nodes)) return out_of_memory;
  change_indices(connectivity_, new_IDs);
  return 0;
}

/// Three nodes a triangle, as they came.
bool triangle_soup::hand_out_raw() {
  const std::uint64_t count = 3 * raw_.cols();
  if (count >= none || !coords_.resize(3, count) || !connectivity_.resize(3, raw_.cols())) return false;
  std::copy_n(raw_.data(), raw_.size(), coords_.data());
  std::iota(connectivity_.data(), connectivity_.data() + count, 0U);
  raw_.clear_hard();
  return true;
}

bool triangle_soup::hand_out_blocks() {
  return (raw_.empty() || merge_raw()) && merge_queue() && coords_.resize(3, node_count_) &&
         connectivity_.resize(3, triangle_count_);
}

std::uint64_t renumber_triangles(dense2D<unsigned>& connectivity, const dense1D<unsigned>& new_IDs,
                                 index_flags& used) noexcept {
  std::uint64_t kept = 0;
  for (std::uint64_t j = 0; j < connectivity.cols(); ++j) {
    const unsigned* old = connectivity.column(j);
    const unsigned a = new_IDs[old[0]], b = new_IDs[old[1]], c = new_IDs[old[2]];
    if (a == b || b == c || c == a) continue;
    unsigned* nodes = connectivity.column(kept++);
    nodes[0] = a, nodes[1] = b, nodes[2] = c;
    for (const unsigned node : {a, b, c}) used.insert(node);
  }
  return kept;
}

int triangle_soup::finish() {
  if (smallest_height_ == 0) return hand_out_raw() ? 0 : out_of_memory;
  if (!hand_out_blocks()) return out_of_memory;
  const int result = merge_near_nodes();
  trim(coords_, coords_.size() / 8);
  trim(connectivity_, connectivity_.size() / 8);
  return result;
}

}  // namespace qel::gridwork::detail::io
