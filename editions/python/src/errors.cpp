#include <pybind11/stl.h>

#include <cerrno>

#include "core.h"
#include "failure.h"

namespace core {

namespace {

void set_error(const failure& what) {
  const gw::operation_name& name = gw::operation_names[static_cast<unsigned>(what.call)];
  const py::object error =
      py::module_::import("gridwork._errors").attr("make_error")(name.function, what.code, what.what());
  PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(error.ptr())), error.ptr());
}

void set_error(const file_failure& what) {
  const auto filename = py::reinterpret_steal<py::object>(
      PyUnicode_DecodeFSDefaultAndSize(what.filename.data(), py::ssize_t(what.filename.size())));
  errno = what.error;
  PyErr_SetFromErrnoWithFilenameObject(PyExc_OSError, filename.ptr());
}

void translate(std::exception_ptr thrown) {
  try {
    if (thrown) std::rethrow_exception(thrown);
  } catch (const failure& what) {
    set_error(what);
  } catch (const file_failure& what) {
    set_error(what);
  }
}

/// All (function, code, sentence).
std::vector<std::tuple<std::string, int, std::string>> result_codes() {
  std::vector<std::tuple<std::string, int, std::string>> rows;
  for (const gw::result_code& row : gw::result_codes) {
    rows.emplace_back(gw::operation_names[static_cast<unsigned>(row.call)].function, row.code, row.sentence);
  }
  return rows;
}

}  // namespace

void bind_errors(py::module_& m) {
  py::register_local_exception_translator(translate);
  m.def("result_codes", result_codes);
}

}  // namespace core
