// Reads lists of cells from VTK files.
#ifndef QEL_GRIDWORK_IO_VTK_CELL_LISTS_H
#define QEL_GRIDWORK_IO_VTK_CELL_LISTS_H

#include <algorithm>
#include <cstdint>

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
    return numbers_.read_integers(int_type, count, [&](std::int64_t value) {
      const unsigned char type = value >= 0 && value < no_type ? static_cast<unsigned char>(value) : no_type;
      return push(types, type, progress()) ? 0 : out_of_memory;
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
    unsigned total = 0;
    std::int64_t left = 0;
    const int result = numbers_.read_integers(int_type, size, [&](std::int64_t value) {
      if (left == 0) {
        if (value < 0) return malformed;
        left = value;
      } else {
        const unsigned node = node_of(value);
        if (!push(nodes, node, progress()) || ++total == none) return out_of_memory;
        --left;
      }
      return left != 0 || push(ends, total, progress()) ? 0 : out_of_memory;
    });
    if (result != 0) return result;
    return left == 0 && ends.count() == count ? 0 : malformed;
  }

  int read_offsets(cell_list& list, std::uint64_t count, std::uint64_t size) noexcept {
    column_appender<unsigned> ends(list.ends);
    std::int64_t last = -1;
    const auto take = [&](std::int64_t value) {
      const bool is_first = last < 0;
      if (is_first ? value != 0 : value < last) return malformed;
      last = value;
      const auto end = static_cast<unsigned>(value);
      if (value >= std::int64_t{none}) return out_of_memory;
      return is_first || push(ends, end, progress()) ? 0 : out_of_memory;
    };
    const number_type type = numbers_.read_type();
    const int result = numbers_.read_integers(type, count, take);
    if (result != 0) return result;
    return static_cast<std::uint64_t>(std::max<std::int64_t>(last, 0)) == size ? 0 : malformed;
  }

  int read_connectivity(cell_list& list, std::uint64_t size) noexcept {
    if (!same_word(words_.read_word(), "CONNECTIVITY")) return malformed;
    column_appender<unsigned> nodes(list.nodes);
    const number_type type = numbers_.read_type();
    return numbers_.read_integers(
        type, size, [&](std::int64_t value) { return push(nodes, node_of(value), progress()) ? 0 : out_of_memory; });
  }

  static unsigned node_of(std::int64_t value) noexcept {
    return value >= 0 && value < std::int64_t{none} ? static_cast<unsigned>(value) : none;
  }

  file_progress progress() const noexcept { return {words_.position(), file_size_}; }

  word_reader& words_;
  block_reader& blocks_;
  number_reader& numbers_;
  std::uint64_t file_size_;
};

}  // namespace qel::gridwork::detail::io::vtk

#endif
