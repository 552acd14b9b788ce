// STL files: what they say of themselves, and in words what is wrong with a damaged one.
#include <qel/gridwork.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "mesh_format.h"

namespace {

using qel::gridwork::operation;

constexpr std::size_t stl_header = 84;  // bytes before the first triangle of a binary STL
constexpr std::size_t stl_triangle = 50;

std::uint64_t binary_count(const std::string& start) {
  if (start.size() < stl_header) return 0;
  std::uint64_t count = 0;
  for (std::size_t i = stl_header; i-- > stl_header - 4;) count = count << 8U | static_cast<unsigned char>(start[i]);
  return count;
}

// A binary header may begin with "solid" as well, but then its count holds a zero byte or agrees with the size.
bool is_text_stl(const std::string& start, std::uintmax_t bytes) {
  if (!holds(lower_case(start.substr(0, start.find('\n'))), "solid")) return false;
  if (start.find('\0') < stl_header) return false;
  return start.size() < stl_header || bytes < stl_header + stl_triangle * binary_count(start);
}

std::uint64_t count_words(std::ifstream& in, const std::string& word) {
  std::uint64_t count = 0;
  std::vector<char> block(1U << 20U);
  std::string text;
  while (in.read(block.data(), static_cast<std::streamsize>(block.size())), in.gcount() > 0) {
    text.erase(0, text.size() - std::min(text.size(), word.size() - 1));  // a word may lie across two blocks
    text += lower_case({block.data(), static_cast<std::size_t>(in.gcount())});
    for (std::size_t at = 0; (at = text.find(word, at)) != std::string::npos; at += word.size()) ++count;
  }
  return count;
}

survey look_at_stl(const std::string& path) {
  survey file;
  std::ifstream in(path, std::ios::binary);
  in.seekg(0, std::ios::end);
  file.bytes = static_cast<std::uintmax_t>(std::max<std::streamoff>(in.tellg(), 0));
  in.seekg(0);

  std::string start(256, ' ');
  in.read(start.data(), static_cast<std::streamsize>(start.size()));
  start.resize(static_cast<std::size_t>(in.gcount()));
  in.clear();
  in.seekg(0);

  file.printable = std::all_of(start.begin(), start.end(),
                               [](unsigned char c) { return std::isprint(c) != 0 || std::isspace(c) != 0; });
  file.text = is_text_stl(start, file.bytes);
  file.triangles = file.text ? count_words(in, "endfacet") : binary_count(start);
  file.nodes = 3 * file.triangles;
  return file;
}

int read_stl(const std::string& path, mesh& result) {
  return qel::gridwork::STL_input(path.c_str(), result.coords, result.connectivity);
}

int write_stl(const std::string& path, const mesh& m, bool text) {
  return qel::gridwork::STL_output(path.c_str(), m.coords, m.connectivity, text);
}

bool stl_is_complete(const survey& file, const mesh& m) {
  if (file.triangles != m.connectivity.cols()) return false;
  return file.text || file.bytes == stl_header + stl_triangle * file.triangles;
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

// Finds the first line that breaks the grammar of text STL.
std::string explain_text_stl(const std::string& path) {
  std::ifstream in(path);
  std::string line;
  std::getline(in, line);
  std::size_t at = 0;
  bool ended = false;
  for (std::uint64_t row = 2; std::getline(in, line); ++row) {
    line = lower_case(line);
    if (at == 0 && (holds(line, "endsolid") || holds(line, "color") || (ended && holds(line, "solid")))) {
      ended = holds(line, "endsolid");
      continue;
    }
    if (!fits(line, facet[at])) {
      if (in.peek() == EOF) return "the file is cut short in line " + number(row);
      return "line " + number(row) + " breaks the STL grammar: \"" + facet[at].words + '"' +
             (facet[at].numbers == nullptr ? "" : " with three numbers") + " is expected here";
    }
    at = (at + 1) % std::size(facet);
    ended = false;
  }
  if (at != 0) return "the file is cut short: it ends inside a facet";
  return ended ? "its text breaks the STL grammar" : "the file is cut short: it ends without \"endsolid\"";
}

std::string explain_stl(int code, const std::string& path, const survey& file) {
  if (code == -1) return message(operation::STL_input, code);
  if (code == -199) return "there is not enough memory for its " + number(file.triangles) + " triangles";
  if (file.text && (code == 0 || code == -2 || code == -3)) return explain_text_stl(path);
  if (code == -2 || file.printable)
    return "this is not an STL file, neither a text one (it has no \"solid\") nor a binary one";
  if (code != 0 && code != -3) return message(operation::STL_input, code);
  if (file.bytes < stl_header) return "the file is cut short: the count of triangles is missing";
  const std::uintmax_t present = (file.bytes - stl_header) / stl_triangle;
  return "the file is cut short, or not STL: its header counts " + number(file.triangles) +
         " triangles, but there is data for " + number(present);
}

}  // namespace

const format stl_format = {"STL",     {".stl"},       look_at_stl, read_stl, explain_stl, operation::STL_output,
                           write_stl, stl_is_complete};
