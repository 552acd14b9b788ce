// The bytes are an OBJ file, read by the library and by a literal reader of one line, token and number after the other.
#include <sstream>

#include "core/limits.h"
#include "fuzz/input.h"

namespace {

using namespace fuzz;
namespace limits = qel::gridwork::detail::limits;
using words = std::vector<std::string>;
template <class T>
using columns = std::vector<std::vector<T>>;

/// The parts between the separators; without the empty ones where these are blanks.
words split(const std::string& text, const char* separators, bool keep_empty) {
  words all(1);
  for (const char c : text) {
    const bool separates = c != '\0' && std::strchr(separators, c) != nullptr;
    if (!separates) all.back() += c;
    if (separates && (keep_empty || !all.back().empty())) all.emplace_back();
  }
  if (!keep_empty && all.back().empty()) all.pop_back();
  return all;
}

std::vector<double> numbers(const words& line) {
  std::vector<double> values;
  for (std::size_t i = 1; i < line.size() && line[i].size() < limits::obj_token; ++i) {
    double value;
    int length = 0;
    if (std::sscanf(line[i].c_str(), "%lg%n", &value, &length) != 1 ||
        static_cast<std::size_t>(length) != line[i].size())
      break;
    values.push_back(value);
  }
  return values;
}

/// An index in text; 0 for none. False when it is no 32-bit number.
bool index(const std::string& text, long long& value) {
  const std::size_t sign = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
  value = std::strtoll(text.c_str(), nullptr, 10);
  if (text.find_first_not_of("0123456789", sign) != std::string::npos || (sign == 1 && text.size() == 1)) return false;
  return value >= -2147483648LL && value <= 4294967295LL;
}

struct literal_reader {
  columns<double> coords, normals, uvs;
  columns<unsigned> triangles, quads;
  bool any_uv = false;

  bool face(const words& line) {
    std::vector<unsigned> nodes;
    for (std::size_t i = 1; i < line.size(); ++i) {
      const words parts = split(line[i], "/", true);
      long long vertex, ignored;
      if (line[i].size() >= limits::obj_token || parts.size() > 3 || !index(parts[0], vertex)) return false;
      for (std::size_t k = 1; k < parts.size(); ++k) {
        if (!index(parts[k], ignored) || (!parts[k].empty() && !(k == 1 ? any_uv : !normals.empty()))) return false;
      }
      nodes.push_back(static_cast<unsigned>(vertex != 0 ? vertex - 1 : static_cast<long long>(coords.size())));
    }
    if (nodes.size() == 3) triangles.push_back(nodes);
    if (nodes.size() == 4) quads.push_back(nodes);
    return true;
  }

  int read(const std::string& text) {
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
      const words tokens = split(line, " \t\r\v\f", false);
      const std::string key = tokens.empty() ? "" : tokens[0];
      if (key == "f" && !face(tokens)) return -2;
      if (key != "v" && key != "vn" && key != "vt") continue;
      std::vector<double> values = numbers(tokens);
      const std::size_t count = values.size();
      if (key == "v" ? count < 3 : key == "vn" ? count != 3 : count > 3) return -2;
      values.resize(std::min<std::size_t>(count, 3));
      any_uv = any_uv || key == "vt";
      if (key == "vt" && (count == 0 || (!uvs.empty() && uvs[0].size() != count))) continue;
      (key == "v" ? coords : key == "vn" ? normals : uvs).push_back(values);
    }
    return 0;
  }
};

template <class T>
bool equal(const dense2D<T>& m, const columns<T>& expected) {
  columns<T> ours;
  for (unsigned j = 0; j < m.cols(); ++j) ours.emplace_back(m.begin_column(j), m.end_column(j));
  return std::equal(ours.begin(), ours.end(), expected.begin(), expected.end(), [](const auto& a, const auto& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
  });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const memory_file file, written;
  const std::string text(reinterpret_cast<const char*>(data), size);
  file.write(text);
  dense2D<double> coords(2, 2), normals(2, 2), uvs(2, 2);
  dense2D<unsigned> triangles(2, 2), quads(2, 2);
  literal_reader literal;
  const int code = literal.read(text);
  CHECK(WavefrontOBJ_input(file.path(), coords, normals, uvs, triangles, quads) == code);
  CHECK(equal(coords, literal.coords) && equal(normals, literal.normals) && equal(uvs, literal.uvs));
  CHECK(equal(triangles, literal.triangles) && equal(quads, literal.quads));
  CHECK(WavefrontOBJ_output(written.path(), coords, triangles, quads, ELT_TRIA3, ELT_QUAD4) == 0);
  CHECK(WavefrontOBJ_input(written.path(), coords, normals, uvs, triangles, quads) == 0);
  CHECK(coords.cols() == literal.coords.size() && equal(triangles, literal.triangles) && equal(quads, literal.quads));
  return 0;
}
