// The records that make up nearly all of a FEMAP neutral file, read where they lie in the block.
#ifndef QEL_GRIDWORK_IO_FEMAP_USUAL_RECORDS_H
#define QEL_GRIDWORK_IO_FEMAP_USUAL_RECORDS_H

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "core/limits.h"
#include "io/element_collector.h"
#include "io/femap.h"
#include "io/identified_nodes.h"
#include "io/text/plain_field.h"

namespace qel::gridwork::detail::io::femap {

/// A piece of text that is likely to come again.
class known_text {
 public:
  /// The position behind the text if it stands here; else null.
  const char* match(const char* p, const char* end) const noexcept {
    const bool is_here = size_ != 0 && size_ <= end - p && std::memcmp(p, text_, static_cast<std::size_t>(size_)) == 0;
    return is_here ? p + size_ : nullptr;
  }

  /// Keeps a text, unless it is too long. Returns its end.
  const char* learn(const char* begin, const char* end) noexcept {
    size_ = end - begin;
    if (size_ > static_cast<std::ptrdiff_t>(sizeof text_)) size_ = 0;
    std::memcpy(text_, begin, static_cast<std::size_t>(size_));
    return end;
  }

 private:
  char text_[limits::known_text];
  std::ptrdiff_t size_ = 0;
};

/// Reads whole records with commas behind all fields, as long as there is room for what they hold. What a record has in
/// common with the one before is compared, not read.
///
/// The text ends with a NUL and scan_margin bytes more. No record is taken that may go on behind it, or is unusual in any
/// way: what it means is decided elsewhere. All positions are those behind what was read, or null for what is unusual.
class usual_records {
 public:
  usual_records(identified_nodes& nodes, element_collector& elements) noexcept : nodes_(nodes), elements_(elements) {}

  /// The start of the first record of the block of nodes that was not read.
  const char* read_nodes(const char* record, const char* end) noexcept {
    while (const char* next = read_node(record, end)) record = next;
    return record;
  }

  /// The same for the block of elements.
  const char* read_elements(const char* record, const char* end) noexcept {
    while (const char* next = read_element(record, end)) record = next;
    return record;
  }

 private:
  /// Passes over commas and the little that stands between them.
  static const char* pass_commas(const char* p, unsigned count) noexcept {
    for (const char* const last = p + limits::plain_fields; count != 0; ++p) {
      if (static_cast<unsigned char>(*p) <= ' ' || p == last) return nullptr;
      count -= *p == ',' ? 1 : 0;
    }
    return p;
  }

  /// The start of the next line; null for a NUL or a mark before it.
  static const char* next_line(const char* p) noexcept {
    if (p == nullptr || *p == '-' || *p == ' ') return nullptr;
    p = find_newline(p, {});
    return p == nullptr ? nullptr : p + 1;
  }

  static const char* end_line(const char* p) noexcept { return is_line_end(p) ? p + (*p == '\r' ? 2 : 1) : nullptr; }

  const char* read_node(const char* record, const char* end) noexcept {
    unsigned ID = 0;
    double point[3];
    const char* const start = scan_plain_unsigned(record, ID);
    if (start == nullptr || ID == 0 || *start != ',' || !nodes_.has_room()) return nullptr;
    const char* p = node_fields_.match(start, end);
    if (p == nullptr) {
      p = pass_commas(start, 11);
      if (p != nullptr) node_fields_.learn(start, p);
    }
    for (unsigned k = 0; k < 3; ++k) {
      if (p != nullptr) p = scan_plain_real(p, point[k]);
      if (p == nullptr || *p++ != ',') return nullptr;
    }
    p = next_line(p);
    return p != nullptr && nodes_.append(ID, 0, point, {}) ? p : nullptr;
  }

  const char* read_element(const char* record, const char* end) noexcept {
    unsigned labels[2], slots[nbr_slots], nodes[nbr_slots];
    const char* p = scan_plain_unsigned(record, labels[1]);
    if (p == nullptr || labels[1] == 0 || *p != ',') return nullptr;
    const char* const slot_lines = header_.match(p, end);
    p = read_slots(slot_lines != nullptr ? slot_lines : read_header(p), slots);
    if (p == nullptr) return nullptr;
    const char* const next = rest_without_slots_.match(p, end);
    if (next != nullptr) std::fill_n(slots + 10, 10, 0U);
    p = next != nullptr ? next : read_rest(p, end, slots + 10);
    if (p == nullptr) return nullptr;
    const element_type type = take_slots(*layout_, slots, nodes);
    labels[0] = property_;
    const bool is_usual = type != ELT_UNKNOWN && elements_.has_room(type);
    return is_usual && elements_.append(type, nodes, labels, {}) ? p : nullptr;
  }

  /// Reads a header from behind the identifier, and keeps what it says.
  const char* read_header(const char* start) noexcept {
    unsigned property = 0, topology = 0;
    const char* p = pass_commas(start, 2);
    if (p != nullptr) p = scan_plain_unsigned(p, property);
    if (p == nullptr || *p != ',') return nullptr;
    p = pass_commas(p, 2);
    if (p != nullptr) p = scan_plain_unsigned(p, topology);
    if (p == nullptr || *p != ',') return nullptr;
    p = next_line(p);
    const element_layout* const found = layout_of_topology(topology);
    if (p == nullptr || found == nullptr) return nullptr;
    layout_ = found;
    property_ = property;
    return header_.learn(start, p);
  }

  /// Reads a line of slots.
  static const char* read_slots(const char* p, unsigned* slots) noexcept {
    for (unsigned k = 0; k < 10; ++k) {
      if (p == nullptr) return nullptr;
      slots[k] = 0;
      const bool is_zero = p[0] == '0';
      p = is_zero ? p + 1 : scan_plain_unsigned(p, slots[k]);
      if (p == nullptr || *p++ != ',') return nullptr;
    }
    return end_line(p);
  }

  /// Reads the second line of slots, and what is behind it.
  const char* read_rest(const char* start, const char* end, unsigned* slots) noexcept {
    const char* const lines = read_slots(start, slots);
    if (lines == nullptr) return nullptr;
    const char* p = rest_.match(lines, end);
    if (p == nullptr) p = read_last_lines(lines);
    const bool is_empty = std::all_of(slots, slots + 10, [](unsigned node) { return node == 0; });
    return p != nullptr && is_empty ? rest_without_slots_.learn(start, p) : p;
  }

  /// Reads three lines, and one of flags that announce no lists.
  const char* read_last_lines(const char* start) noexcept {
    const char* p = start;
    for (unsigned line = 0; line < 3; ++line) p = next_line(p);
    if (p != nullptr) p = pass_commas(p, 12);
    for (unsigned k = 0; k < 4; ++k) {
      if (p == nullptr || p[0] != '0' || p[1] != ',') return nullptr;
      p += 2;
    }
    p = end_line(p);
    return p != nullptr ? rest_.learn(start, p) : nullptr;
  }

  identified_nodes& nodes_;
  element_collector& elements_;
  known_text node_fields_, header_, rest_, rest_without_slots_;
  const element_layout* layout_ = nullptr;  // of the header
  unsigned property_ = 0;
};

}  // namespace qel::gridwork::detail::io::femap

#endif
