// Lines of formats whose records have few fields.
#ifndef QEL_GRIDWORK_IO_TEXT_RECORD_LINES_H
#define QEL_GRIDWORK_IO_TEXT_RECORD_LINES_H

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "core/limits.h"
#include "io/text/block_reader.h"
#include "io/text/token_reader.h"

namespace qel::gridwork::detail::io {

/// A line without its newline; a NUL ends it.
struct record_line {
  std::string_view text;
  bool is_cut = false;  // longer than limits::longest_record: the rest is missing
};

class record_lines {
 public:
  explicit record_lines(block_reader& blocks) noexcept : blocks_(blocks) {}

  /// The next line, valid until the next call; false at the end of the file.
  bool next(record_line& line) noexcept {
    if (tail_follows_) token_reader(blocks_).next_line();
    tail_follows_ = false;
    blocks_.fill(limits::longest_record);
    const std::uint64_t limit = std::min(blocks_.available(), limits::longest_record);
    if (limit == 0) return false;
    const char* const text = blocks_.begin();
    const std::uint64_t size = length_up_to('\n', text, limit);
    tail_follows_ = size == limit;
    blocks_.consume(tail_follows_ ? size : size + 1);
    line.text = {text, static_cast<std::size_t>(length_up_to('\0', text, size))};
    line.is_cut = size == limits::longest_record && line.text.size() == size;
    return true;
  }

  std::uint64_t position() const noexcept { return blocks_.position(); }

 private:
  static std::uint64_t length_up_to(char c, const char* text, std::uint64_t limit) noexcept {
    const void* const end = std::memchr(text, c, static_cast<std::size_t>(limit));
    return end == nullptr ? limit : static_cast<std::uint64_t>(static_cast<const char*>(end) - text);
  }

  block_reader& blocks_;
  bool tail_follows_ = false;
};

}  // namespace qel::gridwork::detail::io

#endif
