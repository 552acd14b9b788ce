// Elements on their way to other ranks, with their nodes.
#ifndef QEL_GRIDWORK_PARALLEL_PARTS_SHIPPING_H
#define QEL_GRIDWORK_PARALLEL_PARTS_SHIPPING_H

#include "communication/exchange.h"
#include "parts/checks.h"

namespace qel::gridwork::detail::parallel {

/// Collective. Sends elements of a part, listed by destination, and makes a part of those that come. `sources` tells where
/// each came from. The code of all ranks.
int ship(team& ranks, int code, const mesh_part& part, const part_shape& shape, const outbox<unsigned>& elements,
         mesh_part& arrived, dense1D<int>& sources);

}  // namespace qel::gridwork::detail::parallel

#endif
