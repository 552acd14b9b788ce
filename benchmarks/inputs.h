// Inputs of the benchmarks, the same for every library.
#ifndef QEL_GRIDWORK_BENCHMARKS_INPUTS_H
#define QEL_GRIDWORK_BENCHMARKS_INPUTS_H

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <random>
#include <vector>

#include "qel/gridwork.h"

namespace inputs {

using qel::dense1D;
using qel::dense2D;

/// A bumpy sphere-like surface of 2 * side * side triangles, node positions rounded to float as in a binary STL.
inline void surface(unsigned side, dense2D<double>& coords, dense2D<unsigned>& connectivity) {
  coords = dense2D<double>(3, std::uint64_t{side} * (side + 1));
  connectivity = dense2D<unsigned>(3, 2 * std::uint64_t{side} * side);
  constexpr double pi = 3.14159265358979323846;
  for (unsigned i = 0; i <= side; ++i) {
    for (unsigned j = 0; j < side; ++j) {
      const double theta = pi * (i + 0.5) / (side + 1);
      const double phi = 2 * pi * j / side;
      const double r = 50 + std::sin(7 * theta) * std::cos(5 * phi);
      double* p = coords.column(std::uint64_t{i} * side + j);
      p[0] = static_cast<float>(r * std::sin(theta) * std::cos(phi));
      p[1] = static_cast<float>(r * std::sin(theta) * std::sin(phi));
      p[2] = static_cast<float>(r * std::cos(theta));
    }
  }
  std::uint64_t e = 0;
  for (unsigned i = 0; i < side; ++i) {
    for (unsigned j = 0; j < side; ++j) {
      const unsigned a = i * side + j, b = i * side + (j + 1) % side, c = a + side, d = b + side;
      const unsigned nodes[2][3] = {{a, c, b}, {b, c, d}};
      for (const auto& triangle : nodes) std::copy_n(triangle, 3, connectivity.column(e++));
    }
  }
}

/// A sphere of 12 * side * side triangles of nearly one size: the faces of a cube, parted at equal angles. Positions are
/// rounded to float. Nodes on the cube's edges are there once for each face.
inline void uniform_sphere(unsigned side, dense2D<double>& coords, dense2D<unsigned>& connectivity) {
  const unsigned line = side + 1;
  coords = dense2D<double>(3, 6 * std::uint64_t{line} * line);
  connectivity = dense2D<unsigned>(3, 12 * std::uint64_t{side} * side);
  constexpr double quarter = 3.14159265358979323846 / 4;
  std::uint64_t e = 0;
  for (unsigned n = 0; n < coords.cols(); ++n) {
    const unsigned face = n / (line * line), i = n / line % line, j = n % line;
    const double v[3] = {face % 2 == 0 ? 1.0 : -1.0, std::tan(quarter * (2.0 * i / side - 1)),
                         std::tan(quarter * (2.0 * j / side - 1))};
    const double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    for (unsigned k = 0; k < 3; ++k) coords((k + face / 2) % 3, n) = static_cast<float>(50 * v[k] / length);
    if (i == side || j == side) continue;
    const unsigned triangles[2][3] = {{n, n + line, n + 1}, {n + 1, n + line, n + line + 1}};
    for (const auto& triangle : triangles) std::copy_n(triangle, 3, connectivity.column(e++));
  }
}

/// The corners of all triangles as nodes of their own; in random order of the nodes if asked for.
inline dense2D<double> corners(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, bool shuffled) {
  std::vector<std::uint64_t> place(connectivity.size());
  for (std::uint64_t i = 0; i < place.size(); ++i) place[i] = i;
  if (shuffled) std::shuffle(place.begin(), place.end(), std::mt19937_64(5));
  dense2D<double> nodes(3, place.size());
  for (std::uint64_t i = 0; i < place.size(); ++i) {
    std::copy_n(coords.column(connectivity.data()[i]), 3, nodes.column(place[i]));
  }
  return nodes;
}

/// Each coordinate moved by less than `most`, so that no two of the former copies coincide.
inline dense2D<double> displaced(const dense2D<double>& nodes, double most) {
  std::mt19937_64 random(9);
  std::uniform_real_distribution<double> shift(-most, most);
  dense2D<double> moved(nodes.rows(), nodes.cols());
  for (std::uint64_t i = 0; i < moved.size(); ++i) moved.data()[i] = nodes.data()[i] + shift(random);
  return moved;
}

inline dense2D<double> uniform_points(std::uint64_t n, unsigned seed) {
  std::mt19937_64 random(seed);
  std::uniform_real_distribution<double> coordinate(0, 100);
  dense2D<double> points(3, n);
  for (std::uint64_t i = 0; i < points.size(); ++i) points.data()[i] = coordinate(random);
  return points;
}

inline dense2D<double> clustered_points(std::uint64_t n, unsigned seed) {
  std::mt19937_64 random(seed);
  std::normal_distribution<double> spread(0, 0.05);
  const dense2D<double> centres = uniform_points(1000, seed + 1);
  dense2D<double> points(3, n);
  for (std::uint64_t j = 0; j < n; ++j) {
    const double* centre = centres.column(random() % 1000);
    for (unsigned k = 0; k < 3; ++k) points(k, j) = centre[k] + spread(random);
  }
  return points;
}

/// The same mesh with its nodes renumbered and its elements shuffled, as generators that know no locality leave it. Values
/// of the elements go with them.
inline dense2D<unsigned> without_locality(const dense2D<unsigned>& connectivity, dense1D<unsigned>* values = nullptr) {
  std::vector<unsigned> name(qel::gridwork::max_ID(connectivity) + 1);
  std::vector<std::uint64_t> place(connectivity.cols());
  for (unsigned i = 0; i < name.size(); ++i) name[i] = i;
  for (std::uint64_t e = 0; e < place.size(); ++e) place[e] = e;
  std::mt19937_64 random(7);
  std::shuffle(name.begin(), name.end(), random);
  std::shuffle(place.begin(), place.end(), random);
  dense2D<unsigned> result(connectivity.rows(), connectivity.cols());
  if (values != nullptr) {
    const std::vector<unsigned> old(values->begin(), values->end());
    for (std::uint64_t e = 0; e < place.size(); ++e) (*values)[place[e]] = old[e];
  }
  for (std::uint64_t e = 0; e < place.size(); ++e) {
    for (std::uint64_t i = 0; i < result.rows(); ++i) result(i, place[e]) = name[connectivity(i, e)];
  }
  return result;
}

/// Six tetrahedra for each cell of a lattice; nodes renumbered and elements shuffled if asked for.
inline dense2D<unsigned> tetrahedra(unsigned cells, bool shuffled) {
  const unsigned n = cells + 1;
  constexpr unsigned paths[6][2] = {{1, 3}, {1, 5}, {2, 3}, {2, 6}, {4, 5}, {4, 6}};
  dense2D<unsigned> connectivity(4, 6 * std::uint64_t{cells} * cells * cells);
  unsigned* out = connectivity.data();
  for (unsigned z = 0; z < cells; ++z) {
    for (unsigned y = 0; y < cells; ++y) {
      for (unsigned x = 0; x < cells; ++x) {
        const auto corner = [&](unsigned c) { return ((z + (c >> 2)) * n + y + (c >> 1 & 1)) * n + x + (c & 1); };
        for (const auto& path : paths) {
          for (const unsigned c : {0U, path[0], path[1], 7U}) *out++ = corner(c);
        }
      }
    }
  }
  return shuffled ? without_locality(connectivity) : connectivity;
}

/// The nodes of tetrahedra(), in the order that without_locality() gives them if they are shuffled.
inline dense2D<double> lattice(unsigned cells, bool shuffled) {
  const std::uint64_t n = cells + 1;
  std::vector<unsigned> name(n * n * n);
  for (unsigned i = 0; i < name.size(); ++i) name[i] = i;
  if (shuffled) std::shuffle(name.begin(), name.end(), std::mt19937_64(7));
  dense2D<double> coords(3, name.size());
  for (std::uint64_t i = 0; i < name.size(); ++i) {
    double* p = coords.column(name[i]);
    p[0] = double(i % n), p[1] = double(i / n % n), p[2] = double(i / n / n);
  }
  return coords;
}

/// For each tetrahedron of tetrahedra(cells, false), the block of the lattice that it lies in, of 4 x 4 x 4.
inline dense1D<unsigned> blocks(unsigned cells) {
  dense1D<unsigned> result(6 * std::uint64_t{cells} * cells * cells);
  for (unsigned e = 0; e < result.size(); ++e) {
    const unsigned cell = e / 6, x = cell % cells, y = cell / cells % cells, z = cell / cells / cells;
    result[e] = (4 * z / cells * 4 + 4 * y / cells) * 4 + 4 * x / cells;
  }
  return result;
}

/// The triangles of surface().
inline dense2D<unsigned> triangles(unsigned side, bool shuffled) {
  dense2D<double> coords;
  dense2D<unsigned> connectivity;
  surface(side, coords, connectivity);
  return shuffled ? without_locality(connectivity) : connectivity;
}

/// The cells of a lattice; nodes renumbered and elements shuffled if asked for.
inline dense2D<unsigned> hexahedra(unsigned cells, bool shuffled) {
  const unsigned n = cells + 1;
  dense2D<unsigned> connectivity(8, std::uint64_t{cells} * cells * cells);
  for (unsigned c = 0; c < connectivity.cols(); ++c) {
    const unsigned a = (c / cells / cells * n + c / cells % cells) * n + c % cells;
    const unsigned bottom[4] = {a, a + 1, a + 1 + n, a + n};
    for (unsigned i = 0; i < 8; ++i) connectivity(i, c) = bottom[i % 4] + i / 4 * n * n;
  }
  return shuffled ? without_locality(connectivity) : connectivity;
}

/// In memory where the system has such a place, so that no disk is measured.
inline std::filesystem::path working_folder() {
  const std::filesystem::path memory = "/dev/shm";
  const bool in_memory = std::filesystem::is_directory(memory);
  return (in_memory ? memory : std::filesystem::temp_directory_path()) / "qel_gridwork_benchmark";
}

}  // namespace inputs

#endif
