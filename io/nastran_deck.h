// The model that a NASTRAN deck describes, card by card.
#ifndef QEL_GRIDWORK_IO_NASTRAN_DECK_H
#define QEL_GRIDWORK_IO_NASTRAN_DECK_H

#include <cstdint>
#include <string_view>
#include <utility>

#include "core/result.h"
#include "io/element_collector.h"
#include "io/identified_mesh.h"
#include "io/identified_nodes.h"
#include "io/input_result.h"
#include "io/nastran.h"
#include "io/nastran_cards.h"
#include "io/nastran_systems.h"
#include "io/nastran_usual_cards.h"
#include "io/text/field.h"

namespace qel::gridwork::detail::io::nastran {

/// Nodes, coordinate systems and elements; all other cards are passed over.
class deck {
 public:
  deck(element_type only, std::uint64_t file_size) noexcept : elements_(only, 2), file_size_(file_size) {}

  /// Reads the card at hand, or passes over it. 0, malformed or out_of_memory.
  int read(card_reader& cards) noexcept {
    const std::uint64_t name = cards.name();
    if (name == packed_name("GRID")) return read_node(cards);
    for (const element_card& card : element_cards) {
      if (name == packed_name(card.name)) return read_element(card, cards);
    }
    if (name == packed_name("GRDSET")) return read_default_system(cards);
    for (const auto& [letter, kind] : system_letters) {
      const auto last = static_cast<unsigned char>(letter);
      if (name == (packed_name("CORD1") << 8 | last)) return read_system_of_nodes(kind, cards);
      if (name == (packed_name("CORD2") << 8 | last)) return read_system(kind, cards);
    }
    const bool is_replication = card_fields::first_field(cards.text()).starts_with('=');
    cards.skip();
    return is_replication ? malformed : 0;
  }

  /// Reads what is usual of the cards at hand. Returns the start of the first line that it left.
  const char* read_usual(const char* text) noexcept { return usual_.read(text); }

  void leave_out() noexcept { ++left_out_; }

  /// Makes the mesh, once all cards are read.
  int finish(identified_mesh& mesh) noexcept {
    int result = nodes_.finish(default_system_);
    if (result == 0) result = systems_.place_nodes(nodes_);
    return result != 0 ? result : make_mesh(nodes_, elements_, left_out_, mesh);
  }

 private:
  static constexpr std::pair<char, system_kind> system_letters[] = {
      {'R', system_kind::rectangular}, {'C', system_kind::cylindrical}, {'S', system_kind::spherical}};

  bool scan_point(const card_fields& fields, unsigned first, double* point, unsigned count) noexcept {
    for (unsigned k = 0; k < count; ++k) {
      point[k] = 0;
      const std::string_view field = fields[first + k];
      if (!field.empty() && !reals_.scan(field, point[k])) return false;
    }
    return true;
  }

  /// The number of a system: 0, the basic one, or an identifier; `blank` for a blank.
  static bool scan_system(std::string_view field, unsigned blank, unsigned& system) noexcept {
    system = blank;
    if (field.empty()) return true;
    std::int64_t value = 0;
    const bool is_basic = scan_integer(field, value) && value == 0;
    if (is_basic) system = 0;
    return is_basic || scan_ID(field, system);
  }

  int read_node(card_reader& cards) noexcept {
    const card_fields& fields = cards.read();
    unsigned ID = 0, system = 0;
    double point[3];
    if (fields.is_damaged() || !scan_ID(fields[0], ID)) return malformed;
    if (!scan_system(fields[1], none, system) || !scan_point(fields, 2, point, 3)) return malformed;
    return nodes_.append(ID, system, point, progress(cards)) ? 0 : out_of_memory;
  }

  int read_default_system(card_reader& cards) noexcept {
    const card_fields& fields = cards.read();
    return !fields.is_damaged() && scan_system(fields[1], 0, default_system_) ? 0 : malformed;
  }

  /// Two systems may stand on such a card.
  int read_system_of_nodes(system_kind kind, card_reader& cards) noexcept {
    const card_fields& fields = cards.read();
    if (fields.is_damaged()) return malformed;
    for (unsigned first = 0; first < 8; first += 4) {
      if (first != 0 && fields[first].empty()) break;
      coordinate_system system;
      system.kind = kind;
      bool is_valid = scan_ID(fields[first], system.ID);
      for (unsigned k = 0; k < 3; ++k) is_valid = is_valid && scan_ID(fields[first + 1 + k], system.nodes[k]);
      if (!is_valid) return malformed;
      if (!systems_.append(system)) return out_of_memory;
    }
    return 0;
  }

  int read_system(system_kind kind, card_reader& cards) noexcept {
    const card_fields& fields = cards.read();
    coordinate_system system;
    system.kind = kind;
    if (fields.is_damaged() || !scan_ID(fields[0], system.ID)) return malformed;
    if (!scan_system(fields[1], 0, system.reference) || !scan_point(fields, 2, system.points, 9)) return malformed;
    return systems_.append(system) ? 0 : out_of_memory;
  }

  int read_element(const element_card& card, card_reader& cards) noexcept {
    if (!elements_.keeps(card.linear) && !elements_.keeps(card.quadratic)) return cards.skip(), 0;
    const card_fields& fields = cards.read();
    unsigned labels[] = {0, 0};  // property, identifier
    if (fields.is_damaged() || !scan_ID(fields[0], labels[1])) return malformed;
    if (card.has_property && fields[1].empty()) labels[0] = labels[1];
    if (card.has_property && !fields[1].empty() && !scan_reference(fields[1], labels[0])) return malformed;
    unsigned nodes[20];
    element_type type = card.linear;
    if (!scan_nodes(card, fields, nodes, type)) return malformed;
    if (!elements_.keeps(type)) return 0;
    return elements_.append(type, nodes, labels, progress(cards)) ? 0 : out_of_memory;
  }

  /// The identifiers of an element's nodes by local number, and what type they make. False when a vertex is missing.
  static bool scan_nodes(const element_card& card, const card_fields& fields, unsigned* nodes,
                         element_type& type) noexcept {
    const node_order all = order_on_card(card.quadratic);
    const node_order linear = order_on_card(card.linear);
    const unsigned first = card.has_property ? 2 : 1;
    type = card.quadratic;
    for (unsigned k = 0; k < all.count; ++k) {
      const bool is_vertex = k < linear.count;
      const std::string_view field = fields[first + k];
      std::int64_t value = 0;
      if (!is_vertex && (field.empty() || (scan_integer(field, value) && value == 0))) {
        type = card.linear;
      } else if (!scan_ID(field, nodes[all.nodes[k]])) {
        return false;
      }
    }
    return true;
  }

  file_progress progress(const card_reader& cards) const noexcept { return {cards.position(), file_size_}; }

  identified_nodes nodes_;
  element_collector elements_;
  usual_cards usual_{nodes_, elements_};
  coordinate_systems systems_;
  real_scanner reals_;
  std::uint64_t file_size_;
  std::uint64_t left_out_ = 0;
  unsigned default_system_ = 0;
};

}  // namespace qel::gridwork::detail::io::nastran

#endif
