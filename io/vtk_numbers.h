// Arrays of numbers in VTK files, as text or as big-endian bytes, of any of the types that files name.
#ifndef QEL_GRIDWORK_IO_VTK_NUMBERS_H
#define QEL_GRIDWORK_IO_VTK_NUMBERS_H

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <type_traits>

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

  /// Reads numbers, and calls take(double) for each up to the first that does not return 0. Returns what that was, else
  /// 0 or `malformed`.
  template <class Take>
  int read_reals(const number_type& type, std::uint64_t count, Take take) noexcept {
    if (type.bytes == 0) return malformed;
    if (binary_) {
      return visit(type, [&](auto zero) {
        const auto convert = [&](auto value) { return take(static_cast<double>(value)); };
        return read_big_endian<decltype(zero)>(blocks_, count, malformed, convert);
      });
    }
    for (; count != 0; --count) {
      double value = 0;
      if (!words_.read_double(value)) return malformed;
      const int result = take(value);
      if (result != 0) return result;
    }
    return 0;
  }

  /// The same for integers: take(std::int64_t).
  template <class Take>
  int read_integers(const number_type& type, std::uint64_t count, Take take) noexcept {
    if (type.bytes == 0 || type.form == number_form::f32 || type.form == number_form::f64) return malformed;
    if (binary_) {
      return visit(type, [&](auto zero) {
        const auto convert = [&](auto value) { return take(static_cast<std::int64_t>(value)); };
        return read_big_endian<decltype(zero)>(blocks_, count, malformed, convert);
      });
    }
    int result = 0;
    for (;; --count) {
      count -= words_.read_plain_integers(count, result, take);
      if (result != 0 || count == 0) return result;
      std::int64_t value = 0;
      if (!words_.read_integer(value)) return malformed;
      result = take(value);
    }
  }

  /// Passes over values, strings too.
  int pass(const number_type& type, std::uint64_t count) noexcept {
    if (type.form == number_form::unknown) return malformed;
    if (binary_) return type.form == number_form::string ? kind_not_read : pass_bytes(type, count);
    return type.form == number_form::string ? pass_lines(count) : pass_words(count);
  }

 private:
  template <class Action>
  static int visit(const number_type& type, Action action) noexcept {
    switch (type.form) {
      case number_form::i8:
        return action(std::int8_t{});
      case number_form::u8:
        return action(std::uint8_t{});
      case number_form::i16:
        return action(std::int16_t{});
      case number_form::u16:
        return action(std::uint16_t{});
      case number_form::i32:
        return action(std::int32_t{});
      case number_form::u32:
        return action(std::uint32_t{});
      case number_form::i64:
        return action(std::int64_t{});
      case number_form::u64:
        return action(std::uint64_t{});
      case number_form::f32:
        return action(float{});
      case number_form::f64:
        return action(double{});
      default:
        return malformed;
    }
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
