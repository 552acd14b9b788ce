#include "word_look.h"

#include <algorithm>
#include <charconv>

#include "number_text.h"

namespace report {

namespace {

bool is_blank(char c) { return static_cast<unsigned char>(c) <= ' '; }

// Also with a D before its exponent.
bool is_real(std::string word) {
  std::replace(word.begin(), word.end(), 'd', 'e');
  return number_length(word) == word.size();
}

// One beyond the bounds comes as a number there.
bool scan_integer(std::string_view word, std::int64_t& value) {
  if (!word.empty() && word.front() == '+') word.remove_prefix(1);
  const bool is_negative = !word.empty() && word.front() == '-';
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
  if (error == std::errc::result_out_of_range) value = is_negative ? INT64_MIN : INT64_MAX;
  return end == word.data() + word.size();
}

}  // namespace

const std::string& word_look::next() {
  if (is_given_back_) {
    is_given_back_ = false;
    return word_;
  }
  const auto ends_word = [this](char c) { return is_blank(c) || c == comment_; };
  for (;;) {
    rest_.remove_prefix(
        static_cast<std::size_t>(std::find_if_not(rest_.begin(), rest_.end(), is_blank) - rest_.begin()));
    if (!rest_.empty() && rest_[0] != comment_) break;
    word_.clear();
    if (!lines_.next()) return word_;
    rest_ = lines_.line();
    is_lost_ = is_lost_ || rest_.size() >= line_reader::longest;
  }
  const auto end = std::find_if(rest_.begin(), rest_.end(), ends_word);
  in_file_.assign(rest_.begin(), end);
  word_ = lower_case(in_file_);
  rest_.remove_prefix(word_.size());
  return word_;
}

void word_look::skip_line() {
  lines_.next();
  rest_ = {};
}

void word_look::skip_to_empty_line() {
  while (lines_.next() && !std::all_of(lines_.line().begin(), lines_.line().end(), is_blank)) continue;
  rest_ = {};
}

void word_look::enter_section() {
  section_ = in_file_;
  section_line_ = lines_.number();
}

bool word_look::fail(const std::string& words) {
  if (fault_.empty()) fault_ = in_line(lines_.number()) + ": " + quoted(in_file_) + " " + words;
  return false;
}

bool word_look::fail_section(const std::string& words) {
  if (fault_.empty()) fault_ = in_line(section_line_) + ": " + quoted(section_) + " " + words;
  return false;
}

bool word_look::expect_word() {
  if (!next().empty()) return true;
  if (fault_.empty()) {
    fault_ = "the file is cut short: it ends in " + in_line(lines_.number()) + ", within " + quoted(section_) + " of " +
             in_line(section_line_);
  }
  return false;
}

bool word_look::expect_integer(std::int64_t& value) {
  return expect_word() && (scan_integer(word_, value) || fail("stands where a whole number is expected"));
}

bool word_look::expect_count(std::uint64_t& count) {
  std::int64_t value = 0;
  if (!expect_integer(value)) return false;
  count = static_cast<std::uint64_t>(value);
  return value >= 0 || fail("is no count");
}

bool word_look::expect_integers(std::uint64_t count) {
  std::int64_t value = 0;
  for (; count != 0; --count) {
    if (!expect_integer(value)) return false;
  }
  return true;
}

bool word_look::expect_reals(std::uint64_t count) {
  for (; count != 0; --count) {
    if (!expect_word() || !(is_real(word_) || fail("stands where a number is expected"))) return false;
  }
  return true;
}

bool word_look::expect_words(std::uint64_t count) {
  for (; count != 0; --count) {
    if (!expect_word()) return false;
  }
  return true;
}

bool word_look::expect_nodes(std::uint64_t count, std::int64_t first, std::uint64_t nodes) {
  for (; count != 0; --count) {
    std::int64_t node = 0;
    if (!expect_integer(node)) return false;
    const bool is_there = node >= first && static_cast<std::uint64_t>(node - first) < nodes;
    if (nodes != any_nodes && !is_there) return fail("is no node; the file has " + std::to_string(nodes));
  }
  return true;
}

}  // namespace report
