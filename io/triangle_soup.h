// Unconnected triangles on their way to a mesh.
#ifndef QEL_GRIDWORK_IO_TRIANGLE_SOUP_H
#define QEL_GRIDWORK_IO_TRIANGLE_SOUP_H

#include <cstdint>

#include "io/stl_geometry.h"
#include "qel/dense.h"

namespace qel::gridwork::io {

/// Takes triangles one by one and merges their coincident corners block by block while a block is in the cache; only
/// distinct corners are kept. finish() then merges near nodes.
///
/// A file without any triangle of positive height must come out unmerged, so blocks are kept as they are until the first
/// positive height is met.
class triangle_soup {
 public:
  triangle_soup(dense2D<double>& coords, dense2D<unsigned>& connectivity) noexcept
      : coords_(coords), connectivity_(connectivity) {}

  /// How many triangles are likely to come, so that outputs are sized once; a wrong number does no harm.
  void expect(std::uint64_t triangles) noexcept { expected_ = triangles; }

  [[nodiscard]] bool add(const triangle& t) {
    if (in_block_ == block_.cols() && !make_room()) return false;
    double* corners = block_.column(in_block_++);
    for (const vector3& corner : t.corners) {
      for (const double x : corner) *corners++ = x;
    }
    note_height(t);
    return true;
  }

  /// Makes the mesh. 0, or a negative result.
  int finish();

 private:
  static constexpr std::uint64_t block_size = 100000;

  void note_height(const triangle& t) noexcept {
    if (smallest_height_ > 0 && is_surely_higher(t, smallest_height_)) return;
    const double height = smallest_squared_height(t);
    if (height > 0 && (smallest_height_ == 0 || height < smallest_height_)) smallest_height_ = height;
  }

  bool make_room();
  bool close_block();
  bool keep_raw(const dense2D<double>& nodes);
  bool merge_raw();
  bool append_merged(const dense2D<double>& nodes);
  bool reserve_outputs(std::uint64_t nodes, std::uint64_t triangles);
  int merge_near_nodes();

  dense2D<double>& coords_;
  dense2D<unsigned>& connectivity_;
  dense2D<double> block_;  // 9 coordinates of a triangle in each column
  dense2D<double> raw_;    // nodes of whole blocks that were not merged yet
  dense1D<unsigned> new_IDs_;
  std::uint64_t in_block_ = 0;
  std::uint64_t expected_ = 0;
  double smallest_height_ = 0;  // squared; 0 as long as there is no positive one
};

}  // namespace qel::gridwork::io

#endif
