// STL files: what they say of themselves, and in words what is wrong with a damaged one.
#include <algorithm>
#include <cctype>
#include <cstdio>
#include <iterator>

#include "file_bytes.h"
#include "formats.h"

namespace report {

namespace {

constexpr std::size_t header_size = 84;  // bytes before the first triangle of a binary file
constexpr std::size_t triangle_size = 50;

std::uint64_t binary_count(const file_bytes& bytes) {
  const std::string_view head = bytes.head();
  if (head.size() < header_size) return 0;
  std::uint64_t count = 0;
  for (std::size_t i = header_size; i-- > header_size - 4;) count = count << 8U | static_cast<unsigned char>(head[i]);
  return count;
}

// A binary header may begin with "solid" as well, but then its count holds a zero byte or agrees with the size.
bool is_text(const file_bytes& bytes) {
  const std::string_view start = bytes.head().substr(0, 256);
  if (!holds(lower_case(start.substr(0, start.find('\n'))), "solid")) return false;
  if (start.find('\0') < header_size) return false;
  return bytes.size() < header_size || bytes.size() < header_size + triangle_size * binary_count(bytes);
}

bool is_printable(const file_bytes& bytes) {
  const std::string_view start = bytes.head().substr(0, 256);
  return std::all_of(start.begin(), start.end(),
                     [](unsigned char c) { return std::isprint(c) != 0 || std::isspace(c) != 0; });
}

// Lines, in any case, that end a facet.
std::uint64_t count_facets(const file_bytes& bytes) {
  std::uint64_t count = 0;
  for (line_reader lines(bytes); lines.next();) count += holds_in_any_case(lines.line(), "endfacet") ? 1 : 0;
  return count;
}

// What the lines of a facet hold, and how three numbers are read from them.
struct facet_line {
  const char* words;
  const char* numbers;
};
constexpr facet_line vertex = {"vertex", " vertex %lg %lg %lg"};
constexpr facet_line facet[] = {{"facet normal", " facet normal %lg %lg %lg"},
                                {"outer loop", nullptr},
                                vertex,
                                vertex,
                                vertex,
                                {"endloop", nullptr},
                                {"endfacet", nullptr}};

bool fits(const std::string& line, const facet_line& rule) {
  double x = 0, y = 0, z = 0;
  return holds(line, rule.words) &&
         (rule.numbers == nullptr || std::sscanf(line.c_str(), rule.numbers, &x, &y, &z) == 3);
}

bool stands_between_facets(const std::string& line, bool ended) {
  return holds(line, "endsolid") || holds(line, "color") || (ended && holds(line, "solid"));
}

std::string wrong_line(std::uint64_t number, const facet_line& rule) {
  return "line " + std::to_string(number) + " breaks the STL grammar: \"" + rule.words + '"' +
         (rule.numbers == nullptr ? "" : " with three numbers") + " is expected here";
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

}  // namespace

int read_stl(const char* path, mesh& m) {
  block triangles{gw::ELT_TRIA3, {}};
  const int result = gw::STL_input(path, m.coords, triangles.connectivity);
  if (!triangles.connectivity.empty()) m.blocks.push_back(triangles);
  return result;
}

file_facts look_at_stl(const file_bytes& bytes) {
  const bool text = is_text(bytes);
  return {text, text ? count_facets(bytes) : binary_count(bytes)};
}

std::string explain_stl(int result, const file_bytes& bytes) {
  if (result != 0 && result != -2 && result != -3) return message(gw::operation::STL_input, result);
  if (is_text(bytes)) return explain_text(bytes);
  if (result == -2 || is_printable(bytes)) {
    return "this is not an STL file, neither a text one (it has no \"solid\") nor a binary one";
  }
  return explain_binary(bytes);
}

}  // namespace report
