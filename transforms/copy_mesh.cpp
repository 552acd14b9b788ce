// Copies of a part inside one coordinates matrix: as it is, in a pattern, or mirrored.
#include <algorithm>
#include <limits>
#include <utility>

#include "core/growth.h"
#include "core/outputs.h"
#include "core/result.h"
#include "core/scaling.h"
#include "core/vectors.h"
#include "ids/distinct_indices.h"
#include "qel/gridwork/ids.h"
#include "qel/gridwork/transforms.h"
#include "transforms/motion.h"
#include "transforms/selection.h"

namespace qel::gridwork {

using namespace detail;

namespace {

/// True when `copies` copies of `count` nodes behind the first `first` ones have indices below `none`.
bool have_indices(std::uint64_t first, std::uint64_t count, std::uint64_t copies) noexcept {
  return count == 0 || (first < none && copies <= (none - first) / count);
}

/// What is worked out once for all copies of a part.
struct part {
  dense1D<unsigned> nodes;     // the distinct ones, in order of first appearance
  dense2D<unsigned> elements;  // with nodes by their position in `nodes`, counted from `first`

  /// False when memory, or the indices for the new nodes, do not suffice.
  [[nodiscard]] bool read(const dense2D<unsigned>& connectivity, std::uint64_t node_count, std::uint64_t copies,
                          std::uint64_t first) {
    return list_distinct(connectivity, nodes) == 0 && have_indices(node_count, nodes.size(), copies) &&
           elements.copy(connectivity) && number_elements(static_cast<unsigned>(first));
  }

 private:
  bool number_elements(unsigned first) {
    if (nodes.empty()) return true;
    dense1D<unsigned> new_ids;  // set for the part's nodes only: no other index is looked up
    if (!new_ids.resize(std::uint64_t{max_ID(nodes)} + 1)) return false;
    for (unsigned k = 0; k < nodes.size(); ++k) new_ids[nodes[k]] = first + k;
    change_indices(elements, new_ids);
    return true;
  }
};

/// Writes copies of the listed columns into the columns from `first` on, moved.
template <class Motion>
void write_nodes(dense2D<double>& coords, const dense1D<unsigned>& nodes, std::uint64_t first, const Motion& motion) {
  const std::uint64_t rows = coords.rows();
  for (std::uint64_t k = 0; k < nodes.size(); ++k) {
    const double* source = coords.column(nodes[k]);
    double* copy = coords.column(first + k);
    for (std::uint64_t i = 0; i < rows; ++i) copy[i] = source[i];
    motion(copy);
  }
}

/// Writes `elements` at `out`, its indices counted from `first`.
void write_elements(const dense2D<unsigned>& elements, unsigned first, unsigned* out) noexcept {
  const unsigned* nodes = elements.data();
  const std::uint64_t count = elements.size();
  for (std::uint64_t i = 0; i < count; ++i) out[i] = nodes[i] == none ? none : nodes[i] + first;
}

/// Overwrites `out` with one moved copy; `coords` gets `rows` rows. Memory is all there before anything changes.
template <class Motion>
int copy_once(dense2D<double>& coords, dense2D<unsigned>& out, std::uint64_t rows,
              const dense2D<unsigned>& connectivity, const Motion& motion) {
  const std::uint64_t first = coords.cols();
  part source;
  if (!source.read(connectivity, first, 1, first)) return out_of_memory;
  if (!grow(coords, rows, first + source.nodes.size(), 0.0)) return out_of_memory;
  write_nodes(coords, source.nodes, first, motion);
  out = std::move(source.elements);
  return 0;
}

double times(unsigned k, double x) noexcept { return k * x; }

template <unsigned Dim>
vector_fixed<double, Dim> times(unsigned k, vector_fixed<double, Dim> v) noexcept {
  for (double& x : v) x = k * x;
  return v;
}

/// The motion from the source to its k-th copy is made of k-fold steps, not of k motions.
template <unsigned Dim>
struct pattern {
  vector_fixed<double, Dim> shift;
  vector_fixed<double, Dim> center;
  typename rotation<Dim>::amount turn;

  bool is_identity() const noexcept { return is_zero(shift) && is_zero(turn); }

  auto motion_of(unsigned k) const noexcept {
    return [turning = rotation<Dim>(center, times(k, turn)), shifting = translation<Dim>(times(k, shift))](double* p) {
      if (!turning.is_identity()) turning(p);
      if (!shifting.is_identity()) shifting(p);
    };
  }
};

/// Appends n copies. Memory is all there before anything changes.
template <unsigned Dim>
int copy_in_pattern(dense2D<double>& coords, appended<dense2D<unsigned>>&& copies, const pattern<Dim>& steps,
                    unsigned n, const dense2D<unsigned>& connectivity) {
  if (coords.empty() || n == 0) return 0;
  if (!copies.keep_entries()) return out_of_memory;
  dense2D<unsigned>& out = copies;
  const std::uint64_t old_nodes = coords.cols();
  const std::uint64_t old_elements = out.cols();
  const std::uint64_t rows = std::max(out.rows(), connectivity.rows());
  part source;
  if (!source.read(connectivity, old_nodes, n, 0)) return out_of_memory;
  if (!source.elements.resize(rows, connectivity.cols(), none)) return out_of_memory;

  const dense1D<unsigned>& nodes = source.nodes;
  const std::uint64_t count = source.elements.cols();
  if (count > (std::numeric_limits<std::uint64_t>::max() - old_elements) / n) return out_of_memory;
  const bool moves = !nodes.empty() && !steps.is_identity();
  const std::uint64_t node_rows = moves ? std::max<std::uint64_t>(coords.rows(), Dim) : coords.rows();
  const std::uint64_t new_nodes = old_nodes + n * nodes.size();
  const std::uint64_t new_elements = old_elements + n * count;
  if (!make_room(coords, node_rows, new_nodes) || !make_room(out, rows, new_elements)) return out_of_memory;
  if (!grow(coords, node_rows, new_nodes, 0.0) || !grow(out, rows, new_elements, none)) return out_of_memory;
  if (source.elements.empty()) return 0;  // else a large n would loop over nothing

  for (unsigned k = 0; k < n; ++k) {
    const std::uint64_t first = old_nodes + k * nodes.size();
    write_nodes(coords, nodes, first, steps.motion_of(k + 1));
    write_elements(source.elements, static_cast<unsigned>(first), out.column(old_elements + k * count));
  }
  return 0;
}

/// Reflection in the line or plane through `point` across `normal`.
template <unsigned Dim>
class reflection {
 public:
  using vector = vector_fixed<double, Dim>;

  /// Scaling the normal does not change the reflection, and keeps its square in range.
  reflection(const vector& point, const vector& normal) noexcept : point_(point), normal_(normal) {
    scale(normal_.begin(), normal_.end(), scale_exponent(largest_magnitude(normal.begin(), normal.end())));
    square_ = dot(normal_, normal_);
  }

  void operator()(double* p) const noexcept {
    vector place;
    std::copy_n(p, Dim, place.begin());
    const double factor = 2 * (dot(difference(place, point_), normal_) / square_);
    for (unsigned k = 0; k < Dim; ++k) p[k] -= factor * normal_[k];
  }

 private:
  vector point_;
  vector normal_;
  double square_;
};

template <unsigned Dim>
int copy_mirrored(dense2D<double>& coords, dense2D<unsigned>& out, const vector_fixed<double, Dim>& point,
                  const vector_fixed<double, Dim>& normal, const dense2D<unsigned>& connectivity) {
  if (coords.empty()) return 0;
  if (dot(normal, normal) == 0) return -4;
  const std::uint64_t rows = std::max<std::uint64_t>(coords.rows(), Dim);
  return copy_once(coords, out, rows, connectivity, reflection<Dim>(point, normal));
}

}  // namespace

int copy_mesh(dense2D<double>& coords, dense2D<unsigned>& out, const dense2D<unsigned>& connectivity) {
  return copy_once(coords, out, coords.rows(), connectivity, [](double*) {});
}

int copy_mesh(dense2D<double>& coords, dense2D<unsigned>& out, const vector_fixed<double, 2>& shift,
              const vector_fixed<double, 2>& center, double angle, unsigned n, const dense2D<unsigned>& connectivity) {
  return copy_in_pattern(coords, appended(out, connectivity), pattern<2>{shift, center, angle}, n, connectivity);
}

int copy_mesh(dense2D<double>& coords, dense2D<unsigned>& out, const vector_fixed<double, 3>& shift,
              const vector_fixed<double, 3>& center, const vector_fixed<double, 3>& rotation, unsigned n,
              const dense2D<unsigned>& connectivity) {
  return copy_in_pattern(coords, appended(out, connectivity), pattern<3>{shift, center, rotation}, n, connectivity);
}

int copy_sym_mesh(dense2D<double>& coords, dense2D<unsigned>& out, const vector_fixed<double, 2>& point,
                  const vector_fixed<double, 2>& normal, const dense2D<unsigned>& connectivity) {
  return copy_mirrored(coords, out, point, normal, connectivity);
}

int copy_sym_mesh(dense2D<double>& coords, dense2D<unsigned>& out, const vector_fixed<double, 3>& point,
                  const vector_fixed<double, 3>& normal, const dense2D<unsigned>& connectivity) {
  return copy_mirrored(coords, out, point, normal, connectivity);
}

}  // namespace qel::gridwork
