// Files that are looked at beside being read.
#ifndef QEL_GRIDWORK_CLI_REPORT_FILE_BYTES_H
#define QEL_GRIDWORK_CLI_REPORT_FILE_BYTES_H

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace report {

struct close_file {
  void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using file_handle = std::unique_ptr<std::FILE, close_file>;

/// What the bytes of a file begin with, and how many they are; it is never in memory as a whole. One that cannot be
/// opened has none.
class file_bytes {
 public:
  explicit file_bytes(const char* path);

  const char* path() const { return path_.c_str(); }
  std::uint64_t size() const { return size_; }
  std::string_view head() const { return head_; }  ///< the first 512 bytes at most

 private:
  std::string path_;
  std::string head_;
  std::uint64_t size_ = 0;
};

/// The lines of a text file. Longer ones than `longest` come in parts.
class line_reader {
 public:
  static constexpr std::size_t longest = 1U << 20U;

  explicit line_reader(const file_bytes& file);

  /// False behind the last line.
  bool next();

  std::string_view line() const { return line_; }
  std::uint64_t number() const { return number_; }  ///< from 1 on
  bool at_end();

 private:
  bool fill();

  file_handle stream_;
  std::vector<char> block_;
  std::string_view rest_, line_;
  std::uint64_t number_ = 0;
};

inline constexpr std::string_view blanks = " \t\r\v\f";

/// What is left of a text behind the blanks that it begins with.
std::string_view without_blanks(std::string_view text);

constexpr char lower_case(char c) { return static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c); }
std::string lower_case(std::string_view text);

inline bool holds(std::string_view text, std::string_view word) { return text.find(word) != std::string_view::npos; }

/// True when a text holds a word, which is in lower case, in any case.
bool holds_in_any_case(std::string_view text, std::string_view word);

}  // namespace report

#endif
