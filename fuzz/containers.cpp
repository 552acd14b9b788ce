// A stack machine over arrays that share blocks, each operation held against vectors.
#include <deque>

#include "fuzz/input.h"

extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }

namespace {

using namespace fuzz;
using array = dense1D<unsigned>;
using matrix = dense2D<unsigned>;
using values = std::vector<unsigned>;
using places = std::vector<const unsigned*>;

template <class View>
places places_of(const View& view) {
  places all;
  for (unsigned k = 0; k < view.size(); ++k) {
    if constexpr (std::is_same_v<View, array>) all.push_back(&view[k]);
    if constexpr (std::is_same_v<View, matrix>) all.push_back(&view(k % view.rows(), k / view.rows()));
  }
  return all;
}

values at(const places& all) {
  values result;
  for (const unsigned* p : all) result.push_back(*p);
  return result;
}

class machine {
 public:
  explicit machine(input& in) : in_(in) {}

  void step() { in_.flag() ? operate(arrays_) : operate(matrices_); }

 private:
  static constexpr std::uint64_t huge[] = {1ULL << 60, 1ULL << 61, 1ULL << 63, ~0ULL};  // cannot be had

  /// Operates on one array. Other views change only where it has entries now.
  template <class View>
  void operate(View (&views)[4]) {
    View &target = views[in_.below(4)], &other = views[in_.below(4)];
    std::vector<places> others;
    for (const array& a : arrays_) others.push_back(places_of(a));
    for (const matrix& m : matrices_) others.push_back(places_of(m));
    std::vector<values> before;
    for (const places& p : others) before.push_back(at(p));
    const auto own = static_cast<std::size_t>(&target - views) + (std::is_same_v<View, matrix> ? 4 : 0);
    const values expected = run(target, other, before[own]);
    const places now = places_of(target);
    CHECK(at(now) == expected);
    for (std::size_t v = 0; v < others.size(); ++v) {
      for (std::size_t k = 0; v != own && k < others[v].size(); ++k) {
        CHECK(*others[v][k] == before[v][k] || std::count(now.begin(), now.end(), others[v][k]) != 0);
      }
    }
  }

  /// Runs an operation and returns the entries to expect.
  template <class View>
  values run(View& target, View& other, const values& before) {
    const values theirs = at(places_of(other));
    switch (in_.below(10)) {
      case 0:
        CHECK(target.copy(other) && at(places_of(other)) == theirs);
        return theirs;
      case 1:
        target.shallow_copy(other);
        CHECK(target == other && target.data() == other.data());
        return theirs;
      case 2:
        in_.flag() ? target.clear() : target.clear_hard();
        return {};
      case 3:
        target = std::move(other);
        return theirs;
      default:
        return run_own(target, other, before);
    }
  }

  values run_own(array& a, array& b, values all) {
    const unsigned n = in_.below(40), v = in_.below(256);
    const std::uint64_t old = a.size(), refused = huge[v % 4];
    switch (in_.below(6)) {
      case 0:
        CHECK(a.reserve(n, v % 4) && a.capacity() >= n);
        CHECK(!a.resize(refused, v) && !a.reserve(refused, v % 3) && !a.push_back_n(v, refused));
        return all;
      case 1:
        CHECK(a.push_back_n(v, n));
        all.insert(all.end(), n, v);
        return all;
      case 2:
        if (n > b.size()) return all;
        all = at(places_of(b));
        a = b.sub_vector(n, all.size() - n);
        return values(all.begin() + n, all.end());
      case 3:
        a = array(n, lent_.emplace_back(40, v).data());
        return values(n, v);
      case 4:
        CHECK(a.resize(n));
        for (std::uint64_t i = old; i < n; ++i) a[i] = v;
        break;
      default:
        CHECK(a.resize(n, v));
    }
    all.resize(n, v);
    return all;
  }

  values run_own(matrix& m, matrix& b, values all) {
    const unsigned rows = in_.below(6), cols = in_.below(9), v = in_.below(256);
    if (v < 32) {
      CHECK(!m.resize(huge[v % 4], 1 + v % 2, v) && !m.reserve(9, huge[v % 4]) && m.reserve(rows, cols));
    } else if (v < 64) {
      m = matrix(rows, cols, rows + v % 3, lent_.emplace_back(64, v).data());
      all.assign(rows * cols, v);
    } else if (v < 128) {
      if (rows > b.rows() || cols > b.cols()) return all;
      const matrix part = deep_copy(b).sub_matrix(rows, cols, b.rows() - rows, b.cols() - cols);
      m = b.sub_matrix(rows, cols, part.rows(), part.cols());
      all = at(places_of(part));
    } else if (v < 160 && b.rows() == m.rows() && cols < b.cols()) {
      all.insert(all.end(), b.begin_column(cols), b.end_column(cols));
      CHECK(m.push_back_column(b.column(cols)));
    } else {
      matrix expected(rows, cols, v);
      for (unsigned k = 0; k < rows * cols; ++k) {
        if (k % rows < m.rows() && k / rows < m.cols()) expected(k % rows, k / rows) = m(k % rows, k / rows);
      }
      CHECK(m.resize(rows, cols, v) && m == expected && m.compact());
      all = at(places_of(expected));
    }
    return all;
  }

  input& in_;
  std::deque<values> lent_;  // the memory of the caller's that arrays are views of
  array arrays_[4];
  matrix matrices_[4];
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  input in(data, size);
  machine m(in);
  for (unsigned k = 0; k < 300 && !in.ended(); ++k) m.step();
  return 0;
}
