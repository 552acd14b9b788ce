// Reads fields at the nodes from MEDIT solutions.
#include <cstdint>
#include <limits>
#include <string_view>
#include <utility>

#include "core/result.h"
#include "io/column_appender.h"
#include "io/input_mesh.h"
#include "io/input_result.h"
#include "io/medit_words.h"
#include "qel/gridwork/io.h"

namespace qel::gridwork {

using namespace detail;

namespace {

using io::malformed;
using io::same_word;

enum kind { scalar = 1, vector, symmetric_tensor, square_matrix };

/// Rows that a field takes; 0 for a number that is no kind of field.
unsigned rows_of(std::uint64_t field, unsigned dim) noexcept {
  switch (field) {
    case scalar:
      return 1;
    case vector:
      return dim;
    case symmetric_tensor:
      return dim * (dim + 1) / 2;
    case square_matrix:
      return dim * dim;
    default:
      return 0;
  }
}

struct solution {
  unsigned dim = 0;
  dense2D<double> values{};
  dense1D<int> kinds{};
};

class solution_parser {
 public:
  solution_parser(io::block_reader& blocks, std::uint64_t file_size, solution& out) noexcept
      : words_(blocks), file_size_(file_size), out_(out) {}

  int parse() noexcept {
    if (!words_.at_word()) return malformed;
    return io::is_digit(*words_.text()) ? read_bare() : read_with_keywords();
  }

 private:
  /// Reads up to the end of the first field, or of the file.
  int read_with_keywords() noexcept {
    if (!words_.read_version()) return malformed;
    for (std::string_view keyword; words_.next_keyword(keyword);) {
      if (keyword.empty()) return malformed;
      if (same_word(keyword, "Dimension") && !words_.read_dimension(out_.dim)) return malformed;
      if (same_word(keyword, "SolAtVertices")) return read_fields();
    }
    return 0;
  }

  int read_fields() noexcept {
    std::uint64_t nodes = 0, fields = 0, rows = 0;
    if (out_.dim == 0 || !words_.read_count(nodes) || !words_.read_count(fields)) return malformed;
    for (; fields != 0; --fields) {
      std::uint64_t field = 0;
      if (!words_.read_count(field) || rows_of(field, out_.dim) == 0) return malformed;
      rows += rows_of(field, out_.dim);
      if (!out_.kinds.push_back(static_cast<int>(field))) return out_of_memory;
    }
    return read_values(rows, nodes);
  }

  /// Reads what has no keywords: "dimension rows nodes 2" and the values.
  int read_bare() noexcept {
    std::uint64_t dim = 0, rows = 0, nodes = 0, place = 0;
    constexpr std::uint64_t at_nodes = 2;
    if (!words_.read_count(dim) || dim > std::numeric_limits<unsigned>::max()) return malformed;
    if (!words_.read_count(rows) || !words_.read_count(nodes) || !words_.read_count(place)) return malformed;
    if (place != at_nodes) return malformed;
    out_.dim = static_cast<unsigned>(dim);
    const int result = read_values(rows, nodes);
    return result != 0 || nodes == 0 ? result : name_kinds(dim, rows);
  }

  /// Tells by the rows what they are.
  int name_kinds(std::uint64_t dim, std::uint64_t rows) noexcept {
    const bool is_vector = rows == dim && rows > 1, is_tensor = 2 * rows == dim * (dim + 1) && rows > 1;
    if (is_vector || is_tensor) return out_.kinds.push_back(is_vector ? vector : symmetric_tensor) ? 0 : out_of_memory;
    return out_.kinds.push_back_n(scalar, rows) ? 0 : out_of_memory;
  }

  int read_values(std::uint64_t rows, std::uint64_t nodes) noexcept {
    io::column_appender<double> columns(out_.values);
    dense1D<double> column;
    for (; rows != 0 && nodes != 0; --nodes) {
      const int result = read_column(rows, column);
      if (result != 0) return result;
      if (!columns.append(column.begin(), rows, {words_.position(), file_size_})) return out_of_memory;
    }
    return columns.count() < none ? 0 : out_of_memory;
  }

  /// Takes memory for the values that there are, not for those that should be.
  int read_column(std::uint64_t rows, dense1D<double>& column) noexcept {
    column.clear();
    for (; rows != 0; --rows) {
      double value = 0;
      if (!words_.read_double(value)) return malformed;
      if (!column.push_back(value)) return out_of_memory;
    }
    return 0;
  }

  io::medit::medit_words words_;
  std::uint64_t file_size_;
  solution& out_;
};

int read_solution(const char* filename, solution& out) noexcept {
  return io::read_file(filename, [&](io::block_reader& blocks, std::uint64_t size) {
    return io::medit::is_binary(blocks) ? io::kind_not_read : solution_parser(blocks, size, out).parse();
  });
}

}  // namespace

int medit_solution_input(const char* filename, unsigned& dim, dense2D<double>& values, dense1D<int>& kinds) {
  solution found;
  const int result = read_solution(filename, found);
  if (result < 0) found = solution();
  dim = found.dim;
  values = std::move(found.values);
  kinds = std::move(found.kinds);
  return result;
}

}  // namespace qel::gridwork
