// What the targets share: values out of the bytes of a fuzzer, and a check.
#ifndef QEL_FUZZ_INPUT_H
#define QEL_FUZZ_INPUT_H

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "qel/gridwork.h"
#include "tests/memory_file.h"
#include "tests/random_meshes.h"
#include "tests/reference.h"

/// Ends the process, which libFuzzer reports as a crash.
#define CHECK(condition) \
  if (!(condition)) std::fprintf(stderr, "%s:%d: not true: %s\n", __FILE__, __LINE__, #condition), std::abort()

namespace fuzz {

using namespace qel::gridwork;
using qel::dense1D;
using qel::dense2D;
using random_meshes::deep_copy;
using reference::none;

/// Bytes from the front of the input; zeros behind its end.
class input {
 public:
  input(const std::uint8_t* data, std::size_t size) : at_(data), end_(data + size) {}

  bool ended() const { return at_ == end_; }

  template <class T>
  T raw() {
    T value{};
    const auto bytes = std::min(sizeof value, static_cast<std::size_t>(end_ - at_));
    if (bytes != 0) std::memcpy(&value, at_, bytes);
    at_ += bytes;
    return value;
  }

  bool flag() { return below(2) != 0; }
  unsigned below(unsigned n) { return raw<std::uint8_t>() % n; }

  /// A node below n, now and then `~0U`.
  unsigned node(unsigned n) {
    const unsigned byte = below(256);
    return byte >= 248 || n == 0 ? none : byte % n;
  }

  /// Mostly quarters from a small range, for ties; else a special value, or any bits.
  double real() {
    constexpr double special[] = {-0.0,
                                  1e-310,
                                  1e-160,
                                  1e160,
                                  -1e308,
                                  1e308,
                                  0x1p52,
                                  0x1p53,
                                  random_meshes::infinity,
                                  -random_meshes::infinity,
                                  random_meshes::not_a_number};
    const unsigned byte = below(256);
    if (byte < 192) return 0.25 * (static_cast<double>(byte) - 64);
    if (byte < 208) return special[byte % std::size(special)];
    return byte < 232 ? raw<float>() : raw<double>();
  }

  template <class Array>
  Array reals() {
    Array all{};
    for (double& x : all) x = real();
    return all;
  }

  /// The same matrix, perhaps as a view inside of a larger one.
  template <class T>
  dense2D<T> view(const dense2D<T>& m) {
    return flag() ? random_meshes::with_gaps(m, T(5)) : m;
  }

  /// A matrix, perhaps a view, whose entries come from next().
  template <class Next>
  auto matrix(unsigned rows, unsigned cols, Next next) {
    dense2D<decltype(next())> m(rows, cols);
    for (unsigned j = 0; j < cols; ++j) std::generate(m.begin_column(j), m.end_column(j), next);
    return view(m);
  }

  dense2D<double> coords(unsigned rows, unsigned cols) {
    return matrix(rows, cols, [this] { return real(); });
  }

  dense2D<unsigned> nodes(unsigned rows, unsigned cols, unsigned n) {
    return matrix(rows, cols, [this, n] { return node(n); });
  }

  std::vector<unsigned> list(unsigned size, unsigned n) {
    std::vector<unsigned> ids(size);
    for (unsigned& id : ids) id = node(n);
    return ids;
  }

 private:
  const std::uint8_t* at_;
  const std::uint8_t* end_;
};

}  // namespace fuzz

#endif
