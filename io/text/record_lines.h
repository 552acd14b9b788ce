// Lines of formats whose records have few fields.
#ifndef QEL_GRIDWORK_IO_TEXT_RECORD_LINES_H
#define QEL_GRIDWORK_IO_TEXT_RECORD_LINES_H

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "core/limits.h"
#include "io/bytes/block_reader.h"

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
    pass_last();
    blocks_.fill(limits::longest_record);
    const std::uint64_t limit = std::min(blocks_.available(), limits::longest_record);
    if (limit == 0) return false;
    const char* const text = blocks_.begin();
    const std::uint64_t size = length_up_to('\n', text, limit);
    tail_follows_ = size == limit;
    last_ = tail_follows_ ? size : size + 1;
    line.text = {text, static_cast<std::size_t>(length_up_to('\0', text, size))};
    line.is_cut = size == limits::longest_record && line.text.size() == size;
    return true;
  }

  /// Makes the last line the next one again.
  void give_back() noexcept {
    last_ = 0;
    tail_follows_ = false;
  }

  /// Has lines read where they lie: read(text, end) returns the start of the first line that it left. At `end` are a NUL
  /// and scan_margin bytes more.
  template <class Read>
  void read_in_place(Read read) noexcept {
    pass_last();
    blocks_.fill(limits::longest_record);
    blocks_.consume(static_cast<std::uint64_t>(read(blocks_.begin(), blocks_.end()) - blocks_.begin()));
  }

  std::uint64_t position() const noexcept { return blocks_.position() + last_; }

 private:
  static std::uint64_t length_up_to(char c, const char* text, std::uint64_t limit) noexcept {
    const void* const end = std::memchr(text, c, static_cast<std::size_t>(limit));
    return end == nullptr ? limit : static_cast<std::uint64_t>(static_cast<const char*>(end) - text);
  }

  void pass_last() noexcept {
    blocks_.consume(last_);
    if (tail_follows_) blocks_.pass_line();
    give_back();
  }

  block_reader& blocks_;
  std::uint64_t last_ = 0;  // bytes of the last line that are at hand
  bool tail_follows_ = false;
};

}  // namespace qel::gridwork::detail::io

#endif
