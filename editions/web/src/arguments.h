// How each type of a parameter is made of a slot, and read back into it.
#ifndef QEL_GRIDWORK_WEB_ARGUMENTS_H
#define QEL_GRIDWORK_WEB_ARGUMENTS_H

#include <qel/gridwork.h>

#include <algorithm>
#include <string>
#include <type_traits>
#include <vector>

#include "slots.h"

namespace web {

namespace gw = qel::gridwork;

using points = qel::dense2D<double>;
using elements = qel::dense2D<unsigned>;
using values = qel::dense1D<double>;
using list = qel::dense1D<unsigned>;
using codes = qel::dense1D<int>;
using matrices = std::vector<elements>;  ///< what the library takes as first and last

/// A search tree, and the coordinates that it refers to.
struct detector : kept {
  points coords;
  gw::node_detector tree;
};

/// argument<P> holds the value of a parameter of type P; kind is what JavaScript calls it.
template <class P>
struct argument;

template <class T>
constexpr const char* kind_of_list() {
  if (std::is_same_v<T, double>) return "V";
  return std::is_same_v<T, int> ? "i" : "v";
}

template <class T>
struct argument<qel::dense1D<T>&> {
  static constexpr const char* kind = kind_of_list<T>();
  explicit argument(const slot& s) : value(std::uint64_t{s.cols}, static_cast<T*>(s.data)) {}
  void finish(slot& s) { give_back(std::move(value), s); }
  qel::dense1D<T> value;
};

template <class T>
struct argument<qel::dense2D<T>&> {
  static constexpr const char* kind = std::is_same_v<T, double> ? "M" : "m";
  explicit argument(const slot& s) : value(s.rows, s.cols, static_cast<T*>(s.data)) {}
  void finish(slot& s) { give_back(std::move(value), s); }
  qel::dense2D<T> value;
};

template <>
struct argument<matrices&> {
  static constexpr const char* kind = "r";
  explicit argument(const slot& s) : parts(static_cast<slot*>(s.data)) {
    for (std::uint32_t k = 0; k < s.cols; ++k) value.push_back(argument<elements&>(parts[k]).value);
  }
  void finish(slot&) {
    for (std::size_t k = 0; k < value.size(); ++k) give_back(std::move(value[k]), parts[k]);
  }
  slot* parts;
  matrices value;
};

/// Numbers of constant count: vectors, symmetric and full matrices.
template <class T>
concept fixed = !std::is_const_v<T> && (T::size() > 0);

template <fixed T>
struct argument<T&> {
  static constexpr char kind[] = {'p', static_cast<char>('0' + T::size()), '\0'};
  explicit argument(const slot& s) {
    const double* given = static_cast<double*>(s.data);
    if (s.cols == T::size()) std::copy(given, given + T::size(), value.data());
  }
  void finish(slot& s) {
    values all(std::uint64_t{T::size()});
    std::copy(value.data(), value.data() + T::size(), all.data());
    give_back(std::move(all), s);
  }
  T value = {};
};

template <>
struct argument<qel::misc::histogram&> {
  static constexpr const char* kind = "h";
  explicit argument(const slot&) {}
  void finish(slot& s) {
    values all;
    for (const double x : {value.lower(), value.upper(), value.min(), value.max(), value.mean()}) add(all, x);
    for (const std::uint64_t n : {value.below(), value.above(), value.not_a_number()}) add(all, static_cast<double>(n));
    for (unsigned k = 0; k < value.bins(); ++k) add(all, static_cast<double>(value.bin(k)));
    give_back(std::move(all), s);
  }
  static void add(values& all, double x) { (void)all.push_back(x); }
  qel::misc::histogram value;
};

template <>
struct argument<detector&> {
  static constexpr const char* kind = "o";
  explicit argument(const slot& s) : value(*static_cast<detector*>(s.data)) {}
  void finish(slot&) {}
  detector& value;
};

template <>
struct argument<const char*> {
  static constexpr const char* kind = "f";
  explicit argument(const slot& s) : value(static_cast<char*>(s.data)) {}
  const char* value;
};

template <class T>
constexpr const char* kind_of_number() {
  if (std::is_same_v<T, gw::element_type>) return "t";
  if (std::is_same_v<T, bool>) return "b";
  return "d";
}

template <class T>
concept number = std::is_arithmetic_v<T> || std::is_enum_v<T>;

template <number T>
struct argument<T> {
  static constexpr const char* kind = kind_of_number<T>();
  explicit argument(const slot& s) : value(static_cast<T>(s.number)) {}
  T value;
};

template <number T>
struct argument<T&> : argument<T> {
  using argument<T>::argument;
  void finish(slot& s) { s.number = static_cast<double>(this->value); }
};

/// What is not changed is no result.
template <class T>
struct argument<const T&> : argument<T&> {
  using argument<T&>::argument;
  void finish(slot&) = delete;
};

/// Lists that are handed over by value.
template <class T>
struct argument<qel::dense1D<T>> : argument<const qel::dense1D<T>&> {
  using argument<const qel::dense1D<T>&>::argument;
};

}  // namespace web

#endif
