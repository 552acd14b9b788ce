// How each type of a parameter is made of a slot, and shown in it.
#ifndef QEL_GRIDWORK_WEB_ARGUMENTS_H
#define QEL_GRIDWORK_WEB_ARGUMENTS_H

#include <qel/gridwork.h>

#include <algorithm>
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

/// Numbers of constant count: vectors, symmetric and full matrices.
template <class T>
concept fixed = !std::is_const_v<T> && (T::size() > 0);

template <class T>
concept number = std::is_arithmetic_v<T> || std::is_enum_v<T>;

template <fixed T>
void show(const T& value, slot& s) {
  s.data = const_cast<double*>(value.data());
  s.rows = s.stride = 1;
  s.cols = T::size();
}

template <number T>
void show(T value, slot& s) {
  s.number = static_cast<double>(value);
}

inline void show(const matrices& all, slot& s) {
  slot* part = static_cast<slot*>(s.data);
  for (const elements& one : all) show(one, *part++);
}

template <class T>
struct held_value : held {
  template <class... Given>
  explicit held_value(Given... given) : value(given...) {}
  void show_in(slot& s) override { show(value, s); }
  T value;
};

/// A histogram is shown as a list of its numbers.
template <>
struct held_value<qel::misc::histogram> : held {
  void show_in(slot& s) override {
    numbers.clear();
    for (const double x : {value.lower(), value.upper(), value.min(), value.max(), value.mean()}) add(x);
    for (const std::uint64_t n : {value.below(), value.above(), value.not_a_number()}) add(static_cast<double>(n));
    for (unsigned k = 0; k < value.bins(); ++k) add(static_cast<double>(value.bin(k)));
    show(numbers, s);
  }
  void add(double x) { (void)numbers.push_back(x); }
  qel::misc::histogram value;
  values numbers;
};

template <class T, class... Given>
T& hold(slot& s, Given... given) {
  auto* value = new held_value<T>(given...);
  s.owner = value;
  return value->value;
}

/// argument<P>::in makes a parameter of type P of a slot; kind is what JavaScript calls it. All rows of the table share
/// these few functions, so that a row is little code.
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
  static qel::dense1D<T>& in(slot& s) {
    return hold<qel::dense1D<T>>(s, std::uint64_t{s.cols}, static_cast<T*>(s.data));
  }
};

template <class T>
struct argument<qel::dense2D<T>&> {
  static constexpr const char* kind = std::is_same_v<T, double> ? "M" : "m";
  static qel::dense2D<T>& in(slot& s) { return hold<qel::dense2D<T>>(s, s.rows, s.cols, static_cast<T*>(s.data)); }
};

template <>
struct argument<matrices&> {
  static constexpr const char* kind = "r";
  static matrices& in(slot& s) {
    auto& all = hold<matrices>(s);
    slot* parts = static_cast<slot*>(s.data);
    for (std::uint32_t k = 0; k < s.cols; ++k) {
      all.emplace_back(parts[k].rows, parts[k].cols, static_cast<unsigned*>(parts[k].data));
    }
    return all;
  }
};

template <fixed T>
struct argument<T&> {
  static constexpr char kind[] = {'p', static_cast<char>('0' + T::size()), '\0'};
  static T& in(slot& s) {
    T& value = hold<T>(s);
    const double* given = static_cast<double*>(s.data);
    if (s.cols == T::size()) std::copy(given, given + T::size(), value.data());
    return value;
  }
};

template <>
struct argument<qel::misc::histogram&> {
  static constexpr const char* kind = "h";
  static qel::misc::histogram& in(slot& s) { return hold<qel::misc::histogram>(s); }
};

template <>
struct argument<detector&> {
  static constexpr const char* kind = "o";
  static detector& in(slot& s) { return *static_cast<detector*>(s.data); }
};

template <>
struct argument<const char*> {
  static constexpr const char* kind = "f";
  static const char* in(slot& s) { return static_cast<char*>(s.data); }
};

template <class T>
constexpr const char* kind_of_number() {
  if (std::is_same_v<T, gw::element_type>) return "t";
  if (std::is_same_v<T, bool>) return "b";
  return "d";
}

template <number T>
struct argument<T> {
  static constexpr const char* kind = kind_of_number<T>();
  static T in(slot& s) { return static_cast<T>(s.number); }
};

template <number T>
struct argument<T&> {
  static constexpr const char* kind = argument<T>::kind;
  static T& in(slot& s) { return hold<T>(s, static_cast<T>(s.number)); }
};

template <class T>
struct argument<const T&> : argument<T&> {};

/// Lists that are handed over by value.
template <class T>
struct argument<qel::dense1D<T>> : argument<qel::dense1D<T>&> {};

}  // namespace web

#endif
