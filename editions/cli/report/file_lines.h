// The lines of a text file that lies in memory.
#ifndef QEL_GRIDWORK_CLI_REPORT_FILE_LINES_H
#define QEL_GRIDWORK_CLI_REPORT_FILE_LINES_H

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <string>
#include <string_view>

namespace report {

class line_reader {
 public:
  explicit line_reader(std::string_view bytes) : rest_(bytes) {}

  /// False behind the last line.
  bool next() {
    if (rest_.empty()) return false;
    const std::size_t end = rest_.find('\n');
    line_ = rest_.substr(0, end);
    rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
    ++number_;
    return true;
  }

  std::string_view line() const { return line_; }
  std::uint64_t number() const { return number_; }  ///< from 1 on
  bool at_end() const { return rest_.empty(); }

 private:
  std::string_view rest_, line_;
  std::uint64_t number_ = 0;
};

inline std::string lower_case(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return lower;
}

inline bool holds(std::string_view text, std::string_view word) { return text.find(word) != std::string_view::npos; }

}  // namespace report

#endif
