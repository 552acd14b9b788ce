/// @file
/// Clipped meshes, transcribed from the definition: every element is cut by itself, edges are found by comparing all.
#ifndef QEL_TESTS_CLIP_REFERENCE_H
#define QEL_TESTS_CLIP_REFERENCE_H

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "tests/random_meshes.h"
#include "tests/reference.h"

namespace reference {

/// What clip() leaves; `coords`, `edges` and `weights` of the exact form only.
struct clipped_mesh {
  int code = 0;
  dense2D<double> coords;
  dense2D<unsigned> out, edges;
  id_list elements;
  std::vector<double> weights;
};

class clip_model {
 public:
  clip_model(const dense2D<double>& coords, std::vector<double> origin, std::vector<double> normal, double tol)
      : coords_(coords), point_(std::move(origin)), normal_(std::move(normal)), tol_(tol) {
    int exponent = 0;
    for (const double x : normal_) largest_ = std::max(largest_, std::abs(x));
    (void)std::frexp(largest_, &exponent);
    double square = 0;
    for (std::size_t k = 0; k < normal_.size(); ++k) {
      s_.push_back(std::ldexp(normal_[k], 1 - exponent));
      square += s_[k] * s_[k];
    }
    length_ = std::sqrt(square);
  }

  clipped_mesh whole(const dense2D<unsigned>& m, unsigned mode) const {
    clipped_mesh result;
    if (m.empty()) return result;
    result.code = fault(check_IDs(m, bound()), mode <= 2);
    if (result.code != 0) return result;
    for (unsigned e = 0; e < m.cols(); ++e) {
      const sides of = sides_of(column(m, e));
      const bool crossed = of.before && of.behind, whole = of.any && !of.behind;
      if (of.lost || !((mode < 2 && whole) || (mode > 0 && crossed))) continue;
      result.elements.push_back(e);
    }
    result.code = static_cast<int>(m.cols() - result.elements.size());
    result.out = dense2D<unsigned>(m.rows(), result.elements.size());
    for (unsigned j = 0; j < result.elements.size(); ++j) {
      std::copy_n(m.column(result.elements[j]), m.rows(), result.out.column(j));
    }
    return result;
  }

  clipped_mesh exact(const dense2D<unsigned>& m, element_type type) {
    clipped_mesh result;
    result.coords = random_meshes::deep_copy(coords_);
    if (m.empty()) return result;
    if (type == ELT_FACE_MIX && m.rows() == 3) type = ELT_TRIA3;
    if (type == ELT_SOLID_MIX && m.rows() == 4) type = ELT_TETRA4;
    const bool faces = type == ELT_QUAD4 || type == ELT_FACE_MIX;
    const bool accepted = faces || type == ELT_EDGE2 || type == ELT_TRIA3 || type == ELT_TETRA4;
    result.code = fault(check_IDs(m, type, bound()), accepted);
    if (result.code != 0) return result;
    std::vector<piece> all;
    edges_.clear();
    for (unsigned e = 0; e < m.cols(); ++e) {
      const id_list nodes = column(m, e);
      for (const piece& p : cut(nodes, faces)) {
        all.push_back(p);
        result.elements.push_back(e);
      }
    }
    number_edges(result);
    result.out = dense2D<unsigned>(m.rows(), all.size(), none);
    for (unsigned j = 0; j < all.size(); ++j) {
      for (unsigned i = 0; i < all[j].size(); ++i) result.out(i, j) = index_of(all[j][i]);
    }
    return result;
  }

 private:
  /// An old node twice, or the ends of the edge that a new one lies on.
  using place = std::pair<unsigned, unsigned>;
  using piece = std::vector<place>;
  struct sides {
    bool any = false, before = false, behind = false, lost = false;
  };

  unsigned bound() const { return static_cast<unsigned>(coords_.cols()); }

  int fault(bool valid_ids, bool valid_choice) const {
    const auto finite = [](double x) { return std::isfinite(x); };
    if (coords_.rows() < point_.size()) return -1;
    if (!std::all_of(point_.begin(), point_.end(), finite)) return -3;
    if (largest_ == 0 || !std::all_of(normal_.begin(), normal_.end(), finite)) return -4;
    if (!valid_ids) return -5;
    if (!valid_choice) return -6;
    return tol_ >= 0 ? 0 : -7;
  }

  double distance(unsigned node) const {
    double sum = s_[0] * (coords_(0, node) - point_[0]);
    for (unsigned k = 1; k < s_.size(); ++k) sum += s_[k] * (coords_(k, node) - point_[k]);
    return sum;
  }

  /// 1 before, -1 behind, 0 on the plane.
  int side(const place& p) const {
    if (p.first != p.second) return 0;
    const double d = distance(p.first);
    return std::abs(d) <= tol_ * length_ ? 0 : d > 0 ? 1 : -1;
  }

  sides sides_of(const id_list& nodes) const {
    sides of;
    for (const unsigned node : nodes) {
      if (node == none) continue;
      of.any = true;
      of.lost = of.lost || !std::isfinite(distance(node));
      of.before = of.before || side({node, node}) > 0;
      of.behind = of.behind || side({node, node}) < 0;
    }
    return of;
  }

  bool crosses(const place& a, const place& b) const { return side(a) * side(b) < 0; }

  place split(const place& a, const place& b) {
    const place edge = std::minmax(a.first, b.first);
    if (std::find(edges_.begin(), edges_.end(), edge) == edges_.end()) edges_.push_back(edge);
    return edge;
  }

  std::vector<piece> cut(const id_list& nodes, bool faces) {
    piece element;
    for (const unsigned node : nodes) {
      if (node != none) element.push_back({node, node});
    }
    const sides of = sides_of(nodes);
    if (of.lost) return {};
    if (!of.behind) return {element};
    if (!of.before) return {};
    return faces ? cut_face(element) : bisect({element});
  }

  /// Splits the first piece that can be split, again and again.
  std::vector<piece> bisect(std::vector<piece> pieces) {
    for (std::size_t k = 0; k < pieces.size();) {
      const piece p = pieces[k];
      std::vector<place> crossing;
      for (const place& a : p) {
        for (const place& b : p) {
          if (a < b && crosses(a, b)) crossing.push_back({a.first, b.first});
        }
      }
      if (crossing.empty()) {
        ++k;
        continue;
      }
      const place edge = *std::min_element(crossing.begin(), crossing.end());
      piece low = p, high = p;
      const place low_end = {edge.first, edge.first}, high_end = {edge.second, edge.second};
      std::replace(low.begin(), low.end(), high_end, split(low_end, high_end));
      std::replace(high.begin(), high.end(), low_end, edge);
      pieces[k] = low;
      pieces.insert(pieces.begin() + static_cast<std::ptrdiff_t>(k) + 1, high);
    }
    std::erase_if(pieces, [this](const piece& p) {
      return std::any_of(p.begin(), p.end(), [this](const place& q) { return side(q) < 0; });
    });
    return pieces;
  }

  std::vector<piece> cut_face(const piece& f) {
    const std::size_t n = f.size();
    std::size_t places = 0;
    for (std::size_t i = 0; i < n; ++i) places += side(f[i]) == 0 || crosses(f[i], f[(i + 1) % n]);
    if (places == 2) return cut_outline(f);
    const std::size_t l = static_cast<std::size_t>(std::min_element(f.begin(), f.end()) - f.begin());
    std::vector<piece> all;
    for (const std::size_t k : {l + 1, l + 2}) {
      for (const piece& p : cut_outline({f[l], f[k % 4], f[(k + 1) % 4]})) all.push_back(p);
    }
    return all;
  }

  std::vector<piece> cut_outline(const piece& f) {
    const auto is = [this, &f](int which) {
      return std::any_of(f.begin(), f.end(), [&](const place& p) { return side(p) == which; });
    };
    if (!is(-1)) return {f};
    if (!is(1)) return {};
    piece walked;
    const std::size_t n = f.size();
    std::size_t q = 0;
    for (std::size_t i = 0; i < n; ++i) {
      const place &p = f[i], &next = f[(i + 1) % n];
      if (side(p) >= 0) walked.push_back(p);
      if (side(p) < 0) q = i;
      if (crosses(p, next)) walked.push_back(split(p, next));
    }
    if (walked.size() < 5) return {walked};
    const place a = f[(q + 1) % 4], b = f[(q + 2) % 4], c = f[(q + 3) % 4];
    return {{a, b, c}, {a, c, split(c, f[q]), split(f[q], a)}};
  }

  void number_edges(clipped_mesh& result) {
    std::sort(edges_.begin(), edges_.end());
    for (const auto& [a, b] : edges_) {
      const double t = distance(a) / (distance(a) - distance(b));
      std::vector<double> x(coords_.rows());
      for (unsigned i = 0; i < x.size(); ++i) x[i] = coords_(i, a) + t * (coords_(i, b) - coords_(i, a));
      if (!result.coords.push_back_column(x.data()) || !result.edges.push_back_column({a, b})) std::abort();
      result.weights.push_back(t);
    }
    if (edges_.empty()) result.edges = dense2D<unsigned>(2, 0);
    result.code = static_cast<int>(edges_.size());
  }

  unsigned index_of(const place& p) const {
    if (p.first == p.second) return p.first;
    return bound() + static_cast<unsigned>(std::find(edges_.begin(), edges_.end(), p) - edges_.begin());
  }

  const dense2D<double>& coords_;
  std::vector<double> point_, normal_, s_;
  double tol_, largest_ = 0, length_ = 0;
  std::vector<place> edges_;
};

}  // namespace reference

#endif
