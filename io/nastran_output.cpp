// Writes NASTRAN bulk data.
#include <algorithm>
#include <cstdint>
#include <string_view>

#include "core/coordinates.h"
#include "core/elements.h"
#include "core/result.h"
#include "io/matrix_range.h"
#include "io/nastran.h"
#include "io/text/file.h"
#include "io/text/text_writer.h"
#include "qel/gridwork/elements.h"
#include "qel/gridwork/io.h"

namespace qel::gridwork {

using namespace detail;

namespace {

using io::text_writer;
using io::nastran::card;
using io::nastran::cards;

/// Columns of one type, with their properties.
struct block {
  const dense2D<unsigned>* connectivity;
  std::uint64_t first, last;  // its columns, from first up to but excluding last
  std::uint64_t rows;         // of the matrix that the block is a part of
  std::uint64_t first_ID;
  int type;
  const unsigned* properties;  // one a column; null when all are `property`
  unsigned property;
};

bool is_valid(const block& b) {
  if (!is_element_type(b.type)) return false;
  const auto type = static_cast<element_type>(b.type);
  if (b.first == b.last || nbr_nodes(type) == 0) return true;
  // Faces may be part of a higher matrix, mixed solids not.
  if (type == ELT_SOLID_MIX && b.rows > nbr_nodes(type)) return false;
  const std::uint64_t present = b.connectivity->rows();
  const std::uint64_t rows = std::min<std::uint64_t>(nbr_nodes(type), present);
  if (rows < nbr_nodes(type) && !io::is_mixed(type)) return false;
  return check_IDs(b.connectivity->sub_matrix(0, b.first, rows, b.last - b.first), type, none);
}

// --- The parts of a deck -------------------------------------------------------------------------------------------

void write_node(text_writer& writer, const dense2D<double>& coords, std::uint64_t i) {
  const auto number = [](char* out, double x) {
    return io::align_right(out, io::format_upper_scientific(out, x, 6), 16);
  };
  constexpr std::uint64_t most = 4 * io::longest_scientific + 64;
  writer.write(most, [&](char* out) {
    const double* p = coords.column(i);
    out = io::append_id(io::append(out, "GRID*   "), static_cast<unsigned>(i + 1), 16);
    out = number(number(io::append(out, "                "), p[0]), p[1]);
    out = number(io::append(out, "*C\n*C      "), coords.rows() == 3 ? p[2] : 0.0);
    return io::append(out, "\n");
  });
}

void write_nodes(text_writer& writer, const dense2D<double>& coords) {
  writer.put(
      "$ QEL Gridwork(R) NASTRAN exporter\n"
      "BEGIN BULK\n"
      "$----------------------------------------\n"
      "$ Referenced Material Records -----------\n"
      "$ Material Record :    ------------------\n"
      "$ Description of Material :   -----------\n"
      "MAT1    1       0.                 0.  0.\n"
      "$----------------------------------------\n"
      "$                GRID POINTS             \n"
      "$----------------------------------------\n");
  for (std::uint64_t i = 0; i < coords.cols(); ++i) write_node(writer, coords, i);
}

void write_card(text_writer& writer, const card& form, unsigned ID, unsigned property, const unsigned* nodes) {
  constexpr unsigned most_fields = 9;
  constexpr std::uint64_t most = 32 + 22 * (io::longest_integer + 1) + 3 * 6;
  const auto field = [](char* out, unsigned number) {
    *out++ = ',';
    return io::append_id(out, number);
  };
  writer.write(most, [&](char* out) {
    out = field(field(io::append(out, form.name), ID), property);
    unsigned fields = 3;
    for (unsigned k = 0; k < form.order.count; ++k, ++fields) {
      if (fields == most_fields) {
        out = io::append(out, ",+C\n+C");
        fields = 1;
      }
      out = field(out, nodes[form.order.nodes[k]] + 1);
    }
    return io::append(out, "\n");
  });
}

void write_block(text_writer& writer, const block& b) {
  const element_type type = resolve_type(static_cast<element_type>(b.type), b.connectivity->rows());
  for (std::uint64_t j = b.first; j < b.last; ++j) {
    const unsigned* nodes = b.connectivity->column(j);
    const card& form = cards[io::plain_type(type, nodes)];
    if (form.name.empty()) return;
    const auto ID = static_cast<unsigned>(b.first_ID + (j - b.first));
    write_card(writer, form, ID, b.properties != nullptr ? b.properties[j] : b.property, nodes);
  }
}

/// Checks and writes `count` blocks; block_at(k) gives block k.
template <class BlockAt>
int write_deck(io::file& output, const dense2D<double>& coords, std::uint64_t count, BlockAt block_at) {
  for (std::uint64_t k = 0; k < count; ++k) {
    if (!is_valid(block_at(k))) return -3;
  }
  text_writer writer(output.stream());
  if (!writer.prepare()) return out_of_memory;
  write_nodes(writer, coords);
  writer.put(
      "$----------------------------------------\n"
      "$                 ELEMENTS               \n"
      "$----------------------------------------\n");
  for (std::uint64_t k = 0; k < count; ++k) write_block(writer, block_at(k));
  writer.put("ENDDATA\n");
  writer.finish();
  return 0;
}

/// True when the offsets increase, weakly, and stay inside the matrix.
bool valid_offsets(const dense1D<unsigned>& offsets, std::uint64_t columns) noexcept {
  return std::is_sorted(offsets.begin(), offsets.end()) && (offsets.empty() || *(offsets.end() - 1) <= columns);
}

/// Writes whole matrices, one after the other.
int write_matrices(const char* filename, const dense2D<double>& coords, const block* blocks, std::uint64_t count) {
  io::file output(filename, "w");
  if (!output.is_open()) return -1;
  if (!in_plane_or_space(coords)) return -2;
  return write_deck(output, coords, count, [=](std::uint64_t k) { return blocks[k]; });
}

}  // namespace

int NASTRAN_output(const char* filename, const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                   element_type type) {
  if (connectivity.empty()) return 0;
  const block all = {&connectivity, 0, connectivity.cols(), connectivity.rows(), 1, type, nullptr, 1};
  return write_matrices(filename, coords, &all, 1);
}

int NASTRAN_output(const char* filename, const dense2D<double>& coords, const dense2D<unsigned>& connectivity1,
                   const dense2D<unsigned>& connectivity2, element_type type1, element_type type2) {
  // The blocks are those of one matrix that has rows for both types.
  const std::uint64_t rows = std::max(nbr_nodes(type1), nbr_nodes(type2));
  const bool are_types = is_element_type(type1) && is_element_type(type2);
  if ((are_types && rows == 0) || connectivity1.cols() + connectivity2.cols() == 0) return 0;
  const std::uint64_t count1 = io::element_count(connectivity1), count2 = io::element_count(connectivity2);
  const block blocks[] = {{&connectivity1, 0, count1, rows, 1, type1, nullptr, 1},
                          {&connectivity2, 0, count2, rows, connectivity1.cols() + 1, type2, nullptr, 2}};
  return write_matrices(filename, coords, blocks, 2);
}

int NASTRAN_output(const char* filename, const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                   const dense1D<unsigned>& block_offsets, const dense1D<int>& block_types,
                   const dense1D<unsigned>& property_IDs) {
  if (connectivity.empty()) return 0;
  io::file output(filename, "w");
  if (!output.is_open()) return -1;
  if (!in_plane_or_space(coords)) return -2;
  if (block_offsets.size() != block_types.size() + 1) return -5;
  if (!valid_offsets(block_offsets, connectivity.cols())) return -5;
  if (property_IDs.size() != connectivity.cols()) return -6;
  return write_deck(output, coords, block_types.size(), [&](std::uint64_t k) {
    const std::uint64_t first = block_offsets[k];
    return block{&connectivity, first,          block_offsets[k + 1], connectivity.rows(),
                 first + 1,     block_types[k], property_IDs.begin(), 0};
  });
}

}  // namespace qel::gridwork
