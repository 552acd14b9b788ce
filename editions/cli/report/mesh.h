// A mesh as the tool holds it, whatever file it comes from, and its elements seen as linear ones.
#ifndef QEL_GRIDWORK_CLI_REPORT_MESH_H
#define QEL_GRIDWORK_CLI_REPORT_MESH_H

#include <qel/gridwork.h>
#include <qel/gridwork/messages.h>

#include <cstdint>
#include <string>
#include <vector>

namespace report {

namespace gw = qel::gridwork;

/// Elements of one plain type.
struct block {
  gw::element_type type = gw::ELT_UNKNOWN;
  qel::dense2D<unsigned> connectivity;
  qel::dense1D<unsigned> references = {};  ///< a number of the file's own for each element, or empty
};

/// Nodes, and blocks that are not empty.
struct mesh {
  qel::dense2D<double> coords;
  std::vector<block> blocks;
  std::uint64_t nbr_removed = 0;  ///< degenerate elements that the reader of the file did not keep
};

constexpr int out_of_memory = -199;

/// What a result means. An edition that calls few functions has sentences for these alone.
const char* words_of(gw::operation call, int result);

/// How a calculation ended: with the result of the call that failed, or of the last one.
struct outcome {
  gw::operation call = gw::operation::merge_nodes;
  int result = 0;

  bool failed() const { return result < 0; }
  std::uint64_t count() const { return static_cast<std::uint64_t>(result); }
  std::string words() const { return words_of(call, result); }

  static outcome of_memory(bool granted) { return {gw::operation::merge_nodes, granted ? 0 : out_of_memory}; }
};

/// Appends an element, of whose nodes those of the block's type count. False when memory ran out.
bool append_element(const unsigned* nodes, block& b);

/// "TRIA3" for ELT_TRIA3.
const char* type_name(gw::element_type type);

std::uint64_t count_elements(const mesh& m);

/// The largest dimension of an element; 0 without elements.
unsigned mesh_dim(const mesh& m);

/// True when every element of every block has nodes of the mesh alone.
bool has_valid_nodes(const mesh& m);

/// The vertices of a block, as elements of the linear type of that shape; no copy.
block linear_block(const block& elements);

/// The vertices of all elements of a dimension (1 to 3), in one matrix of a plain or a mixed type. False when memory ran
/// out.
bool linear_elements(const mesh& m, unsigned dim, block& all);

/// The edges of all elements, each once.
outcome find_edges(const mesh& m, qel::dense2D<unsigned>& edges);

}  // namespace report

#endif
