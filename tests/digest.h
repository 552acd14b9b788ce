// One number for any values of the library, to compare the results of calls by.
#ifndef QEL_TESTS_DIGEST_H
#define QEL_TESTS_DIGEST_H

#include <cstdint>
#include <cstring>
#include <iterator>
#include <type_traits>

#include "qel/gridwork.h"

/// A number that tells values apart.
class digest {
 public:
  std::uint64_t value = 14695981039346656037U;

  /// Every NaN counts as the same one.
  template <class T>
  void add(const T& x) {
    if constexpr (std::is_same_v<T, double>) {
      std::uint64_t bits = 1;
      if (x == x) std::memcpy(&bits, &x, sizeof bits);
      add(bits);
    } else if constexpr (std::is_arithmetic_v<T>) {
      for (unsigned k = 0; k < sizeof x; ++k) {
        value = (value ^ (static_cast<std::uint64_t>(x) >> (8 * k) & 255)) * 1099511628211U;
      }
    } else if constexpr (std::is_same_v<T, digest>) {
      add(x.value);
    } else if constexpr (requires { x.content(); }) {  // a file
      add(x.content());
    } else if constexpr (std::is_same_v<T, qel::gridwork::node_detector>) {
      qel::dense1D<unsigned> found;
      x.find_in_box({-1e300, -1e300, -1e300}, qel::vector_fixed<double, 3>{1e300, 1e300, 1e300}, found);
      add(found), add(x.size());
    } else if constexpr (std::is_same_v<T, qel::misc::histogram>) {
      add(x.count()), add(x.mean()), add(x.min()), add(x.max()), add(x.bins());
    } else if constexpr (requires { x.ld(); }) {
      add(x.rows()), add(x.cols());
      for (std::uint64_t k = 0; k < x.size(); ++k) add(x(k % x.rows(), k / x.rows()));
    } else {
      for (const auto& entry : x) add(entry);
      add(std::uint64_t{std::size(x)});
    }
  }
};

template <class... Values>
std::uint64_t digest_of(const Values&... values) {
  digest d;
  (d.add(values), ...);
  return d.value;
}

#endif
