// The binary form of STL.
#include <bit>

#include "core/result.h"
#include "io/bytes/little_endian.h"
#include "io/stl_binary.h"
#include "io/stl_input.h"
#include "io/triangle_soup.h"

namespace qel::gridwork::detail::io {
namespace {

constexpr int no_header = -2;
constexpr int cut_short = -3;

/// True for a file of `size` bytes that is certain to end before its last triangle; one of unknown size, 0, is not.
bool is_too_short(std::uint64_t size, std::uint64_t triangles) noexcept {
  return size != 0 && stl_header_bytes + stl_count_bytes + triangles * stl_triangle_bytes > size;
}

}  // namespace

int read_stl_binary(const stl_source& input, const stl_mesh& mesh) {
  const auto [blocks, size] = input;
  if (!blocks.fill(stl_header_bytes)) return no_header;
  blocks.consume(stl_header_bytes);
  if (!blocks.fill(stl_count_bytes)) return cut_short;
  const auto count = std::bit_cast<std::int32_t>(load_uint32(blocks.begin()));
  blocks.consume(stl_count_bytes);

  // A file that is too short for its count fails at the end in any case: nothing is read or allocated for it.
  const std::uint64_t triangles = count > 0 ? static_cast<std::uint64_t>(count) : 0;
  if (is_too_short(size, triangles)) return cut_short;

  triangle_soup soup(mesh.coords, mesh.connectivity);
  soup.expect(size != 0 ? triangles : 0);
  for (std::uint64_t i = 0; i < triangles; ++i) {
    if (!blocks.fill(stl_triangle_bytes)) return cut_short;
    if (!soup.add(load_triangle(blocks.begin()))) return out_of_memory;
    blocks.consume(stl_triangle_bytes);
  }
  mesh.nbr_triangles = triangles;
  return soup.finish();
}

}  // namespace qel::gridwork::detail::io
