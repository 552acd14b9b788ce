// The elements of a mesh on one side of a line or plane, as they are.
#include <cstdint>
#include <limits>
#include <utility>

#include "core/coordinates.h"
#include "core/result.h"
#include "qel/gridwork/ids.h"
#include "qel/gridwork/transforms.h"
#include "transforms/half_space.h"
#include "transforms/selected_elements.h"

namespace qel::gridwork {

using namespace detail;

namespace {

constexpr bool is_kept(unsigned mode, unsigned sides) noexcept {
  if (sides == 0 || (sides & lost) != 0) return false;
  const bool is_crossed = (sides & before) != 0 && (sides & behind) != 0;
  if (mode == 2) return is_crossed;
  return (sides & behind) == 0 || (mode == 1 && is_crossed);
}

constexpr fates fates_of(unsigned mode) noexcept {
  return make_fates([mode](unsigned sides) { return is_kept(mode, sides) ? fate::kept : fate::dropped; });
}

constexpr fates fates_by_mode[] = {fates_of(0), fates_of(1), fates_of(2)};

template <unsigned Dim>
int clip_whole(const dense2D<double>& coords, dense2D<unsigned>& out, const half_space<Dim>& space,
               const dense2D<unsigned>& connectivity, unsigned mode, dense1D<unsigned>& elements) {
  node_sides sides;
  selected_elements selected;
  clipped_elements clipped;
  if (!sides.find(coords, space) || !selected.select(connectivity, sides, fates_by_mode[mode])) return out_of_memory;
  const std::uint64_t left_out = connectivity.cols() - selected.kept.size();
  if (left_out > std::uint64_t{std::numeric_limits<int>::max()}) return out_of_memory;
  if (!clipped.assemble(connectivity, selected.kept, element_pieces(connectivity.rows()))) return out_of_memory;
  out = std::move(clipped.columns);
  elements = std::move(clipped.sources);
  return static_cast<int>(left_out);
}

template <unsigned Dim>
int check_and_clip(const dense2D<double>& coords, dense2D<unsigned>& out, const vector_fixed<double, Dim>& point,
                   const vector_fixed<double, Dim>& normal, const dense2D<unsigned>& connectivity, unsigned mode,
                   double tol, dense1D<unsigned>& elements) {
  if (connectivity.empty()) {
    out.clear();
    elements.clear();
    return 0;
  }
  if (const int code = check_plane(coords, point, normal); code != 0) return code;
  if (!check_IDs(connectivity, node_bound(coords))) return -5;
  if (mode > 2) return -6;
  if (!(tol >= 0)) return -7;
  return clip_whole(coords, out, half_space<Dim>(point, normal, tol), connectivity, mode, elements);
}

}  // namespace

int clip(const dense2D<double>& coords, dense2D<unsigned>& out, const vector_fixed<double, 2>& point,
         const vector_fixed<double, 2>& normal, const dense2D<unsigned>& connectivity, unsigned mode, double tol,
         dense1D<unsigned>& elements) {
  return check_and_clip(coords, out, point, normal, connectivity, mode, tol, elements);
}

int clip(const dense2D<double>& coords, dense2D<unsigned>& out, const vector_fixed<double, 3>& point,
         const vector_fixed<double, 3>& normal, const dense2D<unsigned>& connectivity, unsigned mode, double tol,
         dense1D<unsigned>& elements) {
  return check_and_clip(coords, out, point, normal, connectivity, mode, tol, elements);
}

}  // namespace qel::gridwork
