// Binary STL files, each rank its piece.
#include <algorithm>
#include <climits>

#include "communication/exchange.h"
#include "communication/id_ranges.h"
#include "communication/shared_file.h"
#include "core/coordinates.h"
#include "core/limits.h"
#include "io/stl_binary.h"
#include "io/text/text.h"
#include "parts/checks.h"
#include "qel/gridwork/ids.h"

namespace qel::gridwork::mpi {

using namespace detail::parallel;
using detail::out_of_memory;
namespace io = detail::io;
namespace limits = detail::limits;

namespace {

constexpr int write_failed = -1;
constexpr std::uint64_t first_byte = io::stl_header_bytes + io::stl_count_bytes;

struct written_triangle {
  std::uint64_t id;
  char bytes[io::stl_triangle_bytes];
};

/// The triangles of a range of IDs, in order.
int collect(team& ranks, const mesh_part& part, inbox<written_triangle>& in) {
  const id_ranges ranges(ranks, part.element_IDs);
  outbox<written_triangle> out;
  const auto walk = [&](auto visit) {
    for (std::uint64_t j = 0; j < part.element_IDs.size(); ++j) {
      written_triangle item;
      item.id = part.element_IDs[j];
      io::store_triangle(item.bytes, io::corners_of(part.coords, part.connectivity.column(j)));
      visit(ranges.owner(item.id), item);
    }
  };
  const int code = exchange(ranks, out.fill(ranks, walk) ? 0 : out_of_memory, out, in);
  if (code < 0) return code;
  std::sort(in.items.begin(), in.items.end(),
            [](const written_triangle& a, const written_triangle& b) { return a.id < b.id; });
  return 0;
}

/// Triangles of this rank, `before` of which others write.
int write_triangles(shared_file& file, const dense1D<written_triangle>& triangles, std::uint64_t before) {
  dense1D<char> bytes;
  if (!bytes.resize(limits::triangles_per_read * io::stl_triangle_bytes)) return out_of_memory;
  for (std::uint64_t first = 0; first < triangles.size(); first += limits::triangles_per_read) {
    const std::uint64_t last = std::min(triangles.size(), first + limits::triangles_per_read);
    char* out = bytes.data();
    for (std::uint64_t j = first; j < last; ++j) out = std::copy_n(triangles[j].bytes, io::stl_triangle_bytes, out);
    const std::uint64_t offset = first_byte + (before + first) * io::stl_triangle_bytes;
    if (!file.write(offset, bytes.data(), static_cast<int>(out - bytes.data()))) return write_failed;
  }
  return 0;
}

int write_file(team& ranks, shared_file& file, const mesh_part& part) {
  inbox<written_triangle> in;
  int code = collect(ranks, part, in);
  if (code < 0) return code;
  const team::share place = ranks.number(in.items.size());
  if (place.total > INT_MAX) return -3;
  char header[first_byte] = {};
  io::append(header, io::stl_binary_header);
  io::store_uint32(header + io::stl_header_bytes, static_cast<std::uint32_t>(place.total));
  const bool written = ranks.rank() != 0 || file.write(0, header, static_cast<int>(first_byte));
  code = write_triangles(file, in.items, place.before);
  const bool closed = file.close();
  return ranks.agree(code < 0 ? code : written && closed ? 0 : write_failed);
}

/// What the serial writer finds wrong once the file is there.
int check_triangles(const mesh_part& part, const part_shape& shape) {
  if (shape.dim != 0 && shape.dim != 2 && shape.dim != 3) return -2;
  return check_IDs(part.connectivity, ELT_TRIA3, detail::node_bound(part.coords)) ? 0 : -3;
}

}  // namespace

int STL_output(MPI_Comm comm, const char* filename, const mesh_part& part) {
  team ranks(comm);
  part_agreement agreed(ranks, part);
  int code = agreed.conclude(filename != nullptr ? 0 : -1);
  if (code < 0) return code;
  shared_file file(ranks, filename, MPI_MODE_CREATE | MPI_MODE_WRONLY);
  code = ranks.agree(file.is_open() ? 0 : -1);
  if (code == 0) code = ranks.agree(file.resize(0) ? 0 : -1);
  if (code == 0) code = ranks.agree(check_triangles(part, agreed.shape()));
  return code < 0 ? code : write_file(ranks, file, part);
}

}  // namespace qel::gridwork::mpi
