// Gradation of tensors.
#ifndef QEL_GRIDWORK_METRICS_TENSOR_GRADATION_H
#define QEL_GRIDWORK_METRICS_TENSOR_GRADATION_H

#include "qel/dense.h"

namespace qel::gridwork::detail {

enum class growth { proportional, additive };

/// Bounds the tensors along the edges of a list, which is used up. The arguments are those of a public function, and
/// valid. `ids` may be null.
int bound_tensors(const dense2D<double>& coords, dense2D<unsigned>& edges, dense2D<double>& tensors, growth law,
                  double rate, dense1D<unsigned>* ids);

}  // namespace qel::gridwork::detail

#endif
