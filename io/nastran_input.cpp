// Reads NASTRAN bulk data.
#include <algorithm>
#include <cstdint>
#include <optional>
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
#include "io/text/field.h"
#include "io/text/file.h"
#include "qel/gridwork/io.h"

namespace qel::gridwork {

using namespace detail;

namespace {

using io::malformed;
using io::nastran::card_fields;
using io::nastran::card_reader;
using io::nastran::coordinate_system;
using io::nastran::element_card;
using io::nastran::packed_name;
using io::nastran::system_kind;

/// The model that the cards of a deck describe.
class deck {
 public:
  deck(element_type only, std::uint64_t file_size) noexcept : elements_(only, 2), file_size_(file_size) {}

  /// Reads the card at hand, or passes over it. 0, malformed or out_of_memory.
  int read(card_reader& cards) noexcept {
    const std::uint64_t name = cards.name();
    if (name == packed_name("GRID")) return read_node(cards);
    for (const element_card& form : io::nastran::element_cards) {
      if (name == packed_name(form.name)) return read_element(form, cards);
    }
    if (name == packed_name("GRDSET")) return read_usual_system(cards);
    for (const auto& [letter, kind] : system_letters) {
      const auto last = static_cast<unsigned char>(letter);
      if (name == (packed_name("CORD1") << 8 | last)) return read_system_of_nodes(kind, cards);
      if (name == (packed_name("CORD2") << 8 | last)) return read_system(kind, cards);
    }
    const bool is_replication = cards.text().front() == '=';
    cards.skip();
    return is_replication ? malformed : 0;
  }

  void leave_out() noexcept { ++left_out_; }

  /// Makes the mesh, once all cards are read.
  int finish(io::identified_mesh& mesh) noexcept {
    int result = nodes_.finish(usual_system_);
    if (result == 0) result = systems_.place_nodes(nodes_);
    if (result != 0) return result;
    const auto to_column = [this](unsigned& node) { return (node = nodes_.find(node)) != none; };
    if (!elements_.change_nodes(to_column)) return io::unknown_node;
    if (!elements_.deliver(mesh.elements)) return out_of_memory;
    nodes_.deliver(mesh.coords, mesh.node_IDs);
    return io::result_of_left_out(left_out_);
  }

 private:
  static constexpr std::pair<char, system_kind> system_letters[] = {
      {'R', system_kind::rectangular}, {'C', system_kind::cylindrical}, {'S', system_kind::spherical}};

  bool scan_place(const card_fields& fields, unsigned first, double* place, unsigned count) noexcept {
    for (unsigned k = 0; k < count; ++k) {
      place[k] = 0;
      const std::string_view field = fields[first + k];
      if (!field.empty() && !reals_.scan(field, place[k])) return false;
    }
    return true;
  }

  /// The number of a system: 0, the basic one, or an identifier; `blank` for a blank.
  static bool scan_system(std::string_view field, unsigned blank, unsigned& system) noexcept {
    system = blank;
    if (field.empty()) return true;
    std::int64_t value = 0;
    const bool is_basic = io::scan_integer(field, value) && value == 0;
    if (is_basic) system = 0;
    return is_basic || io::scan_ID(field, system);
  }

  int read_node(card_reader& cards) noexcept {
    const card_fields& fields = cards.read();
    unsigned ID = 0, system = 0;
    double place[3];
    if (fields.is_damaged() || !io::scan_ID(fields[0], ID)) return malformed;
    if (!scan_system(fields[1], none, system) || !scan_place(fields, 2, place, 3)) return malformed;
    return nodes_.append(ID, system, place, progress(cards)) ? 0 : out_of_memory;
  }

  int read_usual_system(card_reader& cards) noexcept {
    const card_fields& fields = cards.read();
    return !fields.is_damaged() && scan_system(fields[1], 0, usual_system_) ? 0 : malformed;
  }

  /// Two systems may stand on such a card.
  int read_system_of_nodes(system_kind kind, card_reader& cards) noexcept {
    const card_fields& fields = cards.read();
    if (fields.is_damaged()) return malformed;
    for (unsigned first = 0; first < 8; first += 4) {
      if (first != 0 && fields[first].empty()) break;
      coordinate_system system;
      system.kind = kind;
      bool is_valid = io::scan_ID(fields[first], system.ID);
      for (unsigned k = 0; k < 3; ++k) is_valid = is_valid && io::scan_ID(fields[first + 1 + k], system.nodes[k]);
      if (!is_valid) return malformed;
      if (!systems_.append(system)) return out_of_memory;
    }
    return 0;
  }

  int read_system(system_kind kind, card_reader& cards) noexcept {
    const card_fields& fields = cards.read();
    coordinate_system system;
    system.kind = kind;
    if (fields.is_damaged() || !io::scan_ID(fields[0], system.ID)) return malformed;
    if (!scan_system(fields[1], 0, system.reference) || !scan_place(fields, 2, system.points, 9)) return malformed;
    return systems_.append(system) ? 0 : out_of_memory;
  }

  int read_element(const element_card& form, card_reader& cards) noexcept {
    if (!elements_.keeps(form.linear) && !elements_.keeps(form.quadratic)) return cards.skip(), 0;
    const card_fields& fields = cards.read();
    unsigned labels[] = {0, 0};  // property, identifier
    if (fields.is_damaged() || !io::scan_ID(fields[0], labels[1])) return malformed;
    if (form.has_property && fields[1].empty()) labels[0] = labels[1];
    if (form.has_property && !fields[1].empty() && !io::scan_reference(fields[1], labels[0])) return malformed;
    unsigned nodes[20];
    element_type type = form.linear;
    if (!scan_nodes(form, fields, nodes, type)) return malformed;
    if (!elements_.keeps(type)) return 0;
    return elements_.append(type, nodes, labels, progress(cards)) ? 0 : out_of_memory;
  }

  /// The identifiers of an element's nodes by local number, and what type they make. False when a vertex is missing.
  static bool scan_nodes(const element_card& form, const card_fields& fields, unsigned* nodes,
                         element_type& type) noexcept {
    const io::node_order all = io::nastran::order_on_card(form.quadratic);
    const io::node_order linear = io::nastran::order_on_card(form.linear);
    const unsigned first = form.has_property ? 2 : 1;
    type = form.quadratic;
    for (unsigned k = 0; k < all.count; ++k) {
      const bool is_vertex = k < linear.count;
      const std::string_view field = fields[first + k];
      std::int64_t value = 0;
      if (!is_vertex && (field.empty() || (io::scan_integer(field, value) && value == 0))) {
        type = form.linear;
      } else if (!io::scan_ID(field, nodes[all.nodes[k]])) {
        return false;
      }
    }
    return true;
  }

  io::file_progress progress(const card_reader& cards) const noexcept { return {cards.position(), file_size_}; }

  io::identified_nodes nodes_;
  io::element_collector elements_;
  io::nastran::coordinate_systems systems_;
  io::real_scanner reals_;
  std::uint64_t file_size_;
  std::uint64_t left_out_ = 0;
  unsigned usual_system_ = 0;
};

/// True when a line begins a part of the file that holds no piece of the model.
bool begins_other_part(std::string_view line) noexcept {
  constexpr std::string_view parts[] = {"super", "auxm", "arbm", "module", "trmc", "flxs"};
  const auto is_letter = [](char c) { return io::to_lower(c) >= 'a' && io::to_lower(c) <= 'z'; };
  for (std::uint64_t k = 1; k < line.size(); ++k) {
    if (is_letter(line[k - 1])) continue;
    for (const std::string_view part : parts) {
      const auto same = [](char a, char b) { return io::to_lower(a) == b; };
      const std::string_view word = line.substr(k, part.size());
      if (std::equal(word.begin(), word.end(), part.begin(), part.end(), same)) return true;
    }
  }
  return false;
}

/// Reads a file section by section. What stands in front of the first one counts if there is none.
class bulk_data {
 public:
  bulk_data(element_type only, std::uint64_t file_size) noexcept : only_(only), file_size_(file_size) {
    model_.emplace(only, file_size);
  }

  int read(card_reader& cards) noexcept {
    int result = 0;
    while (cards.next()) {
      const std::uint64_t word = io::nastran::first_word(cards.text());
      if (word == packed_name("ENDDATA")) break;
      if (word == packed_name("BEGIN")) {
        result = 0;
        begin(cards);
      } else if (word == packed_name("INCLUDE")) {
        pass_include(cards);
      } else if (is_skipped_ || result != 0) {
        cards.skip();
      } else {
        result = model_->read(cards);
      }
      if (result == out_of_memory || (result != 0 && has_begun_)) break;
    }
    return result;
  }

  deck& model() noexcept { return *model_; }

 private:
  void begin(card_reader& cards) noexcept {
    if (!has_begun_) model_.emplace(only_, file_size_);
    has_begun_ = true;
    is_skipped_ = begins_other_part(cards.text());
    cards.skip();
  }

  /// The path may go on over lines; another file is never opened.
  void pass_include(card_reader& cards) noexcept {
    if (!is_skipped_) model_->leave_out();
    const std::string_view line = cards.whole_line();
    const std::uint64_t quote = line.find_first_of("'\"");
    if (quote != std::string_view::npos && line.find(line[quote], quote + 1) == std::string_view::npos) {
      cards.skip_through(line[quote]);
    }
    cards.skip();
  }

  element_type only_;
  std::uint64_t file_size_;
  std::optional<deck> model_;
  bool has_begun_ = false;
  bool is_skipped_ = false;
};

int read_deck(const char* filename, element_type only, io::identified_mesh& mesh) noexcept {
  const io::file input(filename, "rb");
  if (!input.is_open()) return io::not_opened;
  io::block_reader blocks(input.stream());
  card_reader cards(blocks);
  if (!blocks.prepare() || !cards.prepare()) return out_of_memory;
  bulk_data data(only, input.size());
  const int result = data.read(cards);
  return result != 0 ? result : data.model().finish(mesh);
}

}  // namespace

int NASTRAN_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity,
                  dense1D<unsigned>& block_offsets, dense1D<int>& block_types, dense1D<unsigned>& property_IDs,
                  dense1D<unsigned>& element_IDs, dense1D<unsigned>& node_IDs) {
  return io::read_blocks(read_deck, filename, coords, connectivity, block_offsets, block_types, property_IDs,
                         element_IDs, node_IDs);
}

int NASTRAN_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity, element_type type) {
  return io::read_type(read_deck, filename, coords, connectivity, type);
}

}  // namespace qel::gridwork
