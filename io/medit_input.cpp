// Reads MEDIT meshes.
#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <string_view>
#include <utility>

#include "core/result.h"
#include "io/distinct_nodes.h"
#include "io/element_collector.h"
#include "io/input_mesh.h"
#include "io/input_result.h"
#include "io/medit.h"
#include "io/medit_words.h"
#include "qel/gridwork/io.h"

namespace qel::gridwork {

using namespace detail;

namespace {

using io::are_distinct;
using io::kind_not_read;
using io::malformed;
using io::same_word;
using io::unknown_node;
using io::medit::input_section;

struct medit_mesh : io::input_mesh {
  dense2D<unsigned> node_references;  // one row
};

/// The type that the eight nodes of a hexahedron make: with repeated nodes, a pyramid (a b c d e e e e) or a wedge
/// (a b c c d e f f), whose own nodes come first then.
element_type compress_hexahedron(unsigned* nodes) noexcept {
  if (nodes[6] != nodes[7]) return ELT_HEXA8;
  if (nodes[4] == nodes[5] && nodes[4] == nodes[6] && are_distinct(nodes, 5)) return ELT_PYRAMID5;
  const unsigned wedge[] = {nodes[0], nodes[1], nodes[2], nodes[4], nodes[5], nodes[6]};
  if (nodes[2] != nodes[3] || !are_distinct(wedge, 6)) return ELT_HEXA8;
  std::copy(std::begin(wedge), std::end(wedge), nodes);
  return ELT_WEDGE6;
}

class mesh_parser {
 public:
  mesh_parser(io::block_reader& blocks, std::uint64_t file_size, element_type only, medit_mesh& out) noexcept
      : words_(blocks),
        file_size_(file_size),
        coords_(out.coords),
        references_(out.node_references),
        elements_(only, 1) {}

  /// Reads the whole file.
  int parse() noexcept {
    if (!words_.read_version()) return malformed;
    for (std::string_view keyword; words_.next_keyword(keyword);) {
      const int result = read_section(keyword);
      if (result != 0) return result;
    }
    if (coords_.count() >= none) return out_of_memory;
    return node_bound_ > coords_.count() ? unknown_node : io::result_of_left_out(left_out_);
  }

  io::element_collector& elements() noexcept { return elements_; }
  unsigned dim() const noexcept { return dim_; }

 private:
  int read_section(std::string_view keyword) noexcept {
    if (keyword.empty()) return malformed;
    if (same_word(keyword, "Dimension")) return read_dimension();
    if (same_word(keyword, "Vertices")) return read_vertices();
    for (const input_section& section : io::medit::input_sections) {
      if (same_word(keyword, section.keyword)) return read_elements(section);
    }
    for (const std::string_view name : io::medit::left_out_sections) {
      if (same_word(keyword, name)) return leave_out();
    }
    return 0;
  }

  int read_dimension() noexcept {
    const unsigned old_dim = dim_;
    const bool can_change = coords_.count() == 0;
    return words_.read_dimension(dim_) && (can_change || dim_ == old_dim) ? 0 : malformed;
  }

  int read_vertices() noexcept {
    std::uint64_t count = 0;
    if (dim_ == 0 || !words_.read_count(count)) return malformed;
    for (; count != 0; --count) {
      double p[3];
      unsigned reference = 0;
      for (unsigned k = 0; k < dim_; ++k) {
        if (!words_.read_double(p[k])) return malformed;
      }
      if (!read_reference(reference)) return malformed;
      if (!coords_.append(p, dim_, progress()) || !references_.append(&reference, 1, progress())) return out_of_memory;
    }
    return 0;
  }

  int read_elements(const input_section& section) noexcept {
    std::uint64_t count = 0;
    if (!words_.read_count(count)) return malformed;
    const unsigned size = nbr_nodes(section.type);
    const bool is_hexahedron = section.type == ELT_HEXA8;
    const bool is_wanted = is_hexahedron || elements_.keeps(section.type);
    for (; count != 0; --count) {
      unsigned nodes[27], reference = 0;
      for (unsigned k = 0; k < size; ++k) {
        if (!read_index(nodes[section.order != nullptr ? section.order[k] : k])) return malformed;
      }
      if (!read_reference(reference)) return malformed;
      if (!is_wanted) continue;
      const int result = append(is_hexahedron ? compress_hexahedron(nodes) : section.type, nodes, reference);
      if (result != 0) return result;
    }
    return 0;
  }

  int append(element_type type, unsigned* nodes, unsigned reference) noexcept {
    if (!elements_.keeps(type)) return 0;
    const unsigned size = nbr_nodes(type);
    for (unsigned k = 0; k < size; ++k) {
      if (nodes[k] == none) return unknown_node;
      node_bound_ = std::max(node_bound_, nodes[k] + 1);
    }
    return elements_.append(type, nodes, &reference, progress()) ? 0 : out_of_memory;
  }

  /// Reads the number of a node, from 1 on; `none` for one that no file can have.
  bool read_index(unsigned& node) noexcept {
    std::int64_t index = 0;
    if (!words_.read_integer(index)) return false;
    node = index >= 1 && index < none ? static_cast<unsigned>(index - 1) : none;
    return true;
  }

  bool read_reference(unsigned& reference) noexcept {
    std::int64_t value = 0;
    if (!words_.read_integer(value)) return false;
    reference = static_cast<unsigned>(value);
    return value >= std::numeric_limits<std::int32_t>::min() && value <= std::int64_t{none};
  }

  /// Counts the elements of a section that is passed over, but not more than there can be.
  int leave_out() noexcept {
    std::uint64_t count = 0, numbers = 0;
    if (!words_.read_count(count)) return malformed;
    words_.pass_numbers(numbers);
    left_out_ += std::min(count, numbers);
    return 0;
  }

  io::file_progress progress() const noexcept { return {words_.position(), file_size_}; }

  io::medit::medit_words words_;
  std::uint64_t file_size_;
  io::column_appender<double> coords_;
  io::column_appender<unsigned> references_;
  io::element_collector elements_;
  unsigned dim_ = 0;
  unsigned node_bound_ = 0;
  std::uint64_t left_out_ = 0;
};

int read_mesh(const char* filename, element_type only, medit_mesh& out) noexcept {
  return io::read_file(filename, [&](io::block_reader& blocks, std::uint64_t size) {
    if (io::medit::is_binary(blocks)) return kind_not_read;
    unsigned dim = 0;
    int result = 0;
    {
      mesh_parser parser(blocks, size, only, out);
      result = parser.parse();
      if (result >= 0 && !parser.elements().deliver(out.elements)) return out_of_memory;
      dim = parser.dim();
    }
    if (result >= 0 && out.coords.rows() == 0 && !out.coords.resize(dim, 0)) return out_of_memory;
    return result;
  });
}

}  // namespace

int medit_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity,
                dense1D<unsigned>& block_offsets, dense1D<int>& block_types, dense1D<unsigned>& references,
                dense1D<unsigned>& node_references) {
  medit_mesh mesh;
  const int result = io::read_blocks(read_mesh, filename, mesh, coords, connectivity, block_offsets, block_types);
  references = std::move(mesh.elements.labels[0]);
  node_references = mesh.node_references.as_vector();
  return result;
}

int medit_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity, element_type type) {
  return io::read_type(read_mesh, filename, coords, connectivity, type);
}

}  // namespace qel::gridwork
