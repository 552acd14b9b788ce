// STL files read and written in the most literal way: one C library call per line, number or field. Slow and plain,
// meant as the yardstick of stl_test.cpp. Numbers follow the current C locale, so run it in the "C" locale.
#ifndef QEL_TESTS_STL_REFERENCE_H
#define QEL_TESTS_STL_REFERENCE_H

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "qel/gridwork.h"

namespace stl_reference {

using qel::dense1D;
using qel::dense2D;

struct vec3 {
  double x, y, z;
};

inline vec3 operator-(const vec3& a, const vec3& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline double square(const vec3& a) { return a.x * a.x + a.y * a.y + a.z * a.z; }
inline vec3 cross(const vec3& a, const vec3& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// Smallest squared height: per vertex the distance to the opposite edge, seen from the edge's nearer end.
inline double smallest_square_height(const vec3 (&p)[3]) {
  double smallest = 0;
  for (int i = 0; i < 3; ++i) {
    vec3 origin = p[(i + 1) % 3], other = p[(i + 2) % 3];
    if (square(p[i] - other) < square(p[i] - origin)) std::swap(origin, other);
    const vec3 d = other - origin;
    const double area = square(cross(p[i] - origin, d)), length = square(d);
    const double height = length == 0 ? area : area / length;
    if (i == 0 || height < smallest) smallest = height;
  }
  return smallest;
}

/// The triangles of a file as they come, and the smallest positive squared height (negative: none yet).
struct soup {
  dense2D<double>& coords;
  double smallest = -1;
  vec3 corners[3] = {};

  bool add_vertex(int k, double x, double y, double z) {
    corners[k] = {x, y, z};
    return coords.push_back_column({x, y, z});
  }

  void end_triangle() {
    const double height = smallest_square_height(corners);
    if (height > 0 && (smallest < 0 || height < smallest)) smallest = height;
  }
};

inline int merge_triangles(dense2D<double>& coords, dense2D<unsigned>& connectivity, double smallest,
                           std::uint64_t block = 100000) {
  namespace gw = qel::gridwork;
  const std::uint64_t triangles = coords.cols() / 3;
  if (!connectivity.resize(3, triangles)) return -199;
  for (std::uint64_t k = 0; k < 3 * triangles; ++k) connectivity(k % 3, k / 3) = static_cast<unsigned>(k);
  if (!(smallest > 0)) return 0;

  dense1D<unsigned> work;
  for (std::uint64_t j = 0; j < triangles; j += block) {
    dense2D<unsigned> part = connectivity.sub_matrix(0, j, 3, (std::min)(block, triangles - j));
    const int result = gw::merge(coords, part, work, 0.0, 0);
    if (result < 0) return result;
  }
  int result = gw::merge(coords, connectivity, work, 0.05 * std::sqrt(smallest), 0);
  if (result >= 0) result = gw::remove_degenerated(connectivity, work, true);
  if (result >= 0) result = gw::simplify(coords, connectivity, work, 0);
  return (std::min)(result, 0);
}

/// Next line, at most 255 characters of it, in lower case.
inline bool next_line(std::FILE* file, char (&line)[256]) {
  if (std::fgets(line, sizeof line, file) == nullptr) return false;
  for (char* p = line; *p != '\0'; ++p) *p = static_cast<char>(std::tolower(static_cast<unsigned char>(*p)));
  return true;
}

inline bool next_line_has(std::FILE* file, char (&line)[256], const char* word) {
  return next_line(file, line) && std::strstr(line, word) != nullptr;
}

inline int read_text(std::FILE* file, soup& triangles) {
  char line[256];
  double x, y, z;
  if (!next_line_has(file, line, "solid")) return -2;
  for (;;) {
    if (!next_line(file, line)) return -3;
    if (std::strstr(line, "color") != nullptr) continue;
    if (std::strstr(line, "endsolid") != nullptr) {
      if (!next_line(file, line)) return 0;
      if (std::strstr(line, "solid") != nullptr) continue;
    }
    if (std::sscanf(line, " facet normal %lg %lg %lg\n", &x, &y, &z) != 3) return -3;
    if (!next_line_has(file, line, "outer loop")) return -3;
    for (int k = 0; k < 3; ++k) {
      if (!next_line(file, line)) return -3;
      if (std::sscanf(line, " vertex %lg %lg %lg\n", &x, &y, &z) != 3) return -3;
      if (!triangles.add_vertex(k, x, y, z)) return -199;
    }
    if (!next_line_has(file, line, "endloop") || !next_line_has(file, line, "endfacet")) return -3;
    triangles.end_triangle();
  }
}

inline int read_binary(std::FILE* file, soup& triangles) {
  char header[80], attribute[2];
  std::int32_t count = 0;
  float v[12];
  if (std::fread(header, 1, 80, file) != 80) return -2;
  if (std::fread(&count, 4, 1, file) != 1) return -3;
  for (std::int32_t i = 0; i < count; ++i) {
    if (std::fread(v, 4, 12, file) != 12) return -3;
    for (int k = 0; k < 3; ++k) {
      if (!triangles.add_vertex(k, v[3 * k + 3], v[3 * k + 4], v[3 * k + 5])) return -199;
    }
    if (std::fread(attribute, 1, 2, file) != 2) return -3;
    triangles.end_triangle();
  }
  return 0;
}

inline int STL_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity,
                     std::uint64_t& nbr_triangles) {
  int result = -1;
  for (const bool text : {true, false}) {
    coords.clear_hard();
    connectivity.clear_hard();
    std::FILE* file = std::fopen(filename, text ? "r" : "rb");
    if (file == nullptr) return result;
    soup triangles{coords};
    result = text ? read_text(file, triangles) : read_binary(file, triangles);
    std::fclose(file);
    nbr_triangles = result == 0 ? coords.cols() / 3 : 0;
    if (result == 0) result = merge_triangles(coords, connectivity, triangles.smallest);
    if (text && (result >= 0 || result < -198)) break;
  }
  if (result == 0 && coords.empty() && !coords.resize(3, 0)) result = -199;
  if (result < 0) {
    coords.clear_hard();
    connectivity.clear_hard();
  }
  return result;
}

inline vec3 facet_normal(const vec3& a, const vec3& b, const vec3& c) {
  const bool long_ab = square(b - a) > (std::min)(square(b - c), square(a - c));
  vec3 n = cross(a - c, long_ab ? b - c : b - a);
  const double length = std::sqrt(square(n));
  if (length != 0 && length == length) {
    const double factor = 1 / length;
    n = {n.x * factor, n.y * factor, n.z * factor};
  }
  return n;
}

inline bool write_text_facet(std::FILE* file, const vec3 (&v)[4]) {
  const auto line = [&](const char* format, const vec3& p) { return std::fprintf(file, format, p.x, p.y, p.z) > 0; };
  return line("   facet normal %le %le %le\n", v[0]) && std::fprintf(file, "      outer loop\n") > 0 &&
         line("         vertex %le %le %le\n", v[1]) && line("         vertex %le %le %le\n", v[2]) &&
         line("         vertex %le %le %le\n", v[3]) && std::fprintf(file, "      endloop\n") > 0 &&
         std::fprintf(file, "   endfacet\n") > 0;
}

inline bool write_binary_facet(std::FILE* file, const vec3 (&v)[4]) {
  bool good = true;
  for (const vec3& p : v) {
    const float xyz[3] = {static_cast<float>(p.x), static_cast<float>(p.y), static_cast<float>(p.z)};
    good = good && std::fwrite(xyz, 4, 3, file) == 3;
  }
  const char attribute[2] = {0, 0};
  return good && std::fwrite(attribute, 1, 2, file) == 2;
}

inline int STL_output(const char* filename, const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                      bool ascii) {
  std::FILE* file = std::fopen(filename, ascii ? "w" : "wb");
  if (file == nullptr) return -1;
  const bool shape_ok = coords.rows() == 2 || coords.rows() == 3;
  if (!shape_ok || !qel::gridwork::check_IDs(connectivity, qel::gridwork::ELT_TRIA3, unsigned(coords.cols()))) {
    std::fclose(file);
    return shape_ok ? -3 : -2;
  }
  const char header[80] = "QEL STL Binary";
  const std::uint64_t triangles = connectivity.empty() ? 0 : connectivity.cols();
  const auto count = static_cast<std::uint32_t>(triangles);
  bool good = ascii ? std::fprintf(file, "solid QEL\n") > 0
                    : std::fwrite(header, 1, 80, file) == 80 && std::fwrite(&count, 4, 1, file) == 1;
  for (std::uint64_t j = 0; good && j < triangles; ++j) {
    vec3 v[4];
    for (int k = 0; k < 3; ++k) {
      const double* p = coords.column(connectivity(k, j));
      v[k + 1] = {p[0], p[1], coords.rows() == 3 ? p[2] : 0.0};
    }
    v[0] = facet_normal(v[1], v[2], v[3]);
    good = ascii ? write_text_facet(file, v) : write_binary_facet(file, v);
  }
  if (good && ascii) good = std::fprintf(file, "endsolid QEL\n") > 0;
  return (std::fclose(file) == 0 && good) ? 0 : -1;
}

}  // namespace stl_reference

#endif
