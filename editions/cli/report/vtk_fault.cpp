// What is wrong with a VTK file of text.
#include <algorithm>
#include <iterator>

#include "word_look.h"

namespace report {

namespace {

constexpr std::string_view lists[] = {"cells", "vertices", "lines", "polygons", "triangle_strips"};

class vtk_look {
 public:
  vtk_look(const file_bytes& file, int /*result*/, const vtk_look* before)
      : words_(file, '\0'), all_nodes_(before == nullptr ? word_look::any_nodes : before->nodes_) {}

  std::string fault() const { return words_.fault(); }

  void look() {
    words_.skip_line();
    words_.skip_line();
    if (words_.next() != "ascii" || words_.next() != "dataset") return;
    words_.enter_section();
    if (!words_.expect_words(1)) return;
    for (std::string word = words_.next(); !word.empty() && word != "point_data" && word != "cell_data";
         word = words_.next()) {
      if (!look_at_section(word)) return;
    }
  }

 private:
  bool look_at_section(const std::string& keyword) {
    words_.enter_section();
    if (keyword == "points") return look_at_points();
    if (keyword == "cell_types") return look_at_types();
    if (keyword == "field") return look_at_field();
    if (keyword == "metadata") return words_.skip_to_empty_line(), true;
    const bool is_list = std::find(std::begin(lists), std::end(lists), keyword) != std::end(lists);
    return is_list ? look_at_list() : words_.fail("is no keyword that can stand here");
  }

  bool look_at_points() {
    return words_.expect_count(nodes_) && words_.expect_words(1) && words_.expect_reals(3 * nodes_);
  }

  bool look_at_types() {
    std::uint64_t count = 0;
    return words_.expect_count(count) && words_.expect_integers(count);
  }

  bool look_at_list() {
    std::uint64_t count = 0, size = 0;
    if (!words_.expect_count(count) || !words_.expect_count(size)) return false;
    if (words_.next() == "offsets") return look_at_offsets(count, size);
    words_.give_back();
    std::uint64_t used = 0;
    for (std::uint64_t cell = 0, nodes = 0; cell != count; ++cell, used += nodes + 1) {
      if (!words_.expect_count(nodes) || !words_.expect_nodes(nodes, 0, all_nodes_)) return false;
    }
    return used == size || words_.fail_section("has " + std::to_string(used) + " numbers, not " + std::to_string(size));
  }

  bool look_at_offsets(std::uint64_t count, std::uint64_t size) {
    if (!words_.expect_words(1) || !words_.expect_integers(count)) return false;
    if (words_.next() != "connectivity") return words_.fail("stands where \"CONNECTIVITY\" is expected");
    return words_.expect_words(1) && words_.expect_nodes(size, 0, all_nodes_);
  }

  bool look_at_field() {
    std::uint64_t arrays = 0;
    if (!words_.expect_words(1) || !words_.expect_count(arrays)) return false;
    for (; arrays != 0; --arrays) {
      if (!look_at_array()) return false;
    }
    return true;
  }

  // Strings have lines of their own: what stands behind them is not looked at.
  bool look_at_array() {
    std::string word = words_.next();
    for (; word == "metadata"; word = words_.next()) words_.skip_to_empty_line();
    if (word == "null_array") return true;
    std::uint64_t rows = 0, columns = 0;
    if (!words_.expect_count(rows) || !words_.expect_count(columns)) return false;
    const std::string& type = words_.next();
    return !type.ends_with("string") && words_.expect_words(rows * columns);
  }

  word_look words_;
  std::uint64_t all_nodes_, nodes_ = 0;
};

}  // namespace

std::string find_vtk_fault(const file_bytes& bytes, int result) { return find_fault<vtk_look>(bytes, result); }

}  // namespace report
