// Sentences for what the page calls; those of all other functions would be loaded for nothing.
#include <report/mesh.h>

#include <algorithm>
#include <array>

namespace report {

namespace {

using gw::operation;
using gw::result_code;

constexpr operation called[] = {
    operation::merge_nodes,     operation::merge_elements,     operation::remove_degenerated,
    operation::simplify,        operation::get_neighbors,      operation::get_mesh_boundaries,
    operation::shape_qualities, operation::STL_input,          operation::STL_output,
    operation::vtk_input,       operation::WavefrontOBJ_input, operation::WavefrontOBJ_output,
    operation::vtk_output,      operation::medit_input,        operation::medit_output,
    operation::NASTRAN_input,   operation::NASTRAN_output,     operation::FEMAP_input,
    operation::FEMAP_output,    operation::ensight_output,
};

constexpr bool is_told(const result_code& known) {
  return std::find(std::begin(called), std::end(called), known.call) != std::end(called);
}

constexpr auto told = [] {
  std::array<result_code, std::count_if(std::begin(gw::result_codes), std::end(gw::result_codes), is_told)> codes{};
  std::copy_if(std::begin(gw::result_codes), std::end(gw::result_codes), codes.begin(), is_told);
  return codes;
}();

}  // namespace

const char* words_of(operation call, int result) {
  for (const result_code& known : told) {
    if (known.call == call && known.code == result) return known.sentence;
  }
  return gw::sentences::unknown;
}

}  // namespace report
