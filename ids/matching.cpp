// Equal values of two lists, equal columns of two matrices.
#include <algorithm>

#include "core/outputs.h"
#include "core/position_table.h"
#include "core/result.h"
#include "qel/gridwork/ids.h"

namespace qel::gridwork {

using namespace detail;

namespace {

/// A list as a matrix of one row, in which `none` matches nothing.
class value_keys {
 public:
  explicit value_keys(const dense1D<unsigned>& values) : values_(values) {}

  std::uint64_t count() const { return values_.size(); }
  bool may_match(std::uint64_t i) const { return values_[i] != none; }
  std::uint64_t hash(std::uint64_t i) const { return mix_bits(values_[i]); }
  bool same(std::uint64_t i, const value_keys& other, std::uint64_t j) const { return values_[i] == other.values_[j]; }

 private:
  const dense1D<unsigned>& values_;
};

class column_keys {
 public:
  explicit column_keys(const dense2D<unsigned>& matrix) : matrix_(matrix) {}

  std::uint64_t count() const { return matrix_.cols(); }
  bool may_match(std::uint64_t) const { return true; }

  std::uint64_t hash(std::uint64_t j) const {
    std::uint64_t hash = 0;
    for (const unsigned* p = matrix_.begin_column(j); p != matrix_.end_column(j); ++p) hash = mix_bits(hash ^ *p);
    return hash;
  }

  bool same(std::uint64_t i, const column_keys& other, std::uint64_t j) const {
    return std::equal(matrix_.begin_column(i), matrix_.end_column(i), other.matrix_.begin_column(j));
  }

 private:
  const dense2D<unsigned>& matrix_;
};

/// Columns as cycles of nodes that start at their first largest entry and may run either way.
class cycle_keys {
 public:
  explicit cycle_keys(const dense2D<unsigned>& matrix) : matrix_(matrix) {}

  std::uint64_t count() const { return matrix_.cols(); }
  bool may_match(std::uint64_t) const { return true; }

  std::uint64_t hash(std::uint64_t j) const {
    const std::uint64_t start = first_largest(j);
    std::uint64_t forward = 0;
    std::uint64_t backward = 0;
    for (std::uint64_t k = 0; k < matrix_.rows(); ++k) {
      forward = mix_bits(forward ^ entry(j, start, k));
      backward = mix_bits(backward ^ entry(j, start, reversed(k)));
    }
    return mix_bits(forward + backward);
  }

  bool same(std::uint64_t i, const cycle_keys& other, std::uint64_t j) const {
    const std::uint64_t start = first_largest(i);
    const std::uint64_t other_start = other.first_largest(j);
    bool forward = true;
    bool backward = true;
    for (std::uint64_t k = 0; k < matrix_.rows() && (forward || backward); ++k) {
      const unsigned theirs = other.entry(j, other_start, k);
      forward = forward && entry(i, start, k) == theirs;
      backward = backward && entry(i, start, reversed(k)) == theirs;
    }
    return forward || backward;
  }

 private:
  std::uint64_t first_largest(std::uint64_t j) const {
    const unsigned* begin = matrix_.begin_column(j);
    return static_cast<std::uint64_t>(std::max_element(begin, matrix_.end_column(j)) - begin);
  }

  /// The entry k steps on from `start` round the cycle.
  unsigned entry(std::uint64_t j, std::uint64_t start, std::uint64_t k) const {
    const std::uint64_t row = start + k;
    return matrix_.column(j)[row < matrix_.rows() ? row : row - matrix_.rows()];
  }

  std::uint64_t reversed(std::uint64_t k) const { return k == 0 ? 0 : matrix_.rows() - k; }

  const dense2D<unsigned>& matrix_;
};

/// Each key of B is matched with the first equal one of A. B is walked backwards, so its first match stays in A_in_B.
template <class Keys>
int match(const Keys& a, const Keys& b, dense1D<unsigned>& B_in_A, dense1D<unsigned>& A_in_B) {
  position_table table;
  if (a.count() >= none || b.count() >= none || !table.reset(a.count())) return out_of_memory;
  for (std::uint64_t i = 0; i < a.count(); ++i) {
    if (!a.may_match(i)) continue;
    table.find_or_insert(a.hash(i), static_cast<unsigned>(i), [&](unsigned held) { return a.same(held, a, i); });
  }
  for (std::uint64_t j = b.count(); j-- > 0;) {
    if (!b.may_match(j)) continue;
    const unsigned i = table.find(b.hash(j), [&](unsigned held) { return a.same(held, b, j); });
    if (i == none) continue;
    B_in_A[j] = i;
    A_in_B[i] = static_cast<unsigned>(j);
  }
  return 0;
}

/// Both outputs are empty on a negative result.
template <class Keys, class Array>
int match_all(const Array& A, const Array& B, dense1D<unsigned>& B_in_A, dense1D<unsigned>& A_in_B) {
  const Keys a(A);
  const Keys b(B);
  B_in_A.clear();
  A_in_B.clear();
  int result = B_in_A.resize(b.count(), none) && A_in_B.resize(a.count(), none) ? 0 : out_of_memory;
  if (result == 0 && !A.empty() && !B.empty()) result = match(a, b, B_in_A, A_in_B);
  if (result != 0) {
    B_in_A.clear();
    A_in_B.clear();
  }
  return result;
}

int match_columns(const dense2D<unsigned>& A, const dense2D<unsigned>& B, dense1D<unsigned>& B_in_A,
                  dense1D<unsigned>& A_in_B, bool exact) {
  if (A.rows() == B.rows()) {
    return exact ? match_all<column_keys>(A, B, B_in_A, A_in_B) : match_all<cycle_keys>(A, B, B_in_A, A_in_B);
  }
  B_in_A.clear();
  A_in_B.clear();
  return -2;
}

}  // namespace

int get_IDs(const dense1D<unsigned>& A, const dense1D<unsigned>& B, dense1D<unsigned>& B_in_A,
            dense1D<unsigned>& A_in_B) {
  return match_all<value_keys>(A, B, output(B_in_A, A, B), output(A_in_B, A, B, B_in_A));
}

int get_IDs(const dense2D<unsigned>& A, const dense2D<unsigned>& B, dense1D<unsigned>& B_in_A,
            dense1D<unsigned>& A_in_B, bool exact) {
  return match_columns(A, B, output(B_in_A, A, B), output(A_in_B, A, B, B_in_A), exact);
}

}  // namespace qel::gridwork
