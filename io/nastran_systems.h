// Coordinate systems of NASTRAN bulk data.
#ifndef QEL_GRIDWORK_IO_NASTRAN_SYSTEMS_H
#define QEL_GRIDWORK_IO_NASTRAN_SYSTEMS_H

#include <cstdint>

#include "io/columns_by_ID.h"
#include "io/identified_nodes.h"
#include "qel/dense.h"
#include "qel/fixed.h"

namespace qel::gridwork::detail::io::nastran {

enum class system_kind : unsigned char { rectangular, cylindrical, spherical };
enum class system_state : unsigned char { waiting, in_work, known };

/// A system by three points: its origin, one on the z axis, one in the half plane of the x axis.
struct coordinate_system {
  unsigned ID = 0;
  unsigned nodes[3] = {};  // the points, by identifier; 0 where they are given
  unsigned reference = 0;  // the system in which they are given
  system_kind kind = system_kind::rectangular;
  system_state state = system_state::waiting;
  double points[12] = {};  // once known: the origin, then the directions of the axes
};

/// The systems of a deck, each made known when it is first needed.
class coordinate_systems {
 public:
  [[nodiscard]] bool append(const coordinate_system& system) noexcept { return systems_.push_back(system); }

  /// Moves all nodes into the basic system. 0, unknown_node for a point that is no node, no_system for a
  /// system that is missing, leads back to itself or has its points in line, out_of_memory.
  [[nodiscard]] int place_nodes(identified_nodes& nodes) noexcept;

 private:
  int make_known(unsigned ID, identified_nodes& nodes) noexcept;
  int waits_for(const coordinate_system& system, identified_nodes& nodes, unsigned& index) noexcept;
  int find_unknown(unsigned ID, unsigned& index) noexcept;
  bool finish(coordinate_system& system, identified_nodes& nodes) noexcept;
  vector_fixed<double, 3> to_basic(unsigned ID, const double* point) const noexcept;

  dense1D<coordinate_system> systems_;
  dense1D<unsigned> stack_;
  columns_by_ID columns_;
};

}  // namespace qel::gridwork::detail::io::nastran

#endif
