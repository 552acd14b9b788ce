// The library's functions as rows of a table that JavaScript reads.
#ifndef QEL_GRIDWORK_WEB_FUNCTIONS_H
#define QEL_GRIDWORK_WEB_FUNCTIONS_H

#include <qel/gridwork/messages.h>

#include <span>
#include <tuple>

#include "arguments.h"

namespace web {

constexpr int by_name = -1;

/// A function. Its words are the names of its parameters: "name" is given, "name?" may be left out, ">name" is a result,
/// and "+name" is given and comes back changed.
struct function {
  const char* name;
  const char* words;
  std::string (*kinds)();  ///< of the result, then of each parameter
  double (*call)(slot* slots);
  int message = by_name;  ///< the operation whose sentences are meant, where overloads differ
};

/// What JavaScript makes of a result: a code that may be an error, a number, a truth value, or nothing.
template <class R>
constexpr const char* kind_of_result() {
  if constexpr (std::is_void_v<R>)
    return "-";
  else
    return std::is_same_v<R, int> ? "i" : argument<R>::kind;
}

template <auto F, class R, class... P>
struct binding {
  static std::string kinds() {
    std::string all = kind_of_result<R>();
    for (const char* kind : {argument<P>::kind...}) all += "," + std::string(kind);
    return all;
  }

  static double call(slot* slots) { return call(slots, std::index_sequence_for<P...>()); }

  template <std::size_t... K>
  static double call(slot* slots, std::index_sequence<K...>) {
    std::tuple<argument<P>...> arguments{argument<P>(slots[K])...};
    double result = 0;
    if constexpr (std::is_void_v<R>)
      F(std::get<K>(arguments).value...);
    else
      result = static_cast<double>(F(std::get<K>(arguments).value...));
    (finish(std::get<K>(arguments), slots[K]), ...);
    return result;
  }

  template <class A>
  static void finish(A& a, slot& s) {
    if constexpr (requires { a.finish(s); }) a.finish(s);
  }
};

template <auto F, class R, class... P>
constexpr function row_of(R (*)(P...), const char* name, const char* words, int message) {
  using bound = binding<F, R, P...>;
  return {name, words, bound::kinds, bound::call, message};
}

/// A row for a function, or a lambda in its place.
template <auto F>
constexpr function row(const char* name, const char* words) {
  return row_of<F>(+F, name, words, by_name);
}

template <auto F>
constexpr function row(const char* name, const char* words, gw::operation message) {
  return row_of<F>(+F, name, words, static_cast<int>(message));
}

/// One overload of a function, by its type.
template <class F>
constexpr F* overload(F* function) {
  return function;
}

std::span<const function> index_functions();
std::span<const function> transform_functions();
std::span<const function> search_functions();
std::span<const function> topology_functions();
std::span<const function> metric_functions();
std::span<const function> file_functions();

}  // namespace web

#endif
