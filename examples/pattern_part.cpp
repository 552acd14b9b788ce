// Makes a spur gear out of one half of one tooth, and writes it as an STL file.
//
// usage: pattern_part [OUT.stl]
//
// The half tooth is copied round the axis, the seams are merged, and the half gear is mirrored in its middle plane.
#include <qel/gridwork.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

namespace gridwork = qel::gridwork;
using qel::dense2D;
using vector = qel::vector_fixed<double, 3>;

constexpr unsigned teeth = 24;
constexpr double bore = 6, root = 20, tip = 24.5, half_width = 4;  // mm
constexpr double tolerance = 1e-6;                                 // mm; far below the shortest edge
constexpr vector origin = {0, 0, 0};
constexpr vector axis = {0, 0, 1};

// The outline of one tooth: radii at fractions of the tooth's sector.
struct station {
  double fraction, radius;
};
constexpr station outline[] = {{0, root}, {0.2, root}, {0.38, tip}, {0.62, tip}, {0.8, root}, {1, root}};
constexpr unsigned stations = sizeof outline / sizeof outline[0];

struct mesh {
  dense2D<double> coords;
  dense2D<unsigned> triangles;
};

[[noreturn]] void fail(const std::string& message) { throw std::runtime_error(message); }

// Passes a count on, or reports the function that gave a negative result.
int checked(int result, const char* function) {
  if (result < 0) fail(std::string(function) + ": result code " + std::to_string(result));
  return result;
}

void require(bool done) {
  if (!done) fail("there is not enough memory");
}

double sector() { return 2 * std::acos(-1.0) / teeth; }

// The upper half of the tooth's surface, open where its neighbours and its lower half come. At each station of the
// outline four nodes lead from the bore's middle up, outwards and down again; between two stations lie three
// quadrangles.
mesh half_tooth() {
  mesh m;
  for (const station& at : outline) {
    const double angle = at.fraction * sector();
    const double rise[4][2] = {{bore, 0}, {bore, half_width}, {at.radius, half_width}, {at.radius, 0}};
    for (const auto& [radius, z] : rise) {
      require(m.coords.push_back_column({radius * std::cos(angle), radius * std::sin(angle), z}));
    }
  }
  for (unsigned s = 0; s + 1 < stations; ++s) {
    for (unsigned k = 0; k < 3; ++k) {
      const unsigned a = 4 * s + k, b = a + 1, c = a + 4, d = b + 4;  // outwards: a, b, d and a, d, c
      require(m.triangles.push_back_column({a, b, d}) && m.triangles.push_back_column({a, d, c}));
    }
  }
  return m;
}

// All teeth: the first one and its copies, with one set of nodes along each seam.
mesh half_gear() {
  mesh m = half_tooth();
  dense2D<unsigned> first_tooth;
  require(first_tooth.copy(m.triangles));
  const vector step = {0, 0, sector()};
  checked(gridwork::copy_mesh(m.coords, m.triangles, origin, origin, step, teeth - 1, first_tooth), "copy_mesh");
  const int merged = checked(gridwork::merge(m.coords, m.triangles, tolerance, 0), "merge");
  std::printf("  merged along the seams       %7d nodes\n", merged);
  return m;
}

// Mirroring turns triangles inside out; two of their nodes are swapped to have them face outwards again.
void turn_round(dense2D<unsigned>& triangles) {
  for (std::uint64_t j = 0; j < triangles.cols(); ++j) std::swap(triangles(1, j), triangles(2, j));
}

void append(dense2D<unsigned>& triangles, const dense2D<unsigned>& more) {
  for (std::uint64_t j = 0; j < more.cols(); ++j) require(triangles.push_back_column(more.column(j)));
}

mesh whole_gear() {
  mesh m = half_gear();
  dense2D<unsigned> lower;
  checked(gridwork::copy_sym_mesh(m.coords, lower, origin, axis, m.triangles), "copy_sym_mesh");
  turn_round(lower);
  append(m.triangles, lower);
  const int merged = checked(gridwork::merge(m.coords, m.triangles, tolerance, 0), "merge");
  const int removed = checked(gridwork::simplify(m.coords, m.triangles, 0), "simplify");
  std::printf("  merged in the middle plane   %7d nodes\n", merged);
  std::printf("  no longer used, removed      %7d nodes\n", removed);
  return m;
}

void make_gear(const std::string& path) {
  std::printf("Gear of %u teeth\n", teeth);
  const mesh m = whole_gear();
  const std::uint64_t nodes = m.coords.cols(), triangles = m.triangles.cols();
  std::printf("  whole gear                   %7llu nodes, %llu triangles\n", static_cast<unsigned long long>(nodes),
              static_cast<unsigned long long>(triangles));
  // On a closed surface every edge has two triangles; with one hole, nodes - edges + triangles is 0.
  if (2 * nodes != triangles) fail("the surface is not closed");
  const int code = gridwork::STL_output(path.c_str(), m.coords, m.triangles, false);
  if (code != 0) fail(path + ": cannot be written: result code " + std::to_string(code));
  std::printf("Written: %s\n", path.c_str());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 2) {
    std::fprintf(stderr, "usage: pattern_part [OUT.stl]\n");
    return 2;
  }
  try {
    make_gear(argc == 2 ? argv[1] : "gear.stl");
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "pattern_part: %s\n", problem.what());
    return 1;
  }
  return 0;
}
