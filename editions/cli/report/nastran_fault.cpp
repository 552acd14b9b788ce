// What is wrong with NASTRAN bulk data.
#include <algorithm>
#include <cctype>
#include <iterator>
#include <vector>

#include "record_look.h"

namespace report {

namespace {

constexpr std::size_t width = 8, data_end = 72;

constexpr struct element_card {
  std::string_view name;
  std::size_t vertices, nodes, first;  // the field of the first node
} element_cards[] = {{"ctetra", 4, 10, 2}, {"chexa", 8, 20, 2}, {"cquad4", 4, 4, 2}, {"ctria3", 3, 3, 2},
                     {"cpenta", 6, 15, 2}, {"ctria6", 3, 6, 2}, {"cquad8", 4, 8, 2}, {"cpyram", 5, 13, 2},
                     {"cpyra", 5, 13, 2},  {"cbar", 2, 2, 2},   {"cbeam", 2, 2, 2},  {"crod", 2, 2, 2},
                     {"ctube", 2, 2, 2},   {"cbend", 2, 2, 2},  {"conrod", 2, 2, 1}, {"cbeam3", 2, 3, 2},
                     {"ctriar", 3, 3, 2},  {"cquadr", 4, 4, 2}, {"cshear", 4, 4, 2}, {"cquad", 4, 9, 2}};

// Tabs are blanks up to the next multiple of 8 columns.
std::string columns_of(std::string_view line) {
  std::string columns;
  for (const char c : line.substr(0, data_end))
    columns.append(c == '\t' ? width - columns.size() % width : 1, c == '\t' ? ' ' : c);
  return columns.substr(0, data_end);
}

std::string_view first_field(std::string_view line) {
  const std::size_t comma = line.find(',');
  if (comma != std::string_view::npos) return trimmed(line.substr(0, comma));
  line = line.substr(0, width);
  return trimmed(line.substr(0, line.find('\t')));
}

std::string first_word(std::string_view line) {
  line = trimmed(line);
  const auto end = std::find_if_not(line.begin(), line.end(), [](unsigned char c) { return std::isalpha(c) != 0; });
  return lower_case({line.begin(), end});
}

// Begins a part that holds no piece of the model.
bool begins_other_part(const std::string& line) {
  constexpr std::string_view parts[] = {"super", "auxm", "arbm", "module", "trmc", "flxs"};
  return std::any_of(std::begin(parts), std::end(parts), [&](std::string_view part) { return holds(line, part); });
}

class nastran_look : public record_look {
 public:
  using record_look::record_look;

  // What stands in front of the first BEGIN counts if there is none.
  void look() {
    bool has_begun = false, is_skipped = false;
    for (next_line(); !line_.empty();) {
      begin_record();
      const std::string word = first_word(line_);
      if (word == "enddata") return;
      if (word == "begin") {
        if (!has_begun) begin_again();
        has_begun = true;
        is_skipped = begins_other_part(lower_case(line_));
      }
      read_card();
      const bool is_sound = is_skipped || !fault().empty() || look_at_card();
      if (!is_sound && has_begun) return;
    }
  }

 private:
  // Goes to the next line that is neither blank nor a comment; empty behind the last one.
  void next_line() {
    line_.clear();
    while (line_.empty() && lines_.next()) {
      line_ = lines_.line().substr(0, lines_.line().find('$'));
      line_.erase(line_.find_last_not_of(blanks) + 1);
    }
  }

  // Reads the fields of a card, and goes to the line behind it.
  void read_card() {
    const std::string_view name = first_field(line_);
    name_ = lower_case(trimmed(name.substr(0, name.find('*', 1))));
    fields_.clear();
    do {
      const bool is_wide = first_field(line_).find('*') != std::string_view::npos;
      holds(line_, ",") ? append_free(is_wide ? 4 : 8) : append_fixed(is_wide ? 2 * width : width);
      next_line();
    } while (!line_.empty() && goes_on());
  }

  bool goes_on() const {
    const std::string word = first_word(line_);
    if (line_[0] == '+' || line_[0] == '*') return true;
    return first_field(line_).empty() && word != "begin" && word != "enddata" && word != "include";
  }

  void append_fixed(std::size_t step) {
    const std::string columns = columns_of(line_);
    for (std::size_t at = width; at < data_end; at += step)
      fields_.emplace_back(at < columns.size() ? trimmed(std::string_view(columns).substr(at, step)) : "");
  }

  // What is behind the usual fields may be a mark, if it is the last.
  void append_free(std::size_t usual) {
    const std::size_t all = fields_.size() + usual;
    for (std::size_t comma = line_.find(','); comma != std::string::npos;) {
      const std::size_t start = comma + 1;
      comma = line_.find(',', start);
      fields_.emplace_back(trimmed(std::string_view(line_).substr(start, comma - start)));
    }
    if (fields_.size() > all && is_mark(fields_.back(), fields_.size() == all + 1)) fields_.pop_back();
    fields_.resize(std::max(fields_.size(), all));
  }

  static bool is_mark(const std::string& last, bool is_in_place) {
    if (is_in_place) return last.empty() || last.find_first_not_of("0123456789") != std::string::npos;
    return !last.empty() && (last[0] == '+' || last[0] == '*');
  }

  std::string_view field(std::size_t k) const { return k < fields_.size() ? std::string_view(fields_[k]) : ""; }

  bool look_at_card() {
    if (name_[0] == '=') return fail("a replication by \"=\"");
    if (name_ == "grid") return look_at_node();
    const auto* const card = std::find_if(std::begin(element_cards), std::end(element_cards),
                                          [this](const element_card& c) { return c.name == name_; });
    return card == std::end(element_cards) || look_at_element(*card);
  }

  bool look_at_node() {
    unsigned ID = 0;
    std::string place;
    if (!expect_ID(field(0), "ID of a node", ID)) return false;
    for (std::size_t k = 1; k < 5; ++k) {
      const bool is_there = !field(k).empty();
      if (is_there && !expect_real(field(k), k == 1 ? "coordinate system" : "coordinate of a node")) return false;
      place += std::string(field(k)) + ",";
    }
    return add_node(ID, place);
  }

  bool look_at_element(const element_card& card) {
    unsigned node = 0;
    if (!expect_ID(field(0), "ID of an element", node)) return false;
    if (card.first == 2 && !field(1).empty() && !expect_whole(field(1), "property")) return false;
    for (std::size_t k = 0; k < card.nodes; ++k) {
      const std::string_view text = field(card.first + k);
      if (k >= card.vertices && (text.empty() || text == "0")) continue;
      if (!expect_ID(text, "ID of a node", node) || !use_node(node)) return false;
    }
    return true;
  }

  std::string line_, name_;
  std::vector<std::string> fields_;
};

}  // namespace

std::string find_nastran_fault(const file_bytes& bytes, int result) { return find_fault<nastran_look>(bytes, result); }

}  // namespace report
