// STL files: what they say of themselves, and in words what is wrong with a damaged one.
#include <algorithm>
#include <cctype>
#include <iterator>

#include "file_bytes.h"
#include "formats.h"
#include "number_text.h"

namespace report {

namespace {

constexpr std::size_t header_size = 84;  // bytes before the first triangle of a binary file
constexpr std::size_t triangle_size = 50;
constexpr int damaged = -3;

std::uint64_t binary_count(const file_bytes& bytes) {
  const std::string_view head = bytes.head();
  if (head.size() < header_size) return 0;
  std::uint64_t count = 0;
  for (std::size_t i = header_size; i-- > header_size - 4;) count = count << 8U | static_cast<unsigned char>(head[i]);
  return count;
}

bool is_printable(const file_bytes& bytes) {
  const std::string_view start = bytes.head().substr(0, 256);
  return std::all_of(start.begin(), start.end(),
                     [](unsigned char c) { return std::isprint(c) != 0 || std::isspace(c) != 0; });
}

bool has_facet(const file_bytes& bytes) {
  line_reader lines(bytes);
  while (lines.next()) {
    if (holds_in_any_case(lines.line(), "endfacet")) return true;
  }
  return false;
}

// What the lines of a facet hold.
struct facet_line {
  std::string_view words;
  bool has_numbers;  ///< three of them, behind the words
};
constexpr facet_line vertex = {"vertex", true};
constexpr facet_line facet[] = {{"facet normal", true}, {"outer loop", false}, vertex, vertex, vertex,
                                {"endloop", false},     {"endfacet", false}};

bool has_three_numbers(std::string_view text) {
  for (unsigned k = 0; k < 3; ++k) {
    text = without_blanks(text);
    const std::size_t length = number_length(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

bool fits(std::string_view line, const facet_line& rule) {
  if (!rule.has_numbers) return holds(line, rule.words);
  const std::string_view text = without_blanks(line);
  return text.substr(0, rule.words.size()) == rule.words && has_three_numbers(text.substr(rule.words.size()));
}

bool stands_between_facets(const std::string& line, bool ended) {
  return holds(line, "endsolid") || holds(line, "color") || (ended && holds(line, "solid"));
}

std::string wrong_line(std::uint64_t number, const facet_line& rule) {
  return "line " + std::to_string(number) + " breaks the STL grammar: \"" + std::string(rule.words) + '"' +
         (rule.has_numbers ? " with three numbers" : "") + " is expected here";
}

// Finds the first line that breaks the grammar of text STL.
std::string explain_text(const file_bytes& bytes) {
  line_reader lines(bytes);
  std::size_t at = 0;
  bool ended = false;
  for (lines.next(); lines.next();) {
    const std::string line = lower_case(lines.line());
    if (at == 0 && stands_between_facets(line, ended)) {
      ended = holds(line, "endsolid");
      continue;
    }
    if (!fits(line, facet[at])) {
      if (lines.at_end()) return "the file is cut short in line " + std::to_string(lines.number());
      return wrong_line(lines.number(), facet[at]);
    }
    at = (at + 1) % std::size(facet);
    ended = false;
  }
  if (at != 0) return "the file is cut short: it ends inside a facet";
  return ended ? "it has no facet" : "the file is cut short: it ends without \"endsolid\"";
}

std::string explain_binary(const file_bytes& bytes) {
  if (bytes.size() < header_size) return "the file is cut short: the count of triangles is missing";
  const std::uint64_t present = (bytes.size() - header_size) / triangle_size;
  if (present >= binary_count(bytes)) return "it has no triangle";
  return "the file is cut short, or not STL: its header counts " + std::to_string(binary_count(bytes)) +
         " triangles, but there is data for " + std::to_string(present);
}

bool claims_triangles(const file_bytes& bytes) {
  return is_text_stl(bytes) ? has_facet(bytes) : binary_count(bytes) != 0;
}

}  // namespace

// A binary header may begin with "solid" as well, but then its count holds a zero byte or agrees with the size.
bool is_text_stl(const file_bytes& bytes) {
  const std::string_view start = bytes.head().substr(0, 256);
  if (!holds(lower_case(start.substr(0, start.find('\n'))), "solid")) return false;
  if (start.find('\0') < header_size) return false;
  return bytes.size() < header_size || bytes.size() < header_size + triangle_size * binary_count(bytes);
}

// Damaged text may read as a sound binary file without triangles.
int read_stl(const char* path, mesh& m) {
  block triangles{gw::ELT_TRIA3, {}};
  std::uint64_t in_file = 0;
  const int result = gw::STL_input(path, m.coords, triangles.connectivity, in_file);
  m.nbr_removed = in_file - triangles.connectivity.cols();
  if (!triangles.connectivity.empty()) m.blocks.push_back(triangles);
  return result == 0 && m.blocks.empty() && claims_triangles(file_bytes(path)) ? damaged : result;
}

std::string explain_stl(int result, const file_bytes& bytes) {
  if (result != -2 && result != damaged) return words_of(gw::operation::STL_input, result);
  if (is_text_stl(bytes)) return explain_text(bytes);
  if (result == -2 || is_printable(bytes)) {
    return "this is not an STL file, neither a text one (it has no \"solid\") nor a binary one";
  }
  return explain_binary(bytes);
}

}  // namespace report
