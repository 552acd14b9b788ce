// Writes what the pictures of the gallery show, as VTK files of text: meshes from the library, with what it computes on
// them as data of their cells or nodes.
//
// usage: gallery_data BRACKET.stl GEAR.stl FOLDER
#include <qel/gridwork.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

namespace docs {
namespace {

namespace gw = qel::gridwork;
using point = qel::vector_fixed<double, 3>;

constexpr double pi = 3.14159265358979323846;

struct mesh {
  qel::dense2D<double> coords;
  qel::dense2D<unsigned> elements;
};

// Passes a count on, or reports the function that gave a negative result.
int checked(const char* function, int result) {
  if (result < 0) throw std::runtime_error(std::string(function) + ": " + gw::message(function, result));
  return result;
}

void require(bool done) {
  if (!done) throw std::runtime_error("there is not enough memory");
}

mesh read(const std::string& path) {
  mesh m;
  checked("STL_input", gw::STL_input(path.c_str(), m.coords, m.elements));
  return m;
}

point centre_of_triangle(const mesh& m, std::uint64_t e) {
  point sum = {0, 0, 0};
  for (unsigned i = 0; i < 3; ++i) {
    for (unsigned axis = 0; axis < 3; ++axis) sum[axis] += m.coords(axis, m.elements(i, e)) / 3;
  }
  return sum;
}

// A VTK file that stays open, so that data can follow the mesh.
class vtk_file {
 public:
  explicit vtk_file(const std::string& path) : path_(path), file_(std::fopen(path.c_str(), "w")) {
    if (file_ == nullptr) throw std::runtime_error(path + " cannot be opened");
  }
  vtk_file(const vtk_file&) = delete;
  vtk_file& operator=(const vtk_file&) = delete;
  ~vtk_file() {
    if (file_ != nullptr) std::fclose(file_);
  }

  void add(const qel::dense2D<unsigned>& elements, gw::element_type type) {
    checked("vtk_convert", gw::vtk_convert(elements, type, cell_count_, cells_, types_));
  }

  void write_mesh(const qel::dense2D<double>& coords) {
    checked("vtk_output(stream, coords, nbr_cells, cells, cell_types)",
            gw::vtk_output(file_, coords, cell_count_, cells_, types_));
  }

  template <class Value>
  void write_cell_data(const char* name, const qel::dense1D<Value>& values) {
    std::fprintf(file_, "CELL_DATA %u\nSCALARS %s double 1\nLOOKUP_TABLE default\n", cell_count_, name);
    for (const Value value : values) std::fprintf(file_, "%.6g\n", static_cast<double>(value));
  }

  // Symmetric tensors of 3-D, packed.
  void write_tensors(const char* name, const qel::dense2D<double>& tensors) {
    std::fprintf(file_, "TENSORS %s double\n", name);
    for (std::uint64_t j = 0; j < tensors.cols(); ++j) {
      const double* t = tensors.column(j);
      std::fprintf(file_, "%.6g %.6g %.6g %.6g %.6g %.6g %.6g %.6g %.6g\n", t[0], t[1], t[3], t[1], t[2], t[4], t[3],
                   t[4], t[5]);
    }
  }

  void begin_point_data(std::uint64_t points) {
    std::fprintf(file_, "POINT_DATA %llu\n", static_cast<unsigned long long>(points));
  }

  void close() {
    const bool complete = std::ferror(file_) == 0;
    if (std::fclose(std::exchange(file_, nullptr)) != 0 || !complete) {
      throw std::runtime_error(path_ + " cannot be written");
    }
  }

 private:
  std::string path_;
  std::FILE* file_;
  unsigned cell_count_ = 0;
  qel::dense1D<unsigned> cells_, types_;
};

// --- Merging ---------------------------------------------------------------------------------------------------------

// Triangles as an STL file holds them, each with nodes of its own; those near two places are missing.
mesh torn_soup(const mesh& whole) {
  constexpr struct {
    point middle;
    double radius;
  } tears[] = {{{16, -15, 96}, 10}, {{56, -28, 6}, 9}};
  mesh soup{qel::dense2D<double>(3, 0), qel::dense2D<unsigned>(3, 0)};
  for (std::uint64_t e = 0; e < whole.elements.cols(); ++e) {
    const point c = centre_of_triangle(whole, e);
    const bool missing = std::any_of(std::begin(tears), std::end(tears), [&](const auto& tear) {
      return std::hypot(c[0] - tear.middle[0], c[1] - tear.middle[1], c[2] - tear.middle[2]) < tear.radius;
    });
    if (missing) continue;
    const auto first = static_cast<unsigned>(soup.coords.cols());
    require(soup.elements.push_back_column({first, first + 1, first + 2}));
    for (unsigned i = 0; i < 3; ++i) require(soup.coords.push_back_column(whole.coords.column(whole.elements(i, e))));
  }
  return soup;
}

void write_with_free_edges(const mesh& m, const std::string& path) {
  qel::dense2D<unsigned> neighbors, free;
  checked("get_neighbors", gw::get_neighbors(m.elements, gw::ELT_TRIA3, true, neighbors));
  checked("get_mesh_boundaries", gw::get_mesh_boundaries(m.elements, neighbors, gw::ELT_TRIA3, free));
  vtk_file file(path);
  file.add(m.elements, gw::ELT_TRIA3);
  file.add(free, gw::ELT_EDGE2);
  file.write_mesh(m.coords);
  file.close();
}

void show_merging(const std::string& bracket, const std::string& folder) {
  mesh m = torn_soup(read(bracket));
  write_with_free_edges(m, folder + "/soup.vtk");
  checked("merge(coords, connectivity, new_IDs, tol, mode)", gw::merge(m.coords, m.elements, 0.0, 0));
  checked("simplify", gw::simplify(m.coords, m.elements, 0));
  write_with_free_edges(m, folder + "/merged.vtk");
}

// --- Patterns --------------------------------------------------------------------------------------------------------

// Where the triangles of the gear come from: half of the first tooth (0), its copies (1), their mirror image (2).
void show_pattern(const std::string& gear, const std::string& folder) {
  constexpr unsigned teeth = 24;
  const mesh m = read(gear);
  qel::dense1D<unsigned> origin(m.elements.cols());
  for (std::uint64_t e = 0; e < m.elements.cols(); ++e) {
    const point c = centre_of_triangle(m, e);
    const double angle = std::atan2(c[1], c[0]);
    const bool first = angle > 0 && angle < 2 * pi / teeth;
    origin[e] = c[2] < 0 ? 2 : first ? 0 : 1;
  }
  vtk_file file(folder + "/gear.vtk");
  file.add(m.elements, gw::ELT_TRIA3);
  file.write_mesh(m.coords);
  file.write_cell_data("origin", origin);
  file.close();
}

// --- Clipping --------------------------------------------------------------------------------------------------------

point normal_of_triangle(const mesh& m, std::uint64_t e) {
  point edges[2];
  for (unsigned k = 0; k < 3; ++k) {
    for (unsigned i = 0; i < 2; ++i) edges[i][k] = m.coords(k, m.elements(i + 1, e)) - m.coords(k, m.elements(0, e));
  }
  point normal;
  for (unsigned k = 0; k < 3; ++k) {
    const unsigned l = (k + 1) % 3, j = (k + 2) % 3;
    normal[k] = edges[0][l] * edges[1][j] - edges[0][j] * edges[1][l];
  }
  const double length = std::hypot(normal[0], normal[1], normal[2]);
  for (double& x : normal) x /= length;
  return normal;
}

// Slots of the edges where a surface turns by more than 30 degrees.
qel::dense1D<unsigned> sharp_edges(const mesh& m, const qel::dense2D<unsigned>& neighbors) {
  qel::dense1D<unsigned> slots;
  for (unsigned e = 0; e < neighbors.cols(); ++e) {
    for (unsigned k = 0; k < 3; ++k) {
      if (neighbors(k, e) == ~0U) continue;
      const point a = normal_of_triangle(m, e), b = normal_of_triangle(m, neighbors(k, e));
      if (a[0] * b[0] + a[1] * b[1] + a[2] * b[2] < std::cos(pi / 6)) require(slots.push_back(3 * e + k));
    }
  }
  return slots;
}

void write_subdomains(const mesh& m, const qel::dense1D<unsigned>& colors, const std::string& path) {
  vtk_file file(path);
  file.add(m.elements, gw::ELT_TRIA3);
  file.write_mesh(m.coords);
  file.write_cell_data("subdomain", colors);
  file.close();
}

// A bracket whose colours are its sub-domains between sharp edges, and the half of it behind its middle plane.
void show_clipping(const std::string& bracket, const std::string& folder) {
  mesh m = read(bracket);
  qel::dense2D<unsigned> neighbors, edges, rim;
  qel::dense1D<unsigned> colors, sources;
  qel::dense1D<double> weights;
  checked("get_neighbors", gw::get_neighbors(m.elements, gw::ELT_TRIA3, true, neighbors));
  checked("get_subdomains",
          gw::get_subdomains(m.elements, neighbors, gw::ELT_TRIA3, sharp_edges(m, neighbors), colors));
  write_subdomains(m, colors, folder + "/subdomains.vtk");

  checked("clip", gw::clip(m.coords, m.elements, point{5, 0, 0}, point{-1, 0, 0}, m.elements, gw::ELT_TRIA3, 1e-7,
                           sources, edges, weights));
  checked("simplify", gw::simplify(m.coords, m.elements, 0));
  checked("get_neighbors", gw::get_neighbors(m.elements, gw::ELT_TRIA3, true, neighbors));
  checked("get_mesh_boundaries", gw::get_mesh_boundaries(m.elements, neighbors, gw::ELT_TRIA3, rim));
  qel::dense1D<unsigned> colors_of_pieces(sources.size());
  for (std::uint64_t j = 0; j < sources.size(); ++j) colors_of_pieces[j] = colors[sources[j]];
  write_subdomains(m, colors_of_pieces, folder + "/clipped.vtk");
  vtk_file file(folder + "/cut.vtk");
  file.add(rim, gw::ELT_EDGE2);
  file.write_mesh(m.coords);
  file.close();
}

// --- Quality ---------------------------------------------------------------------------------------------------------

// A slab of n x n cubes, its lower side in the plane z = 0.
mesh slab(unsigned n) {
  mesh m;
  const unsigned row = n + 1, layer = row * row;
  for (unsigned node = 0; node < 2 * layer; ++node) {
    const unsigned x = node % row, y = node / row % row, z = node / layer;
    require(m.coords.push_back_column({x - n / 2.0, y - n / 2.0, double(z)}));
  }
  for (unsigned cell = 0; cell < n * n; ++cell) {
    const unsigned a = cell / n * row + cell % n, b = a + row;
    require(m.elements.push_back_column({a, a + 1, b + 1, b, a + layer, a + layer + 1, b + layer + 1, b + layer}));
  }
  return m;
}

// A column of slabs, twisted the more the higher.
mesh twisted_column(unsigned width, unsigned height) {
  mesh m = slab(width);
  qel::dense2D<unsigned> first;
  require(first.copy(m.elements));
  const point up = {0, 0, 1}, origin = {0, 0, 0};
  checked("copy_mesh", gw::copy_mesh(m.coords, m.elements, up, origin, origin, height - 1, first));
  checked("merge(coords, connectivity, new_IDs, tol, mode)", gw::merge(m.coords, m.elements, 1e-9, 0));
  checked("simplify", gw::simplify(m.coords, m.elements, 0));
  for (unsigned j = 0; j < m.coords.cols(); ++j) {
    const double share = m.coords(2, j) / height;
    gw::rotate(m.coords, origin, point{0, 0, 3 * share * share}, qel::dense1D<unsigned>(1, j));
  }
  return m;
}

void show_quality(const std::string& folder) {
  const mesh m = twisted_column(10, 24);
  qel::dense1D<double> quality;
  checked("shape_qualities", gw::shape_qualities(m.coords, m.elements, gw::ELT_HEXA8, quality));
  vtk_file file(folder + "/quality.vtk");
  file.add(m.elements, gw::ELT_HEXA8);
  file.write_mesh(m.coords);
  file.write_cell_data("quality", quality);
  file.close();

  qel::misc::histogram counts(0, 1, 25);
  for (const double q : quality) counts.process(q);
  std::FILE* table = std::fopen((folder + "/quality.txt").c_str(), "w");
  if (table == nullptr) throw std::runtime_error("the histogram cannot be written");
  for (unsigned k = 0; k < counts.bins(); ++k) {
    std::fprintf(table, "%g %llu\n", counts.bin_lower(k), static_cast<unsigned long long>(counts.bin(k)));
  }
  std::fclose(table);
}

// --- Metrics ---------------------------------------------------------------------------------------------------------

using tensor = qel::symmetric_fixed<double, 3>;

// The tensor that prescribes the sizes h along three axes: x and y turned about z by an angle, and z.
tensor metric_of(double angle, const point& h) {
  const double c = std::cos(angle), s = std::sin(angle);
  const double a = 1 / (h[0] * h[0]), b = 1 / (h[1] * h[1]);
  return {a * c * c + b * s * s, (a - b) * c * s, a * s * s + b * c * c, 0, 0, 1 / (h[2] * h[2])};
}

// Turned about x.
tensor tilted(const tensor& m, double angle) {
  const double c = std::cos(angle), s = std::sin(angle), r[3][3] = {{1, 0, 0}, {0, c, -s}, {0, s, c}};
  tensor t = {};
  for (unsigned i = 0; i < 3; ++i) {
    for (unsigned j = i; j < 3; ++j) {
      for (unsigned k = 0; k < 9; ++k) t(i, j) += r[i][k / 3] * m(k / 3, k % 3) * r[j][k % 3];
    }
  }
  return t;
}

// Turns a metric into what a viewer draws as its ellipsoid: the same axes, with the sizes as eigenvalues.
void append_ellipsoid(const tensor& m, qel::dense2D<double>& ellipsoids) {
  point w = {};
  qel::matrix_fixed<double, 3, 3> v = {};
  if (!gw::eigen_pairs(m, w, v)) throw std::logic_error("a sound metric has no eigen-pairs");
  tensor h = {};
  for (unsigned i = 0; i < 3; ++i) {
    for (unsigned j = i; j < 3; ++j) {
      for (unsigned k = 0; k < 3; ++k) h(i, j) += v(i, k) * v(j, k) / std::sqrt(w[k]);
    }
  }
  require(ellipsoids.push_back_column({h[0], h[1], h[2], h[3], h[4], h[5]}));
}

// Pairs of metrics at nodes, and their intersections.
class metric_pairs {
 public:
  void add(const point& at, const tensor& first, const tensor& second) {
    tensor intersection = {};
    if (!gw::minimum_metric(first, second, intersection)) throw std::logic_error("two metrics do not intersect");
    require(coords_.push_back_column(at.data()));
    const tensor* all[] = {&first, &second, &intersection};
    for (unsigned k = 0; k < 3; ++k) append_ellipsoid(*all[k], ellipsoids_[k]);
  }

  void write(const std::string& path) const {
    constexpr const char* names[] = {"first", "second", "intersection"};
    vtk_file file(path);
    file.write_mesh(coords_);
    file.begin_point_data(coords_.cols());
    for (unsigned k = 0; k < 3; ++k) file.write_tensors(names[k], ellipsoids_[k]);
    file.close();
  }

 private:
  qel::dense2D<double> coords_{3, 0};
  std::array<qel::dense2D<double>, 3> ellipsoids_;
};

// In the plane: small sizes across a round front, and small ones across the layer along a wall below.
void show_metrics(const std::string& folder) {
  metric_pairs plane, space;
  for (unsigned node = 0; node < 63; ++node) {
    const point at = {double(node % 9), double(node / 9), 0};
    const double dx = at[0] + 1, dy = at[1] + 0.5;
    const double from_front = std::abs(std::hypot(dx, dy) - 6.2);
    const double across_front = std::min(0.46, 0.1 + 0.13 * from_front);
    const double across_layer = std::min(0.44, 0.09 + 0.075 * at[1]);
    plane.add(at, metric_of(std::atan2(dy, dx), {across_front, 0.46, 0.01}), metric_of(0, {0.44, across_layer, 0.01}));
  }
  plane.write(folder + "/metrics.vtk");
  space.add({0, 0, 0}, metric_of(0.5, {1, 0.45, 0.55}), tilted(metric_of(1.9, {0.9, 0.42, 0.6}), 1.0));
  space.write(folder + "/metrics3d.vtk");
}

}  // namespace
}  // namespace docs

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: gallery_data BRACKET.stl GEAR.stl FOLDER\n");
    return 2;
  }
  try {
    docs::show_merging(argv[1], argv[3]);
    docs::show_pattern(argv[2], argv[3]);
    docs::show_clipping(argv[1], argv[3]);
    docs::show_quality(argv[3]);
    docs::show_metrics(argv[3]);
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "gallery_data: %s\n", problem.what());
    return 1;
  }
  return 0;
}
