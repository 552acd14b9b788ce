// A file that a test writes with the library, to be held against the text that it should have.
#ifndef QEL_TESTS_WRITTEN_FILE_H
#define QEL_TESTS_WRITTEN_FILE_H

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <type_traits>

/// What stands for the content of a file that is not there.
inline const std::string absent = "(no file)";

/// A number as printf takes it: every integer for "%d".
template <class T>
auto printable(T value) {
  if constexpr (std::is_integral_v<T>) return static_cast<int>(value);
  if constexpr (!std::is_integral_v<T>) return value;
}

/// What printf prints.
template <class... Values>
std::string print(const char* format, Values... values) {
  char text[2000];
  std::snprintf(text, sizeof text, format, printable(values)...);
  return text;
}

class written_file {
 public:
  ~written_file() { std::filesystem::remove(path_); }

  const char* path() const { return path_.c_str(); }

  std::string content() const {
    std::ifstream file(path_, std::ios::binary);
    return file ? std::string(std::istreambuf_iterator<char>(file), {}) : absent;
  }

  /// A fresh file: some file systems flush one that is truncated and written again.
  const char* hold(const std::string& bytes) const {
    std::filesystem::remove(path_);
    std::ofstream(path_, std::ios::binary) << bytes;
    return path();
  }

  /// Calls write(), which should return `code` and leave this content.
  template <class Write>
  void expect(const std::string& expected, int code, Write write) const {
    std::filesystem::remove(path_);
    EXPECT_EQ(write(), code);
    const std::string ours = content();
    if (ours == expected) return;
    const auto at = static_cast<std::size_t>(
        std::mismatch(ours.begin(), ours.end(), expected.begin(), expected.end()).first - ours.begin());
    const std::size_t from = at < 60 ? 0 : at - 60;
    ADD_FAILURE() << "at " << at << ": \n"
                  << ours.substr(from, 120) << "\n--- expected\n"
                  << expected.substr(std::min(from, expected.size()), 120);
  }

 private:
  std::string path_ = (std::filesystem::temp_directory_path() / ("gridwork_" + std::to_string(::getpid()))).string();
};

#endif
