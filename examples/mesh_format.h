// What the inspector knows of a file format. A new format is one more source file like stl_format.cpp, declared here,
// with a row in the table of inspect_mesh.cpp.
#ifndef MESH_FORMAT_H
#define MESH_FORMAT_H

#include <qel/gridwork.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <string>

// What a file says of itself, before the library reads it.
struct survey {
  std::uintmax_t bytes = 0;
  bool text = false;
  bool printable = false;       // begins like text of some kind
  std::uint64_t triangles = 0;  // text: facets that end; binary: the count in the header
};

struct mesh {
  qel::dense2D<double> coords;
  qel::dense2D<unsigned> connectivity;
};

struct format {
  const char* name;
  const char* extension;
  survey (*look)(const std::string& path);
  int (*read)(const std::string& path, mesh& result);
  std::string (*explain)(int code, const std::string& path, const survey& file);
  int (*write)(const std::string& path, const mesh& m, bool text);
  bool (*complete)(const survey& file, const mesh& m);
};

extern const format stl_format;

// A section of the report; see quality_report.cpp.
void print_quality(const mesh& m);

inline std::string lower_case(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

inline bool holds(const std::string& text, const char* word) { return text.find(word) != std::string::npos; }

inline std::string number(std::uintmax_t value) {
  std::string digits = std::to_string(value);
  for (std::size_t at = digits.size(); at > 3; at -= 3) digits.insert(at - 3, " ");
  return digits;
}

#endif
