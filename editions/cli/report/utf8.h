// Characters of UTF-8 in text of any origin, as names of files are.
#ifndef QEL_GRIDWORK_CLI_REPORT_UTF8_H
#define QEL_GRIDWORK_CLI_REPORT_UTF8_H

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace report {

namespace utf8 {

// Characters of one length: their first bytes, and the second bytes that the outermost of these allow.
struct sequence {
  std::size_t length;
  unsigned char first, last;                 // of the first byte
  unsigned char lowest_second, last_second;  // behind `first`, behind `last`
};

inline constexpr sequence sequences[] = {{1, 0x00, 0x7F, 0x80, 0xBF}, {2, 0xC2, 0xDF, 0x80, 0xBF},
                                         {3, 0xE0, 0xEC, 0xA0, 0xBF}, {3, 0xED, 0xED, 0x80, 0x9F},
                                         {3, 0xEE, 0xEF, 0x80, 0xBF}, {4, 0xF0, 0xF4, 0x90, 0x8F}};

inline unsigned char byte_at(std::string_view text, std::size_t at) { return static_cast<unsigned char>(text[at]); }

inline bool fits(std::string_view text, const sequence& s) {
  if (text.size() < s.length || byte_at(text, 0) < s.first || byte_at(text, 0) > s.last) return false;
  if (s.length == 1) return true;
  const unsigned char second = byte_at(text, 1);
  if (byte_at(text, 0) == s.first && second < s.lowest_second) return false;
  if (byte_at(text, 0) == s.last && second > s.last_second) return false;
  return std::all_of(text.begin() + 1, text.begin() + static_cast<std::ptrdiff_t>(s.length),
                     [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; });
}

}  // namespace utf8

/// How many bytes the character has with which a text begins; 0 when that is no UTF-8.
inline std::size_t utf8_length(std::string_view text) {
  for (const utf8::sequence& s : utf8::sequences) {
    if (utf8::fits(text, s)) return s.length;
  }
  return 0;
}

}  // namespace report

#endif
