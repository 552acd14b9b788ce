// The formats of mesh files: a new one is one more row of the table in formats.cpp.
#ifndef QEL_GRIDWORK_CLI_REPORT_FORMATS_H
#define QEL_GRIDWORK_CLI_REPORT_FORMATS_H

#include <span>
#include <string_view>

#include "file_bytes.h"
#include "mesh.h"

namespace report {

/// What the bytes of a file say of it beside the mesh.
struct file_facts {
  bool text = true;
  std::uint64_t elements = 0;  ///< that the file has or claims to have, where it tells before it is read; else 0
};

/// What a reader counts that it passed over: as programs read it, and in words.
struct left_out_kind {
  const char* name = "elements_left_out";
  const char* words = "elements of types not read";
};

/// A format that is not read has neither read() nor look() nor explain().
struct format {
  const char* name;
  const char* option;         ///< as --from and --to take it
  const char* extensions[3];  ///< in lower case, the rest null
  const char* written_types;  ///< in words
  bool has_references;        ///< one an element, or properties, which take their place
  left_out_kind left_out;
  int (*read)(const char* path, mesh& m);
  file_facts (*look)(const file_bytes& bytes);
  /// Why read() gave `result`, a negative code or, for a file without elements, 0.
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

file_facts look_at_text(const file_bytes& bytes);

int read_stl(const char* path, mesh& m);
file_facts look_at_stl(const file_bytes& bytes);
std::string explain_stl(int result, const file_bytes& bytes);

int read_obj(const char* path, mesh& m);
std::string explain_obj(int result, const file_bytes& bytes);

int read_medit(const char* path, mesh& m);
std::string explain_medit(int result, const file_bytes& bytes);

int read_vtk(const char* path, mesh& m);
file_facts look_at_vtk(const file_bytes& bytes);
std::string explain_vtk(int result, const file_bytes& bytes);

int read_nastran(const char* path, mesh& m);
std::string explain_nastran(int result, const file_bytes& bytes);

int read_femap(const char* path, mesh& m);
std::string explain_femap(int result, const file_bytes& bytes);

}  // namespace report

#endif
