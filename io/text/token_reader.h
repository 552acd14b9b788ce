// Tokens of a text file, line by line.
#ifndef QEL_GRIDWORK_IO_TEXT_TOKEN_READER_H
#define QEL_GRIDWORK_IO_TEXT_TOKEN_READER_H

#include <cstdint>

#include "core/limits.h"
#include "io/bytes/block_reader.h"
#include "io/text/text.h"

namespace qel::gridwork::detail::io {

/// Cuts a stream into lines and their tokens, of which it needs only one at a time in memory.
class token_reader {
 public:
  explicit token_reader(block_reader& blocks) noexcept : blocks_(blocks) {}

  /// Skips blanks. True when a token of this line follows, which then starts at text().
  bool at_token() noexcept {
    const char* p = skip_blanks(text());
    if (static_cast<std::uint64_t>(blocks_.end() - p) < limits::obj_token) return fetch_token();
    pass(p);
    return *p != '\n';
  }

  const char* text() const noexcept { return blocks_.begin(); }

  /// True where a token ends.
  bool is_end(const char* p) const noexcept { return io::ends_token(*p) || p == blocks_.end(); }

  /// True when a token ends at `p`, so far from its start that it was at hand.
  bool ends_token(const char* p) const noexcept {
    return is_end(p) && static_cast<std::uint64_t>(p - text()) < limits::obj_token;
  }

  /// Goes on behind `p`.
  void pass(const char* p) noexcept { blocks_.consume(static_cast<std::uint64_t>(p - text())); }

  /// Has lines read where they lie; read(start, end) returns the start of the first line that it left.
  template <class Read>
  void pass_lines(Read read) noexcept {
    pass(read(text(), blocks_.end()));
  }

  std::uint64_t position() const noexcept { return blocks_.position(); }

  /// Goes to the next line; false when there is none.
  bool next_line() noexcept { return blocks_.pass_line(); }

 private:
  /// As at_token(), where a block ends.
  bool fetch_token() noexcept {
    while (blocks_.fill(1)) {
      pass(skip_blanks(text()));
      if (blocks_.available() == 0) continue;
      blocks_.fill(limits::obj_token);
      return *text() != '\n';
    }
    return false;
  }

  block_reader& blocks_;
};

}  // namespace qel::gridwork::detail::io

#endif
