// Result codes as exceptions.
#ifndef QEL_GRIDWORK_PYTHON_FAILURE_H
#define QEL_GRIDWORK_PYTHON_FAILURE_H

#include <pybind11/pybind11.h>
#include <qel/gridwork/messages.h>

#include <exception>
#include <string>

namespace core {

namespace py = pybind11;
namespace gw = qel::gridwork;

/// A negative result of the library; becomes the Python exception that gridwork._errors makes of it.
struct failure : std::exception {
  failure(gw::operation operation, int result) noexcept : call(operation), code(result) {}
  const char* what() const noexcept override { return gw::message(call, code); }

  gw::operation call;
  int code;
};

/// A file that the system refuses; becomes the OSError of its number.
struct file_failure : std::exception {
  file_failure(std::string path, int number) : filename(std::move(path)), error(number) {}
  const char* what() const noexcept override { return "the file cannot be opened"; }

  std::string filename;
  int error;
};

/// The result, when it is no failure.
inline int checked(gw::operation call, int result) {
  if (result < 0) throw failure(call, result);
  return result;
}

}  // namespace core

#endif
