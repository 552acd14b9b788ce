#include "io/triangle_soup.h"

#include <algorithm>
#include <cmath>

#include "core/result.h"
#include "qel/gridwork/ids.h"
#include "qel/gridwork/search.h"
#include "search/proximity_merge.h"

namespace qel::gridwork::io {
namespace {

/// Gives back capacity that is no longer needed. Without memory for the smaller copy, the array stays as it is.
template <class T>
void trim(dense2D<T>& matrix) {
  dense2D<T> fitting;
  if (matrix.capacity() > matrix.size() + matrix.size() / 8 && fitting.copy(matrix)) matrix.shallow_copy(fitting);
}

}  // namespace

/// Room in the outputs for so many more nodes and triangles. The share of distinct nodes so far tells how many will come;
/// without memory for a guess, what is needed now will do.
bool triangle_soup::reserve_outputs(std::uint64_t nodes, std::uint64_t triangles) {
  const std::uint64_t node_count = coords_.cols() + nodes;
  const std::uint64_t triangle_count = connectivity_.cols() + triangles;
  if (3 * node_count > coords_.capacity()) {
    std::uint64_t likely = 2 * coords_.cols();
    if (expected_ > triangle_count) {
      const double share = static_cast<double>(node_count) / static_cast<double>(triangle_count);
      likely = static_cast<std::uint64_t>(1.05 * share * static_cast<double>(expected_));
    }
    if (!coords_.reserve(3, std::max(node_count, likely)) && !coords_.reserve(3, node_count)) return false;
  }
  if (3 * triangle_count > connectivity_.capacity()) {
    const std::uint64_t likely = expected_ > triangle_count ? expected_ : 2 * connectivity_.cols();
    if (!connectivity_.reserve(3, std::max(triangle_count, likely)) && !connectivity_.reserve(3, triangle_count))
      return false;
  }
  return coords_.resize(3, coords_.cols()) && connectivity_.resize(3, connectivity_.cols());
}

/// Merges coincident nodes of a block and appends the distinct ones and the triangles.
bool triangle_soup::append_merged(const dense2D<double>& nodes) {
  const std::uint64_t count = nodes.cols();
  const int merged = proximity_merge(nodes, node_list::all(count), new_IDs_, 0.0);
  if (merged < 0) return false;
  const std::uint64_t distinct = count - static_cast<std::uint64_t>(merged);
  if (coords_.cols() + distinct >= none || !reserve_outputs(distinct, count / 3)) return false;
  const std::uint64_t old_nodes = coords_.cols();
  const std::uint64_t old_triangles = connectivity_.cols();
  if (!coords_.resize(3, old_nodes + distinct) || !connectivity_.resize(3, old_triangles + count / 3)) return false;

  // A survivor comes before those merged onto it, so the map can be turned into final indices on the way.
  auto next = static_cast<unsigned>(old_nodes);
  unsigned* corner = connectivity_.column(old_triangles);
  for (unsigned i = 0; i < count; ++i) {
    if (new_IDs_[i] == i) {
      std::copy_n(nodes.column(i), 3, coords_.column(next));
      new_IDs_[i] = next++;
    } else {
      new_IDs_[i] = new_IDs_[new_IDs_[i]];
    }
    corner[i] = new_IDs_[i];
  }
  return true;
}

bool triangle_soup::keep_raw(const dense2D<double>& nodes) {
  const std::uint64_t old_count = raw_.cols();
  if (3 * (old_count + nodes.cols()) > raw_.capacity() && !raw_.reserve(3, 2 * (old_count + nodes.cols())))
    return false;
  if (!raw_.resize(3, old_count + nodes.cols())) return false;
  std::copy_n(nodes.data(), nodes.size(), raw_.column(old_count));
  return true;
}

/// Merges, block by block, what was kept before the first positive height.
bool triangle_soup::merge_raw() {
  const std::uint64_t count = raw_.cols();
  for (std::uint64_t first = 0; first < count; first += 3 * block_size) {
    const std::uint64_t in_block = std::min(3 * block_size, count - first);
    if (!append_merged(raw_.sub_matrix(0, first, 3, in_block))) return false;
  }
  raw_.clear_hard();
  return true;
}

/// Small files do with a small block.
bool triangle_soup::make_room() {
  if (in_block_ == block_size) return close_block();
  constexpr std::uint64_t smallest_block = 256;
  const std::uint64_t wanted = std::max({expected_, 2 * in_block_, smallest_block});
  return block_.resize(9, std::min(wanted, block_size));
}

bool triangle_soup::close_block() {
  const dense2D<double> nodes(3, 3 * in_block_, block_.data());
  if (nodes.cols() != 3 * in_block_) return false;
  in_block_ = 0;
  if (smallest_height_ == 0) return keep_raw(nodes);
  return merge_raw() && append_merged(nodes);
}

int triangle_soup::merge_near_nodes() {
  const double tol = 0.05 * std::sqrt(smallest_height_);
  const int merged = proximity_merge(coords_, node_list::all(coords_.cols()), new_IDs_, tol);
  if (merged < 0) return merged;
  if (merged > 0) change_indices(connectivity_, new_IDs_);
  const int degenerate = remove_degenerated(connectivity_, new_IDs_, true);
  if (degenerate < 0) return degenerate;
  if (merged == 0 && degenerate == 0) return 0;
  const int unused = simplify(coords_, connectivity_, new_IDs_, 0);
  return unused < 0 ? unused : 0;
}

int triangle_soup::finish() {
  if (in_block_ != 0 && !close_block()) return out_of_memory;
  block_.clear_hard();
  int result = 0;
  if (smallest_height_ == 0) {
    coords_.shallow_copy(raw_);
    raw_.clear_hard();
    if (!coords_.resize(3, coords_.cols()) || !connectivity_.resize(3, coords_.cols() / 3)) return out_of_memory;
    for (unsigned i = 0; i < coords_.cols(); ++i) connectivity_.data()[i] = i;
  } else {
    result = merge_near_nodes();
  }
  trim(coords_);
  trim(connectivity_);
  return result;
}

}  // namespace qel::gridwork::io
