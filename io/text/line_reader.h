// Lines of a text file.
#ifndef QEL_GRIDWORK_IO_TEXT_LINE_READER_H
#define QEL_GRIDWORK_IO_TEXT_LINE_READER_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "io/bytes/block_reader.h"
#include "io/text/text.h"

namespace qel::gridwork::detail::io {

/// Cuts a stream into lines as fgets with a buffer of 256 bytes does: a longer line comes in pieces of 255.
///
/// The text of a line ends with a newline or, for a piece, with a NUL; a NUL inside a line ends it for all that
/// follows.
class line_reader {
 public:
  explicit line_reader(block_reader& blocks) noexcept : blocks_(blocks) {}

  /// Passes over the next line if it is what match(line) accepts and nothing but blanks. `match` returns the position
  /// behind what it recognised, or null. This spares usual lines the search for their end.
  template <class Match>
  bool skip_if(Match match) {
    blocks_.fill(longest);
    const char* line = blocks_.begin();
    const char* end = match(line);
    if (end == nullptr) return false;
    end = skip_blanks(end);
    if (*end != '\n' || end - line >= static_cast<std::ptrdiff_t>(longest)) return false;
    blocks_.consume(static_cast<std::uint64_t>(end - line) + 1);
    return true;
  }

  /// The next line, or null at the end of the file. It stays valid until the next call.
  const char* next() noexcept {
    blocks_.fill(longest);
    const std::uint64_t limit = std::min(blocks_.available(), longest);
    if (limit == 0) return nullptr;
    const char* line = blocks_.begin();
    const void* newline = std::memchr(line, '\n', static_cast<std::size_t>(limit));
    if (newline != nullptr) {
      blocks_.consume(static_cast<std::uint64_t>(static_cast<const char*>(newline) - line) + 1);
      return line;
    }
    std::copy_n(line, limit, piece_);
    piece_[limit] = '\0';
    blocks_.consume(limit);
    return piece_;
  }

  /// As next(), but only the first piece of a longer line: its tail is dropped.
  const char* next_without_tail() noexcept {
    const char* const line = next();
    if (line == piece_) blocks_.pass_line();
    return line;
  }

 private:
  static constexpr std::uint64_t longest = 255;

  block_reader& blocks_;
  char piece_[longest + 1 + scan_margin] = {};
};

}  // namespace qel::gridwork::detail::io

#endif
