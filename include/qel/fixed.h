/// @file
/// Small arrays of a size known at compile time: points, metric tensors, eigenvector matrices. All are aggregates.
///
/// Functions for the plane and for space are told apart by the type of a point, and braces alone have none:
/// `translate(c, {1, 0})` is ambiguous. Name the type: `translate(c, vector_fixed<double, 2>{1, 0})`.
#ifndef QEL_FIXED_H
#define QEL_FIXED_H

#include <algorithm>

namespace qel {

/// N values of type T in order: `vector_fixed<double, 2>{1.0, 2.0}`.
template <class T, unsigned N>
struct vector_fixed {
  T values[N];  ///< the entries; use operator[] and the members below

  /// Assigns `v` to all N entries and returns it.
  T operator=(T v) noexcept {
    std::fill(begin(), end(), v);
    return v;
  }

  /// Entry k, 0 <= k < N.
  /// @{
  T& operator[](unsigned k) noexcept { return values[k]; }
  const T& operator[](unsigned k) const noexcept { return values[k]; }
  /// @}

  /// Number of entries.
  static constexpr unsigned size() noexcept { return N; }

  /// The entries as an array and as a range.
  /// @{
  T* data() noexcept { return values; }
  const T* data() const noexcept { return values; }
  T* begin() noexcept { return values; }
  T* end() noexcept { return values + N; }
  const T* begin() const noexcept { return values; }
  const T* end() const noexcept { return values + N; }
  /// @}

  /// Equal entries, or not.
  /// @{
  friend bool operator==(const vector_fixed& a, const vector_fixed& b) noexcept {
    return std::equal(a.begin(), a.end(), b.begin());
  }
  friend bool operator!=(const vector_fixed& a, const vector_fixed& b) noexcept { return !(a == b); }
  /// @}
};

/// Symmetric N x N matrix: its upper triangle, packed column by column (LAPACK's "U" order).
///
/// N = 2: a11, a12, a22. N = 3: a11, a12, a22, a13, a23, a33. The diagonal lies at positions 0, 2 (, 5).
template <class T, unsigned N>
struct symmetric_fixed {
  T values[N * (N + 1) / 2];  ///< the packed entries; use operator[] or operator()

  /// Entry at packed position k.
  /// @{
  T& operator[](unsigned k) noexcept { return values[k]; }
  const T& operator[](unsigned k) const noexcept { return values[k]; }
  /// @}

  /// Entry (i, j), of either triangle.
  /// @{
  T& operator()(unsigned i, unsigned j) noexcept { return values[position(i, j)]; }
  const T& operator()(unsigned i, unsigned j) const noexcept { return values[position(i, j)]; }
  /// @}

  /// Number of packed entries.
  static constexpr unsigned size() noexcept { return N * (N + 1) / 2; }

  /// The packed entries as an array and as a range.
  /// @{
  T* data() noexcept { return values; }
  const T* data() const noexcept { return values; }
  T* begin() noexcept { return values; }
  T* end() noexcept { return values + size(); }
  const T* begin() const noexcept { return values; }
  const T* end() const noexcept { return values + size(); }
  /// @}

  /// Equal entries, or not.
  /// @{
  friend bool operator==(const symmetric_fixed& a, const symmetric_fixed& b) noexcept {
    return std::equal(a.begin(), a.end(), b.begin());
  }
  friend bool operator!=(const symmetric_fixed& a, const symmetric_fixed& b) noexcept { return !(a == b); }
  /// @}

 private:
  static constexpr unsigned position(unsigned i, unsigned j) noexcept {
    return i <= j ? j * (j + 1) / 2 + i : i * (i + 1) / 2 + j;
  }
};

/// R x C matrix, column-major: entry (i, j) at position j * R + i.
template <class T, unsigned R, unsigned C>
struct matrix_fixed {
  T values[R * C];  ///< the entries, column by column

  /// Entry (i, j), 0 <= i < R, 0 <= j < C.
  /// @{
  T& operator()(unsigned i, unsigned j) noexcept { return values[j * R + i]; }
  const T& operator()(unsigned i, unsigned j) const noexcept { return values[j * R + i]; }
  /// @}

  /// Entry at column-major position k.
  /// @{
  T& operator[](unsigned k) noexcept { return values[k]; }
  const T& operator[](unsigned k) const noexcept { return values[k]; }
  /// @}

  /// Number of rows, of columns and of entries.
  /// @{
  static constexpr unsigned rows() noexcept { return R; }
  static constexpr unsigned cols() noexcept { return C; }
  static constexpr unsigned size() noexcept { return R * C; }
  /// @}

  /// The entries, column by column, as an array and as a range.
  /// @{
  T* data() noexcept { return values; }
  const T* data() const noexcept { return values; }
  T* begin() noexcept { return values; }
  T* end() noexcept { return values + R * C; }
  const T* begin() const noexcept { return values; }
  const T* end() const noexcept { return values + R * C; }
  /// @}

  /// Equal entries, or not.
  /// @{
  friend bool operator==(const matrix_fixed& a, const matrix_fixed& b) noexcept {
    return std::equal(a.begin(), a.end(), b.begin());
  }
  friend bool operator!=(const matrix_fixed& a, const matrix_fixed& b) noexcept { return !(a == b); }
  /// @}
};

}  // namespace qel

#endif
