#include "core.h"

#include <qel/gridwork.h>

PYBIND11_MODULE(_core, m) {
  m.doc() = "The library's functions on exact types; gridwork's modules are the way to them.";
  m.attr("version") = qel::gridwork::version();
  core::bind_errors(m);
  core::bind_ids(m);
  core::bind_transforms(m);
  core::bind_search(m);
  core::bind_detector(m);
  core::bind_topology(m);
  core::bind_quality(m);
  core::bind_metrics(m);
  core::bind_gradation(m);
  core::bind_input(m);
  core::bind_output(m);
}
