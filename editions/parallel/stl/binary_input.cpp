// Pieces of binary STL files.
#include <algorithm>
#include <bit>

#include "communication/shared_file.h"
#include "core/limits.h"
#include "io/bytes/file.h"
#include "io/bytes/little_endian.h"
#include "io/stl_binary.h"
#include "stl/piece.h"

namespace qel::gridwork::detail::parallel {
namespace {

constexpr int no_header = -2;
constexpr int cut_short = -3;
constexpr std::uint64_t first_byte = io::stl_header_bytes + io::stl_count_bytes;

/// The number of triangles that a file of this size has, or a negative result.
std::int64_t count_triangles(const char* filename) {
  const io::file file(filename, io::access::read);
  if (!file.is_open()) return not_open;
  const std::uint64_t size = file.size();
  if (size < io::stl_header_bytes) return no_header;
  char header[first_byte];
  if (size < first_byte || std::fread(header, 1, first_byte, file.stream()) != first_byte) return cut_short;
  const auto count = std::max(0, std::bit_cast<std::int32_t>(io::load_uint32(header + io::stl_header_bytes)));
  return first_byte + static_cast<std::uint64_t>(count) * io::stl_triangle_bytes > size ? cut_short : count;
}

bool add(io::triangle_soup& soup, const char* bytes, std::uint64_t count) {
  bool room = true;
  for (std::uint64_t i = 0; i < count && room; ++i)
    room = soup.add(io::load_triangle(bytes + i * io::stl_triangle_bytes));
  return room;
}

int read_triangles(team& ranks, const char* filename, std::uint64_t total, piece& read) {
  const auto size = static_cast<std::uint64_t>(ranks.size()), rank = static_cast<std::uint64_t>(ranks.rank());
  const std::uint64_t begin = total * rank / size, end = total * (rank + 1) / size;
  read.first_triangle = begin;
  read.triangles.begin_at(begin);
  read.triangles.expect(end - begin);
  dense1D<char> bytes;
  shared_file file(ranks, filename, MPI_MODE_RDONLY);
  const bool room = bytes.resize(limits::triangles_per_read * io::stl_triangle_bytes);
  int code = ranks.agree(!file.is_open() ? not_open : room ? 0 : out_of_memory);
  if (code < 0) return code;
  for (std::uint64_t at = begin; at < end && code == 0; at += limits::triangles_per_read) {
    const std::uint64_t count = std::min(end - at, limits::triangles_per_read);
    const auto count_bytes = static_cast<int>(count * io::stl_triangle_bytes);
    if (!file.read(first_byte + at * io::stl_triangle_bytes, bytes.data(), count_bytes))
      code = cut_short;
    else if (!add(read.triangles, bytes.data(), count))
      code = out_of_memory;
  }
  return ranks.agree(code);
}

}  // namespace

int read_binary(team& ranks, const char* filename, piece& read) {
  std::uint64_t count = 0;
  if (ranks.rank() == 0) count = static_cast<std::uint64_t>(count_triangles(filename));
  ranks.broadcast(&count, 1, 0);
  const auto result = static_cast<std::int64_t>(count);
  return result < 0 ? static_cast<int>(result) : read_triangles(ranks, filename, count, read);
}

}  // namespace qel::gridwork::detail::parallel
