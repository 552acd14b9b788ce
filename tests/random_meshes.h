/// @file
/// Random nodes and connectivities that are unpleasant for searches: ties, duplicates, chains, extreme scales.
#ifndef QEL_TESTS_RANDOM_MESHES_H
#define QEL_TESTS_RANDOM_MESHES_H

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "qel/dense.h"

namespace random_meshes {

using qel::dense2D;
using generator = std::mt19937;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();

/// A number in [0, 1).
inline double real(generator& random) { return static_cast<double>(random()) / 4294967296.0; }

/// An integer below n.
inline unsigned below(generator& random, std::uint64_t n) { return static_cast<unsigned>(random() % n); }

/// The same matrix as a view inside a larger one, whose other entries are `filler`.
template <class T>
dense2D<T> with_gaps(const dense2D<T>& m, T filler) {
  dense2D<T> whole(m.rows() + 3, m.cols() + 2, filler);
  dense2D<T> view = whole.sub_matrix(1, 1, m.rows(), m.cols());
  for (std::uint64_t j = 0; j < m.cols(); ++j) std::copy(m.begin_column(j), m.end_column(j), view.column(j));
  return view;
}

template <class T>
dense2D<T> deep_copy(const dense2D<T>& m) {
  dense2D<T> result;
  if (!result.copy(m)) std::abort();
  return result;
}

template <class T>
std::vector<dense2D<T>> deep_copies(std::vector<dense2D<T>> matrices) {
  for (auto& m : matrices) m = deep_copy(m);
  return matrices;
}

/// Equality that takes a NaN for itself and tells -0 from 0.
inline bool same_bits(const dense2D<double>& a, const dense2D<double>& b) {
  if (a.rows() != b.rows() || a.cols() != b.cols()) return false;
  for (std::uint64_t j = 0; j < a.cols(); ++j) {
    if (std::memcmp(a.column(j), b.column(j), a.rows() * sizeof(double)) != 0) return false;
  }
  return true;
}

struct cloud {
  std::string name;
  dense2D<double> coords;
  double step;  ///< distance of near nodes, a scale for tolerances and queries
};

/// One set of n nodes of every kind.
inline std::vector<cloud> clouds(unsigned dim, unsigned n) {
  generator random(n + dim);
  std::vector<cloud> all;
  const auto add = [&](const char* name, double step, auto entry) {
    dense2D<double> coords(dim, n);
    for (unsigned j = 0; j < n; ++j) {
      for (unsigned k = 0; k < dim; ++k) coords(k, j) = entry(j, k);
    }
    all.push_back({std::string(name) + " in " + std::to_string(dim) + "-D", coords, step});
  };
  const unsigned side = 2 + static_cast<unsigned>(std::pow(n, 1.0 / dim));
  const double mesh_size = 1.0 / side;
  const auto any = [&](unsigned, unsigned) { return real(random); };

  add("uniform", mesh_size, any);
  add("lattice of 1", 1, [&](unsigned, unsigned) { return double(below(random, side)) - 2; });
  add("lattice of 0.1", 0.1, [&](unsigned, unsigned) { return 0.1 * below(random, side); });
  add("few positions", 1, [&](unsigned, unsigned) { return double(below(random, 2)); });
  add("one position", 1, [](unsigned, unsigned) { return 0.25; });
  add("clusters", 1e-3, [&](unsigned j, unsigned k) { return double((j >> k) % 3) + 1e-3 * real(random); });
  add("chain", 0.75, [](unsigned j, unsigned k) { return k == 0 ? 0.75 * j : 0.0; });
  add("shuffled chain", 0.1, [n](unsigned j, unsigned k) { return 0.1 * double((j * 7919ULL) % n) * (k != 1); });
  add("flat in the last axis", mesh_size, [&](unsigned, unsigned k) { return k + 1 == dim ? 3.0 : real(random); });
  add("flat in the first axis", mesh_size, [&](unsigned, unsigned k) { return k == 0 ? 0.0 : real(random); });
  add("coarse beside rounding", 1e-7, [&](unsigned, unsigned) { return 1e9 + 1e-6 * real(random); });
  // Isolated triples: from the first of one, the second lies on the next number in x and the third a little farther off.
  add("triples beside rounding", 1, [side](unsigned j, unsigned k) {
    const unsigned triple = j / 3;
    const unsigned line = triple / side;
    if (k == 0) return 0x1p52 + 20.0 * (triple % side) + (j % 3 == 1 ? 1 : 0);
    const double y = 20.0 * line + std::fmod(2.7 * triple, 8);
    return k == 1 ? y + (j % 3 == 2 ? 1.02 + std::fmod(0.03 * triple, 0.4) : 0) : 0.0;
  });
  for (const double scale : {1e-310, 1e-170, 1e-150, 1e150, 1e170, 1e308}) {
    add("scaled", scale * mesh_size, [&](unsigned, unsigned) { return scale * (real(random) - 0.5); });
    all.back().name += " by " + std::to_string(std::log10(scale));
  }
  add("special values", 1, [&](unsigned, unsigned) {
    const double values[] = {not_a_number, infinity, -infinity, -0.0, 0.0};
    const unsigned pick = below(random, 40);
    return pick < 5 ? values[pick] : double(below(random, side));
  });
  std::vector<double> sites(dim * (n / 6 + 1));
  std::generate(sites.begin(), sites.end(), [&] { return real(random); });
  for (const double tol : {1e-6, 0.3 * mesh_size}) {
    const auto displaced = [&](double site) { return site + tol * (real(random) - 0.5); };
    add("displaced copies in order", tol, [&](unsigned j, unsigned k) { return displaced(sites[dim * (j / 6) + k]); });
    add("displaced copies", tol, [&](unsigned j, unsigned k) { return displaced(sites[dim * (j % (n / 6 + 1)) + k]); });
  }
  add("signed zeros", 1, [&](unsigned, unsigned) { return below(random, 2) != 0 ? 0.0 : -0.0; });
  return all;
}

/// IDs below n, some of them `~0U`.
inline std::vector<unsigned> list(generator& random, std::size_t size, unsigned n) {
  std::vector<unsigned> ids(size);
  for (unsigned& id : ids) id = below(random, 12) == 0 ? ~0U : below(random, n);
  return ids;
}

/// Elements on n nodes of which most hold nodes of near indices; one entry in ten is `~0U`.
inline dense2D<unsigned> connectivity(generator& random, unsigned rows, unsigned cols, unsigned n) {
  dense2D<unsigned> m(rows, cols);
  for (unsigned j = 0; j < cols; ++j) {
    const unsigned start = below(random, n);
    const unsigned reach = below(random, 4) == 0 ? n : 2 * rows;
    for (unsigned i = 0; i < rows; ++i) {
      m(i, j) = below(random, 10) == 0 ? ~0U : (start + below(random, reach)) % n;
    }
  }
  return m;
}

}  // namespace random_meshes

#endif
