// Unconnected triangles on their way to a mesh.
#ifndef QEL_GRIDWORK_IO_TRIANGLE_SOUP_H
#define QEL_GRIDWORK_IO_TRIANGLE_SOUP_H

#include <cstdint>

#include "core/index_flags.h"
#include "core/limits.h"
#include "core/position_table.h"
#include "io/stl_geometry.h"
#include "qel/dense.h"
#include "search/merging/coincident_nodes.h"

namespace qel::gridwork::detail::io {

/// Takes triangles one by one and merges their coincident corners as they come, each block of triangles for itself, so
/// that only distinct corners are ever kept. finish() then merges near nodes.
///
/// A file without any triangle of positive height must come out unmerged, so triangles are kept as they are until the
/// first positive height is met.
class triangle_soup {
 public:
  triangle_soup(dense2D<double>& coords, dense2D<unsigned>& connectivity) noexcept
      : coords_(coords), connectivity_(connectivity) {}

  /// How many triangles are likely to come, so that outputs are sized once; a wrong number does no harm.
  void expect(std::uint64_t triangles) noexcept { expected_ = triangles; }

  /// The triangles that come are those of a file from this one on: blocks are those of the whole file.
  void begin_at(std::uint64_t triangle) noexcept {
    first_ = triangle;
    in_queue_ = skipped_ = static_cast<unsigned>(triangle % queue_size);
  }

  [[nodiscard]] bool add(const triangle& t) {
    note_height(t);
    if (smallest_height_ == 0) return keep_raw(t);
    return (raw_.empty() || merge_raw()) && enqueue(t);
  }

  /// Makes the mesh. 0, or a negative result.
  int finish();

  /// What finish() does before it merges near nodes, for those who merge them with triangles of others: makes the mesh of
  /// the corners that are merged block by block, or of three nodes a triangle. Nodes are in the order of their first
  /// corners. False when memory ran out.
  /// @{
  [[nodiscard]] bool hand_out_blocks();
  [[nodiscard]] bool hand_out_raw();
  /// @}

  /// 0 as long as no triangle has a positive height.
  double least_squared_height() const noexcept { return smallest_height_; }

  static constexpr std::uint64_t block_size = 100000;

 private:
  struct hashed_triangle {
    triangle t;
    std::uint64_t hashes[3];
  };

  static constexpr unsigned queue_size = limits::triangle_queue;

  void note_height(const triangle& t) noexcept {
    if (smallest_height_ > 0 && is_surely_higher(t, smallest_height_)) return;
    const double height = smallest_squared_height(t);
    if (height > 0 && (smallest_height_ == 0 || height < smallest_height_)) smallest_height_ = height;
  }

  /// The table is asked for the corners a queue ahead of their merging.
  [[nodiscard]] bool enqueue(const triangle& t) {
    if (in_queue_ == queue_size && !merge_queue()) return false;
    hashed_triangle& last = queue_[in_queue_++];
    last.t = t;
    for (unsigned k = 0; k < 3; ++k) {
      last.hashes[k] = hash_values<3>(t.corners[k].data());
      table_.prefetch(last.hashes[k]);
    }
    return true;
  }

  bool keep_raw(const triangle& t);
  bool merge_raw();
  bool merge_queue();
  bool make_room();
  unsigned node_at(const vector3& p, std::uint64_t hash);
  int merge_near_nodes();

  dense2D<double>& coords_;          // sized ahead: the first node_count_ columns are nodes
  dense2D<unsigned>& connectivity_;  // sized ahead: the first triangle_count_ columns are triangles
  dense2D<double> raw_;              // 9 coordinates of a triangle in each column
  hashed_triangle queue_[queue_size];
  position_table table_;  // the nodes of the block
  std::uint64_t node_count_ = 0;
  std::uint64_t triangle_count_ = 0;  // of whole blocks and the one at work
  std::uint64_t first_ = 0;           // the triangle of the file that came first
  std::uint64_t expected_ = 0;
  double smallest_height_ = 0;  // squared; 0 as long as there is no positive one
  unsigned in_queue_ = 0;
  unsigned skipped_ = 0;  // places of the first queue that stay empty, so that queues end where blocks end
};

/// Renumbers triangles, moves up those that do not repeat a node, and notes their nodes. Returns their number; the matrix keeps
/// its size.
std::uint64_t renumber_triangles(dense2D<unsigned>& connectivity, const dense1D<unsigned>& new_IDs,
                                 index_flags& used) noexcept;

}  // namespace qel::gridwork::detail::io

#endif
