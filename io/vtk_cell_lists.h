// Reads lists of cells from VTK files.
#ifndef QEL_GRIDWORK_IO_VTK_CELL_LISTS_H
#define QEL_GRIDWORK_IO_VTK_CELL_LISTS_H

#include <algorithm>
#include <cstdint>

#include "core/limits.h"
#include "core/result.h"
#include "io/column_appender.h"
#include "io/input_result.h"
#include "io/text/word_reader.h"
#include "io/vtk.h"
#include "io/vtk_cells.h"
#include "io/vtk_numbers.h"

namespace qel::gridwork::detail::io::vtk {

/// Reads what stands behind the keywords of lists.
class list_reader {
 public:
  list_reader(word_reader& words, block_reader& blocks, number_reader& numbers, std::uint64_t file_size) noexcept
      : words_(words), blocks_(blocks), numbers_(numbers), file_size_(file_size) {}

  /// Reads cells in either form: counts and nodes, or offsets and nodes.
  int read_cells(cell_list& list) noexcept {
    std::uint64_t count = 0, size = 0;
    if (list.is_there || !words_.read_count(count) || !words_.read_count(size)) return malformed;
    list.is_there = true;
    numbers_.start();
    if (!at_offsets()) return read_counted_cells(list, count, size);
    words_.read_word();
    const int result = read_offsets(list, count, size);
    return result != 0 ? result : read_connectivity(list, size);
  }

  /// Reads the types of cells.
  int read_types(cell_list& list) noexcept {
    std::uint64_t count = 0;
    if (!list.types.empty() || !words_.read_count(count)) return malformed;
    numbers_.start();
    column_appender<unsigned char> types(list.types);
    return numbers_.read_integers(int_type, count, [&](const std::int64_t* values, std::uint64_t found) {
      const auto type_of = [values](std::uint64_t i) {
        return values[i] >= 0 && values[i] < no_type ? static_cast<unsigned char>(values[i]) : no_type;
      };
      return push_each(types, found, progress(), type_of) ? 0 : out_of_memory;
    });
  }

 private:
  /// True before the keyword of the newer form. As a number of nodes, its letters would be beyond all limits.
  bool at_offsets() noexcept {
    const bool is_there = numbers_.is_binary() ? blocks_.fill(7) : words_.at_word();
    return is_there && match_keyword(words_.text(), "offsets") != nullptr;
  }

  /// Reads for each cell the number of its nodes and these, `size` numbers in all.
  int read_counted_cells(cell_list& list, std::uint64_t count, std::uint64_t size) noexcept {
    column_appender<unsigned> nodes(list.nodes), ends(list.ends);
    std::uint64_t total = 0, left = 0;  // nodes of all cells, and those still to come of the last one
    const auto take = [&](const std::int64_t* values, std::uint64_t found) {
      for (const std::int64_t* const last = values + found; values != last;) {
        if (left == 0) {
          if (*values < 0) return malformed;
          left = static_cast<std::uint64_t>(*values++);
        }
        const std::uint64_t piece = std::min(left, static_cast<std::uint64_t>(last - values));
        if (piece >= none - total || !push_nodes(nodes, values, piece)) return out_of_memory;
        values += piece;
        left -= piece;
        total += piece;
        if (left == 0 && !push(ends, static_cast<unsigned>(total), progress())) return out_of_memory;
      }
      return 0;
    };
    const int result = numbers_.read_integers(int_type, size, take);
    if (result != 0) return result;
    return left == 0 && ends.count() == count ? 0 : malformed;
  }

  int read_offsets(cell_list& list, std::uint64_t count, std::uint64_t size) noexcept {
    column_appender<unsigned> ends(list.ends);
    std::int64_t end = -1;  // of the cells so far
    const auto take = [&](const std::int64_t* values, std::uint64_t found) {
      const bool is_first = end < 0;
      if (is_first ? values[0] != 0 : values[0] < end) return malformed;
      const auto sorted = static_cast<std::uint64_t>(std::is_sorted_until(values, values + found) - values);
      end = values[sorted - 1];
      if (static_cast<std::uint64_t>(end) > size) return malformed;
      if (end >= std::int64_t{none}) return out_of_memory;
      if (sorted != found) return malformed;
      const unsigned first = is_first ? 1 : 0;
      const auto end_of = [values, first](std::uint64_t i) { return static_cast<unsigned>(values[first + i]); };
      return push_each(ends, found - first, progress(), end_of) ? 0 : out_of_memory;
    };
    const number_type type = numbers_.read_type();
    const int result = numbers_.read_integers(type, count, take);
    if (result != 0) return result;
    return static_cast<std::uint64_t>(std::max<std::int64_t>(end, 0)) == size ? 0 : malformed;
  }

  int read_connectivity(cell_list& list, std::uint64_t size) noexcept {
    if (!same_word(words_.read_word(), "CONNECTIVITY")) return malformed;
    const std::uint64_t rows = rows_of(list, size);
    column_appender<unsigned> nodes(list.nodes);
    const number_type type = numbers_.read_type();
    return numbers_.read_nodes(type, rows, size / rows, [&](const unsigned* values, std::uint64_t found) {
      return nodes.append(values, rows, progress(), found) ? 0 : out_of_memory;
    });
  }

  /// The nodes of the first cell if all may have as many, else 1.
  static std::uint64_t rows_of(const cell_list& list, std::uint64_t size) noexcept {
    const std::uint64_t rows = list.ends.empty() ? 0 : list.ends.data()[0];
    return rows != 0 && rows <= limits::numbers_at_once && size == rows * list.size() ? rows : 1;
  }

  bool push_nodes(column_appender<unsigned>& nodes, const std::int64_t* values, std::uint64_t count) const noexcept {
    return push_each(nodes, count, progress(), [values](std::uint64_t i) { return node_of(values[i]); });
  }

  file_progress progress() const noexcept { return {words_.position(), file_size_}; }

  word_reader& words_;
  block_reader& blocks_;
  number_reader& numbers_;
  std::uint64_t file_size_;
};

}  // namespace qel::gridwork::detail::io::vtk

#endif
