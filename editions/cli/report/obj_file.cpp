// OBJ files, and in words what is wrong with a damaged one.
#include <algorithm>

#include "file_bytes.h"
#include "formats.h"
#include "number_text.h"

namespace report {

namespace {

std::string_view first_word(std::string_view line) {
  const std::string_view rest = without_blanks(line);
  return rest.substr(0, rest.find_first_of(blanks));
}

std::string_view behind(std::string_view line, std::string_view word) {
  return line.substr(static_cast<std::size_t>(word.data() - line.data()) + word.size());
}

unsigned count_numbers(std::string_view text) {
  unsigned count = 0;
  for (std::string_view word = first_word(text); !word.empty(); word = first_word(text)) {
    if (number_length(word) != word.size()) break;
    ++count;
    text = behind(text, word);
  }
  return count;
}

bool is_corner(std::string_view word) { return word.find_first_not_of("0123456789+-/") == std::string_view::npos; }

bool are_corners(std::string_view text) {
  for (std::string_view word = first_word(text); !word.empty(); word = first_word(text)) {
    if (!is_corner(word)) return false;
    text = behind(text, word);
  }
  return true;
}

// What is wrong with a line; empty when that is not seen.
std::string fault_of(std::string_view line) {
  const std::string_view word = first_word(line);
  const std::string_view values = behind(line, word);
  if (word == "v" && count_numbers(values) < 3) return "a vertex has fewer than three numbers";
  if (word == "vn" && count_numbers(values) != 3) return "a normal has not three numbers";
  if (word == "vt" && (count_numbers(values) > 3 || count_numbers(values) == 0))
    return "a texture coordinate has not one to three numbers";
  if (word == "f" && !are_corners(values)) return "a face has a corner that is no index";
  return {};
}

std::string find_fault(const file_bytes& bytes) {
  for (line_reader lines(bytes); lines.next();) {
    const std::string fault = fault_of(lines.line());
    if (!fault.empty()) return "line " + std::to_string(lines.number()) + " breaks the OBJ grammar: " + fault;
  }
  return words_of(gw::operation::WavefrontOBJ_input, -2);
}

}  // namespace

int read_obj(const char* path, mesh& m) {
  qel::dense2D<double> normals, uvs;
  block triangles{gw::ELT_TRIA3, {}}, quads{gw::ELT_QUAD4, {}};
  const int result = gw::WavefrontOBJ_input(path, m.coords, normals, uvs, triangles.connectivity, quads.connectivity);
  for (const block& b : {triangles, quads}) {
    if (!b.connectivity.empty()) m.blocks.push_back(b);
  }
  return result;
}

std::string explain_obj(int result, const file_bytes& bytes) {
  if (result == 0) return "it has no face of three or four corners";
  return result == -2 ? find_fault(bytes) : words_of(gw::operation::WavefrontOBJ_input, result);
}

}  // namespace report
