// The parts of the module gridwork._core, one for each header of the library.
#ifndef QEL_GRIDWORK_PYTHON_CORE_H
#define QEL_GRIDWORK_PYTHON_CORE_H

#include <pybind11/pybind11.h>

namespace core {

void bind_errors(pybind11::module_& m);
void bind_ids(pybind11::module_& m);
void bind_transforms(pybind11::module_& m);
void bind_search(pybind11::module_& m);
void bind_detector(pybind11::module_& m);
void bind_topology(pybind11::module_& m);
void bind_quality(pybind11::module_& m);
void bind_metrics(pybind11::module_& m);
void bind_gradation(pybind11::module_& m);
void bind_input(pybind11::module_& m);
void bind_output(pybind11::module_& m);

}  // namespace core

#endif
