// The text form of STL.
#include <cstddef>

#include "core/limits.h"
#include "core/result.h"
#include "io/stl_input.h"
#include "io/text/line_reader.h"
#include "io/text/number_scan.h"
#include "io/text/text.h"
#include "io/triangle_soup.h"

namespace qel::gridwork::detail::io {
namespace {

constexpr int bad_header = -2;
constexpr int bad_facet = -3;

bool has_keyword(const char* line, const char* keyword) noexcept {
  return line != nullptr && contains_keyword(line, keyword);
}

/// The position behind "facet normal" and three numbers; null when the line does not start so.
const char* scan_facet(const char* line) noexcept {
  const char* end = match_word(skip_blanks(line), "facet");
  if (end != nullptr) end = match_word(skip_blanks(end), "normal");
  for (int k = 0; k < 3 && end != nullptr; ++k) end = skip_number(end);
  return end;
}

/// The position behind "vertex" and three numbers; null when the line does not start so.
const char* scan_vertex(const char* line, vector3& corner) noexcept {
  const char* end = match_word(skip_blanks(line), "vertex");
  for (unsigned k = 0; k < 3 && end != nullptr; ++k) end = scan_number(end, corner[k]);
  return end;
}

/// What a line at the start of a facet is. The words that decide may stand anywhere in it, also behind a facet.
enum class line_kind { facet, colour, end_of_solid, other };

line_kind classify(const char* line) noexcept {
  if (contains_keyword(line, "color")) return line_kind::colour;
  if (contains_keyword(line, "endsolid")) return line_kind::end_of_solid;
  return scan_facet(line) != nullptr ? line_kind::facet : line_kind::other;
}

class text_parser {
 public:
  text_parser(block_reader& blocks, std::uint64_t file_size, triangle_soup& soup) noexcept
      : blocks_(blocks), lines_(blocks), file_size_(file_size), soup_(soup) {}

  /// 0 at the end of the last solid, or a negative result.
  int parse() {
    if (!has_keyword(lines_.next(), "solid")) return bad_header;
    for (;;) {
      while (lines_.skip_if(scan_facet)) {
        const int result = parse_facet();
        if (result < 0) return result;
      }
      const char* line = lines_.next();
      if (line == nullptr) return bad_facet;
      line_kind kind = classify(line);
      if (kind == line_kind::colour) continue;
      if (kind == line_kind::end_of_solid) {
        line = lines_.next();
        if (line == nullptr) return 0;
        if (has_keyword(line, "solid")) continue;
        kind = scan_facet(line) != nullptr ? line_kind::facet : line_kind::other;
      }
      if (kind != line_kind::facet) return bad_facet;
      const int result = parse_facet();
      if (result < 0) return result;
    }
  }

 private:
  /// The lines behind the facet header.
  int parse_facet() {
    triangle t;
    if (!expect_keyword("outer loop")) return bad_facet;
    for (vector3& corner : t.corners) {
      if (!expect_vertex(corner)) return bad_facet;
    }
    if (!expect_keyword("endloop") || !expect_keyword("endfacet")) return bad_facet;
    if (!soup_.add(t)) return out_of_memory;
    if (++facets_ == limits::facets_to_measure)
      soup_.expect(limits::facets_to_measure * file_size_ / blocks_.position());
    return 0;
  }

  template <std::size_t Size>
  bool expect_keyword(const char (&keyword)[Size]) noexcept {
    const auto starts_with_keyword = [&](const char* line) { return match_word(skip_blanks(line), keyword); };
    return lines_.skip_if(starts_with_keyword) || has_keyword(lines_.next(), keyword);
  }

  bool expect_vertex(vector3& corner) noexcept {
    if (lines_.skip_if([&](const char* line) { return scan_vertex(line, corner); })) return true;
    const char* line = lines_.next();
    return line != nullptr && scan_vertex(line, corner) != nullptr;
  }

  block_reader& blocks_;
  line_reader lines_;
  std::uint64_t file_size_;
  triangle_soup& soup_;
  std::uint64_t facets_ = 0;
};

}  // namespace

int read_stl_text(const stl_source& input, dense2D<double>& coords, dense2D<unsigned>& connectivity) {
  triangle_soup soup(coords, connectivity);
  const int result = text_parser(input.blocks, input.size, soup).parse();
  return result < 0 ? result : soup.finish();
}

}  // namespace qel::gridwork::detail::io
