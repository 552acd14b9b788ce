// Reads Wavefront OBJ files.
#include <cstdint>
#include <cstring>
#include <limits>

#include "core/limits.h"
#include "core/outputs.h"
#include "core/result.h"
#include "io/bytes/block_reader.h"
#include "io/bytes/file.h"
#include "io/obj_usual_lines.h"
#include "io/text/number_scan.h"
#include "io/text/text.h"
#include "io/text/token_reader.h"
#include "qel/gridwork/io.h"

namespace qel::gridwork {

using namespace detail;

namespace {

using io::block_reader;
using io::token_reader;

constexpr int malformed = -2;

enum class record { vertex, normal, texture, face, other };

/// The kind of line that starts with the token at hand.
record scan_keyword(token_reader& tokens) noexcept {
  const char* p = tokens.text();
  const char first = *p++;
  if (first == 'f' && tokens.is_end(p)) return tokens.pass(p), record::face;
  if (first != 'v') return record::other;
  if (tokens.is_end(p)) return tokens.pass(p), record::vertex;
  const char second = *p++;
  if (!tokens.is_end(p)) return record::other;
  tokens.pass(p);
  return second == 'n' ? record::normal : second == 't' ? record::texture : record::other;
}

/// A corner of a face: indices of a vertex, of texture coordinates and of a normal. An index that is left out is 0.
struct face_corner {
  std::int64_t indices[3] = {};
  bool present[3] = {};
};

/// Scans an index, if there is one. Null for a sign without digits and for an index beyond 32 bits.
const char* scan_index(const char* text, std::int64_t& index) noexcept {
  const bool negative = *text == '-';
  const char* const digits = negative || *text == '+' ? text + 1 : text;
  if (digits != text && !io::is_digit(*digits)) return nullptr;
  constexpr std::int64_t most = std::numeric_limits<std::uint32_t>::max();
  constexpr std::int64_t least = std::numeric_limits<std::int32_t>::min();
  std::int64_t value = 0;
  const char* p = digits;
  for (; io::is_digit(*p); ++p) {
    value = 10 * value + (*p - '0');
    if (value > most) return nullptr;
  }
  index = negative ? -value : value;
  return index < least ? nullptr : p;
}

/// Scans up to three indices with slashes between them. Null when one is not valid.
const char* scan_corner(const char* p, face_corner& corner) noexcept {
  for (unsigned component = 0;; ++p, ++component) {
    const char* const start = p;
    p = scan_index(start, corner.indices[component]);
    if (p == nullptr) return nullptr;
    corner.present[component] = p != start;
    if (*p != '/' || component == 2) return p;
  }
}

/// Reads line by line: usual lines in place, all others token by token.
class obj_parser {
 public:
  obj_parser(block_reader& blocks, std::uint64_t file_size, io::obj_records& out) noexcept
      : tokens_(blocks), file_size_(file_size), usual_(out), out_(out) {}

  int parse() noexcept {
    do {
      tokens_.pass_lines([this](const char* line, const char* end) { return usual_.read(line, end); });
      const int result = tokens_.at_token() ? read_line() : 0;
      if (result != 0) return result;
    } while (tokens_.next_line());
    return 0;
  }

 private:
  int read_line() noexcept {
    switch (scan_keyword(tokens_)) {
      case record::vertex:
        return read_vertex();
      case record::normal:
        return read_normal();
      case record::texture:
        return read_texture();
      case record::face:
        return read_face();
      default:
        return 0;
    }
  }

  /// Reads the numbers of a line, up to `most`; anything else ends them.
  unsigned read_numbers(double* values, unsigned most) noexcept {
    unsigned count = 0;
    for (; count < most && tokens_.at_token(); ++count) {
      const char* end = io::scan_double(tokens_.text(), values[count]);
      if (end == nullptr || !tokens_.ends_token(end)) break;
      tokens_.pass(end);
    }
    return count;
  }

  int read_vertex() noexcept {
    double values[3];
    if (read_numbers(values, 3) < 3) return malformed;
    return append(out_.coords, values, 3);
  }

  int read_normal() noexcept {
    double values[4];
    if (read_numbers(values, 4) != 3) return malformed;
    out_.has_normals = true;
    return append(out_.normals, values, 3);
  }

  int read_texture() noexcept {
    double values[4];
    const unsigned count = read_numbers(values, 4);
    if (count > 3) return malformed;
    out_.has_textures = true;
    const bool fits = out_.uvs.rows() == 0 || out_.uvs.rows() == count;
    return count != 0 && fits ? append(out_.uvs, values, count) : 0;
  }

  int read_face() noexcept {
    unsigned nodes[4];
    std::uint64_t count = 0;
    for (; tokens_.at_token(); ++count) {
      face_corner corner;
      const char* end = scan_corner(tokens_.text(), corner);
      if (end == nullptr || !tokens_.ends_token(end) || refers_ahead(corner)) return malformed;
      tokens_.pass(end);
      if (count < 4) nodes[count] = node(corner.indices[0]);
    }
    if (count == 3) return append(out_.triangles, nodes, 3);
    return count == 4 ? append(out_.quads, nodes, 4) : 0;
  }

  /// True for texture coordinates or a normal before there is a line of them.
  bool refers_ahead(const face_corner& corner) const noexcept {
    return (corner.present[1] && !out_.has_textures) || (corner.present[2] && !out_.has_normals);
  }

  unsigned node(std::int64_t index) const noexcept {
    return static_cast<unsigned>(index != 0 ? index - 1 : static_cast<std::int64_t>(out_.coords.count()));
  }

  template <class T>
  int append(io::column_appender<T>& columns, const T* values, unsigned rows) const noexcept {
    return columns.append(values, rows, {tokens_.position(), file_size_}) ? 0 : out_of_memory;
  }

  token_reader tokens_;
  std::uint64_t file_size_;
  io::usual_obj_lines usual_;
  io::obj_records& out_;
};

int read_file(const char* filename, dense2D<double>& coords, dense2D<double>& normals, dense2D<double>& uvs,
              dense2D<unsigned>& triangles, dense2D<unsigned>& quads) {
  for (dense2D<double>* matrix : {&coords, &normals, &uvs}) matrix->clear_hard();
  for (dense2D<unsigned>* matrix : {&triangles, &quads}) matrix->clear_hard();
  const io::file input(filename, io::access::read);
  if (!input.is_open()) return -1;
  block_reader blocks(input.stream());
  if (!coords.resize(3, 0) || !blocks.prepare()) return out_of_memory;
  io::obj_records out{io::column_appender<double>(coords), io::column_appender<double>(normals),
                      io::column_appender<double>(uvs), io::column_appender<unsigned>(triangles),
                      io::column_appender<unsigned>(quads)};
  return obj_parser(blocks, input.size(), out).parse();
}

}  // namespace

int WavefrontOBJ_input(const char* filename, dense2D<double>& coords, dense2D<double>& normals, dense2D<double>& uvs,
                       dense2D<unsigned>& triangles, dense2D<unsigned>& quads) {
  return read_file(filename, coords, output(normals, coords), output(uvs, coords, normals), triangles,
                   output(quads, triangles));
}

}  // namespace qel::gridwork
