// Boundaries between elements of different colours.
#include <algorithm>

#include "core/append_columns.h"
#include "core/elements.h"
#include "core/limits.h"
#include "core/outputs.h"
#include "core/position_table.h"
#include "core/result.h"
#include "qel/gridwork/ids.h"
#include "qel/gridwork/topology.h"
#include "topology/boundary_slots.h"

namespace qel::gridwork {

using namespace detail;

namespace {

enum listing : unsigned { once, once_and_outer, every_side };

/// Elements with their colours, and which of their slots are to be listed.
template <class Columns>
class colored_mesh {
 public:
  colored_mesh(const dense2D<unsigned>& connectivity, const dense2D<unsigned>& neighbors,
               const dense1D<unsigned>& colors, unsigned mode) noexcept
      : connectivity_(connectivity), neighbors_(neighbors), colors_(colors), mode_(mode) {}

  /// Calls visit(e, k, colour, colour across) for the slots to be listed, in increasing order.
  template <class Visit>
  void visit_listed(Visit visit) const {
    for (unsigned e = 0; e < colors_.size(); ++e) {
      prefetch_colors(e + limits::elements_ahead);
      const unsigned own = colors_[e];
      if (own == none) continue;
      const unsigned count = Columns::of(connectivity_.column(e)).boundaries;
      for (unsigned k = 0; k < count; ++k) {
        const unsigned across = color_across(e, k);
        if (across != own && is_listed(e, k, own, across)) visit(e, k, own, across);
      }
    }
  }

  boundary_nodes boundary(unsigned e, unsigned k) const noexcept {
    const unsigned* nodes = connectivity_.column(e);
    return boundary_of<Columns>(Columns::of(nodes), nodes, k);
  }

 private:
  void prefetch_colors(std::uint64_t e) const noexcept {
    if (e >= colors_.size()) return;
    for (const unsigned* n = neighbors_.begin_column(e); n != neighbors_.end_column(e); ++n) {
      if (*n != none) prefetch(colors_.data() + *n);
    }
  }

  unsigned color_across(unsigned e, unsigned k) const noexcept {
    const unsigned across = neighbors_(k, e);
    return across == none ? none : colors_[across];
  }

  bool is_listed(unsigned e, unsigned k, unsigned own, unsigned across) const noexcept {
    if (across == none) return mode_ != once;
    return mode_ == every_side || own < across || !is_returned(e, k);
  }

  /// True when the element across has a link back over the same boundary.
  bool is_returned(unsigned e, unsigned k) const noexcept {
    const boundary_nodes here = boundary(e, k);
    const unsigned across = neighbors_(k, e), count = Columns::of(connectivity_.column(across)).boundaries;
    for (unsigned j = 0; j < count; ++j) {
      const bool is_back = neighbors_(j, across) == e;
      if (is_back && compare_boundaries(here, boundary(across, j)) != direction::different) return true;
    }
    return false;
  }

  const dense2D<unsigned>& connectivity_;
  const dense2D<unsigned>& neighbors_;
  const dense1D<unsigned>& colors_;
  unsigned mode_;
};

/// Makes room for `count` more slots and pairs; nothing has changed when memory ran out.
bool make_room_for_both(dense1D<unsigned>& slots, std::uint64_t, dense2D<unsigned>& pairs, std::uint64_t count) {
  const std::uint64_t size = slots.size() + count;
  return slots.reserve(size, 2) && append_columns(pairs, 2, count) && slots.resize(size);
}

/// The same for boundaries of `rows` rows.
bool make_room_for_both(dense2D<unsigned>& boundaries, std::uint64_t rows, dense2D<unsigned>& pairs,
                        std::uint64_t count) {
  const std::uint64_t old_rows = boundaries.rows(), old_cols = boundaries.cols();
  if (!append_columns(boundaries, rows, count)) return false;
  if (append_columns(pairs, 2, count)) return true;
  (void)boundaries.resize(old_rows, old_cols);  // which takes no memory
  return false;
}

unsigned* last_columns(dense1D<unsigned>& slots, std::uint64_t count) noexcept { return slots.end() - count; }
unsigned* last_columns(dense2D<unsigned>& m, std::uint64_t count) noexcept { return m.column(m.cols() - count); }

template <class Columns>
unsigned* write(const colored_mesh<Columns>&, unsigned e, unsigned k, const dense1D<unsigned>&,
                unsigned* out) noexcept {
  *out = e * Columns::largest.boundaries + k;
  return out + 1;
}

template <class Columns>
unsigned* write(const colored_mesh<Columns>& mesh, unsigned e, unsigned k, const dense2D<unsigned>&,
                unsigned* out) noexcept {
  return std::copy_n(mesh.boundary(e, k).nodes, Columns::largest.boundary_nodes, out);
}

template <class Columns, class Boundaries>
int append_boundaries(const colored_mesh<Columns>& mesh, Boundaries& boundaries, dense2D<unsigned>& pairs) {
  std::uint64_t count = 0;
  mesh.visit_listed([&count](unsigned, unsigned, unsigned, unsigned) { ++count; });
  if (count == 0) return 0;
  if (!make_room_for_both(boundaries, Columns::largest.boundary_nodes, pairs, count)) return out_of_memory;
  unsigned* boundary = last_columns(boundaries, count);
  unsigned* pair = last_columns(pairs, count);
  mesh.visit_listed([&](unsigned e, unsigned k, unsigned own, unsigned across) {
    boundary = write(mesh, e, k, boundaries, boundary);
    *pair++ = own;
    *pair++ = across;
  });
  return 0;
}

bool takes_boundaries(const dense1D<unsigned>&, element_type) noexcept { return true; }
bool takes_boundaries(const dense2D<unsigned>& boundaries, element_type type) noexcept {
  return boundaries.empty() || boundaries.rows() == nbr_boundary_nodes(type);
}

template <class Boundaries>
int list_boundaries(const dense2D<unsigned>& connectivity, const dense2D<unsigned>& neighbors, element_type type,
                    const dense1D<unsigned>& colors, unsigned mode, Boundaries& boundaries, dense2D<unsigned>& pairs) {
  if (connectivity.empty()) return 0;
  type = resolve_type(type, connectivity.rows());
  if (const int result = check_neighbors(connectivity, neighbors, type); result != 0) return result;
  if (colors.size() != connectivity.cols()) return -4;
  if (mode > every_side) return -5;
  if (!takes_boundaries(boundaries, type)) return -6;
  if (!pairs.empty() && pairs.rows() != 2) return -7;
  if (!slot_codes_fit(connectivity.cols(), nbr_boundaries(type))) return out_of_memory;
  return visit_shape(type, -3, [&](auto columns) {
    appended found(boundaries, connectivity, neighbors, colors);
    appended their_colors(pairs, connectivity, neighbors, colors, boundaries);
    if (!found.keep_entries() || !their_colors.keep_entries()) return out_of_memory;
    const colored_mesh<decltype(columns)> mesh(connectivity, neighbors, colors, mode);
    return append_boundaries<decltype(columns), Boundaries>(mesh, found, their_colors);
  });
}

}  // namespace

int get_colors_boundaries(const dense2D<unsigned>& connectivity, const dense2D<unsigned>& neighbors, element_type type,
                          const dense1D<unsigned>& colors, unsigned mode, dense1D<unsigned>& slots,
                          dense2D<unsigned>& pairs) {
  return list_boundaries(connectivity, neighbors, type, colors, mode, slots, pairs);
}

int get_colors_boundaries(const dense2D<unsigned>& connectivity, const dense2D<unsigned>& neighbors, element_type type,
                          const dense1D<unsigned>& colors, unsigned mode, dense2D<unsigned>& boundaries,
                          dense2D<unsigned>& pairs) {
  return list_boundaries(connectivity, neighbors, type, colors, mode, boundaries, pairs);
}

}  // namespace qel::gridwork
