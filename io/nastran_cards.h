// Cards of NASTRAN bulk data: lines in fixed or free fields, with the lines that go on with them.
#ifndef QEL_GRIDWORK_IO_NASTRAN_CARDS_H
#define QEL_GRIDWORK_IO_NASTRAN_CARDS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "core/limits.h"
#include "io/text/field.h"
#include "io/text/record_lines.h"
#include "io/text/text.h"
#include "qel/dense.h"

namespace qel::gridwork::detail::io::nastran {

/// The fields of a line, copied: tabs are blanks up to the next multiple of 8 columns.
///
/// A card that is read has at most most_fields; what stands behind them is dropped.
class card_fields {
 public:
  static constexpr unsigned most_fields = 24;

  [[nodiscard]] bool prepare() noexcept { return text_.resize(most_fields * longest_field); }

  void clear() noexcept { count_ = 0, used_ = 0, is_damaged_ = false; }

  /// The data field k of the card, from 0 on, without blanks around it; empty when there is none.
  std::string_view operator[](unsigned k) const noexcept {
    return k < count_ && sizes_[k] != 0 ? std::string_view(text_.begin() + starts_[k], sizes_[k]) : std::string_view();
  }

  /// True when a line in free fields is so long that fields are missing.
  bool is_damaged() const noexcept { return is_damaged_; }

  /// Appends the fields of a line behind the first one.
  void append(const record_line& line) noexcept {
    const std::size_t comma = line.text.find(',');
    if (comma == std::string_view::npos) return append_fixed(line.text);
    is_damaged_ = is_damaged_ || line.is_cut;
    append_free(line.text.substr(comma + 1), is_wide(line.text.substr(0, comma)) ? 4 : 8);
  }

  /// The first field of a line; with tabs, what stands before the first of them.
  static std::string_view first_field(std::string_view line) noexcept {
    const std::size_t comma = line.find(',');
    if (comma != std::string_view::npos) return trim(line.substr(0, comma));
    line = line.substr(0, field_width);
    return trim(line.substr(0, line.find('\t')));
  }

 private:
  static constexpr unsigned field_width = 8, data_end = 72;
  static constexpr std::uint64_t longest_field = limits::longest_record;

  static bool is_wide(std::string_view first) noexcept { return first.find('*') != std::string_view::npos; }

  void add(std::string_view field) noexcept {
    if (count_ == most_fields) return;
    field = trim(field);
    starts_[count_] = used_;
    sizes_[count_] = static_cast<unsigned>(field.copy(text_.begin() + used_, field.size()));
    used_ += sizes_[count_++];
  }

  /// Blank fields up to the end of the line.
  void fill_up(unsigned first, unsigned fields) noexcept {
    while (count_ < std::min(first + fields, most_fields)) add({});
  }

  void append_fixed(std::string_view line) noexcept {
    char columns[data_end];
    const unsigned size = expand_tabs(line, columns);
    const unsigned width = is_wide(first_field(line)) ? 2 * field_width : field_width;
    const unsigned first = count_;
    for (unsigned at = field_width; at < size; at += width) add({columns + at, std::min(width, size - at)});
    fill_up(first, (data_end - field_width) / width);
  }

  /// Copies a line up to the last column of data. Returns the columns that it has.
  static unsigned expand_tabs(std::string_view line, char* columns) noexcept {
    unsigned size = 0;
    for (const char c : line.substr(0, data_end)) {
      const unsigned end = std::min(c == '\t' ? (size / field_width + 1) * field_width : size + 1, data_end);
      std::fill(columns + size, columns + end, c == '\t' ? ' ' : c);
      size = end;
    }
    return size;
  }

  /// A line has `usual` fields. The one behind them, if it is the last, is a mark, unless it is a number without a sign;
  /// so is the last of a longer line, if it looks like one.
  void append_free(std::string_view rest, unsigned usual) noexcept {
    const unsigned first = count_;
    for (unsigned number = 1;; ++number) {
      const std::size_t comma = rest.find(',');
      const std::string_view field = trim(rest.substr(0, comma));
      const bool is_last = comma == std::string_view::npos;
      if (!is_last || number <= usual || !is_mark(field, number == usual + 1)) add(field);
      if (is_last) break;
      rest.remove_prefix(comma + 1);
    }
    fill_up(first, usual);
  }

  static bool is_mark(std::string_view field, bool is_in_place) noexcept {
    if (is_in_place) return field.empty() || field.find_first_not_of("0123456789") != std::string_view::npos;
    return !field.empty() && (field.front() == '+' || field.front() == '*');
  }

  dense1D<char> text_;
  unsigned starts_[most_fields], sizes_[most_fields];
  unsigned count_ = 0, used_ = 0;
  bool is_damaged_ = false;
};

/// A card's name or another first word, in capital letters, as a number: up to eight characters, else 0.
constexpr std::uint64_t packed_name(std::string_view name) noexcept {
  std::uint64_t packed = 0;
  if (name.size() > 8) return 0;
  for (const char c : name) {
    const bool is_small = c >= 'a' && c <= 'z';
    packed = packed << 8 | static_cast<unsigned char>(is_small ? c - ('a' - 'A') : c);
  }
  return packed;
}

/// The first word of letters of a line, packed.
constexpr std::uint64_t first_word(std::string_view line) noexcept {
  line = trim(line);
  const auto end = std::find_if_not(line.begin(), line.end(), is_letter);
  return packed_name(line.substr(0, static_cast<std::size_t>(end - line.begin())));
}

/// Goes from card to card.
class card_reader {
 public:
  explicit card_reader(block_reader& blocks) noexcept : lines_(blocks) {}

  [[nodiscard]] bool prepare() noexcept { return fields_.prepare(); }

  /// Goes to the first line of the next card; false at the end of the file.
  bool next() noexcept {
    if (!has_line_ && !next_line()) return false;
    has_line_ = false;
    const std::string_view name = card_fields::first_field(line_.text);
    name_ = packed_name(trim(name.substr(0, name.find('*', 1))));
    return true;
  }

  /// The name of the card, packed; without the mark of wide fields.
  std::uint64_t name() const noexcept { return name_; }

  /// The first line of the card, until the card is read or passed over.
  std::string_view text() const noexcept { return line_.text; }

  /// The same with its comment, which a path may seem to hold.
  std::string_view whole_line() const noexcept { return whole_line_; }

  /// Reads the card's lines.
  const card_fields& read() noexcept {
    fields_.clear();
    do fields_.append(line_);
    while (next_line() && goes_on(line_.text));
    return fields_;
  }

  /// Has cards read where they lie; read(text, end) returns the start of the first line that it left.
  template <class Read>
  void read_in_place(Read read) noexcept {
    if (has_line_) lines_.give_back();
    has_line_ = false;
    lines_.read_in_place(read);
  }

  /// Passes over the card's lines.
  void skip() noexcept {
    while (next_line() && goes_on(line_.text)) continue;
  }

  /// Passes over the lines from the next one on up to one that holds a character, also as a comment.
  void skip_through(char c) noexcept {
    while (lines_.next(line_)) {
      if (line_.text.find(c) != std::string_view::npos) return;
    }
  }

  std::uint64_t position() const noexcept { return lines_.position(); }

 private:
  /// Goes to the next line that is neither blank nor a comment.
  bool next_line() noexcept {
    has_line_ = false;
    while (!has_line_ && lines_.next(line_)) {
      whole_line_ = line_.text;
      const std::size_t comment = line_.text.find('$');
      line_.is_cut = line_.is_cut && comment == std::string_view::npos;
      line_.text = line_.text.substr(0, comment);
      while (!line_.text.empty() && is_blank(line_.text.back())) line_.text.remove_suffix(1);
      has_line_ = !line_.text.empty();
    }
    return has_line_;
  }

  static bool goes_on(std::string_view line) noexcept {
    const std::string_view first = card_fields::first_field(line);
    return first.empty() ? !starts_section(line) : first.front() == '+' || first.front() == '*';
  }

  /// True for a line with a word that is none of a card, wherever it stands.
  static bool starts_section(std::string_view line) noexcept {
    const std::uint64_t name = first_word(line);
    return name == packed_name("BEGIN") || name == packed_name("ENDDATA") || name == packed_name("INCLUDE");
  }

  record_lines lines_;
  record_line line_;
  std::string_view whole_line_;
  card_fields fields_;
  std::uint64_t name_ = 0;
  bool has_line_ = false;
};

}  // namespace qel::gridwork::detail::io::nastran

#endif
