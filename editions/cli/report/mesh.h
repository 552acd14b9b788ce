// A mesh as the tool holds it, whatever file it comes from, and its elements seen as linear ones.
#ifndef QEL_GRIDWORK_CLI_REPORT_MESH_H
#define QEL_GRIDWORK_CLI_REPORT_MESH_H

#include <qel/gridwork.h>
#include <qel/gridwork/messages.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace report {

namespace gw = qel::gridwork;

/// Elements of one plain type.
struct block {
  gw::element_type type = gw::ELT_UNKNOWN;
  qel::dense2D<unsigned> connectivity;
};

/// Nodes, and blocks that are not empty.
struct mesh {
  qel::dense2D<double> coords;
  std::vector<block> blocks;
};

/// A file or a mesh that cannot be worked on: the words for it and, where a function refused it, its result code.
class failure : public std::runtime_error {
 public:
  explicit failure(const std::string& words, int result = 0) : std::runtime_error(words), result_(result) {}
  int result() const noexcept { return result_; }

 private:
  int result_;
};

/// Fails in words where a function of the library did; else its result.
inline int require(gw::operation call, int result) {
  if (result < 0) throw failure(gw::message(call, result), result);
  return result;
}

inline void require_memory(bool granted) {
  if (!granted) throw failure("memory ran out", -199);
}

/// "TRIA3" for ELT_TRIA3.
const char* type_name(gw::element_type type);

std::uint64_t count_elements(const mesh& m);

/// The largest dimension of an element; 0 without elements.
unsigned mesh_dim(const mesh& m);

/// True when every element of every block has nodes of the mesh alone.
bool has_valid_nodes(const mesh& m);

/// The vertices of a block, as elements of the linear type of that shape; no copy.
block linear_block(const block& elements);

/// The vertices of all elements of a dimension (2 or 3), in one matrix of a plain or a mixed type.
block linear_elements(const mesh& m, unsigned dim);

}  // namespace report

#endif
