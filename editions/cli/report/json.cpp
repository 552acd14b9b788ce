#include "json.h"

#include "utf8.h"

namespace report {

namespace {

// A byte that is no UTF-8 becomes half of a pair, as Python's "surrogateescape" has it, so that names of files come back.
std::string escaped(char c) {
  if (c == '"' || c == '\\') return {'\\', c};
  constexpr char digits[] = "0123456789abcdef";
  const auto byte = static_cast<unsigned char>(c);
  return std::string(byte < 0x80 ? "\\u00" : "\\udc") + digits[byte >> 4U] + digits[byte & 15U];
}

bool stands_as_it_is(char c) { return static_cast<unsigned char>(c) >= 0x20 && c != '"' && c != '\\'; }

}  // namespace

std::string json::quoted(std::string_view text) {
  std::string quoted = "\"";
  while (!text.empty()) {
    const std::size_t length = utf8_length(text);
    const bool plain = length > 1 || (length == 1 && stands_as_it_is(text[0]));
    quoted += plain ? std::string(text.substr(0, length)) : escaped(text[0]);
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return quoted + "\"";
}

}  // namespace report
