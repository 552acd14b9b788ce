// What is wrong with a MEDIT file of text.
#include <algorithm>
#include <iterator>

#include "word_look.h"

namespace report {

namespace {

constexpr struct {
  std::string_view keyword;
  unsigned nodes;
} sections[] = {{"edges", 2},          {"edgesp2", 3},          {"triangles", 3},  {"trianglesp2", 6},
                {"quadrilaterals", 4}, {"quadrilateralsq2", 9}, {"tetrahedra", 4}, {"tetrahedrap2", 10},
                {"pyramids", 5},       {"prisms", 6},           {"pentahedra", 6}, {"hexahedra", 8},
                {"hexaedra", 8}};

class medit_look {
 public:
  medit_look(const file_bytes& file, int /*result*/, const medit_look* before)
      : words_(file, '#'), all_nodes_(before == nullptr ? word_look::any_nodes : before->nodes_) {}

  std::string fault() const { return words_.fault(); }

  void look() {
    if (words_.next() != "meshversionformatted") return;
    words_.enter_section();
    if (!words_.expect_reals(1)) return;
    for (std::string word = words_.next(); !word.empty() && word != "end"; word = words_.next()) {
      if (!look_at_section(word)) return;
    }
  }

 private:
  bool look_at_section(const std::string& keyword) {
    words_.enter_section();
    if (keyword == "dimension") return look_at_dimension();
    if (keyword == "vertices") return look_at_vertices();
    const auto* const found =
        std::find_if(std::begin(sections), std::end(sections), [&](const auto& s) { return s.keyword == keyword; });
    return found == std::end(sections) || look_at_elements(found->nodes);
  }

  bool look_at_dimension() {
    return words_.expect_count(dim_) && ((dim_ >= 1 && dim_ <= 3) || words_.fail("is no dimension from 1 to 3"));
  }

  bool look_at_vertices() {
    std::uint64_t count = 0;
    if (dim_ == 0) return words_.fail_section("stands before \"Dimension\"");
    if (!words_.expect_count(count)) return false;
    nodes_ += count;
    for (; count != 0; --count) {
      if (!words_.expect_reals(dim_) || !words_.expect_integers(1)) return false;
    }
    return true;
  }

  bool look_at_elements(unsigned nodes) {
    std::uint64_t count = 0;
    if (!words_.expect_count(count)) return false;
    for (; count != 0; --count) {
      if (!words_.expect_nodes(nodes, 1, all_nodes_) || !words_.expect_integers(1)) return false;
    }
    return true;
  }

  word_look words_;
  std::uint64_t all_nodes_, dim_ = 0, nodes_ = 0;
};

}  // namespace

std::string find_medit_fault(const file_bytes& bytes, int result) { return find_fault<medit_look>(bytes, result); }

}  // namespace report
