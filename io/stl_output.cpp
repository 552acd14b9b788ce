// Writes STL files, text and binary.
#include <algorithm>
#include <string_view>

#include "core/coordinates.h"
#include "core/result.h"
#include "io/bytes/block_writer.h"
#include "io/bytes/file.h"
#include "io/bytes/little_endian.h"
#include "io/matrix_range.h"
#include "io/stl_binary.h"
#include "io/stl_geometry.h"
#include "io/text/number_format.h"
#include "io/text/text.h"
#include "qel/gridwork/elements.h"
#include "qel/gridwork/io.h"

namespace qel::gridwork {

using namespace detail;

namespace {

using io::append;
using io::triangle;
using io::vector3;

constexpr int write_failed = -1;
constexpr unsigned digits_behind_point = 6;

constexpr std::string_view text_header = "solid QEL\n";
constexpr std::string_view text_trailer = "endsolid QEL\n";
constexpr std::string_view facet_open = "   facet normal";
constexpr std::string_view loop_open = "      outer loop\n";
constexpr std::string_view vertex_open = "         vertex";
constexpr std::string_view loop_close = "      endloop\n";
constexpr std::string_view facet_close = "   endfacet\n";

constexpr std::uint64_t most_text_per_facet = 4 * (16 + 3 * (1 + io::longest_scientific)) + 64;

char* append_vector_line(char* out, std::string_view opening, const vector3& v) noexcept {
  out = append(out, opening);
  for (const double x : v) {
    *out++ = ' ';
    out = io::format_scientific(out, x, digits_behind_point);
  }
  *out++ = '\n';
  return out;
}

char* append_facet(char* out, const triangle& t) noexcept {
  out = append_vector_line(out, facet_open, io::facet_normal(t));
  out = append(out, loop_open);
  for (const vector3& corner : t.corners) out = append_vector_line(out, vertex_open, corner);
  out = append(out, loop_close);
  return append(out, facet_close);
}

/// Writes every triangle by `append_triangle`, which takes up to `most` bytes each.
template <class AppendTriangle>
bool write_triangles(io::block_writer& writer, const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                     std::uint64_t most, AppendTriangle append_triangle) {
  const std::uint64_t count = io::element_count(connectivity);
  for (std::uint64_t j = 0; j < count; ++j) {
    char* out = writer.room(most);
    if (out == nullptr) return false;
    writer.commit(append_triangle(out, io::corners_of(coords, connectivity.column(j))));
  }
  return true;
}

bool write_text(io::block_writer& writer, const dense2D<double>& coords, const dense2D<unsigned>& connectivity) {
  return writer.put(text_header) && write_triangles(writer, coords, connectivity, most_text_per_facet, append_facet) &&
         writer.put(text_trailer) && writer.flush();
}

bool write_binary(io::block_writer& writer, const dense2D<double>& coords, const dense2D<unsigned>& connectivity) {
  char header[io::stl_header_bytes + io::stl_count_bytes] = {};
  append(header, io::stl_binary_header);
  io::store_uint32(header + io::stl_header_bytes, static_cast<std::uint32_t>(io::element_count(connectivity)));
  return writer.put({header, sizeof header}) &&
         write_triangles(writer, coords, connectivity, io::stl_triangle_bytes, io::store_triangle) && writer.flush();
}

}  // namespace

int STL_output(const char* filename, const dense2D<double>& coords, const dense2D<unsigned>& connectivity, bool ascii) {
  io::file output(filename, io::access::write);
  if (!output.is_open()) return -1;
  if (!in_plane_or_space(coords)) return -2;
  if (!check_IDs(connectivity, ELT_TRIA3, node_bound(coords))) return -3;
  io::block_writer writer(output.stream());
  if (!writer.prepare()) return out_of_memory;
  const bool written = ascii ? write_text(writer, coords, connectivity) : write_binary(writer, coords, connectivity);
  const bool closed = output.close();
  return written && closed ? 0 : write_failed;
}

}  // namespace qel::gridwork
