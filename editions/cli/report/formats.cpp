#include "formats.h"

#include <algorithm>
#include <cctype>
#include <iterator>

#include "written.h"

namespace report {

namespace {

std::string extension_of(std::string_view path) {
  const std::size_t dot = path.rfind('.');
  if (dot == std::string_view::npos || path.find('/', dot) != std::string_view::npos) return {};
  std::string extension(path.substr(dot));
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return extension;
}

bool has_extension(const format& kind, const std::string& extension) {
  return std::any_of(std::begin(kind.extensions), std::end(kind.extensions),
                     [&](const char* its) { return its != nullptr && extension == its; });
}

}  // namespace

const std::vector<format>& formats() {
  using gw::operation;
  static const std::vector<format> rows = {{"STL",
                                            "stl",
                                            {".stl"},
                                            "triangles, quadrangles as two of them",
                                            read_stl,
                                            look_at_stl,
                                            explain_stl,
                                            stl_holds,
                                            write_stl,
                                            operation::STL_output},
                                           {"OBJ",
                                            "obj",
                                            {".obj"},
                                            "linear triangles and quadrangles",
                                            read_obj,
                                            look_at_text,
                                            explain_obj,
                                            obj_holds,
                                            write_obj,
                                            operation::WavefrontOBJ_output},
                                           {"MEDIT",
                                            "medit",
                                            {".mesh"},
                                            "edges, faces, solids; middle nodes are lost",
                                            read_medit,
                                            look_at_text,
                                            explain_medit,
                                            medit_holds,
                                            write_medit,
                                            operation::medit_output},
                                           {"VTK",
                                            "vtk",
                                            {".vtk"},
                                            "edges, faces, solids",
                                            nullptr,
                                            nullptr,
                                            nullptr,
                                            vtk_holds,
                                            write_vtk,
                                            operation::vtk_output},
                                           {"NASTRAN",
                                            "nastran",
                                            {".nas", ".bdf", ".dat"},
                                            "edges, faces, solids",
                                            nullptr,
                                            nullptr,
                                            nullptr,
                                            nastran_holds,
                                            write_nastran,
                                            operation::NASTRAN_output},
                                           {"EnSight",
                                            "ensight",
                                            {".geo"},
                                            "edges, faces, solids but pyramids",
                                            nullptr,
                                            nullptr,
                                            nullptr,
                                            ensight_holds,
                                            write_ensight,
                                            operation::ensight_output}};
  return rows;
}

const format* find_format(std::string_view path, std::string_view option) {
  const std::string extension = extension_of(path);
  for (const format& kind : formats()) {
    if (option.empty() ? has_extension(kind, extension) : option == kind.option) return &kind;
  }
  return nullptr;
}

file_facts look_at_text(std::string_view /*bytes*/) { return {}; }

}  // namespace report
