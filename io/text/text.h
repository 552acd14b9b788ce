// Characters and keywords of text formats, in the "C" locale.
#ifndef QEL_GRIDWORK_IO_TEXT_TEXT_H
#define QEL_GRIDWORK_IO_TEXT_TEXT_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace qel::gridwork::detail::io {

/// Bytes in memory behind the end of a text that is scanned several characters at a time.
constexpr std::uint64_t scan_margin = 15;

constexpr char to_lower(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

constexpr bool is_digit(char c) noexcept { return c >= '0' && c <= '9'; }

constexpr bool is_letter(char c) noexcept { return to_lower(c) >= 'a' && to_lower(c) <= 'z'; }

/// White space but for the newline, which ends a line.
constexpr bool is_blank(char c) noexcept { return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; }

constexpr bool ends_token(char c) noexcept { return is_blank(c) || c == '\n'; }

constexpr bool ends_line(char c) noexcept { return c == '\0' || c == '\n'; }

constexpr const char* skip_blanks(const char* text) noexcept {
  while (is_blank(*text)) ++text;
  return text;
}

/// The position behind `keyword`, given in lower case, if the text starts with it in any case; else null.
constexpr const char* match_keyword(const char* text, const char* keyword) noexcept {
  for (; *keyword != '\0'; ++keyword, ++text) {
    if (to_lower(*text) != *keyword) return nullptr;
  }
  return text;
}

/// True for words that are the same but for the case of their letters.
constexpr bool same_word(std::string_view a, std::string_view b) noexcept {
  if (a.size() != b.size()) return false;
  for (std::size_t k = 0; k < a.size(); ++k) {
    if (to_lower(a[k]) != to_lower(b[k])) return false;
  }
  return true;
}

/// As match_keyword(), but faster where the keyword usually is in lower case, for a text with scan_margin bytes in
/// memory behind its end.
template <std::size_t Size>
const char* match_word(const char* text, const char (&keyword)[Size]) noexcept {
  static_assert(Size <= scan_margin);
  return std::memcmp(text, keyword, Size - 1) == 0 ? text + Size - 1 : match_keyword(text, keyword);
}

/// True when the line holds `keyword`, given in lower case, in any case.
constexpr bool contains_keyword(const char* line, const char* keyword) noexcept {
  for (line = skip_blanks(line); !ends_line(*line); ++line) {
    if (match_keyword(line, keyword) != nullptr) return true;
  }
  return false;
}

/// Copies `text` to `out` and returns the position behind it.
inline char* append(char* out, std::string_view text) noexcept { return out + text.copy(out, text.size()); }

}  // namespace qel::gridwork::detail::io

#endif
