// Writes FEMAP neutral files, version 7.
#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string_view>

#include "core/result.h"
#include "io/femap.h"
#include "io/property_blocks.h"
#include "io/text/text_writer.h"
#include "qel/gridwork/io.h"

namespace qel::gridwork {

using namespace detail;

namespace {

using io::text_writer;
using io::femap::element_layout;

constexpr unsigned slots_per_line = 10;
constexpr unsigned digits_that_come_back = 16;  // behind the point: 17 in all tell any two numbers apart

/// Properties as they come among the elements.
struct property_uses {
  dense1D<std::uint64_t> numbers;  // property << 32 | position here
  dense1D<unsigned> kinds;         // of the first element, by position
};

/// The properties in use, increasing. False when memory ran out.
template <class Blocks>
bool list_properties(const Blocks& blocks, property_uses& uses) {
  bool done = true;
  unsigned last = 0;
  blocks.for_each_element([&](element_type type, unsigned, unsigned property, const unsigned*) {
    const element_layout* const layout = io::femap::layout_of(type);
    const std::uint64_t position = uses.kinds.size();
    if (layout == nullptr || (position != 0 && property == last)) return;
    done =
        done && uses.kinds.push_back(layout->kind) && uses.numbers.push_back(std::uint64_t{property} << 32 | position);
    last = property;
  });
  std::sort(uses.numbers.begin(), uses.numbers.end());
  return done;
}

void begin_block(text_writer& writer, std::string_view number) {
  writer.put("   -1\n   ");
  writer.put(number);
  writer.put("\n");
}

void end_block(text_writer& writer) { writer.put("   -1\n"); }

/// A line of so many equal fields.
void put_fields(text_writer& writer, std::string_view field, unsigned count) {
  for (unsigned k = 0; k < count; ++k) writer.put(field);
  writer.put("\n");
}

/// The number of entries of a list, and the list, in lines of ten.
void put_list(text_writer& writer, std::string_view length, unsigned count, std::string_view field) {
  writer.put(length);
  writer.put(",\n");
  for (unsigned k = 0; k < count; k += 10) put_fields(writer, field, std::min(10U, count - k));
}

void write_material(text_writer& writer) {
  begin_block(writer, "601");
  writer.put("1,-601,55,0,0,1,0,\n<NULL>\n");
  put_list(writer, "10", 10, "0,");
  put_list(writer, "25", 25, "0,");
  put_list(writer, "200", 200, "0.,");
  put_list(writer, "50", 50, "0,");
  put_list(writer, "60", 60, "0,");
  end_block(writer);
}

void write_properties(text_writer& writer, const property_uses& uses) {
  begin_block(writer, "402");
  for (std::uint64_t k = 0; k < uses.numbers.size(); ++k) {
    const std::uint64_t number = uses.numbers[k];
    if (k != 0 && uses.numbers[k - 1] >> 32 == number >> 32) continue;
    const unsigned kind = uses.kinds[static_cast<unsigned>(number)];
    writer.write(2 * io::longest_integer + 16, [&](char* out) {
      out = io::append(io::append_id(out, static_cast<unsigned>(number >> 32)), ",110,1,");
      return io::append(io::append_id(out, kind), ",1,0,\n");
    });
    writer.put("<NULL>\n0,0,0,0,\n0,\n0,\n0,\n");
  }
  end_block(writer);
}

void write_nodes(text_writer& writer, const dense2D<double>& coords) {
  begin_block(writer, "403");
  for (std::uint64_t i = 0; i < coords.cols(); ++i) {
    writer.write(io::longest_integer + 3 * io::longest_scientific + 32, [&](char* out) {
      out = io::append(io::append_id(out, static_cast<unsigned>(i + 1)), ",0,0,1,46,0,0,0,0,0,0,");
      for (unsigned k = 0; k < 3; ++k) {
        out = io::append(
            io::format_upper_scientific(out, k < coords.rows() ? coords(k, i) : 0.0, digits_that_come_back), ",");
      }
      return io::append(out, "0,\n");
    });
  }
  end_block(writer);
}

char* append_line(char* out, const unsigned* slots) {
  for (unsigned k = 0; k < slots_per_line; ++k) {
    *out++ = '0';
    if (slots[k] != 0) out = io::append_id(out - 1, slots[k]);
    *out++ = ',';
  }
  *out++ = '\n';
  return out;
}

char* append_slots(char* out, const element_layout& layout, const unsigned* nodes) {
  const io::node_order order = io::nastran::order_on_card(layout.type);
  unsigned slots[io::femap::nbr_slots] = {};
  for (unsigned k = 0; k < order.count; ++k) slots[layout.slots[k]] = nodes[order.nodes[k]] + 1;
  const bool has_second_line = std::any_of(slots + slots_per_line, std::end(slots), [](unsigned s) { return s != 0; });
  out = append_line(out, slots);
  return has_second_line ? append_line(out, slots + slots_per_line) : io::append(out, "0,0,0,0,0,0,0,0,0,0,\n");
}

void write_element(text_writer& writer, const element_layout& layout, unsigned ID, unsigned property,
                   const unsigned* nodes) {
  writer.write(24 * (io::longest_integer + 1) + 128, [&](char* out) {
    out = io::append_id(io::append(io::append_id(out, ID), ",124,"), property);
    out = io::append_id(io::append(out, ","), layout.kind);
    out = io::append_id(io::append(out, ","), layout.topology);
    out = append_slots(io::append(out, ",1,0,0,0,0,0,0,\n"), layout, nodes);
    return io::append(out, "0.,0.,0.,\n0.,0.,0.,\n0.,0.,0.,\n0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,\n");
  });
}

/// Writes the whole file. False when memory ran out.
struct neutral_writer {
  const dense2D<double>& coords;

  template <class Blocks>
  bool operator()(text_writer& writer, const Blocks& blocks) const {
    property_uses uses;
    if (!list_properties(blocks, uses)) return false;
    begin_block(writer, "100");
    writer.put("Generated by QEL Gridwork(R).\n7.,\n");
    end_block(writer);
    write_material(writer);
    write_properties(writer, uses);
    write_nodes(writer, coords);
    begin_block(writer, "404");
    blocks.for_each_element([&](element_type type, unsigned ID, unsigned property, const unsigned* nodes) {
      const element_layout* const layout = io::femap::layout_of(type);
      if (layout != nullptr) write_element(writer, *layout, ID, property, nodes);
    });
    end_block(writer);
    return true;
  }
};

}  // namespace

int FEMAP_output(const char* filename, const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                 element_type type) {
  return io::write_matrix(filename, coords, connectivity, type, neutral_writer{coords});
}

int FEMAP_output(const char* filename, const dense2D<double>& coords, const dense2D<unsigned>& connectivity1,
                 const dense2D<unsigned>& connectivity2, element_type type1, element_type type2) {
  return io::write_two_matrices(filename, coords, connectivity1, connectivity2, type1, type2, neutral_writer{coords});
}

int FEMAP_output(const char* filename, const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                 const dense1D<unsigned>& block_offsets, const dense1D<int>& block_types,
                 const dense1D<unsigned>& property_IDs) {
  return io::write_blocks(filename, coords, connectivity, block_offsets, block_types, property_IDs,
                          neutral_writer{coords});
}

}  // namespace qel::gridwork
