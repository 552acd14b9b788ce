// Reads legacy VTK files of text and binary ones.
#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

#include "core/result.h"
#include "io/column_appender.h"
#include "io/element_collector.h"
#include "io/input_result.h"
#include "io/text/file.h"
#include "io/text/line_reader.h"
#include "io/vtk.h"
#include "io/vtk_cells.h"
#include "io/vtk_numbers.h"
#include "qel/gridwork/io.h"

namespace qel::gridwork {

using namespace detail;

namespace {

using io::malformed;
using io::same_word;
using io::vtk::cell_list;
using io::vtk::number_type;

/// The lists of polydata in the order in which their cells are numbered, and the type of cells that they hold. The one
/// list of an unstructured grid is in the place of the first.
constexpr struct {
  std::string_view keyword;
  unsigned char cell_type;
} polydata_lists[] = {{"VERTICES", io::vtk::vertex},
                      {"LINES", io::vtk::poly_line},
                      {"POLYGONS", io::vtk::polygon},
                      {"TRIANGLE_STRIPS", io::vtk::triangle_strip}};

/// Reads the sections of a file; cells become elements at the end, because any of them may be the last.
class vtk_parser {
 public:
  vtk_parser(io::block_reader& blocks, std::uint64_t file_size, dense2D<double>& coords) noexcept
      : blocks_(blocks), words_(blocks, '\0'), numbers_(words_, blocks), file_size_(file_size), coords_(coords) {}

  int parse() noexcept {
    const int header = read_header();
    if (header != 0) return header;
    while (words_.at_word()) {
      const std::string_view keyword = words_.read_word();
      if (same_word(keyword, "POINT_DATA") || same_word(keyword, "CELL_DATA")) break;
      const int result = read_section(keyword);
      if (result != 0) return result;
    }
    return 0;
  }

  /// Appends the elements of all cells. Returns the number of cells without one, or the code of what is wrong.
  int convert(io::element_collector& out) noexcept {
    io::vtk::cell_converter converter(out, coords_.cols());
    std::uint64_t cells = 0;
    for (unsigned k = 0; k < std::size(lists_); ++k) {
      cell_list& list = lists_[k];
      if (is_polydata_ && !list.types.resize(1, list.size(), polydata_lists[k].cell_type)) return out_of_memory;
      if (list.types.cols() != list.size()) return malformed;
      if (cells + list.size() >= none) return out_of_memory;
      const int result = converter.convert(list, cells);
      if (result != 0) return result;
      cells += list.size();
    }
    return io::result_of_left_out(converter.left_out());
  }

 private:
  int read_header() noexcept {
    io::line_reader lines(blocks_);
    const char* const first = lines.next_without_tail();
    if (first == nullptr || io::match_keyword(first, "# vtk datafile version") == nullptr) return malformed;
    if (lines.next_without_tail() == nullptr) return malformed;
    const std::string_view form = words_.read_word();
    numbers_.set_binary(same_word(form, "BINARY"));
    if (!numbers_.is_binary() && !same_word(form, "ASCII")) return malformed;
    return read_data_set();
  }

  int read_data_set() noexcept {
    const std::string_view keyword = words_.read_word();
    if (same_word(keyword, "FIELD")) return io::kind_not_read;
    if (!same_word(keyword, "DATASET")) return malformed;
    const std::string_view kind = words_.read_word();
    is_polydata_ = same_word(kind, "POLYDATA");
    if (is_polydata_ || same_word(kind, "UNSTRUCTURED_GRID")) return 0;
    return kind.empty() ? malformed : io::kind_not_read;
  }

  int read_section(std::string_view keyword) noexcept {
    if (same_word(keyword, "POINTS")) return read_points();
    if (same_word(keyword, "FIELD")) return pass_field();
    if (same_word(keyword, "METADATA")) return pass_metadata();
    if (!is_polydata_ && same_word(keyword, "CELLS")) return read_list(lists_[0]);
    if (!is_polydata_ && same_word(keyword, "CELL_TYPES")) return read_types(lists_[0]);
    for (unsigned k = 0; is_polydata_ && k < std::size(lists_); ++k) {
      if (same_word(keyword, polydata_lists[k].keyword)) return read_list(lists_[k]);
    }
    return malformed;
  }

  int read_points() noexcept {
    std::uint64_t count = 0;
    if (has_points_ || !words_.read_count(count)) return malformed;
    has_points_ = true;
    const number_type type = numbers_.read_type();
    io::column_appender<double> points(coords_);
    double p[3];
    unsigned k = 0;
    const auto take = [&](double x) {
      p[k++] = x;
      if (k < 3) return 0;
      k = 0;
      return points.append(p, 3, progress()) ? 0 : out_of_memory;
    };
    if (count > most_numbers / 3) return malformed;
    const int result = numbers_.read_reals(type, 3 * count, take);
    return result == 0 && points.count() >= none ? out_of_memory : result;
  }

  int read_types(cell_list& list) noexcept {
    std::uint64_t count = 0;
    if (!list.types.empty() || !words_.read_count(count)) return malformed;
    numbers_.start();
    io::column_appender<unsigned char> types(list.types);
    return numbers_.read_integers(io::vtk::int_type, count, [&](std::int64_t value) {
      const unsigned char type =
          value >= 0 && value < io::vtk::no_type ? static_cast<unsigned char>(value) : io::vtk::no_type;
      return push(types, type) ? 0 : out_of_memory;
    });
  }

  // --- Cells -------------------------------------------------------------------------------------------------------

  int read_list(cell_list& list) noexcept {
    std::uint64_t count = 0, size = 0;
    if (list.is_there || !words_.read_count(count) || !words_.read_count(size)) return malformed;
    list.is_there = true;
    numbers_.start();
    if (!at_offsets()) return read_counted_cells(list, count, size);
    words_.read_word();
    const int result = read_offsets(list, count, size);
    return result != 0 ? result : read_connectivity(list, size);
  }

  /// True before the keyword of the newer form. As a number of nodes, its letters would be beyond all limits.
  bool at_offsets() noexcept {
    const bool is_there = numbers_.is_binary() ? blocks_.fill(7) : words_.at_word();
    return is_there && io::match_keyword(words_.text(), "offsets") != nullptr;
  }

  /// Reads for each cell the number of its nodes and these, `size` numbers in all.
  int read_counted_cells(cell_list& list, std::uint64_t count, std::uint64_t size) noexcept {
    io::column_appender<unsigned> nodes(list.nodes), ends(list.ends);
    unsigned total = 0;
    std::int64_t left = 0;
    const int result = numbers_.read_integers(io::vtk::int_type, size, [&](std::int64_t value) {
      if (left == 0) {
        if (value < 0) return malformed;
        left = value;
      } else {
        const unsigned node = node_of(value);
        if (!push(nodes, node) || ++total == none) return out_of_memory;
        --left;
      }
      return left != 0 || push(ends, total) ? 0 : out_of_memory;
    });
    if (result != 0) return result;
    return left == 0 && ends.count() == count ? 0 : malformed;
  }

  int read_offsets(cell_list& list, std::uint64_t count, std::uint64_t size) noexcept {
    io::column_appender<unsigned> ends(list.ends);
    std::int64_t last = -1;
    const auto take = [&](std::int64_t value) {
      const bool is_first = last < 0;
      if (is_first ? value != 0 : value < last) return malformed;
      last = value;
      const auto end = static_cast<unsigned>(value);
      if (value >= std::int64_t{none}) return out_of_memory;
      return is_first || push(ends, end) ? 0 : out_of_memory;
    };
    const number_type type = numbers_.read_type();
    const int result = numbers_.read_integers(type, count, take);
    if (result != 0) return result;
    return static_cast<std::uint64_t>(std::max<std::int64_t>(last, 0)) == size ? 0 : malformed;
  }

  int read_connectivity(cell_list& list, std::uint64_t size) noexcept {
    if (!same_word(words_.read_word(), "CONNECTIVITY")) return malformed;
    io::column_appender<unsigned> nodes(list.nodes);
    const number_type type = numbers_.read_type();
    return numbers_.read_integers(type, size,
                                  [&](std::int64_t value) { return push(nodes, node_of(value)) ? 0 : out_of_memory; });
  }

  /// Appends to a matrix of one row.
  template <class T>
  bool push(io::column_appender<T>& list, T value) const noexcept {
    T* const place = list.room();
    if (place == nullptr) return list.append(&value, 1, progress());
    *place = value;
    list.commit();
    return true;
  }

  static unsigned node_of(std::int64_t value) noexcept {
    return value >= 0 && value < std::int64_t{none} ? static_cast<unsigned>(value) : none;
  }

  // --- What is passed over -----------------------------------------------------------------------------------------

  int pass_field() noexcept {
    std::uint64_t arrays = 0;
    if (words_.read_word().empty() || !words_.read_count(arrays)) return malformed;
    int result = 0;
    for (; arrays != 0 && result == 0; --arrays) result = pass_array();
    return result;
  }

  int pass_array() noexcept {
    std::string_view name = words_.read_word();
    for (; same_word(name, "METADATA"); name = words_.read_word()) pass_metadata();
    if (same_word(name, "NULL_ARRAY")) return 0;
    std::uint64_t rows = 0, columns = 0;
    if (name.empty() || !words_.read_count(rows) || !words_.read_count(columns)) return malformed;
    const number_type type = numbers_.read_type();
    if (rows != 0 && columns > most_numbers / rows) return malformed;
    return numbers_.pass(type, rows * columns);
  }

  /// Ends at an empty line.
  int pass_metadata() noexcept {
    blocks_.pass_line();
    io::line_reader lines(blocks_);
    const char* line = lines.next_without_tail();
    while (line != nullptr && !io::ends_line(*io::skip_blanks(line))) line = lines.next_without_tail();
    return 0;
  }

  static constexpr std::uint64_t most_numbers = std::uint64_t{1} << 60;  // of 8 bytes, in less than 2^64

  io::file_progress progress() const noexcept { return {words_.position(), file_size_}; }

  io::block_reader& blocks_;
  io::word_reader words_;
  io::vtk::number_reader numbers_;
  std::uint64_t file_size_;
  dense2D<double>& coords_;
  cell_list lists_[4];
  bool is_polydata_ = false;
  bool has_points_ = false;
};

/// Reads the elements of one type, or of all for ELT_UNKNOWN.
int read_mesh(const char* filename, element_type only, dense2D<double>& coords, io::element_blocks& out) noexcept {
  const io::file input(filename, "rb");
  if (!input.is_open()) return io::not_opened;
  const std::uint64_t size = input.size();
  io::block_reader blocks(input.stream());
  if (!blocks.prepare() || !coords.resize(3, 0)) return out_of_memory;
  vtk_parser parser(blocks, size, coords);
  const int code = parser.parse();
  if (code != 0) return code;
  io::element_collector elements(only, 1);
  const int result = parser.convert(elements);
  return result >= 0 && !elements.deliver(out) ? out_of_memory : result;
}

}  // namespace

int vtk_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity,
              dense1D<unsigned>& block_offsets, dense1D<int>& block_types, dense1D<unsigned>& cell_IDs) {
  dense2D<double> nodes;
  io::element_blocks elements;
  const int result = read_mesh(filename, ELT_UNKNOWN, nodes, elements);
  if (result < 0) nodes = dense2D<double>(), elements = io::element_blocks();
  coords = std::move(nodes);
  connectivity = std::move(elements.connectivity);
  block_offsets = std::move(elements.offsets);
  block_types = std::move(elements.types);
  cell_IDs = std::move(elements.labels[0]);
  return result;
}

int vtk_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity, element_type type) {
  dense2D<double> nodes;
  io::element_blocks elements;
  const int result = io::is_readable(type) ? read_mesh(filename, type, nodes, elements) : io::no_type_to_read;
  if (result < 0) nodes = dense2D<double>(), elements = io::element_blocks();
  coords = std::move(nodes);
  connectivity = std::move(elements.connectivity);
  return result;
}

}  // namespace qel::gridwork
