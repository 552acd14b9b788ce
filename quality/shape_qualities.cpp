// Shape qualities of elements, and the worst one.
#include "qel/gridwork/quality.h"
#include "quality/measure_elements.h"
#include "quality/shape_measures.h"

namespace qel::gridwork {

using namespace detail;

int shape_qualities(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                    dense1D<double>& Q) {
  return measure_all<quality_measure>(coords, connectivity, type, output(Q, coords));
}

int min_quality(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type, double& qmin,
                unsigned& jmin) {
  qmin = 1.0;
  jmin = none;
  if (connectivity.empty()) return 0;
  const int code = check_mesh(coords, connectivity, type);
  if (code != 0) return code;
  return measure_elements<quality_measure>(coords, connectivity, type, [&](std::uint64_t j, double q) {
    if (!(q < qmin)) return;
    qmin = q;
    jmin = static_cast<unsigned>(j);
  });
}

}  // namespace qel::gridwork
