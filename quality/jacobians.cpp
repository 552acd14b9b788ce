// The smallest Jacobian determinant at the corners of each element.
#include "qel/gridwork/quality.h"
#include "quality/measure_elements.h"
#include "quality/shape_measures.h"

namespace qel::gridwork {

using namespace detail;

int jacobians(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
              dense1D<double>& J) {
  return measure_all<jacobian_measure>(coords, connectivity, type, output(J, coords));
}

}  // namespace qel::gridwork
