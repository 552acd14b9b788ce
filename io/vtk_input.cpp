// Reads legacy VTK files of text and binary ones.
#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

#include "core/result.h"
#include "io/column_appender.h"
#include "io/element_collector.h"
#include "io/input_mesh.h"
#include "io/input_result.h"
#include "io/text/line_reader.h"
#include "io/vtk.h"
#include "io/vtk_cell_lists.h"
#include "io/vtk_cells.h"
#include "io/vtk_fields.h"
#include "io/vtk_numbers.h"
#include "qel/gridwork/io.h"

namespace qel::gridwork {

using namespace detail;

namespace {

using io::malformed;
using io::same_word;
using io::vtk::cell_list;

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
      : blocks_(blocks),
        words_(blocks, '\0', '\0'),
        numbers_(words_, blocks),
        fields_(words_, blocks, numbers_),
        list_reader_(words_, blocks, numbers_, file_size),
        file_size_(file_size),
        coords_(coords) {}

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
    if (same_word(keyword, "FIELD")) return fields_.pass_field();
    if (same_word(keyword, "METADATA")) return fields_.pass_metadata();
    if (!is_polydata_ && same_word(keyword, "CELLS")) return list_reader_.read_cells(lists_[0]);
    if (!is_polydata_ && same_word(keyword, "CELL_TYPES")) return list_reader_.read_types(lists_[0]);
    for (unsigned k = 0; is_polydata_ && k < std::size(lists_); ++k) {
      if (same_word(keyword, polydata_lists[k].keyword)) return list_reader_.read_cells(lists_[k]);
    }
    return malformed;
  }

  int read_points() noexcept {
    std::uint64_t count = 0;
    if (has_points_ || !words_.read_count(count)) return malformed;
    has_points_ = true;
    const io::vtk::number_type type = numbers_.read_type();
    io::column_appender<double> points(coords_);
    if (count > io::vtk::most_numbers / 3) return malformed;
    const int result = numbers_.read_reals(type, 3, count, [&](const double* values, std::uint64_t found) {
      return points.append(values, 3, progress(), found) ? 0 : out_of_memory;
    });
    return result == 0 && points.count() >= none ? out_of_memory : result;
  }

  io::file_progress progress() const noexcept { return {words_.position(), file_size_}; }

  io::block_reader& blocks_;
  io::word_reader words_;
  io::vtk::number_reader numbers_;
  io::vtk::field_skipper fields_;
  io::vtk::list_reader list_reader_;
  std::uint64_t file_size_;
  dense2D<double>& coords_;
  cell_list lists_[4];
  bool is_polydata_ = false;
  bool has_points_ = false;
};

int read_mesh(const char* filename, element_type only, io::input_mesh& mesh) noexcept {
  return io::read_file(filename, [&](io::block_reader& blocks, std::uint64_t size) {
    if (!mesh.coords.resize(3, 0)) return out_of_memory;
    vtk_parser parser(blocks, size, mesh.coords);
    const int code = parser.parse();
    if (code != 0) return code;
    io::element_collector elements(only, 1);
    const int result = parser.convert(elements);
    return result >= 0 && !elements.deliver(mesh.elements) ? out_of_memory : result;
  });
}

}  // namespace

int vtk_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity,
              dense1D<unsigned>& block_offsets, dense1D<int>& block_types, dense1D<unsigned>& cell_IDs) {
  io::input_mesh mesh;
  const int result = io::read_blocks(read_mesh, filename, mesh, coords, connectivity, block_offsets, block_types);
  cell_IDs = std::move(mesh.elements.labels[0]);
  return result;
}

int vtk_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity, element_type type) {
  return io::read_type(read_mesh, filename, coords, connectivity, type);
}

}  // namespace qel::gridwork
