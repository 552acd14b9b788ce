// Writes NASTRAN bulk data.
#include <cstdint>
#include <string_view>

#include "io/nastran.h"
#include "io/property_blocks.h"
#include "io/text/text_writer.h"
#include "qel/gridwork/elements.h"
#include "qel/gridwork/io.h"

namespace qel::gridwork {

using namespace detail;

namespace {

using io::text_writer;
using io::nastran::written_card;
using io::nastran::written_cards;

constexpr unsigned wide_field = 16;
constexpr unsigned digits_behind_point = 6;

// --- The parts of a deck -------------------------------------------------------------------------------------------

void write_node(text_writer& writer, const dense2D<double>& coords, std::uint64_t i) {
  const auto number = [](char* out, double x) {
    return io::align_right(out, io::format_upper_scientific(out, x, digits_behind_point), wide_field);
  };
  constexpr std::uint64_t most = 4 * io::longest_scientific + 64;
  writer.write(most, [&](char* out) {
    const double* p = coords.column(i);
    out = io::append_id(io::append(out, "GRID*   "), static_cast<unsigned>(i + 1), wide_field);
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

void write_card(text_writer& writer, const written_card& card, unsigned ID, unsigned property, const unsigned* nodes) {
  constexpr unsigned most_fields = 9;
  constexpr std::uint64_t most = 32 + 22 * (io::longest_integer + 1) + 3 * 6;
  const auto field = [](char* out, unsigned number) {
    *out++ = ',';
    return io::append_id(out, number);
  };
  writer.write(most, [&](char* out) {
    out = field(field(io::append(out, card.name), ID), property);
    unsigned fields = 3;
    for (unsigned k = 0; k < card.order.count; ++k, ++fields) {
      if (fields == most_fields) {
        out = io::append(out, ",+C\n+C");
        fields = 1;
      }
      out = field(out, nodes[card.order.nodes[k]] + 1);
    }
    return io::append(out, "\n");
  });
}

/// Writes the whole deck.
struct deck_writer {
  const dense2D<double>& coords;

  template <class Blocks>
  bool operator()(text_writer& writer, const Blocks& blocks) const {
    write_nodes(writer, coords);
    writer.put(
        "$----------------------------------------\n"
        "$                 ELEMENTS               \n"
        "$----------------------------------------\n");
    blocks.for_each_element([&](element_type type, unsigned ID, unsigned property, const unsigned* nodes) {
      if (!written_cards[type].name.empty()) write_card(writer, written_cards[type], ID, property, nodes);
    });
    writer.put("ENDDATA\n");
    return true;
  }
};

}  // namespace

int NASTRAN_output(const char* filename, const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                   element_type type) {
  return io::write_matrix(filename, coords, connectivity, type, deck_writer{coords});
}

int NASTRAN_output(const char* filename, const dense2D<double>& coords, const dense2D<unsigned>& connectivity1,
                   const dense2D<unsigned>& connectivity2, element_type type1, element_type type2) {
  return io::write_two_matrices(filename, coords, connectivity1, connectivity2, type1, type2, deck_writer{coords});
}

int NASTRAN_output(const char* filename, const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                   const dense1D<unsigned>& block_offsets, const dense1D<int>& block_types,
                   const dense1D<unsigned>& property_IDs) {
  return io::write_blocks(filename, coords, connectivity, block_offsets, block_types, property_IDs,
                          deck_writer{coords});
}

}  // namespace qel::gridwork
