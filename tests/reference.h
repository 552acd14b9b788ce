/// @file
/// Slow and simple models of the ID matching, the node searches and the merges, against which the tests hold the
/// library.
#ifndef QEL_TESTS_REFERENCE_H
#define QEL_TESTS_REFERENCE_H

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <tuple>
#include <unordered_set>
#include <vector>

#include "qel/gridwork.h"

namespace reference {

using namespace qel::gridwork;
using qel::dense1D;
using qel::dense2D;
using id_list = std::vector<unsigned>;
using point = std::array<double, 3>;

constexpr unsigned none = ~0U;

inline id_list to_list(const dense1D<unsigned>& ids) { return id_list(ids.begin(), ids.end()); }

inline dense1D<unsigned> to_array(const id_list& ids) {
  dense1D<unsigned> array(ids.size());
  std::copy(ids.begin(), ids.end(), array.begin());
  return array;
}

inline id_list column(const dense2D<unsigned>& m, std::uint64_t j) {
  return id_list(m.begin_column(j), m.end_column(j));
}

inline std::vector<id_list> columns(const dense2D<unsigned>& m) {
  std::vector<id_list> all;
  for (std::uint64_t j = 0; j < m.cols(); ++j) all.push_back(column(m, j));
  return all;
}

/// Position of a node; z = 0 in the plane.
inline point position(const dense2D<double>& coords, unsigned node) {
  return {coords(0, node), coords(1, node), coords.rows() == 3 ? coords(2, node) : 0.0};
}

/// The entries in order of first appearance, without `none` and the excluded ones.
inline id_list unique(const id_list& values, const id_list& excluded = {}) {
  std::unordered_set<unsigned> seen(excluded.begin(), excluded.end());
  seen.insert(none);
  id_list result;
  for (unsigned v : values) {
    if (seen.insert(v).second) result.push_back(v);
  }
  return result;
}

inline id_list unique(const std::vector<dense2D<unsigned>>& matrices) {
  id_list all;
  for (const auto& m : matrices) {
    for (const auto& c : columns(m)) all.insert(all.end(), c.begin(), c.end());
  }
  return unique(all);
}

inline id_list shuffled(id_list ids) {
  std::mt19937 random(1);
  for (std::size_t i = 1; i < ids.size(); ++i) std::swap(ids[i], ids[random() % (i + 1)]);
  return ids;
}

/// The k-d tree, one insertion after the other.
class tree {
 public:
  explicit tree(const dense2D<double>& coords) : coords_(&coords), dim_(static_cast<unsigned>(coords.rows())) {}

  unsigned size() const { return static_cast<unsigned>(slots_.size()); }

  unsigned insert(const id_list& ids) {
    const unsigned old_size = size();
    for (unsigned id : shuffled(ids)) {
      if (id >= coords_->cols()) continue;
      const unsigned fresh = size();
      slots_.push_back({id, none, none});
      const point p = position(*coords_, id);
      unsigned axis = 0;
      for (unsigned at = 0; at != fresh; axis = (axis + 1) % dim_) {
        unsigned& child = p[axis] >= place(at)[axis] ? slots_[at].right : slots_[at].left;
        if (child == none) child = fresh;
        at = child;
      }
    }
    return size() - old_size;
  }

  unsigned find_closest(const point& p, unsigned excluded = none) const {
    candidate best{none, std::numeric_limits<double>::max()};
    unsigned axis = 0;
    for (unsigned at = root(); at != none; axis = (axis + 1) % dim_) {
      const double d2 = squared_distance(p, place(at));
      if (slots_[at].id != excluded && d2 < best.distance) best = {slots_[at].id, d2};
      at = p[axis] >= place(at)[axis] ? slots_[at].right : slots_[at].left;
    }
    if (best.id != none) best.distance = std::sqrt(best.distance);
    search(p, excluded, root(), 0, best);
    return best.id;
  }

  unsigned find_closest(unsigned node) const {
    return node < coords_->cols() ? find_closest(position(*coords_, node), node) : none;
  }

  id_list find_in_box(const point& low, const point& high) const {
    id_list found;
    search_box(low, high, root(), 0, found);
    return found;
  }

 private:
  struct slot {
    unsigned id, left, right;
  };
  struct candidate {
    unsigned id;
    double distance;
  };

  unsigned root() const { return slots_.empty() ? none : 0; }
  point place(unsigned at) const { return position(*coords_, slots_[at].id); }

  double squared_distance(const point& a, const point& b) const {
    double sum = 0;
    for (unsigned k = 0; k < dim_; ++k) sum += (a[k] - b[k]) * (a[k] - b[k]);
    return sum;
  }

  bool inside(const point& p, const point& low, const point& high) const {
    bool in = true;
    for (unsigned k = 0; k < dim_; ++k) in = in && low[k] <= p[k] && p[k] <= high[k];
    return in;
  }

  void search(const point& p, unsigned excluded, unsigned at, unsigned axis, candidate& best) const {
    if (at == none) return;
    const point q = place(at);
    const double r = best.distance;
    if (slots_[at].id != excluded && inside(q, {p[0] - r, p[1] - r, p[2] - r}, {p[0] + r, p[1] + r, p[2] + r})) {
      const double d = std::sqrt(squared_distance(p, q));
      if (d < best.distance) best = {slots_[at].id, d};
    }
    const unsigned next = (axis + 1) % dim_;
    if (q[axis] < p[axis] + best.distance) search(p, excluded, slots_[at].right, next, best);
    if (q[axis] > p[axis] - best.distance) search(p, excluded, slots_[at].left, next, best);
  }

  void search_box(const point& low, const point& high, unsigned at, unsigned axis, id_list& found) const {
    if (at == none) return;
    const point p = place(at);
    if (inside(p, low, high)) found.push_back(slots_[at].id);
    const unsigned next = (axis + 1) % dim_;
    if (p[axis] >= low[axis]) search_box(low, high, slots_[at].left, next, found);
    if (p[axis] <= high[axis]) search_box(low, high, slots_[at].right, next, found);
  }

  const dense2D<double>* coords_;
  unsigned dim_;
  std::vector<slot> slots_;
};

struct merge_result {
  int count = 0;
  id_list new_ids;
};

inline id_list identity(std::size_t n) {
  id_list ids(n);
  for (std::size_t i = 0; i < n; ++i) ids[i] = static_cast<unsigned>(i);
  return ids;
}

/// Squared distance of two nodes when b lies in the box of half width `tol` round a; otherwise a NaN.
inline double squared_distance_in_box(const dense2D<double>& coords, unsigned a, unsigned b, double tol) {
  double sum = 0;
  for (unsigned k = 0; k < coords.rows(); ++k) {
    const double p = coords(k, a);
    const double q = coords(k, b);
    if (!(p - tol <= q && q <= p + tol)) return std::numeric_limits<double>::quiet_NaN();
    sum += (p - q) * (p - q);
  }
  return sum;
}

inline merge_result merge_near(const dense2D<double>& coords, const id_list& ids1, const id_list& ids2, double tol) {
  if (ids1.empty() || ids2.empty()) return {};
  const id_list nodes = unique(ids1);
  const id_list targets = unique(ids2);
  merge_result result{0, identity(coords.cols())};
  id_list& new_ids = result.new_ids;
  id_list rank(coords.cols(), none);
  for (std::size_t j = 0; j < targets.size(); ++j) rank[targets[j]] = static_cast<unsigned>(j);

  for (unsigned a : nodes) {
    const auto first = std::find_if(targets.begin(), targets.end(), [&](unsigned b) {
      return b != a && squared_distance_in_box(coords, a, b, tol) <= tol * tol;
    });
    if (first == targets.end()) continue;
    new_ids[a] = *first;
    ++result.count;
  }
  if (result.count <= 1) return result;

  result.count = 0;
  for (unsigned a : nodes) {
    unsigned c = a;
    for (unsigned last_rank = none; new_ids[c] != c && rank[new_ids[c]] < last_rank;) {
      c = new_ids[c];
      last_rank = rank[c];
    }
    new_ids[a] = c;
  }
  for (unsigned a : nodes) result.count += new_ids[a] != a;
  return result;
}

inline void renumber(std::vector<dense2D<unsigned>>& matrices, const id_list& new_ids) {
  for (auto& m : matrices) {
    for (std::uint64_t j = 0; j < m.cols(); ++j) {
      for (std::uint64_t i = 0; i < m.rows(); ++i) m(i, j) = m(i, j) < new_ids.size() ? new_ids[m(i, j)] : m(i, j);
    }
  }
}

/// Merges nodes of one element, closest pairs first; in one pass or until a pass merges nothing.
inline merge_result merge_in_elements(const dense2D<double>& coords, std::vector<dense2D<unsigned>>& matrices,
                                      double tol, bool repeat) {
  const id_list nodes = unique(matrices);
  merge_result result{0, identity(coords.cols())};
  id_list& new_ids = result.new_ids;
  int merged;
  do {
    merged = 0;
    std::vector<std::tuple<double, unsigned, unsigned>> records;
    for (const auto& m : matrices) {
      for (const id_list& element : columns(m)) {
        const id_list others = unique(element);
        for (unsigned a : element) {
          if (a == none || new_ids[a] != a) continue;
          for (unsigned b : others) {
            const double d = std::sqrt(squared_distance_in_box(coords, a, b, tol));
            if (b != a && new_ids[b] == b && d <= tol) records.emplace_back(d, a, b);
          }
        }
      }
    }
    std::stable_sort(records.begin(), records.end(), [](const auto& r, const auto& s) {
      return std::tie(std::get<0>(r), std::get<1>(r)) < std::tie(std::get<0>(s), std::get<1>(s));
    });
    for (const auto& [d, a, b] : records) {
      if (new_ids[a] != a || new_ids[b] != b) continue;
      new_ids[b] = a;
      ++merged;
    }
    for (unsigned x : nodes) {
      while (new_ids[new_ids[x]] != new_ids[x]) new_ids[x] = new_ids[new_ids[x]];
    }
    renumber(matrices, new_ids);
    result.count += merged;
  } while (repeat && merged != 0);
  return result;
}

/// Mode 0, 1 or 2 of the merges over connectivity matrices, which are renumbered.
inline merge_result merge(const dense2D<double>& coords, std::vector<dense2D<unsigned>>& matrices, double tol,
                          unsigned mode) {
  const id_list nodes = unique(matrices);
  if (coords.cols() == 0 || nodes.empty()) return {};
  if (mode != 0) return merge_in_elements(coords, matrices, tol, mode == 2);
  merge_result result = merge_near(coords, nodes, nodes, tol);
  renumber(matrices, result.new_ids);
  return result;
}

/// First match in A of every column of B, and the first column of B that has this first match for every column of A.
inline std::pair<id_list, id_list> match_columns(const dense2D<unsigned>& A, const dense2D<unsigned>& B, bool exact) {
  const auto canonical = [exact](id_list c) {
    if (!exact) std::rotate(c.begin(), std::max_element(c.begin(), c.end()), c.end());
    return c;
  };
  std::pair<id_list, id_list> result{id_list(B.cols(), none), id_list(A.cols(), none)};
  if (A.empty() || B.empty()) return result;
  for (auto j = static_cast<unsigned>(B.cols()); j-- > 0;) {
    const id_list b = canonical(column(B, j));
    for (unsigned c = 0; c < A.cols() && result.first[j] == none; ++c) {
      id_list a = canonical(column(A, c));
      bool equal = a == b;
      if (!equal && !exact) {
        std::reverse(a.begin() + 1, a.end());
        equal = a == b;
      }
      if (!equal) continue;
      result.first[j] = c;
      result.second[c] = j;
    }
  }
  return result;
}

/// The type of a matrix of so many rows.
inline element_type resolve(element_type type, std::uint64_t rows) {
  if (type == ELT_FACE_MIX && rows == 3) return ELT_TRIA3;
  if (type != ELT_SOLID_MIX) return type;
  return rows == 4 ? ELT_TETRA4 : rows == 5 ? ELT_PYRAMID5 : rows == 6 ? ELT_WEDGE6 : type;
}

/// Whether a column is valid for an element type, entry by entry.
inline bool check_column(const id_list& c, element_type type, unsigned n) {
  const std::size_t rows = c.size();
  type = resolve(type, rows);
  if (rows != nbr_nodes(type)) return false;
  if (n == none) return true;
  for (std::size_t i = 0; i < rows; ++i) {
    if (type == ELT_FACE_MIX && i == 3 && c[i] == none) return true;
    if (type == ELT_SOLID_MIX && i >= 4 && i <= 6 && c[i] == none) {
      return std::all_of(c.begin() + static_cast<std::ptrdiff_t>(i), c.end(), [](unsigned id) { return id == none; });
    }
    if (c[i] >= n) return false;
  }
  return true;
}

}  // namespace reference

#endif
