// The lines that make up nearly all of an OBJ file, read where they lie in the block.
#ifndef QEL_GRIDWORK_IO_OBJ_USUAL_LINES_H
#define QEL_GRIDWORK_IO_OBJ_USUAL_LINES_H

#include <cstring>

#include "core/limits.h"
#include "io/column_appender.h"
#include "io/text/plain_number.h"
#include "io/text/text.h"
#include "qel/dense.h"

namespace qel::gridwork::detail::io {

/// What is read from an OBJ file.
struct obj_records {
  column_appender<double> coords, normals, uvs;
  column_appender<unsigned> triangles, quads;
  bool has_textures = false;  // a line of them was there
  bool has_normals = false;
};

/// Reads complete lines of plain numbers and indices, as long as there is room for what they hold.
///
/// The text ends with a NUL and scan_margin bytes more. No line is taken that is cut off there, or unusual in any way:
/// what it means is decided elsewhere.
class usual_obj_lines {
 public:
  explicit usual_obj_lines(obj_records& out) noexcept : out_(out) {}

  /// The start of the first line that was not read.
  const char* read(const char* line, const char* end) noexcept {
    while (const char* next = read_line(skip_blanks(line), end)) line = next;
    return line;
  }

 private:
  /// Each of these returns the position behind what it read, or null when that is not usual.
  const char* read_line(const char* p, const char* end) noexcept {
    if (*p == 'f') return is_blank(p[1]) ? read_face(p + 2) : nullptr;
    if (*p != 'v') return nullptr;
    if (is_blank(p[1])) return read_vector(p + 2, out_.coords, end);
    if (!is_blank(p[2])) return nullptr;
    if (p[1] == 'n') return read_vector(p + 3, out_.normals, nullptr);
    return p[1] == 't' ? read_vector(p + 3, out_.uvs, nullptr) : nullptr;
  }

  /// Where a token that is not certain to be at hand begins to be none, wherever it lies.
  static constexpr auto longest_token = static_cast<std::ptrdiff_t>(limits::obj_token);

  /// Reads the numbers of a column; more numbers may follow if the `end` of the text is given.
  static const char* read_vector(const char* p, column_appender<double>& out, const char* end) noexcept {
    double* const values = out.room();
    if (values == nullptr) return nullptr;
    for (std::uint64_t k = 0; k < out.rows(); ++k) {
      const char* const token = skip_blanks(p);
      p = scan_plain_double(token, values[k]);
      if (p == nullptr || !ends_token(*p) || p - token >= longest_token) return nullptr;
    }
    p = skip_blanks(p);
    if (*p != '\n') {
      p = end == nullptr ? nullptr : static_cast<const char*>(std::memchr(p, '\n', static_cast<std::size_t>(end - p)));
      if (p == nullptr) return nullptr;
    }
    out.commit();
    return p + 1;
  }

  const char* read_face(const char* p) noexcept {
    unsigned nodes[4];
    std::size_t count = 0;
    for (p = skip_blanks(p); *p != '\n'; p = skip_blanks(p), ++count) {
      unsigned node = 0;
      p = read_corner(p, node);
      if (p == nullptr) return nullptr;
      if (count < 4) nodes[count] = node;
    }
    if (count == 3 || count == 4) {
      column_appender<unsigned>& faces = count == 3 ? out_.triangles : out_.quads;
      unsigned* const column = faces.room();
      if (column == nullptr) return nullptr;
      std::memcpy(column, nodes, count * sizeof(unsigned));
      faces.commit();
    }
    return p + 1;
  }

  const char* read_corner(const char* p, unsigned& node) const noexcept {
    p = read_index(p, node);
    if (p == nullptr || node-- == 0) return nullptr;
    for (unsigned part = 1; *p == '/'; ++part) {
      unsigned ignored = 0;
      if (part == 3) return nullptr;
      if (!is_digit(*++p)) continue;
      if (!(part == 1 ? out_.has_textures : out_.has_normals)) return nullptr;
      p = read_index(p, ignored);
      if (p == nullptr) return nullptr;
    }
    return ends_token(*p) ? p : nullptr;
  }

  static const char* read_index(const char* p, unsigned& index) noexcept {
    constexpr std::ptrdiff_t most_digits = 9;  // of any index of 32 bits
    const char* const first = p;
    unsigned value = 0;
    for (; is_digit(*p); ++p) value = 10 * value + static_cast<unsigned>(*p - '0');
    index = value;
    return p == first || p - first > most_digits ? nullptr : p;
  }

  obj_records& out_;
};

}  // namespace qel::gridwork::detail::io

#endif
