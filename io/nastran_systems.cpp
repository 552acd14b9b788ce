#include "io/nastran_systems.h"

#include <algorithm>
#include <cmath>

#include "core/elementary.h"
#include "core/result.h"
#include "core/vectors.h"
#include "io/input_result.h"

namespace qel::gridwork::detail::io::nastran {

namespace {

using vector = vector_fixed<double, 3>;

vector load(const double* p) noexcept { return {p[0], p[1], p[2]}; }

/// Exact at quarter turns.
sine_cosine of_degrees(double angle) noexcept {
  int quarters = 0;
  constexpr double radians = 0x1.1df46a2529d39p-6;
  const auto [s, c] = sine_and_cosine(std::remquo(angle, 90.0, &quarters) * radians);
  const sine_cosine turned[] = {{s, c}, {c, -s}, {-s, -c}, {-c, s}};
  return turned[static_cast<unsigned>(quarters) % 4];
}

/// Coordinates along the axes of a system.
vector along_axes(system_kind kind, const double* p) noexcept {
  if (kind == system_kind::rectangular) return load(p);
  const auto [s, c] = of_degrees(p[1]);
  if (kind == system_kind::cylindrical) return {p[0] * c, p[0] * s, p[2]};
  const sine_cosine around = of_degrees(p[2]);
  return {p[0] * s * around.cosine, p[0] * s * around.sine, p[0] * c};
}

/// Scales a vector to length 1; false for a vector without a direction.
bool normalize(vector& v) noexcept {
  const double largest = std::max({std::abs(v[0]), std::abs(v[1]), std::abs(v[2])});
  if (!(largest > 0) || !std::isfinite(largest)) return false;
  v = {v[0] / largest, v[1] / largest, v[2] / largest};
  const double length = std::sqrt(dot(v, v));
  v = {v[0] / length, v[1] / length, v[2] / length};
  return true;
}

/// The axes of a system with its origin in a, b on the z axis and c in the half plane of the x axis. False when the
/// points are in line.
bool make_axes(const vector& a, const vector& b, const vector& c, vector* axes) noexcept {
  constexpr double least_sine = 1e-12;  // below, rounding decides where the x axis points
  vector z = difference(b, a), x = difference(c, a);
  if (!normalize(z) || !normalize(x)) return false;
  vector y = cross(z, x);
  if (!(dot(y, y) > least_sine * least_sine) || !normalize(y)) return false;
  axes[0] = cross(y, z);
  axes[1] = y;
  axes[2] = z;
  return true;
}

}  // namespace

int coordinate_systems::place_nodes(identified_nodes& nodes) noexcept {
  dense1D<unsigned> IDs;
  if (!IDs.resize(systems_.size())) return out_of_memory;
  std::transform(systems_.begin(), systems_.end(), IDs.begin(), [](const coordinate_system& s) { return s.ID; });
  if (!columns_.prepare(IDs)) return out_of_memory;
  // Points of a system may be nodes: all systems are known before the first node moves.
  for (unsigned j = 0; j < nodes.count(); ++j) {
    const int result = make_known(nodes.system(j), nodes);
    if (result != 0) return result;
  }
  for (unsigned j = 0; j < nodes.count(); ++j) {
    if (nodes.system(j) == 0) continue;
    const vector point = to_basic(nodes.system(j), nodes.point(j));
    std::copy_n(point.data(), 3, nodes.point(j));
  }
  return 0;
}

/// Goes down from system to system with a stack of its own: chains may be as long as the file.
int coordinate_systems::make_known(unsigned ID, identified_nodes& nodes) noexcept {
  unsigned index = none;
  int result = find_unknown(ID, index);
  stack_.clear();
  while (result == 0) {
    if (index != none) {
      systems_[index].state = system_state::in_work;
      if (!stack_.push_back(index)) return out_of_memory;
    }
    if (stack_.empty()) return 0;
    coordinate_system& top = systems_[stack_[stack_.size() - 1]];
    result = waits_for(top, nodes, index);
    if (result != 0 || index != none) continue;
    if (!finish(top, nodes)) return no_system;
    if (!stack_.resize(stack_.size() - 1)) return out_of_memory;  // never grows
  }
  return result;
}

/// The index of a system that is not known yet; `none` for one that is. no_system for one that is missing or in work.
int coordinate_systems::find_unknown(unsigned ID, unsigned& index) noexcept {
  index = none;
  if (ID == 0) return 0;
  const unsigned found = columns_(ID);
  if (found == none || systems_[found].state == system_state::in_work) return no_system;
  if (systems_[found].state == system_state::waiting) index = found;
  return 0;
}

/// The first system that has to be known before this one; `none` when all are.
int coordinate_systems::waits_for(const coordinate_system& system, identified_nodes& nodes, unsigned& index) noexcept {
  if (system.nodes[0] == 0) return find_unknown(system.reference, index);
  for (const unsigned ID : system.nodes) {
    const unsigned node = nodes.find(ID);
    if (node == none) return unknown_node;
    const int result = find_unknown(nodes.system(node), index);
    if (result != 0 || index != none) return result;
  }
  return 0;
}

/// Makes a system known whose points lie in known ones; false when they are in line.
bool coordinate_systems::finish(coordinate_system& system, identified_nodes& nodes) noexcept {
  vector p[3];
  for (unsigned k = 0; k < 3; ++k) {
    if (system.nodes[0] == 0) {
      p[k] = to_basic(system.reference, system.points + 3 * k);
    } else {
      const unsigned node = nodes.find(system.nodes[k]);
      p[k] = to_basic(nodes.system(node), nodes.point(node));
    }
  }
  vector axes[3];
  if (!make_axes(p[0], p[1], p[2], axes)) return false;
  std::copy_n(p[0].data(), 3, system.points);
  for (unsigned k = 0; k < 3; ++k) std::copy_n(axes[k].data(), 3, system.points + 3 * (k + 1));
  system.state = system_state::known;
  return true;
}

/// A point of a known system, in the basic one.
vector_fixed<double, 3> coordinate_systems::to_basic(unsigned ID, const double* point) const noexcept {
  if (ID == 0) return load(point);
  const coordinate_system& system = systems_[columns_(ID)];
  const double* const origin = system.points;
  const vector p = along_axes(system.kind, point);
  vector result;
  for (unsigned i = 0; i < 3; ++i) {
    result[i] = origin[i] + (p[0] * origin[3 + i] + p[1] * origin[6 + i] + p[2] * origin[9 + i]);
  }
  return result;
}

}  // namespace qel::gridwork::detail::io::nastran
