// Reads NASTRAN bulk data.
#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>

#include "core/result.h"
#include "io/identified_mesh.h"
#include "io/nastran_cards.h"
#include "io/nastran_deck.h"
#include "qel/gridwork/io.h"

namespace qel::gridwork {

using namespace detail;

namespace {

using io::nastran::card_reader;
using io::nastran::deck;
using io::nastran::packed_name;

/// True when a line begins a part of the file that holds no piece of the model.
bool begins_other_part(std::string_view line) noexcept {
  constexpr std::string_view parts[] = {"super", "auxm", "arbm", "module", "trmc", "flxs"};
  for (std::size_t k = 1; k < line.size(); ++k) {
    if (io::is_letter(line[k - 1])) continue;
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
  bulk_data(io::block_reader& blocks, std::uint64_t file_size, element_type only) noexcept
      : cards_(blocks), only_(only), file_size_(file_size) {
    model_.emplace(only, file_size);
  }

  int parse() noexcept {
    if (!cards_.prepare()) return out_of_memory;
    int result = 0;
    while (cards_.next()) {
      const std::uint64_t word = io::nastran::first_word(cards_.text());
      if (word == packed_name("ENDDATA")) break;
      if (word == packed_name("BEGIN")) {
        result = 0;
        begin();
      } else if (word == packed_name("INCLUDE")) {
        pass_include();
      } else if (is_skipped_ || result != 0) {
        cards_.skip();
      } else {
        result = model_->read(cards_);
        if (result == 0)
          cards_.read_in_place([this](const char* text, const char*) { return model_->read_usual(text); });
      }
      if (result == out_of_memory || (result != 0 && has_begun_)) break;
    }
    return result;
  }

  int finish(io::identified_mesh& mesh) noexcept { return model_->finish(mesh); }

 private:
  void begin() noexcept {
    if (!has_begun_) model_.emplace(only_, file_size_);
    has_begun_ = true;
    is_skipped_ = begins_other_part(cards_.text());
    cards_.skip();
  }

  /// The path may go on over lines; another file is never opened.
  void pass_include() noexcept {
    if (!is_skipped_) model_->leave_out();
    const std::string_view line = cards_.whole_line();
    const std::size_t quote = line.find_first_of("'\"$");  // those of a comment do not count
    if (quote != std::string_view::npos && line[quote] != '$' &&
        line.find(line[quote], quote + 1) == std::string_view::npos) {
      cards_.skip_through(line[quote]);
    }
    cards_.skip();
  }

  card_reader cards_;
  element_type only_;
  std::uint64_t file_size_;
  std::optional<deck> model_;
  bool has_begun_ = false;
  bool is_skipped_ = false;
};

}  // namespace

int NASTRAN_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity,
                  dense1D<unsigned>& block_offsets, dense1D<int>& block_types, dense1D<unsigned>& property_IDs,
                  dense1D<unsigned>& element_IDs, dense1D<unsigned>& node_IDs) {
  return io::read_blocks(io::read_identified<bulk_data>, filename, coords, connectivity, block_offsets, block_types,
                         property_IDs, element_IDs, node_IDs);
}

int NASTRAN_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity, element_type type) {
  return io::read_type(io::read_identified<bulk_data>, filename, coords, connectivity, type);
}

}  // namespace qel::gridwork
