// What is wrong with a FEMAP neutral file.
#include <algorithm>
#include <iterator>
#include <vector>

#include "record_look.h"

namespace report {

namespace {

// With commas, blanks or both between them.
std::vector<std::string_view> fields_of(std::string_view line) {
  std::vector<std::string_view> fields;
  for (line = trimmed(line); !line.empty();) {
    const std::size_t end = std::min(line.find_first_of(", \t\r\v\f"), line.size());
    fields.push_back(line.substr(0, end));
    line = trimmed(line.substr(end));
    if (!line.empty() && line.front() == ',') line = trimmed(line.substr(1));
  }
  return fields;
}

// Than version 4.5.
bool is_older(std::string_view version) {
  const std::size_t point = version.find('.');
  const std::string_view whole = version.substr(0, point), behind = version.substr(std::min(point, version.size()));
  return whole.size() == 1 && (whole < "4" || (whole == "4" && behind < ".5"));
}

constexpr std::string_view topologies[] = {"0", "1", "2", "3", "4", "5", "6", "7", "8", "10", "11", "12", "14", "19"};

class femap_look : public record_look {
 public:
  using record_look::record_look;

  void look() {
    while (skip_to_mark()) {
      while (next_line() && is_mark()) continue;
      if (!look_at_block(field(0))) return;
    }
  }

 private:
  bool next_line() {
    const bool is_there = lines_.next();
    line_ = is_there ? lines_.line() : std::string_view();
    fields_ = fields_of(line_);
    return is_there;
  }

  bool is_mark() const { return trimmed(line_) == "-1"; }

  bool skip_to_mark() {
    while (next_line()) {
      if (is_mark()) return true;
    }
    return false;
  }

  std::string_view field(std::size_t k) const { return k < fields_.size() ? fields_[k] : std::string_view(); }

  bool look_at_block(std::string_view number) {
    if (number == "100") return look_at_version(), true;
    if (number == "403") return look_at_records(&femap_look::look_at_node);
    if (number == "404") return look_at_records(&femap_look::look_at_element);
    skip_to_mark();
    return true;
  }

  // Records of elements have no lists in old versions.
  void look_at_version() {
    has_lists_ = true;
    if (!next_line() || is_mark() || !next_line() || is_mark()) return;
    has_lists_ = fields_.empty() || !is_older(field(0));
    skip_to_mark();
  }

  bool look_at_records(bool (femap_look::*look_at)()) {
    while (next_line() && !is_mark()) {
      begin_record();
      if (!fields_.empty() && !(this->*look_at)()) return false;
    }
    return true;
  }

  bool look_at_node() {
    unsigned ID = 0;
    std::string place;
    if (!expect_ID(field(0), "ID of a node", ID)) return false;
    for (std::size_t k = 11; k < 14; ++k) {
      if (!expect_real(field(k), "coordinate of a node")) return false;
      place += std::string(field(k)) + ",";
    }
    return add_node(ID, place);
  }

  bool look_at_element() {
    unsigned ID = 0;
    if (!expect_ID(field(0), "ID of an element", ID) || !expect_whole(field(2), "property") ||
        !expect_whole(field(4), "topology")) {
      return false;
    }
    const bool is_read = std::find(std::begin(topologies), std::end(topologies), field(4)) != std::end(topologies);
    for (int line = 0; line < 2; ++line) {
      if (!next_of_record() || (is_read && !look_at_slots())) return false;
    }
    for (int line = 0; line < 4; ++line) {
      if (!next_of_record()) return false;
    }
    return skip_lists();
  }

  bool next_of_record() { return (next_line() && !is_mark()) || fail("the record that begins here is cut short"); }

  bool look_at_slots() {
    for (std::size_t k = 0; k < 10; ++k) {
      unsigned node = 0;
      if (field(k) == "0") continue;
      if (!expect_ID(field(k), "ID of a node", node) || !use_node(node)) return false;
    }
    return true;
  }

  // Those that the flags of the last line announce.
  bool skip_lists() {
    int lists = 0;
    for (std::size_t k = 12; has_lists_ && k < 16; ++k) {
      if (!field(k).empty() && !expect_whole(field(k), "flag of a list")) return false;
      lists += field(k).find_first_not_of("+-0") != std::string_view::npos ? 1 : 0;
    }
    for (; lists != 0; --lists) {
      do {
        if (!next_line()) return fail("the record that begins here is cut short");
      } while (field(0) != "-1");
    }
    return true;
  }

  std::string_view line_;
  std::vector<std::string_view> fields_;
  bool has_lists_ = true;
};

}  // namespace

std::string find_femap_fault(const file_bytes& bytes, int result) { return find_fault<femap_look>(bytes, result); }

}  // namespace report
