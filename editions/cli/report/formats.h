// The formats of mesh files: a new one is one more row of the table in formats.cpp.
#ifndef QEL_GRIDWORK_CLI_REPORT_FORMATS_H
#define QEL_GRIDWORK_CLI_REPORT_FORMATS_H

#include <span>
#include <string_view>

#include "file_bytes.h"
#include "mesh.h"

namespace report {

/// What a reader counts that it passed over: as programs read it, and in words.
struct left_out_kind {
  const char* name = "elements_left_out";
  const char* words = "elements of types not read";
};

/// A format that is not read has neither read() nor is_text() nor explain().
struct format {
  const char* name;
  const char* option;         ///< as --from and --to take it
  const char* extensions[3];  ///< in lower case, the rest null
  const char* written_types;  ///< in words
  bool has_references;        ///< one an element, or properties, which take their place
  left_out_kind left_out;
  int (*read)(const char* path, mesh& m);
  bool (*is_text)(const file_bytes& bytes);
  /// Why read() gave `result`, a negative code.
  std::string (*explain)(int result, const file_bytes& bytes);
  bool (*holds)(gw::element_type type);
  int (*write)(const char* path, const mesh& m, bool text);
  gw::operation writer;
};

std::span<const format> formats();

/// The format of an option's word or, without one, of a path's extension; null when there is none.
const format* find_format(std::string_view path, std::string_view option);

/// The end of a path from its last dot on, in lower case.
std::string extension_of(std::string_view path);

// --- What the rows are made of --------------------------------------------------------------------------------------

bool is_always_text(const file_bytes& bytes);

int read_stl(const char* path, mesh& m);
bool is_text_stl(const file_bytes& bytes);
std::string explain_stl(int result, const file_bytes& bytes);

int read_obj(const char* path, mesh& m);
std::string explain_obj(int result, const file_bytes& bytes);

int read_medit(const char* path, mesh& m);
std::string explain_medit(int result, const file_bytes& bytes);

int read_vtk(const char* path, mesh& m);
bool is_text_vtk(const file_bytes& bytes);
std::string explain_vtk(int result, const file_bytes& bytes);

int read_nastran(const char* path, mesh& m);
std::string explain_nastran(int result, const file_bytes& bytes);

int read_femap(const char* path, mesh& m);
std::string explain_femap(int result, const file_bytes& bytes);

}  // namespace report

#endif
