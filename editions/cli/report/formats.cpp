#include "formats.h"

#include <algorithm>
#include <iterator>

#include "file_bytes.h"
#include "written.h"

namespace report {

namespace {

constexpr left_out_kind includes = {"includes_left_out", "INCLUDE statements, not followed"};

constexpr format rows[] = {
    {
        .name = "STL",
        .option = "stl",
        .extensions = {".stl"},
        .written_types = "triangles, quadrangles as two of them",
        .has_references = false,
        .left_out = {},
        .read = read_stl,
        .is_text = is_text_stl,
        .explain = explain_stl,
        .holds = stl_holds,
        .write = write_stl,
        .writer = gw::operation::STL_output,
    },
    {
        .name = "OBJ",
        .option = "obj",
        .extensions = {".obj"},
        .written_types = "linear triangles and quadrangles",
        .has_references = false,
        .left_out = {},
        .read = read_obj,
        .is_text = is_always_text,
        .explain = explain_obj,
        .holds = obj_holds,
        .write = write_obj,
        .writer = gw::operation::WavefrontOBJ_output,
    },
    {
        .name = "VTK",
        .option = "vtk",
        .extensions = {".vtk"},
        .written_types = "edges, faces, solids",
        .has_references = false,
        .left_out = {"elements_left_out", "cells of types not read"},
        .read = read_vtk,
        .is_text = is_text_vtk,
        .explain = explain_vtk,
        .holds = vtk_holds,
        .write = write_vtk,
        .writer = gw::operation::vtk_output,
    },
    {
        .name = "MEDIT",
        .option = "medit",
        .extensions = {".mesh"},
        .written_types = "edges, faces, solids; middle nodes are lost",
        .has_references = true,
        .left_out = {},
        .read = read_medit,
        .is_text = is_always_text,
        .explain = explain_medit,
        .holds = medit_holds,
        .write = write_medit,
        .writer = gw::operation::medit_output,
    },
    {
        .name = "NASTRAN",
        .option = "nastran",
        .extensions = {".nas", ".bdf", ".dat"},
        .written_types = "edges, faces, solids; nodes within faces and solids are lost",
        .has_references = true,
        .left_out = includes,
        .read = read_nastran,
        .is_text = is_always_text,
        .explain = explain_nastran,
        .holds = nastran_holds,
        .write = write_nastran,
        .writer = gw::operation::NASTRAN_output,
    },
    {
        .name = "FEMAP",
        .option = "femap",
        .extensions = {".neu"},
        .written_types = "edges, faces, solids; nodes within faces and solids are lost",
        .has_references = true,
        .left_out = {},
        .read = read_femap,
        .is_text = is_always_text,
        .explain = explain_femap,
        .holds = nastran_holds,
        .write = write_femap,
        .writer = gw::operation::FEMAP_output,
    },
    {
        .name = "EnSight",
        .option = "ensight",
        .extensions = {".case", ".geo"},
        .written_types = "edges, faces, solids but pyramids",
        .has_references = false,
        .left_out = {},
        .read = nullptr,
        .is_text = nullptr,
        .explain = nullptr,
        .holds = ensight_holds,
        .write = write_ensight,
        .writer = gw::operation::ensight_output,
    },
};

bool has_extension(const format& kind, const std::string& extension) {
  return std::any_of(std::begin(kind.extensions), std::end(kind.extensions),
                     [&](const char* its) { return its != nullptr && extension == its; });
}

}  // namespace

std::span<const format> formats() { return rows; }

const format* find_format(std::string_view path, std::string_view option) {
  const std::string extension = extension_of(path);
  for (const format& kind : rows) {
    if (option.empty() ? has_extension(kind, extension) : option == kind.option) return &kind;
  }
  return nullptr;
}

std::string extension_of(std::string_view path) {
  const std::size_t dot = path.rfind('.');
  if (dot == std::string_view::npos || path.find('/', dot) != std::string_view::npos) return {};
  return lower_case(path.substr(dot));
}

bool is_always_text(const file_bytes& /*bytes*/) { return true; }

}  // namespace report
