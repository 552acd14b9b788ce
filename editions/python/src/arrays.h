// How numpy's arrays become the library's and back: a row of numpy is a column of the library, memory is shared.
//
// An argument is a view of numpy's memory. It must have the exact type, native and aligned, with entries side by side in
// every row; everything else is a TypeError (the Python layer converts, and says so). A result takes its block along: a
// capsule owns it, and lives as long as any numpy array that looks into it.
#ifndef QEL_GRIDWORK_PYTHON_ARRAYS_H
#define QEL_GRIDWORK_PYTHON_ARRAYS_H

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>
#include <qel/gridwork.h>

#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace core {

namespace py = pybind11;
namespace gw = qel::gridwork;

using values = qel::dense1D<double>;
using matrix = qel::dense2D<double>;
using indices = qel::dense1D<unsigned>;
using cells = qel::dense2D<unsigned>;
using blocks = std::vector<cells>;

/// An argument that is changed in place: it must be writeable.
template <class Array>
struct in_place {
  Array array;
};

/// True when numpy's array can be looked at as `T` entries, `dimensions` of them deep, without a copy.
template <class T>
bool fits(const py::array& from, py::ssize_t dimensions) {
  const py::ssize_t last = dimensions - 1;
  if (!from.dtype().equal(py::dtype::of<T>()) || from.ndim() != dimensions) return false;
  if ((from.flags() & py::detail::npy_api::NPY_ARRAY_ALIGNED_) == 0) return false;
  return from.size() == 0 || from.shape(last) == 1 || from.strides(last) == py::ssize_t{sizeof(T)};
}

template <class T>
T* first_entry(const py::array& from) {
  return static_cast<T*>(const_cast<void*>(from.data()));
}

template <class T>
bool view(const py::array& from, qel::dense1D<T>& to) {
  if (!fits<T>(from, 1)) return false;
  const auto size = static_cast<std::uint64_t>(from.size());
  if (size != 0) to = qel::dense1D<T>(size, first_entry<T>(from));
  if (to.size() != size) throw std::bad_alloc();
  return true;
}

/// The distance of rows in entries, or 0 where rows overlap, run backwards or lie between entries.
template <class T>
std::uint64_t row_distance(const py::array& from) {
  constexpr auto entry = py::ssize_t{sizeof(T)};
  const py::ssize_t bytes = from.shape(0) == 1 ? from.shape(1) * entry : from.strides(0);
  const bool usable = bytes % entry == 0 && bytes / entry >= from.shape(1);
  return usable ? static_cast<std::uint64_t>(bytes / entry) : 0;
}

template <class T>
bool view(const py::array& from, qel::dense2D<T>& to) {
  if (!fits<T>(from, 2)) return false;
  const auto rows = static_cast<std::uint64_t>(from.shape(1));
  const auto cols = static_cast<std::uint64_t>(from.shape(0));
  if (from.size() == 0) {
    to = qel::dense2D<T>(rows, cols);
    return true;
  }
  const std::uint64_t distance = row_distance<T>(from);
  if (distance == 0) return false;
  to = qel::dense2D<T>(rows, cols, distance, first_entry<T>(from));
  if (to.cols() != cols) throw std::bad_alloc();
  return true;
}

/// A copy of its own; memory that runs out is a MemoryError.
template <class Array>
Array copied(const Array& array) {
  Array own;
  if (!own.copy(array)) throw std::bad_alloc();
  return own;
}

inline blocks copied(const blocks& all) {
  blocks own;
  for (const cells& block : all) own.push_back(copied(block));
  return own;
}

/// The library's list of types.
inline qel::dense1D<int> type_list(const std::vector<int>& types) {
  qel::dense1D<int> list(types.size());
  if (list.size() != types.size()) throw std::bad_alloc();
  std::copy(types.begin(), types.end(), list.begin());
  return list;
}

/// `array` with `rows` rows also when it has no column: numpy's users rely on the shape.
template <class T>
qel::dense2D<T> shaped(qel::dense2D<T> array, std::uint64_t rows) {
  if (array.cols() == 0 && !array.resize(rows, 0)) throw std::bad_alloc();
  return array;
}

template <class T>
bool is_compact(const qel::dense1D<T>&) {
  return true;
}

template <class T>
bool is_compact(const qel::dense2D<T>& array) {
  return array.ld() == array.rows() || array.cols() < 2;
}

template <class T>
std::vector<py::ssize_t> shape(const qel::dense1D<T>& array) {
  return {static_cast<py::ssize_t>(array.size())};
}

template <class T>
std::vector<py::ssize_t> shape(const qel::dense2D<T>& array) {
  return {static_cast<py::ssize_t>(array.cols()), static_cast<py::ssize_t>(array.rows())};
}

/// A numpy array over the block of `array`, which must be nobody else's: views of anything are copied first.
template <class Array>
py::object own(Array array) {
  using entry = typename Array::value_type;
  const std::vector<py::ssize_t> extents = shape(array);
  if (array.empty()) return py::array_t<entry>(extents);
  if (array.is_borrowed() || !array.owns_block_alone() || !is_compact(array)) array = copied(array);
  auto kept = std::make_unique<Array>(std::move(array));
  const py::capsule owner(kept.get(), [](void* block) { delete static_cast<Array*>(block); });
  const entry* first = kept.release()->data();
  return py::array_t<entry>(extents, first, owner);
}

/// Binds a function that runs without the interpreter's lock.
template <class Function>
void def(py::module_& m, const char* name, Function function) {
  m.def(name, function, py::call_guard<py::gil_scoped_release>());
}

}  // namespace core

namespace pybind11::detail {

/// Arguments and results of the type `Array`.
template <class Array>
struct shared_array_caster {
  PYBIND11_TYPE_CASTER(Array, const_name("numpy.ndarray"));

  bool load(handle source, bool /*convert*/) {
    return isinstance<array>(source) && core::view(reinterpret_borrow<array>(source), value);
  }

  static handle cast(Array result, return_value_policy /*policy*/, handle /*parent*/) {
    return core::own(std::move(result)).release();
  }
};

template <class T>
struct type_caster<qel::dense1D<T>> : shared_array_caster<qel::dense1D<T>> {};

template <class T>
struct type_caster<qel::dense2D<T>> : shared_array_caster<qel::dense2D<T>> {};

template <class Array>
struct type_caster<core::in_place<Array>> {
  PYBIND11_TYPE_CASTER(core::in_place<Array>, const_name("numpy.ndarray"));

  bool load(handle source, bool /*convert*/) {
    if (!isinstance<array>(source)) return false;
    const auto given = reinterpret_borrow<array>(source);
    return given.writeable() && core::view(given, value.array);
  }
};

/// Element types are small integers; other numbers are refused here already.
template <>
struct type_caster<core::gw::element_type> {
  PYBIND11_TYPE_CASTER(core::gw::element_type, const_name("int"));

  bool load(handle source, bool convert) {
    make_caster<unsigned> number;
    if (!number.load(source, convert) || cast_op<unsigned>(number) > core::gw::ELT_HEXA27) return false;
    value = static_cast<core::gw::element_type>(cast_op<unsigned>(number));
    return true;
  }
};

}  // namespace pybind11::detail

#endif
