// Mesh files. The name of a file that is read is given, that of one that is written is a result.
#include "functions.h"

namespace web {

namespace {

using gw::element_type;
using gw::operation;

constexpr function rows[] = {
    row<overload<int(const char*, points&, elements&)>(gw::STL_input)>("STL_input", "file >coords >connectivity"),
    row<gw::STL_output>("STL_output", ">file coords connectivity ascii"),
    row<gw::WavefrontOBJ_input>("WavefrontOBJ_input", "file >coords >normals >uvs >triangles >quads"),
    row<overload<int(const char*, const points&, const points&, const points&, const elements&, const elements&)>(
        gw::WavefrontOBJ_output)>("WavefrontOBJ_output", ">file coords normals uvs triangles quads"),
    row<overload<int(const char*, const points&, const elements&, element_type)>(gw::WavefrontOBJ_output)>(
        "WavefrontOBJ_output", ">file coords connectivity type"),
    row<gw::vtk_convert>("vtk_convert", "connectivity type +nbr_cells +cells +cell_types"),
    row<overload<int(const char*, points&, elements&, list&, codes&, list&)>(gw::vtk_input)>(
        "vtk_input", "file >coords >connectivity >block_offsets >block_types >cell_IDs"),
    row<overload<int(const char*, points&, elements&, element_type)>(gw::vtk_input)>("vtk_input",
                                                                                     "file >coords >connectivity type"),
    row<overload<int(const char*, const points&, const elements&, element_type)>(gw::vtk_output)>(
        "vtk_output", ">file coords connectivity type", operation::vtk_output),
    row<[](const char* file, const points& coords, const matrices& all, const codes& types) {
      return gw::vtk_output(file, coords, all.data(), all.data() + all.size(), types);
    }>("vtk_output", ">file coords connectivities types", operation::vtk_output),
    row<overload<int(const char*, points&, elements&, list&, codes&, list&, list&)>(gw::medit_input)>(
        "medit_input", "file >coords >connectivity >block_offsets >block_types >references >node_references"),
    row<overload<int(const char*, points&, elements&, element_type)>(gw::medit_input)>(
        "medit_input", "file >coords >connectivity type"),
    row<gw::medit_solution_input>("medit_solution_input", "file >dim >values >kinds"),
    row<overload<int(const char*, const points&, const elements&, element_type)>(gw::medit_output)>(
        "medit_output", ">file coords connectivity type", operation::medit_output),
    row<overload<int(const char*, const points&, const elements&, element_type, const list&)>(gw::medit_output)>(
        "medit_output", ">file coords connectivity type references", operation::medit_output_references),
    row<[](const char* file, const points& coords, const matrices& all, const codes& types) {
      return gw::medit_output(file, coords, all.data(), all.data() + all.size(), types);
    }>("medit_output", ">file coords connectivities types", operation::medit_output),
    row<gw::medit_scalar>("medit_scalar", ">file dim values"),
    row<gw::medit_vector>("medit_vector", ">file dim vectors"),
    row<gw::medit_tensor>("medit_tensor", ">file metrics"),
    row<overload<int(const char*, points&, elements&, list&, codes&, list&, list&, list&)>(gw::NASTRAN_input)>(
        "NASTRAN_input", "file >coords >connectivity >block_offsets >block_types >property_IDs >element_IDs >node_IDs"),
    row<overload<int(const char*, points&, elements&, element_type)>(gw::NASTRAN_input)>(
        "NASTRAN_input", "file >coords >connectivity type"),
    row<overload<int(const char*, const points&, const elements&, element_type)>(gw::NASTRAN_output)>(
        "NASTRAN_output", ">file coords connectivity type"),
    row<overload<int(const char*, const points&, const elements&, const list&, const codes&, const list&)>(
        gw::NASTRAN_output)>("NASTRAN_output", ">file coords connectivity block_offsets block_types property_IDs"),
    row<overload<int(const char*, points&, elements&, list&, codes&, list&, list&, list&)>(gw::FEMAP_input)>(
        "FEMAP_input", "file >coords >connectivity >block_offsets >block_types >property_IDs >element_IDs >node_IDs"),
    row<overload<int(const char*, points&, elements&, element_type)>(gw::FEMAP_input)>(
        "FEMAP_input", "file >coords >connectivity type"),
    row<overload<int(const char*, const points&, const elements&, element_type)>(gw::FEMAP_output)>(
        "FEMAP_output", ">file coords connectivity type"),
    row<overload<int(const char*, const points&, const elements&, const list&, const codes&, const list&)>(
        gw::FEMAP_output)>("FEMAP_output", ">file coords connectivity block_offsets block_types property_IDs"),
    row<overload<int(const char*, const points&, const elements&, element_type)>(gw::ensight_output)>(
        "ensight_output", ">file coords connectivity type"),
    row<[](const char* file, const points& coords, const matrices& all, const codes& types) {
      return gw::ensight_output(file, coords, all.data(), all.data() + all.size(), types);
    }>("ensight_output", ">file coords connectivities types"),
};

}  // namespace

std::span<const function> file_functions() { return rows; }

}  // namespace web
