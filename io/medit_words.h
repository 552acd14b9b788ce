// What MEDIT meshes and solutions have in common: their first words, keywords, and sections that are passed over.
#ifndef QEL_GRIDWORK_IO_MEDIT_WORDS_H
#define QEL_GRIDWORK_IO_MEDIT_WORDS_H

#include <cstdint>
#include <string_view>

#include "io/bytes/little_endian.h"
#include "io/text/word_reader.h"

namespace qel::gridwork::detail::io::medit {

class medit_words : public word_reader {
 public:
  explicit medit_words(block_reader& blocks) noexcept : word_reader(blocks, '#', '"') {}

  /// Reads "MeshVersionFormatted" and its number.
  bool read_version() noexcept {
    double version = 0;
    return same_word(read_word(), "MeshVersionFormatted") && read_double(version);
  }

  /// Reads the number behind "Dimension".
  bool read_dimension(unsigned& dim) noexcept {
    std::uint64_t value = 0;
    if (!read_count(value) || value < 1 || value > 3) return false;
    dim = static_cast<unsigned>(value);
    return true;
  }

  /// Reads the next word that starts with a letter, which is empty when it is too long. False where the words end.
  bool next_keyword(std::string_view& keyword) noexcept {
    std::uint64_t passed = 0;
    if (!pass_numbers(passed)) return false;
    keyword = read_word();
    return !same_word(keyword, "end");
  }

  /// Goes to the next word that starts with a letter, or is too long, and counts those before. False when there is none.
  bool pass_numbers(std::uint64_t& passed) noexcept {
    for (; at_word() && !is_letter(*text()); ++passed) {
      if (read_word().empty()) return true;
    }
    return at_word();
  }

 private:
};

/// True for a binary file: it starts with the number 1, in either order of bytes.
inline bool is_binary(block_reader& blocks) noexcept {
  if (!blocks.fill(4)) return false;
  const std::uint32_t first = load_uint32(blocks.begin());
  return first == 1 || first == std::uint32_t{1} << 24;
}

}  // namespace qel::gridwork::detail::io::medit

#endif
