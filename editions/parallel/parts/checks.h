// What all functions ask of parts.
#ifndef QEL_GRIDWORK_PARALLEL_PARTS_CHECKS_H
#define QEL_GRIDWORK_PARALLEL_PARTS_CHECKS_H

#include "communication/team.h"
#include "qel/gridwork/elements.h"
#include "qel/gridwork/mpi.h"

namespace qel::gridwork::detail::parallel {

using mpi::mesh_part;
using mpi::node_sharing;

/// 0 for a part that keeps what mesh_part promises, as far as it can be seen here; else -1.
int check_part(const mesh_part& part) noexcept;

/// What a function on elements of a type finds wrong: -1 for a row count that is not the type's, -2 for a type that
/// visit_shape() does not have. An empty part goes with all types.
int check_type(const mesh_part& part, element_type type) noexcept;

/// True for a matrix of neighbours of the part's elements, as get_neighbors() makes it.
bool fits(const dense2D<std::uint64_t>& neighbors, const mesh_part& part, element_type type) noexcept;

/// Row counts of all ranks, the same everywhere, also where a part is empty; 0 where all are.
struct part_shape {
  unsigned dim = 0;
  unsigned rows = 0;
};

/// The first agreement of a call on parts. Other scalars are added before conclude().
class part_agreement : public agreement {
 public:
  part_agreement(team& ranks, const mesh_part& part) noexcept;

  /// The code of all ranks, given that of this one's other checks.
  int conclude(int code) noexcept;

  part_shape shape() const noexcept;

 private:
  const mesh_part& part_;
};

/// True when a sharing goes with a part of so many nodes.
bool goes_with(const node_sharing& sharing, std::uint64_t nodes, const team& ranks) noexcept;

}  // namespace qel::gridwork::detail::parallel

#endif
