// Writes Wavefront OBJ files.
#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include "core/coordinates.h"
#include "core/elements.h"
#include "core/result.h"
#include "io/bytes/file.h"
#include "io/matrix_range.h"
#include "io/text/text_writer.h"
#include "qel/gridwork/elements.h"
#include "qel/gridwork/io.h"

namespace qel::gridwork {

using namespace detail;

namespace {

using io::text_writer;

constexpr unsigned digits_behind_point = 8;

/// The matrices that hold the faces of one kind; null where there is none.
using face_list = std::array<const dense2D<unsigned>*, 2>;

struct obj_mesh {
  const dense2D<double>& coords;
  const dense2D<double>& normals;
  const dense2D<double>& uvs;
  face_list triangles;
  face_list quads;
};

bool valid_faces(const face_list& faces, element_type type) noexcept {
  return std::all_of(faces.begin(), faces.end(), [type](const dense2D<unsigned>* matrix) {
    return matrix == nullptr || check_IDs(*matrix, type, none);
  });
}

bool empty_or(std::uint64_t rows, const dense2D<double>& values, const dense2D<double>& coords) noexcept {
  return values.empty() || (values.rows() == rows && values.cols() == coords.cols());
}

int check(const obj_mesh& mesh) noexcept {
  if (!in_plane_or_space(mesh.coords)) return -2;
  if (!empty_or(3, mesh.normals, mesh.coords)) return -3;
  if (!empty_or(2, mesh.uvs, mesh.coords)) return -4;
  if (!valid_faces(mesh.triangles, ELT_TRIA3)) return -5;
  if (!valid_faces(mesh.quads, ELT_QUAD4)) return -6;
  return 0;
}

/// Writes a record for every column, with zeros up to `count` numbers.
void write_numbers(text_writer& writer, std::string_view keyword, const dense2D<double>& values, std::uint64_t count) {
  if (values.empty()) return;
  const std::uint64_t most = keyword.size() + count * (io::longest_scientific + 1) + 1;
  for (std::uint64_t j = 0; j < values.cols(); ++j) {
    const double* column = values.column(j);
    writer.write(most, [&](char* out) {
      out = io::append(out, keyword);
      for (std::uint64_t k = 0; k < count; ++k) {
        out = io::format_scientific(out, k < values.rows() ? column[k] : 0.0, digits_behind_point);
        *out++ = ' ';
      }
      *out++ = '\n';
      return out;
    });
  }
}

/// Writes one corner of a face: the node's number, also as that of its texture coordinates and its normal.
char* append_corner(char* out, unsigned node, bool has_uv, bool has_normal) noexcept {
  char* const number = out;
  out = io::format_integer(out, std::int64_t{node + 1});
  const std::string_view digits(number, static_cast<std::size_t>(out - number));
  *out++ = '/';
  if (has_uv) out = io::append(out, digits);
  *out++ = '/';
  if (has_normal) out = io::append(out, digits);
  *out++ = ' ';
  return out;
}

void write_faces(text_writer& writer, const dense2D<unsigned>& faces, bool has_uv, bool has_normal) {
  if (faces.empty()) return;
  constexpr std::uint64_t most = 4 * (3 * (io::longest_integer + 1)) + 4;
  for (std::uint64_t j = 0; j < faces.cols(); ++j) {
    writer.write(most, [&](char* out) {
      out = io::append(out, " f ");
      for (const unsigned* node = faces.begin_column(j); node != faces.end_column(j); ++node) {
        out = append_corner(out, *node, has_uv, has_normal);
      }
      *out++ = '\n';
      return out;
    });
  }
}

void write_mesh(text_writer& writer, const obj_mesh& mesh) {
  write_numbers(writer, " v ", mesh.coords, 3);
  write_numbers(writer, " vt ", mesh.uvs, 2);
  write_numbers(writer, " vn ", mesh.normals, 3);
  for (const face_list& list : {mesh.triangles, mesh.quads}) {
    for (const dense2D<unsigned>* faces : list) {
      if (faces != nullptr) write_faces(writer, *faces, !mesh.uvs.empty(), !mesh.normals.empty());
    }
  }
}

int write_file(const char* filename, const obj_mesh& mesh) {
  io::file output(filename, io::access::write);
  if (!output.is_open()) return -1;
  const int result = check(mesh);
  if (result != 0) return result;
  text_writer writer(output.stream());
  if (!writer.prepare()) return out_of_memory;
  write_mesh(writer, mesh);
  writer.finish();
  return 0;
}

const dense2D<unsigned>* if_type(element_type wanted, const dense2D<unsigned>& matrix, element_type type) noexcept {
  return resolve_type(type, matrix.rows()) == wanted ? &matrix : nullptr;
}

}  // namespace

int WavefrontOBJ_output(const char* filename, const dense2D<double>& coords, const dense2D<double>& normals,
                        const dense2D<double>& uvs, const dense2D<unsigned>& triangles,
                        const dense2D<unsigned>& quads) {
  return write_file(filename, {coords, normals, uvs, {&triangles}, {&quads}});
}

int WavefrontOBJ_output(const char* filename, const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                        element_type type) {
  return write_file(
      filename, {coords, {}, {}, {if_type(ELT_TRIA3, connectivity, type)}, {if_type(ELT_QUAD4, connectivity, type)}});
}

int WavefrontOBJ_output(const char* filename, const dense2D<double>& coords, const dense2D<unsigned>& connectivity1,
                        const dense2D<unsigned>& connectivity2, element_type type1, element_type type2) {
  return write_file(filename, {coords,
                               {},
                               {},
                               {if_type(ELT_TRIA3, connectivity1, type1), if_type(ELT_TRIA3, connectivity2, type2)},
                               {if_type(ELT_QUAD4, connectivity1, type1), if_type(ELT_QUAD4, connectivity2, type2)}});
}

}  // namespace qel::gridwork
