// MEDIT, VTK, NASTRAN and FEMAP files: read as one matrix of blocks, one a type.
#include <algorithm>

#include "file_bytes.h"
#include "formats.h"
#include "second_look.h"

namespace report {

namespace {

struct blocks_read {
  qel::dense2D<unsigned> connectivity;
  qel::dense1D<unsigned> offsets, references;
  qel::dense1D<int> types;
};

// The references of columns from `first` on; none if all are 0.
bool copy_references(const qel::dense1D<unsigned>& from, std::uint64_t first, block& b) {
  if (from.empty()) return true;
  const unsigned* start = from.data() + first;
  if (std::all_of(start, start + b.connectivity.cols(), [](unsigned r) { return r == 0; })) return true;
  if (!b.references.resize(b.connectivity.cols())) return false;
  std::copy(start, start + b.connectivity.cols(), b.references.data());
  return true;
}

int take_blocks(const blocks_read& all, int result, mesh& m) {
  for (std::uint64_t k = 0; k < all.types.size() && result >= 0; ++k) {
    const auto type = static_cast<gw::element_type>(all.types[k]);
    const std::uint64_t first = all.offsets[k];
    m.blocks.push_back({type, all.connectivity.sub_matrix(0, first, nbr_nodes(type), all.offsets[k + 1] - first), {}});
    if (!copy_references(all.references, first, m.blocks.back())) return out_of_memory;
  }
  return result;
}

using fault_finder = std::string (*)(const file_bytes& bytes, int result);

// With the line of the fault, for the results that have one.
std::string words_for(gw::operation reader, int result, const file_bytes& bytes, fault_finder find) {
  const bool has_place = result == malformed || result == unknown_node || result == node_differs;
  const std::string fault = has_place ? find(bytes, result) : std::string();
  return fault.empty() ? words_of(reader, result) : fault;
}

std::string third_line(const file_bytes& bytes) {
  line_reader lines(bytes);
  for (int k = 0; k < 3 && lines.next();) ++k;
  return std::string(lines.line());
}

}  // namespace

int read_medit(const char* path, mesh& m) {
  blocks_read all;
  qel::dense1D<unsigned> node_references;
  const int result =
      gw::medit_input(path, m.coords, all.connectivity, all.offsets, all.types, all.references, node_references);
  return take_blocks(all, result, m);
}

std::string explain_medit(int result, const file_bytes& bytes) {
  return words_for(gw::operation::medit_input, result, bytes, find_medit_fault);
}

int read_vtk(const char* path, mesh& m) {
  blocks_read all;
  qel::dense1D<unsigned> cell_IDs;
  const int result = gw::vtk_input(path, m.coords, all.connectivity, all.offsets, all.types, cell_IDs);
  return take_blocks(all, result, m);
}

bool is_text_vtk(const file_bytes& bytes) { return !holds(lower_case(third_line(bytes)), "binary"); }

std::string explain_vtk(int result, const file_bytes& bytes) {
  return words_for(gw::operation::vtk_input, result, bytes, find_vtk_fault);
}

int read_nastran(const char* path, mesh& m) {
  blocks_read all;
  qel::dense1D<unsigned> element_IDs, node_IDs;
  const int result = gw::NASTRAN_input(path, m.coords, all.connectivity, all.offsets, all.types, all.references,
                                       element_IDs, node_IDs);
  return take_blocks(all, result, m);
}

std::string explain_nastran(int result, const file_bytes& bytes) {
  return words_for(gw::operation::NASTRAN_input, result, bytes, find_nastran_fault);
}

int read_femap(const char* path, mesh& m) {
  blocks_read all;
  qel::dense1D<unsigned> element_IDs, node_IDs;
  const int result =
      gw::FEMAP_input(path, m.coords, all.connectivity, all.offsets, all.types, all.references, element_IDs, node_IDs);
  return take_blocks(all, result, m);
}

std::string explain_femap(int result, const file_bytes& bytes) {
  return words_for(gw::operation::FEMAP_input, result, bytes, find_femap_fault);
}

}  // namespace report
