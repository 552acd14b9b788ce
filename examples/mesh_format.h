// What the inspector knows of a file format. A new format is one more source file like stl_format.cpp or
// obj_format.cpp, or, if it is only written, a row in written_formats.cpp; it is declared here and named in
// inspect_mesh.cpp.
#ifndef MESH_FORMAT_H
#define MESH_FORMAT_H

#include <qel/gridwork.h>
#include <qel/gridwork/messages.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

// What a file says of itself, before the library reads it.
struct survey {
  std::uintmax_t bytes = 0;
  bool text = false;
  bool printable = false;       // begins like text of some kind
  std::uint64_t triangles = 0;  // STL, text: facets that end; binary: the count in the header. OBJ: half quadrangles
  std::uint64_t nodes = 0;      // STL: three for each triangle
  std::uint64_t lines = 0;
  bool whole_lines = true;  // the last line ends
};

struct mesh {
  qel::dense2D<double> coords;
  qel::dense2D<unsigned> connectivity;
};

// A format that is only written has neither read() nor explain().
struct format {
  const char* name;
  std::vector<std::string> extensions;
  survey (*look)(const std::string& path);
  int (*read)(const std::string& path, mesh& result);
  std::string (*explain)(int code, const std::string& path, const survey& file);
  qel::gridwork::operation writer;
  int (*write)(const std::string& path, const mesh& m, bool text);
  bool (*complete)(const survey& file, const mesh& m);
};

extern const format stl_format, obj_format, vtk_format, medit_format, nastran_format, ensight_format,
    ensight_case_format;

// A section of the report; see quality_report.cpp.
void print_quality(const mesh& m);

// Fails in words where a function of the library did.
inline void require(qel::gridwork::operation call, int result, const std::string& step) {
  if (result < 0) throw std::runtime_error(step + ": " + qel::gridwork::message(call, result));
}

inline std::string lower_case(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

inline bool holds(const std::string& text, const char* word) { return text.find(word) != std::string::npos; }

// Counts bytes and lines.
inline survey look_at_text(const std::string& path) {
  survey file;
  file.text = true;
  std::ifstream in(path, std::ios::binary);
  std::vector<char> block(1U << 20U);
  while (in.read(block.data(), static_cast<std::streamsize>(block.size())), in.gcount() > 0) {
    file.bytes += static_cast<std::uintmax_t>(in.gcount());
    file.lines += static_cast<std::uint64_t>(std::count(block.begin(), block.begin() + in.gcount(), '\n'));
    file.whole_lines = block[static_cast<std::size_t>(in.gcount()) - 1] == '\n';
  }
  return file;
}

inline std::string number(std::uintmax_t value) {
  std::string digits = std::to_string(value);
  for (std::size_t at = digits.size(); at > 3; at -= 3) digits.insert(at - 3, " ");
  return digits;
}

#endif
