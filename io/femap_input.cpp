// Reads FEMAP neutral files.
#include <cstdint>
#include <string_view>

#include "core/result.h"
#include "io/element_collector.h"
#include "io/femap.h"
#include "io/femap_lines.h"
#include "io/femap_usual_records.h"
#include "io/identified_mesh.h"
#include "io/input_result.h"
#include "io/text/field.h"
#include "qel/gridwork/io.h"

namespace qel::gridwork {

using namespace detail;

namespace {

using io::malformed;
using io::femap::element_layout;

/// Reads block by block.
class neutral_parser {
 public:
  neutral_parser(io::block_reader& blocks, std::uint64_t file_size, element_type only) noexcept
      : lines_(blocks), file_size_(file_size), elements_(only, 2) {}

  int parse() noexcept {
    bool has_block = false;
    while (lines_.skip_to_mark()) {
      std::int64_t number = 0;
      do {
        if (!lines_.next()) return has_block ? 0 : malformed;
      } while (lines_.is_mark());
      if (!io::scan_integer(lines_.first_field(), number)) continue;
      has_block = true;
      const int result = read_block(static_cast<io::femap::block>(number));
      if (result != 0) return result;
    }
    return has_block ? 0 : malformed;
  }

  /// Makes the mesh, once all blocks are read.
  int finish(io::identified_mesh& mesh) noexcept {
    const int result = nodes_.finish(0);
    return result != 0 ? result : io::make_mesh(nodes_, elements_, left_out_, mesh);
  }

 private:
  int read_block(io::femap::block number) noexcept {
    if (number == io::femap::block::header) return read_version(), 0;
    if (number == io::femap::block::nodes) {
      return read_lines([this] { return read_node(); },
                        [this](const char* text, const char* end) { return usual_.read_nodes(text, end); });
    }
    if (number == io::femap::block::elements) {
      return read_lines([this] { return read_element(); },
                        [this](const char* text, const char* end) { return usual_.read_elements(text, end); });
    }
    lines_.skip_to_mark();
    return 0;
  }

  /// Calls read() at the first line of each record but those that read_usual(text, end) reads where they lie.
  template <class Read, class ReadUsual>
  int read_lines(Read read, ReadUsual read_usual) noexcept {
    while (lines_.next_in_block()) {
      if (io::trim(lines_.text()).empty()) continue;
      const int result = read();
      if (result != 0) return result;
      lines_.read_in_place(read_usual);
    }
    return 0;
  }

  /// Of old versions, records of elements have no lists.
  void read_version() noexcept {
    double version = 0;
    has_lists_ = true;
    if (!lines_.next_in_block() || !lines_.next_in_block()) return;
    if (reals_.scan(lines_.first_field(), version)) has_lists_ = version >= 4.5;
    lines_.skip_to_mark();
  }

  int read_node() noexcept {
    io::field_list fields(lines_.text());
    unsigned ID = 0;
    double point[3];
    if (lines_.is_cut() || !io::scan_ID(fields.next(), ID)) return malformed;
    fields.skip(10);
    for (double& x : point) {
      if (!reals_.scan(fields.next(), x)) return malformed;
    }
    return nodes_.append(ID, 0, point, progress()) ? 0 : out_of_memory;
  }

  /// Reads a record: its header, two lines of nodes, three that do not matter, flags, and the lists that they announce.
  int read_element() noexcept {
    io::field_list header(lines_.text());
    const std::string_view ID = header.next();
    header.skip(1);
    unsigned labels[] = {0, 0};  // property, identifier
    const bool has_labels =
        !lines_.is_cut() && io::scan_ID(ID, labels[1]) && io::scan_reference(header.next(), labels[0]);
    std::int64_t topology = 0;
    header.skip(1);
    if (!has_labels || !io::scan_integer(header.next(), topology)) return malformed;
    const element_layout* const found = io::femap::layout_of_topology(topology);
    const bool is_wanted = found != nullptr && (elements_.keeps(found->type) || elements_.keeps(found->linear));
    left_out_ += found == nullptr ? 1 : 0;
    unsigned slots[io::femap::nbr_slots];
    for (unsigned first = 0; first < io::femap::nbr_slots; first += 10) {
      if (!lines_.next_in_block() || (is_wanted && !scan_slots(slots + first))) return malformed;
    }
    for (unsigned line = 0; line < 4; ++line) {
      if (!lines_.next_in_block()) return malformed;
    }
    if (!skip_lists()) return malformed;
    return is_wanted ? append(*found, slots, labels) : 0;
  }

  bool scan_slots(unsigned* slots) const noexcept {
    io::field_list fields(lines_.text());
    for (unsigned k = 0; k < 10; ++k) {
      const std::string_view field = fields.next();
      slots[k] = 0;
      if (field != "0" && !io::scan_ID(field, slots[k])) return false;
    }
    return !lines_.is_cut();
  }

  /// Passes over the lists that the flags of the line announce.
  bool skip_lists() noexcept {
    if (!has_lists_) return true;
    io::field_list flags(lines_.text());
    flags.skip(12);
    unsigned lists = 0;
    for (unsigned k = 12; k < 16; ++k) {
      const std::string_view field = flags.next();
      std::int64_t flag = 0;
      if (!field.empty() && !io::scan_integer(field, flag)) return false;
      lists += flag != 0 ? 1 : 0;
    }
    for (; lists != 0; --lists) {
      do {
        if (!lines_.next()) return false;
      } while (lines_.first_field() != "-1");
    }
    return true;
  }

  int append(const element_layout& layout, const unsigned* slots, const unsigned* labels) noexcept {
    unsigned nodes[io::femap::nbr_slots];
    const element_type type = io::femap::take_slots(layout, slots, nodes);
    if (type == ELT_UNKNOWN) return malformed;
    if (!elements_.keeps(type)) return 0;
    return elements_.append(type, nodes, labels, progress()) ? 0 : out_of_memory;
  }

  io::file_progress progress() const noexcept { return {lines_.position(), file_size_}; }

  io::femap::neutral_lines lines_;
  io::real_scanner reals_;
  std::uint64_t file_size_;
  io::identified_nodes nodes_;
  io::element_collector elements_;
  io::femap::usual_records usual_{nodes_, elements_};
  std::uint64_t left_out_ = 0;
  bool has_lists_ = true;
};

}  // namespace

int FEMAP_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity,
                dense1D<unsigned>& block_offsets, dense1D<int>& block_types, dense1D<unsigned>& property_IDs,
                dense1D<unsigned>& element_IDs, dense1D<unsigned>& node_IDs) {
  return io::read_blocks(io::read_identified<neutral_parser>, filename, coords, connectivity, block_offsets,
                         block_types, property_IDs, element_IDs, node_IDs);
}

int FEMAP_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity, element_type type) {
  return io::read_type(io::read_identified<neutral_parser>, filename, coords, connectivity, type);
}

}  // namespace qel::gridwork
