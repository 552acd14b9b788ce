// The library's functions as rows of a table that JavaScript reads.
#ifndef QEL_GRIDWORK_WEB_FUNCTIONS_H
#define QEL_GRIDWORK_WEB_FUNCTIONS_H

#include <qel/gridwork/messages.h>

#include <array>
#include <initializer_list>
#include <span>
#include <string_view>
#include <utility>

#include "arguments.h"

namespace web {

constexpr int by_name = -1;

/// A function. Its words are the names of its parameters: "name" is given, "name?" may be left out, ">name" is a result,
/// and "+name" is given and comes back changed.
struct function {
  const char* name;
  const char* words;
  const char* kinds;  ///< of the result, then of each parameter
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

/// Words with commas between them, as characters that end with a NUL.
template <std::size_t Size>
constexpr std::array<char, Size> join(std::initializer_list<std::string_view> words) {
  std::array<char, Size> all{};
  char* end = all.data();
  for (const std::string_view word : words) {
    if (end != all.data()) *end++ = ',';
    end = std::copy(word.begin(), word.end(), end);
  }
  return all;
}

template <auto F, class R, class... P>
struct binding {
  static constexpr std::size_t kinds_size =
      (std::string_view(kind_of_result<R>()).size() + ... + (1 + std::string_view(argument<P>::kind).size())) + 1;
  static constexpr auto kinds = join<kinds_size>({kind_of_result<R>(), argument<P>::kind...});

  static double call(slot* slots) { return call(slots, std::index_sequence_for<P...>()); }

  template <std::size_t... K>
  static double call(slot* slots, std::index_sequence<K...>) {
    if constexpr (std::is_void_v<R>)
      return F(argument<P>::in(slots[K])...), 0;
    else
      return static_cast<double>(F(argument<P>::in(slots[K])...));
  }
};

template <auto F, class R, class... P>
constexpr function row_of(R (*)(P...), const char* name, const char* words, int message) {
  using bound = binding<F, R, P...>;
  return {name, words, bound::kinds.data(), bound::call, message};
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
