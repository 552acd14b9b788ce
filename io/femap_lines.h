// Lines of FEMAP neutral files: blocks, each between two lines with nothing but -1.
#ifndef QEL_GRIDWORK_IO_FEMAP_LINES_H
#define QEL_GRIDWORK_IO_FEMAP_LINES_H

#include <cstdint>
#include <string_view>

#include "io/text/field.h"
#include "io/text/record_lines.h"

namespace qel::gridwork::detail::io::femap {

class neutral_lines {
 public:
  explicit neutral_lines(block_reader& blocks) noexcept : lines_(blocks) {}

  /// The line at hand, without its newline.
  std::string_view text() const noexcept { return line_.text; }

  /// True when the rest of the line is missing.
  bool is_cut() const noexcept { return line_.is_cut; }

  /// The first field of the line.
  std::string_view first_field() const noexcept { return field_list(line_.text).next(); }

  /// True for a line that begins or ends a block.
  bool is_mark() const noexcept { return trim(line_.text) == "-1"; }

  /// Goes to the next line, whatever it is; false at the end of the file.
  bool next() noexcept { return lines_.next(line_); }

  /// Goes to the next line of a block; false at its end.
  bool next_in_block() noexcept { return next() && !is_mark(); }

  /// Goes to the next mark; false when there is none.
  bool skip_to_mark() noexcept {
    while (next()) {
      if (is_mark()) return true;
    }
    return false;
  }

  /// As record_lines::read_in_place().
  template <class Read>
  void read_in_place(Read read) noexcept {
    lines_.read_in_place(read);
  }

  std::uint64_t position() const noexcept { return lines_.position(); }

 private:
  record_lines lines_;
  record_line line_;
};

}  // namespace qel::gridwork::detail::io::femap

#endif
