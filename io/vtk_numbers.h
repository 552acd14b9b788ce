// Arrays of numbers in VTK files, as text or as big-endian bytes, of any of the types that files name.
#ifndef QEL_GRIDWORK_IO_VTK_NUMBERS_H
#define QEL_GRIDWORK_IO_VTK_NUMBERS_H

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <type_traits>

#include "core/check.h"
#include "core/limits.h"
#include "io/bytes/big_endian.h"
#include "io/input_result.h"
#include "io/text/word_reader.h"

namespace qel::gridwork::detail::io::vtk {

enum class number_form { unknown, i8, u8, i16, u16, i32, u32, i64, u64, f32, f64, bit, string };

struct number_type {
  std::string_view name;
  number_form form;
  unsigned bytes;
};

inline constexpr number_type number_types[] = {
    {"double", number_form::f64, 8},
    {"float", number_form::f32, 4},
    {"int", number_form::i32, 4},
    {"vtktypeint64", number_form::i64, 8},
    {"vtktypeuint64", number_form::u64, 8},
    {"vtkidtype", number_form::i32, 4},
    {"unsigned_int", number_form::u32, 4},
    {"long", number_form::i64, 8},
    {"unsigned_long", number_form::u64, 8},
    {"short", number_form::i16, 2},
    {"unsigned_short", number_form::u16, 2},
    {"char", number_form::i8, 1},
    {"signed_char", number_form::i8, 1},
    {"unsigned_char", number_form::u8, 1},
    {"bit", number_form::bit, 0},
    {"string", number_form::string, 0},
    {"utf8_string", number_form::string, 0},
    {"variant", number_form::string, 0},
};
inline constexpr number_type unknown_type = {"", number_form::unknown, 0};
inline constexpr number_type int_type = {"int", number_form::i32, 4};

/// The node that a file gives by a number; `none` when no node has it.
inline unsigned node_of(std::int64_t number) noexcept {
  return static_cast<unsigned>(std::min<std::uint64_t>(static_cast<std::uint64_t>(number), none));
}

/// More values than any file has, of which the bytes can still be counted.
inline constexpr std::uint64_t most_numbers = std::uint64_t{1} << 60;

class number_reader {
 public:
  number_reader(word_reader& words, block_reader& blocks) noexcept : words_(words), blocks_(blocks) {}

  bool is_binary() const noexcept { return binary_; }
  void set_binary(bool binary) noexcept { binary_ = binary; }

  /// Goes to where the numbers start: in a binary file, behind the end of the line.
  void start() noexcept {
    if (binary_) blocks_.pass_line();
  }

  /// Reads the name of a type, and goes to where its numbers start.
  number_type read_type() noexcept {
    const std::string_view name = words_.read_word();
    const auto* const found = std::find_if(std::begin(number_types), std::end(number_types),
                                           [&](const auto& t) { return same_word(t.name, name); });
    const number_type type = found != std::end(number_types) ? *found : unknown_type;
    start();
    return type;
  }

  /// Reads columns of `rows` numbers, and calls take(const double* numbers, columns) for several at a time up to the first
  /// call that does not return 0. Returns what that was, else 0 or `malformed`.
  template <class Take>
  int read_reals(const number_type& type, std::uint64_t rows, std::uint64_t columns, Take take) noexcept {
    return read<double>(type, rows, columns, take);
  }

  /// The same for integers, in one row: take(const std::int64_t* numbers, count).
  template <class Take>
  int read_integers(const number_type& type, std::uint64_t count, Take take) noexcept {
    if (type.form == number_form::f32 || type.form == number_form::f64) return malformed;
    return read<std::int64_t>(type, 1, count, take);
  }

  /// The same for numbers of nodes in columns: take(const unsigned* nodes, columns). `none` is for a number that no node
  /// has.
  template <class Take>
  int read_nodes(const number_type& type, std::uint64_t rows, std::uint64_t columns, Take take) noexcept {
    if (type.form == number_form::f32 || type.form == number_form::f64) return malformed;
    return read<unsigned>(type, rows, columns, take);
  }

  /// Passes over values, strings too.
  int pass(const number_type& type, std::uint64_t count) noexcept {
    if (type.form == number_form::unknown) return malformed;
    if (binary_) return type.form == number_form::string ? kind_not_read : pass_bytes(type, count);
    return type.form == number_form::string ? pass_lines(count) : pass_words(count);
  }

 private:
  template <class Number, class Take>
  int read(const number_type& type, std::uint64_t rows, std::uint64_t columns, Take take) noexcept {
    Number numbers[limits::numbers_at_once];
    if (type.bytes == 0) return malformed;
    while (columns != 0) {
      const std::uint64_t most = rows * std::min(columns, limits::numbers_at_once / rows);
      const std::uint64_t found = (binary_ ? load(type, rows, numbers, most) : scan(numbers, most)) / rows;
      const int result = found != 0 ? take(numbers, found) : malformed;
      if (result != 0) return result;
      columns -= found;
    }
    return 0;
  }

  template <class Number>
  std::uint64_t scan(Number* numbers, std::uint64_t most) noexcept {
    return words_.read_numbers(numbers, most);
  }
  std::uint64_t scan(unsigned* nodes, std::uint64_t most) noexcept {
    std::int64_t numbers[limits::numbers_at_once];
    const std::uint64_t found = words_.read_numbers(numbers, most);
    std::transform(numbers, numbers + found, nodes, node_of);
    return found;
  }

  /// Loads numbers of a binary file, `most` or as many columns as the block has; 0 when the file ends.
  template <class Number>
  std::uint64_t load(const number_type& type, std::uint64_t rows, Number* numbers, std::uint64_t most) noexcept {
    if (!blocks_.fill(rows * type.bytes)) return 0;
    const std::uint64_t count = std::min(most, blocks_.available() / (rows * type.bytes) * rows);
    load_as(type.form, count, numbers);
    blocks_.consume(count * type.bytes);
    return count;
  }

  template <class Number>
  void load_as(number_form form, std::uint64_t count, Number* numbers) const noexcept {
    if constexpr (std::is_same_v<Number, double>) {
      if (form == number_form::f32) return load_each<float>(count, numbers);
      if (form == number_form::f64) return load_each<double>(count, numbers);
    }
    switch (form) {
      case number_form::i8:
        return load_each<std::int8_t>(count, numbers);
      case number_form::u8:
        return load_each<std::uint8_t>(count, numbers);
      case number_form::i16:
        return load_each<std::int16_t>(count, numbers);
      case number_form::u16:
        return load_each<std::uint16_t>(count, numbers);
      case number_form::i32:
        return load_each<std::int32_t>(count, numbers);
      case number_form::u32:
        return load_each<std::uint32_t>(count, numbers);
      case number_form::i64:
        return load_each<std::int64_t>(count, numbers);
      case number_form::u64:
        return load_each<std::uint64_t>(count, numbers);
      default:
        QEL_GRIDWORK_CHECK(false);
    }
  }

  template <class T, class Number>
  void load_each(std::uint64_t count, Number* numbers) const noexcept {
    const char* const bytes = blocks_.begin();
    for (std::uint64_t i = 0; i < count; ++i) numbers[i] = as<Number>(load_big_endian<T>(bytes + i * sizeof(T)));
  }

  template <class Number, class T>
  static Number as(T number) noexcept {
    if constexpr (std::is_same_v<Number, unsigned>) return node_of(static_cast<std::int64_t>(number));
    return static_cast<Number>(number);  // NOLINT(bugprone-signed-char-misuse): of a number, not a character
  }

  int pass_bytes(const number_type& type, std::uint64_t count) noexcept {
    std::uint64_t left = type.form == number_form::bit ? (count + 7) / 8 : count * type.bytes;
    while (left != 0) {
      if (!blocks_.fill(1)) return malformed;
      const std::uint64_t piece = std::min(left, blocks_.available());
      blocks_.consume(piece);
      left -= piece;
    }
    return 0;
  }

  int pass_words(std::uint64_t count) noexcept {
    for (; count != 0; --count) {
      if (words_.read_word().empty()) return malformed;
    }
    return 0;
  }

  /// Every string has a line of its own, behind that of the type.
  int pass_lines(std::uint64_t count) noexcept {
    if (!blocks_.pass_line()) return malformed;
    for (; count != 0; --count) {
      if (!blocks_.fill(1)) return malformed;
      blocks_.pass_line();
    }
    return 0;
  }

  word_reader& words_;
  block_reader& blocks_;
  bool binary_ = false;
};

}  // namespace qel::gridwork::detail::io::vtk

#endif
