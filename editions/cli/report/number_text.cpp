#include "number_text.h"

#include <algorithm>

#include "file_bytes.h"

namespace report {

namespace {

constexpr std::string_view decimal_digits = "0123456789";
constexpr std::string_view hexadecimal_digits = "0123456789abcdefABCDEF";

std::size_t count_front(std::string_view text, std::string_view characters) {
  return std::min(text.find_first_not_of(characters), text.size());
}

std::size_t sign_length(std::string_view text) { return !text.empty() && (text[0] == '+' || text[0] == '-') ? 1 : 0; }

// `word` is in lower case.
bool begins_with(std::string_view text, std::string_view word) {
  const auto same = [](char lower, char c) { return lower_case(c) == lower; };
  return text.size() >= word.size() && std::equal(word.begin(), word.end(), text.begin(), same);
}

std::size_t word_length(std::string_view text) {
  for (const std::string_view word : {"infinity", "inf", "nan"}) {
    if (begins_with(text, word)) return word.size();
  }
  return 0;
}

std::size_t exponent_length(std::string_view text, std::string_view letters) {
  if (text.empty() || letters.find(text[0]) == std::string_view::npos) return 0;
  const std::size_t sign = sign_length(text.substr(1));
  return 1 + sign + count_front(text.substr(1 + sign), decimal_digits);
}

// Digits with a point among them, and an exponent; 0 when there is no digit.
std::size_t digits_length(std::string_view text, std::string_view digits, std::string_view exponent_letters) {
  std::size_t length = count_front(text, digits);
  std::size_t count = length;
  if (length < text.size() && text[length] == '.') {
    const std::size_t behind = count_front(text.substr(length + 1), digits);
    count += behind;
    length += 1 + behind;
  }
  return count == 0 ? 0 : length + exponent_length(text.substr(length), exponent_letters);
}

std::size_t unsigned_length(std::string_view text) {
  if (const std::size_t word = word_length(text)) return word;
  if (begins_with(text, "0x")) {
    const std::size_t behind = digits_length(text.substr(2), hexadecimal_digits, "pP");
    return behind == 0 ? 1 : 2 + behind;
  }
  return digits_length(text, decimal_digits, "eE");
}

}  // namespace

std::size_t number_length(std::string_view text) {
  const std::size_t sign = sign_length(text);
  const std::size_t behind = unsigned_length(text.substr(sign));
  return behind == 0 ? 0 : sign + behind;
}

}  // namespace report
