// The cards that make up nearly all of a NASTRAN deck, read where they lie in the block.
#ifndef QEL_GRIDWORK_IO_NASTRAN_USUAL_CARDS_H
#define QEL_GRIDWORK_IO_NASTRAN_USUAL_CARDS_H

#include <cstddef>
#include <cstring>

#include "core/result.h"
#include "io/element_collector.h"
#include "io/identified_nodes.h"
#include "io/nastran.h"
#include "io/nastran_plain_fields.h"

namespace qel::gridwork::detail::io::nastran {

/// Reads whole cards of plain numbers, as long as there is room for what they hold.
///
/// The text ends with a NUL and scan_margin bytes more. No card is taken that may go on behind it, or is unusual in any
/// way: what it means is decided elsewhere. All positions are those behind what was read, or null for what is unusual.
class usual_cards {
 public:
  usual_cards(identified_nodes& nodes, element_collector& elements) noexcept : nodes_(nodes), elements_(elements) {}

  /// The start of the first card that was not read.
  const char* read(const char* line) noexcept {
    while (const char* next = *line == 'G' ? read_node(line) : read_element(line)) line = next;
    return line;
  }

 private:
  static constexpr unsigned fields_per_line = 8, most_fields = 22;

  // --- Nodes -------------------------------------------------------------------------------------------------------

  const char* read_node(const char* line) noexcept {
    if (!nodes_.has_room() || std::memcmp(line, "GRID", 4) != 0) return nullptr;
    unsigned ID = 0, system = none;
    double point[3];
    const char* p = line[4] == ','   ? read_free_node(line + 4, ID, system, point)
                    : line[4] == '*' ? read_wide_node(line, ID, system, point)
                                     : read_narrow_node(line, ID, system, point);
    if (p == nullptr || ID == 0) return nullptr;
    p = next_card(p);
    return p != nullptr && nodes_.append(ID, system, point, {}) ? p : nullptr;
  }

  static const char* read_free_node(const char* p, unsigned& ID, unsigned& system, double* point) noexcept {
    p = scan_plain_unsigned(behind_comma(p), ID);
    if (p == nullptr || *p != ',') return nullptr;
    p = behind_comma(p);
    if (*p != ',') p = scan_plain_unsigned(p, system);
    for (unsigned k = 0; k < 3; ++k) {
      if (p == nullptr || *p != ',') return nullptr;
      p = scan_plain_real(behind_comma(p), point[k]);
    }
    return p;
  }

  static const char* read_narrow_node(const char* line, unsigned& ID, unsigned& system, double* point) noexcept {
    const char* p = read_start(line, 4, field_width, ID, system);
    for (unsigned k = 0; k < 3 && p != nullptr; ++k) p = read_real_field(p, field_width, point[k]);
    return p != nullptr ? find_newline(p, ",") : nullptr;
  }

  static const char* read_wide_node(const char* line, unsigned& ID, unsigned& system, double* point) noexcept {
    const char* p = read_start(line, 5, 2 * field_width, ID, system);
    for (unsigned k = 0; k < 2 && p != nullptr; ++k) p = read_real_field(p, 2 * field_width, point[k]);
    if (p != nullptr) p = find_newline(p, ",");
    if (p == nullptr || p[1] != '*') return nullptr;
    p = skip_mark(p + 1);
    if (p != nullptr) p = read_real_field(p, 2 * field_width, point[2]);
    return p != nullptr ? find_newline(p, ",") : nullptr;
  }

  /// Reads the identifier and the system, which may be blank, behind a name.
  static const char* read_start(const char* line, std::ptrdiff_t name, std::ptrdiff_t size, unsigned& ID,
                                unsigned& system) noexcept {
    const char* p = skip_blank_columns(line + name, field_width - name);
    if (p != nullptr) p = read_unsigned_field(p, size, ID);
    if (p == nullptr) return nullptr;
    const char* const blank = skip_blank_columns(p, size);
    return blank != nullptr ? blank : read_unsigned_field(p, size, system);
  }

  // --- Elements ----------------------------------------------------------------------------------------------------

  static bool has_name(const char* line, const element_card& card) noexcept {
    const char behind = line[card.name.size()];
    return std::memcmp(line, card.name.data(), card.name.size()) == 0 && (behind == ',' || behind == ' ');
  }

  bool find_card(const char* line) noexcept {
    if (has_name(line, *card_)) return true;  // as that of the last one
    for (const element_card& card : element_cards) {
      if (!card.has_property || !has_name(line, card)) continue;
      card_ = &card;
      orders_[0] = order_on_card(card.linear);
      orders_[1] = order_on_card(card.quadratic);
      return true;
    }
    return false;
  }

  const char* read_element(const char* line) noexcept {
    if (*line != 'C' || !find_card(line)) return nullptr;
    const char* p = line + card_->name.size();
    unsigned fields[most_fields], count = 0;
    p = *p == ',' ? read_free_fields(p, fields, count) : read_fixed_fields(line, p, fields, count);
    if (p == nullptr || count < 3 || fields[0] == 0) return nullptr;
    const bool is_linear = count - 2 == orders_[0].count;
    return append(is_linear ? card_->linear : card_->quadratic, orders_[is_linear ? 0 : 1], fields, count) ? p
                                                                                                           : nullptr;
  }

  /// Reads the fields of a card with commas, up to the start of the next one.
  static const char* read_free_fields(const char* p, unsigned* fields, unsigned& count) noexcept {
    while (*p == ',') {
      if (count == most_fields) return nullptr;
      p = scan_plain_unsigned(behind_comma(p), fields[count]);
      if (p == nullptr) return nullptr;
      if (++count % fields_per_line == 0) p = pass_full_line(p);
    }
    return next_card(p);
  }

  /// Reads the fields of a card in columns, up to the start of the next one.
  static const char* read_fixed_fields(const char* line, const char* p, unsigned* fields, unsigned& count) noexcept {
    p = skip_blank_columns(p, line + field_width - p);
    while (p != nullptr) {
      const unsigned first = count;
      for (; count != first + fields_per_line && !is_line_end(p); ++count) {
        if (count == most_fields) return nullptr;
        p = read_unsigned_field(p, field_width, fields[count]);
        if (p == nullptr) return nullptr;
      }
      p = find_newline(p, ",");
      if (p == nullptr) return nullptr;
      const bool goes_on = p[1] == '+' || p[1] == ' ';
      if (!goes_on) return next_card(p);
      if (count != first + fields_per_line) return nullptr;
      p = p[1] == '+' ? skip_narrow_mark(p + 1) : skip_blank_columns(p + 1, field_width);
    }
    return nullptr;
  }

  bool append(element_type type, const node_order& order, const unsigned* fields, unsigned count) noexcept {
    if (count - 2 != order.count || !elements_.has_room(type)) return false;
    unsigned nodes[most_fields];
    for (unsigned k = 0; k < order.count; ++k) {
      if (fields[2 + k] == 0) return false;
      nodes[order.nodes[k]] = fields[2 + k];
    }
    const unsigned labels[] = {fields[1], fields[0]};
    return elements_.append(type, nodes, labels, {});
  }

  identified_nodes& nodes_;
  element_collector& elements_;
  const element_card* card_ = element_cards;
  node_order orders_[2] = {order_on_card(card_->linear), order_on_card(card_->quadratic)};
};

}  // namespace qel::gridwork::detail::io::nastran

#endif
