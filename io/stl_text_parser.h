// The text form of STL, facet by facet.
#ifndef QEL_GRIDWORK_IO_STL_TEXT_PARSER_H
#define QEL_GRIDWORK_IO_STL_TEXT_PARSER_H

#include <cstddef>

#include "core/limits.h"
#include "core/result.h"
#include "io/stl_geometry.h"
#include "io/text/line_reader.h"
#include "io/text/number_scan.h"
#include "io/text/text.h"

namespace qel::gridwork::detail::io {

constexpr int stl_bad_header = -2;
constexpr int stl_bad_facet = -3;
constexpr int stl_stopped = 1;

inline bool has_keyword(const char* line, const char* keyword) noexcept {
  return line != nullptr && contains_keyword(line, keyword);
}

/// The position behind "facet normal" and three numbers; null when the line does not start so.
inline const char* scan_facet(const char* line) noexcept {
  const char* end = match_word(skip_blanks(line), "facet");
  if (end != nullptr) end = match_word(skip_blanks(end), "normal");
  for (int k = 0; k < 3 && end != nullptr; ++k) end = skip_number(end);
  return end;
}

/// The position behind "vertex" and three numbers; null when the line does not start so.
inline const char* scan_vertex(const char* line, vector3& corner) noexcept {
  const char* end = match_word(skip_blanks(line), "vertex");
  for (unsigned k = 0; k < 3 && end != nullptr; ++k) end = scan_number(end, corner[k]);
  return end;
}

/// What a line at the start of a facet is. The words that decide may stand anywhere in it, also behind a facet.
enum class stl_line { facet, colour, end_of_solid, other };

inline stl_line classify(const char* line) noexcept {
  if (contains_keyword(line, "color")) return stl_line::colour;
  if (contains_keyword(line, "endsolid")) return stl_line::end_of_solid;
  return scan_facet(line) != nullptr ? stl_line::facet : stl_line::other;
}

/// Gives triangles to a sink as they come: add(triangle) is false when memory ran out, expect(count) tells how many are
/// likely to come.
template <class Sink>
class stl_text_parser {
 public:
  stl_text_parser(block_reader& blocks, std::uint64_t file_size, Sink& sink) noexcept
      : blocks_(blocks), lines_(blocks), file_size_(file_size), sink_(sink) {}

  /// False when the next line does not begin a solid.
  bool parse_header() { return has_keyword(lines_.next(), "solid"); }

  /// Parses from a line on where a facet may begin. 0 at the end of the last solid, stl_stopped before a facet where
  /// stop() is true, or a negative result.
  template <class Stop>
  int parse_facets(Stop stop) {
    for (;;) {
      while (!stop() && lines_.skip_if(scan_facet)) {
        const int result = parse_facet();
        if (result < 0) return result;
      }
      if (stop()) return stl_stopped;
      const char* line = lines_.next();
      if (line == nullptr) return stl_bad_facet;
      stl_line kind = classify(line);
      if (kind == stl_line::colour) continue;
      if (kind == stl_line::end_of_solid) {
        line = lines_.next();
        if (line == nullptr) return 0;
        if (has_keyword(line, "solid")) continue;
        kind = scan_facet(line) != nullptr ? stl_line::facet : stl_line::other;
      }
      if (kind != stl_line::facet) return stl_bad_facet;
      const int result = parse_facet();
      if (result < 0) return result;
    }
  }

  /// Facets parsed so far.
  std::uint64_t nbr_facets() const noexcept { return facets_; }

 private:
  /// The lines behind the facet header.
  int parse_facet() {
    triangle t;
    if (!expect_keyword("outer loop")) return stl_bad_facet;
    for (vector3& corner : t.corners) {
      if (!expect_vertex(corner)) return stl_bad_facet;
    }
    if (!expect_keyword("endloop") || !expect_keyword("endfacet")) return stl_bad_facet;
    if (!sink_.add(t)) return out_of_memory;
    if (++facets_ == limits::facets_to_measure)
      sink_.expect(limits::facets_to_measure * file_size_ / blocks_.position());
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
  Sink& sink_;
  std::uint64_t facets_ = 0;
};

}  // namespace qel::gridwork::detail::io

#endif
