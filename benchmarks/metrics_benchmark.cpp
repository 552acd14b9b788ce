// Metric tensors: decomposition, validity, intersection and bounds, beside LAPACK and Eigen.
#include <cstring>

#include "compare.h"
#include "inputs.h"

#ifdef QEL_HAVE_EIGEN
#include <Eigen/Eigenvalues>
#endif
#ifdef QEL_HAVE_LAPACK
extern "C" void dspev_(const char* jobz, const char* uplo, const int* n, double* ap, double* w, double* z,
                       const int* ldz, double* work, int* info);
#endif

namespace {

using namespace qel::gridwork;
using qel::dense2D;
using tensor = qel::symmetric_fixed<double, 3>;
using pairs = qel::matrix_fixed<double, 3, 3>;
using values = qel::vector_fixed<double, 3>;

/// Positive definite tensors of sizes between 1 and 30, along random axes.
dense2D<double> random_tensors(std::uint64_t n, unsigned seed) {
  std::mt19937_64 random(seed);
  std::uniform_real_distribution<double> component(-1, 1);
  dense2D<double> tensors(6, n);
  for (std::uint64_t j = 0; j < n; ++j) {
    double a[3][3];
    for (auto& row : a) {
      for (double& x : row) x = component(random);
    }
    double* M = tensors.column(j);
    for (unsigned c = 0; c < 3; ++c) {
      for (unsigned r = 0; r <= c; ++r) {
        *M++ = a[r][0] * a[c][0] + a[r][1] * a[c][1] + a[r][2] * a[c][2] + (r == c ? 1e-3 : 0);
      }
    }
  }
  return tensors;
}

tensor tensor_at(const dense2D<double>& tensors, std::uint64_t j) {
  tensor M;
  std::memcpy(M.data(), tensors.column(j), sizeof(M));
  return M;
}

/// Adds up of(j) over the columns.
template <class Of>
void add_sum(const std::string& group, const std::string& who, std::uint64_t n, Of of) {
  add_benchmark(group, who, [n, of] {
    double sum = 0;
    for (std::uint64_t j = 0; j < n; ++j) sum += of(j);
    return sum;
  });
}

#ifdef QEL_HAVE_LAPACK
/// Ascending eigenvalues of a tensor; its vectors with jobz "V".
struct lapack_solution {
  values w;
  pairs V;

  lapack_solution(const dense2D<double>& tensors, std::uint64_t j, const char* jobz) {
    tensor M = tensor_at(tensors, j);
    double work[9];
    const int three = 3;
    int info = 0;
    dspev_(jobz, "U", &three, M.data(), w.data(), V.data(), &three, work, &info);
  }
};

/// Keeps the eigenvalues between 1 / hmax^2 and 1 / hmin^2. Returns the number of tensors that this changed.
int bound_by_lapack(dense2D<double>& tensors, double hmin, double hmax) {
  int changed = 0;
  for (std::uint64_t j = 0; j < tensors.cols(); ++j) {
    const lapack_solution s(tensors, j, "V");
    double bounded[3];
    for (unsigned i = 0; i < 3; ++i) bounded[i] = std::clamp(s.w[i], 1 / (hmax * hmax), 1 / (hmin * hmin));
    if (std::equal(bounded, bounded + 3, s.w.data())) continue;
    double* M = tensors.column(j);
    for (unsigned c = 0; c < 3; ++c) {
      for (unsigned r = 0; r <= c; ++r) {
        *M++ = bounded[0] * s.V(r, 0) * s.V(c, 0) + bounded[1] * s.V(r, 1) * s.V(c, 1) +
               bounded[2] * s.V(r, 2) * s.V(c, 2);
      }
    }
    ++changed;
  }
  return changed;
}
#endif

#ifdef QEL_HAVE_EIGEN
Eigen::Matrix3d to_eigen(const dense2D<double>& tensors, std::uint64_t j) {
  const double* M = tensors.column(j);
  Eigen::Matrix3d A;
  A << M[0], M[1], M[3], M[1], M[2], M[4], M[3], M[4], M[5];
  return A;
}
#endif

void add_decompositions(const dense2D<double>& tensors) {
  const std::string group = "eigen-pairs of 1 M tensors, 3-D";
  const std::uint64_t n = tensors.cols();
  add_sum(group, "ours", n, [=](std::uint64_t j) {
    values w;
    pairs V;
    return eigen_pairs(tensor_at(tensors, j), w, V) ? w[0] + V[1] : 0;
  });
#ifdef QEL_HAVE_LAPACK
  add_sum(group, "LAPACK", n, [=](std::uint64_t j) {
    const lapack_solution s(tensors, j, "V");
    return s.w[0] + s.V[1];
  });
#endif
#ifdef QEL_HAVE_EIGEN
  add_sum(group, "Eigen", n, [=](std::uint64_t j) {
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver(to_eigen(tensors, j));
    return solver.eigenvalues()[0] + solver.eigenvectors()(1, 0);
  });
#endif
}

void add_validity(const dense2D<double>& tensors) {
  const std::string group = "validity of 1 M tensors, 3-D";
  add_benchmark(group, "ours", [=] { return are_valid_metrics(tensors); });
#ifdef QEL_HAVE_LAPACK
  add_sum(group, "LAPACK", tensors.cols(),
          [=](std::uint64_t j) { return lapack_solution(tensors, j, "N").w[0] > 0 ? 1 : 0; });
#endif
#ifdef QEL_HAVE_EIGEN
  add_sum(group, "Eigen (Cholesky)", tensors.cols(),
          [=](std::uint64_t j) { return to_eigen(tensors, j).llt().info() == Eigen::Success ? 1 : 0; });
#endif
}

void add_intersections(const dense2D<double>& first, const dense2D<double>& second) {
  const std::string group = "intersection of 1 M pairs of tensors, 3-D";
  const std::uint64_t n = first.cols();
  add_sum(group, "ours", n, [=](std::uint64_t j) {
    tensor M;
    return minimum_metric(tensor_at(first, j), tensor_at(second, j), M) ? M[0] : 0;
  });
#ifdef QEL_HAVE_EIGEN
  add_sum(group, "Eigen", n, [=](std::uint64_t j) {
    const Eigen::Matrix3d A = to_eigen(first, j);
    const Eigen::GeneralizedSelfAdjointEigenSolver<Eigen::Matrix3d> solver(to_eigen(second, j), A);
    const Eigen::Matrix3d Q = solver.eigenvectors().inverse();  // the vectors have length 1 in A
    const Eigen::Vector3d chosen = solver.eigenvalues().cwiseMax(1.0);
    return (Q.transpose() * chosen.asDiagonal() * Q)(0, 0);
  });
#endif
}

/// Sizes of which a tenth of the tensors has some out of bounds.
void add_bounds(const dense2D<double>& tensors) {
  constexpr double hmin = 0.5, hmax = 20;
  const std::string group = "bounds of 1 M tensors, 3-D";
  const auto add = [&](const std::string& who, auto bound) {
    add_benchmark(group, who, [=] {
      dense2D<double> bounded;
      return bounded.copy(tensors) ? bound(bounded, hmin, hmax) : 0;
    });
  };
  add("ours", [](dense2D<double>& bounded, double h1, double h2) { return bound_metrics(bounded, h1, h2); });
#ifdef QEL_HAVE_LAPACK
  add("LAPACK", bound_by_lapack);
#endif
}

}  // namespace

int main(int argc, char** argv) {
  constexpr std::uint64_t million = 1000000;
  const dense2D<double> tensors = random_tensors(million, 1);
  add_decompositions(tensors);
  add_validity(tensors);
  add_intersections(tensors, random_tensors(million, 2));
  add_bounds(tensors);
  return run_benchmarks(argc, argv);
}
