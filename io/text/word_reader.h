// Words of a text file, whatever its lines.
#ifndef QEL_GRIDWORK_IO_TEXT_WORD_READER_H
#define QEL_GRIDWORK_IO_TEXT_WORD_READER_H

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "core/limits.h"
#include "io/bytes/block_reader.h"
#include "io/text/number_scan.h"
#include "io/text/plain_integers.h"
#include "io/text/text.h"

namespace qel::gridwork::detail::io {

/// Cuts a stream into words and numbers, between blanks and control characters.
///
/// The stream may hold other things than words: what lies behind the last word that was read has not been consumed.
class word_reader {
 public:
  /// A word that starts with `comment` is passed over, with the rest of its line, and one that starts with `quote` goes on
  /// to the next `quote`. Formats without these give NUL, which starts no word.
  word_reader(block_reader& blocks, char comment, char quote) noexcept
      : blocks_(blocks), comment_(comment), quote_(quote) {}

  /// Goes to the start of the next word; false when there is none.
  bool at_word() noexcept {
    for (;;) {
      skip_space();
      if (blocks_.available() < limits::longest_word && !fetch_word()) return false;
      if (*text() != comment_) return true;
      blocks_.pass_line();
    }
  }

  /// The start of the word that at_word() went to.
  const char* text() const noexcept { return blocks_.begin(); }

  /// Reads a word, or a string in quotes as it stands; empty when there is none, or one that is too long or lacks its last
  /// quote. It stays valid until the next call.
  std::string_view read_word() noexcept {
    if (!at_word()) return {};
    const char* const begin = text();
    const char* const last = begin + std::min(blocks_.available(), limits::longest_word);
    const bool quoted = *begin == quote_;
    const char* end = std::find_if(begin + 1, last, [&](char c) { return quoted ? c == quote_ : ends_word(c); });
    if (quoted && end == last) return {};
    if (quoted) ++end;
    if (end == last && blocks_.available() >= limits::longest_word) return {};  // else the file ends here
    pass(end);
    return {begin, static_cast<std::size_t>(end - begin)};
  }

  /// Reads a number as scanf does "%lg", also one with a D before its exponent.
  bool read_double(double& value) noexcept {
    if (!at_word()) return false;
    const char* const end = scan_number(text(), value);
    if (end == nullptr || !is_end(end)) return read_double_with_d(value);
    pass(end);
    return true;
  }

  /// Reads an integer; one beyond the bounds comes as a number there.
  bool read_integer(std::int64_t& value) noexcept {
    if (!at_word()) return false;
    const char* const first = skip_sign(text());
    std::uint64_t digits = 0;
    const char* const end = append_digits(first, digits);
    if (end == first || !is_end(end)) return false;
    if (end - first > most_digits) digits = long_number(first, end);
    value = *text() == '-' ? -static_cast<std::int64_t>(digits) : static_cast<std::int64_t>(digits);
    pass(end);
    return true;
  }

  /// Reads so many numbers, up to the first that is none; returns how many.
  std::uint64_t read_numbers(double* values, std::uint64_t count) noexcept {
    std::uint64_t found = 0;
    while (found != count && read_double(values[found])) ++found;
    return found;
  }
  std::uint64_t read_numbers(std::int64_t* values, std::uint64_t count) noexcept {
    for (std::uint64_t found = 0;; ++found) {
      found += read_plain_integers(values + found, count - found);
      if (found == count || !read_integer(values[found])) return found;
    }
  }

  /// Reads how many there are of something.
  bool read_count(std::uint64_t& count) noexcept {
    std::int64_t value = 0;
    const bool is_count = read_integer(value) && value >= 0;
    count = static_cast<std::uint64_t>(value);
    return is_count;
  }

  std::uint64_t position() const noexcept { return blocks_.position(); }

 private:
  static constexpr std::ptrdiff_t most_digits = 18;
  static constexpr std::uint64_t beyond = 1000000000000000000;

  static bool is_space(char c) noexcept { return static_cast<unsigned char>(c) <= ' '; }
  bool ends_word(char c) const noexcept { return is_space(c) || c == comment_; }

  /// True when a word ends at `p`, so far from its start that it was at hand.
  bool is_end(const char* p) const noexcept {
    return ends_word(*p) && static_cast<std::uint64_t>(p - text()) < limits::longest_word;
  }

  void pass(const char* p) noexcept { blocks_.consume(static_cast<std::uint64_t>(p - text())); }

  void skip_space() noexcept {
    const char* p = text();
    while (p != blocks_.end() && is_space(*p)) ++p;
    pass(p);
  }

  /// Goes to the next word where a block ends.
  bool fetch_word() noexcept {
    while (blocks_.fill(1)) {
      skip_space();
      if (blocks_.available() == 0) continue;
      blocks_.fill(limits::longest_word);
      return true;
    }
    return false;
  }

  /// Reads integers of up to eight digits with nothing but blanks between them, up to `count`, where they lie in the block.
  /// Returns their number; what stopped it is for read_integer() to decide.
  std::uint64_t read_plain_integers(std::int64_t* values, std::uint64_t count) noexcept {
    const char* done = text();
    std::uint64_t found = 0, before = count;
    while (found != before && found != count && blocks_.end() - done >= 64) {
      before = found;
      done = scan_plain_integers(done, values, count, found);
    }
    pass(done);
    return found;
  }

  bool read_double_with_d(double& value) noexcept {
    char copy[limits::longest_word + 1];
    const std::uint64_t most = std::min(blocks_.available(), limits::longest_word);
    const char* const last = text() + most;
    const char* const end = std::find_if(text(), last, [this](char c) { return ends_word(c); });
    if (end == last && most == limits::longest_word) return false;
    char* const copy_end = std::replace_copy_if(
        text(), end, copy, [](char c) { return to_lower(c) == 'd'; }, 'e');
    *copy_end = '\0';
    if (scan_double(copy, value) != copy_end) return false;
    pass(end);
    return true;
  }

  static std::uint64_t long_number(const char* first, const char* end) noexcept {
    const char* const significant = std::find_if(first, end, [](char c) { return c != '0'; });
    std::uint64_t digits = 0;
    append_digits(significant, digits);
    return end - significant > most_digits ? beyond : digits;
  }

  block_reader& blocks_;
  char comment_, quote_;
};

}  // namespace qel::gridwork::detail::io

#endif
