// Works on the same memory with Eigen and with this library; no entry is copied on the way.
//
// Both lay matrices out column by column, so a map of either onto the other is a pointer, two sizes and a leading
// dimension, which Eigen calls the outer stride. Arrays of ours are aligned to 8 bytes: their maps stay
// Eigen::Unaligned.
#include <qel/gridwork.h>

#include <Eigen/Dense>
#include <cstdint>
#include <cstdio>
#include <type_traits>

namespace {

namespace gridwork = qel::gridwork;
using qel::dense1D;
using qel::dense2D;

using triangles = Eigen::Matrix<unsigned, 3, Eigen::Dynamic>;
template <class Matrix>
using strided_map = Eigen::Map<Matrix, Eigen::Unaligned, Eigen::OuterStride<>>;

// Eigen's views of our matrices: all columns one after another, or with gaps as in a part of another matrix.
Eigen::Map<Eigen::Matrix3Xd> as_points(dense2D<double>& coords) {
  return {coords.data(), 3, static_cast<Eigen::Index>(coords.cols())};
}

strided_map<Eigen::MatrixXd> as_eigen(dense2D<double>& m) {
  return {m.data(), static_cast<Eigen::Index>(m.rows()), static_cast<Eigen::Index>(m.cols()),
          Eigen::OuterStride<>(static_cast<Eigen::Index>(m.ld()))};
}

Eigen::Map<const Eigen::VectorXd> as_eigen(const dense1D<double>& v) {
  return {v.data(), static_cast<Eigen::Index>(v.size())};
}

// Our view of a matrix, a block or a map of Eigen's, which must outlive it.
template <class Matrix>
dense2D<typename std::decay_t<Matrix>::Scalar> as_dense(Matrix&& m) {
  static_assert(!std::decay_t<Matrix>::IsRowMajor, "dense2D is column-major");
  return {static_cast<std::uint64_t>(m.rows()), static_cast<std::uint64_t>(m.cols()),
          static_cast<std::uint64_t>(m.outerStride()), m.data()};
}

bool holds(bool fact, const char* what) {
  std::printf("%-78s %s\n", what, fact ? "yes" : "NO");
  return fact;
}

// A rotation by Eigen, undone by the library: Eigen works on the memory of a dense2D.
bool eigen_on_our_memory() {
  dense2D<double> coords(3, 4, {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1});
  const Eigen::Matrix3Xd before = as_points(coords);
  const Eigen::Vector3d turn(0.3, -0.2, 0.5);  // axis times angle
  auto points = as_points(coords);
  points.applyOnTheLeft(Eigen::AngleAxisd(turn.norm(), turn.normalized()).toRotationMatrix());
  const bool turned = (points - before).norm() > 0.1;
  const int moved = gridwork::rotate(coords, {0, 0, 0}, {-0.3, 0.2, -0.5});
  return holds(turned && moved == 4 && (points - before).norm() < 1e-14,
               "what Eigen turns in a dense2D, the library turns back");
}

// Rows 1 and 2 of three nodes: a part of a matrix keeps the leading dimension of the whole.
bool eigen_on_a_part() {
  dense2D<double> coords(3, 5, 1.0);
  dense2D<double> part = coords.sub_matrix(1, 1, 2, 3);
  as_eigen(part) *= 7;
  return holds(as_eigen(coords).sum() == 9 + 6 * 7 && coords(2, 3) == 7 && coords(0, 2) == 1,
               "a map with the leading dimension as outer stride changes just the part");
}

// Two squares of two triangles with a seam between them, in Eigen's matrices, merged and compacted in place.
bool library_on_eigen_memory() {
  Eigen::Matrix3Xd points(3, 8);
  points << 0, 1, 1, 0, 1, 2, 2, 1,  //
      0, 0, 1, 1, 0, 0, 1, 1,        //
      0, 0, 0, 0, 0, 0, 0, 0;
  triangles connectivity(3, 4);
  connectivity << 0, 0, 4, 4,  //
      1, 2, 5, 6,              //
      2, 3, 6, 7;
  dense2D<double> coords = as_dense(points);
  dense2D<unsigned> elements = as_dense(connectivity);
  const int merged = gridwork::merge(coords, elements, 1e-9, 0);
  const int removed = gridwork::simplify(coords, elements, 0);
  dense1D<double> qualities;
  const int result = gridwork::shape_qualities(coords, elements, gridwork::ELT_TRIA3, qualities);
  if (merged != 2 || removed < 0 || result != 0) return holds(false, "the library accepts Eigen's matrices");
  double worst = 0;
  unsigned worst_element = 0;
  const int found = gridwork::min_quality(coords, elements, gridwork::ELT_TRIA3, worst, worst_element);
  const bool in_place = coords.data() == points.data() && elements.data() == connectivity.data();
  const auto q = as_eigen(qualities);
  return holds(in_place && coords.cols() == 6 && connectivity.maxCoeff() == 5,
               "the library merges a mesh that Eigen owns, where it lies") &&
         holds(found == 0 && q.size() == 4 && q.minCoeff() == worst && worst > 0,
               "Eigen evaluates the qualities of its triangles");
}

// A block of a larger matrix: its outer stride is our leading dimension.
bool library_on_a_block() {
  Eigen::MatrixXd table = Eigen::MatrixXd::Zero(5, 6);
  dense2D<double> coords = as_dense(table.block(1, 2, 3, 4));
  const int moved = gridwork::translate(coords, {1, 2, 3});
  return holds(moved == 4 && coords.ld() == 5 && table.sum() == 24 && table.row(3).sum() == 12 && table(0, 2) == 0,
               "the library moves the nodes in a block of Eigen's matrix, and nothing else");
}

}  // namespace

int main() {
  const bool results[] = {eigen_on_our_memory(), eigen_on_a_part(), library_on_eigen_memory(), library_on_a_block()};
  for (const bool result : results) {
    if (!result) return 1;
  }
  return 0;
}
