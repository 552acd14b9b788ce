// Meshes as blocks of one type with properties: what the writers of NASTRAN and FEMAP files take, check and number.
#ifndef QEL_GRIDWORK_IO_PROPERTY_BLOCKS_H
#define QEL_GRIDWORK_IO_PROPERTY_BLOCKS_H

#include <algorithm>
#include <cstdint>

#include "core/coordinates.h"
#include "core/elements.h"
#include "core/result.h"
#include "io/bytes/file.h"
#include "io/matrix_range.h"
#include "io/text/text_writer.h"
#include "qel/gridwork/elements.h"

namespace qel::gridwork::detail::io {

/// Columns of one type, with their properties.
struct property_block {
  const dense2D<unsigned>* connectivity;
  std::uint64_t first, last;  // its columns, from first up to but excluding last
  std::uint64_t rows;         // of the matrix that the block is a part of
  std::uint64_t first_ID;
  int type;
  const unsigned* properties;  // one a column; null when all are `property`
  unsigned property;
};

inline bool is_valid(const property_block& b) {
  if (!is_element_type(b.type)) return false;
  const auto type = static_cast<element_type>(b.type);
  if (b.first == b.last || nbr_nodes(type) == 0) return true;
  // Faces may be part of a higher matrix, mixed solids not.
  if (type == ELT_SOLID_MIX && b.rows > nbr_nodes(type)) return false;
  const std::uint64_t present = b.connectivity->rows();
  const std::uint64_t rows = std::min<std::uint64_t>(nbr_nodes(type), present);
  if (rows < nbr_nodes(type) && !is_mixed(type)) return false;
  return check_IDs(b.connectivity->sub_matrix(0, b.first, rows, b.last - b.first), type, none);
}

/// Calls action(plain type, ID, property, nodes) for the elements of a block.
template <class Action>
void for_each_element(const property_block& b, Action action) {
  const element_type type = resolve_type(static_cast<element_type>(b.type), b.connectivity->rows());
  for (std::uint64_t j = b.first; j < b.last; ++j) {
    const unsigned* nodes = b.connectivity->column(j);
    const auto ID = static_cast<unsigned>(b.first_ID + (j - b.first));
    action(plain_type(type, nodes), ID, b.properties != nullptr ? b.properties[j] : b.property, nodes);
  }
}

/// The blocks of a mesh, which at(k) makes for k < count.
template <class At>
struct block_list {
  std::uint64_t count;
  At at;

  template <class Action>
  void for_each_element(Action action) const {
    for (std::uint64_t k = 0; k < count; ++k) io::for_each_element(at(k), action);
  }
};

/// Checks the blocks, and has write(writer, blocks) write them. It returns false when memory ran out.
template <class At, class Write>
int write_checked(file& output, const block_list<At>& blocks, Write write) {
  for (std::uint64_t k = 0; k < blocks.count; ++k) {
    if (!is_valid(blocks.at(k))) return -3;
  }
  text_writer writer(output.stream());
  if (!writer.prepare() || !write(writer, blocks)) return out_of_memory;
  writer.finish();
  return 0;
}

/// Writes whole matrices, one after the other.
template <class Write>
int write_matrices(const char* filename, const dense2D<double>& coords, const property_block* blocks,
                   std::uint64_t count, Write write) {
  file output(filename, access::write);
  if (!output.is_open()) return -1;
  if (!in_plane_or_space(coords)) return -2;
  const auto at = [=](std::uint64_t k) { return blocks[k]; };
  return write_checked(output, block_list<decltype(at)>{count, at}, write);
}

// --- The three overloads of a writer -------------------------------------------------------------------------------

template <class Write>
int write_matrix(const char* filename, const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                 element_type type, Write write) {
  if (connectivity.empty()) return 0;
  const property_block all = {&connectivity, 0, connectivity.cols(), connectivity.rows(), 1, type, nullptr, 1};
  return write_matrices(filename, coords, &all, 1, write);
}

template <class Write>
int write_two_matrices(const char* filename, const dense2D<double>& coords, const dense2D<unsigned>& connectivity1,
                       const dense2D<unsigned>& connectivity2, element_type type1, element_type type2, Write write) {
  // The blocks are those of one matrix that has rows for both types.
  const std::uint64_t rows = std::max(nbr_nodes(type1), nbr_nodes(type2));
  const bool are_types = is_element_type(type1) && is_element_type(type2);
  if ((are_types && rows == 0) || connectivity1.cols() + connectivity2.cols() == 0) return 0;
  const std::uint64_t count1 = element_count(connectivity1), count2 = element_count(connectivity2);
  const property_block blocks[] = {{&connectivity1, 0, count1, rows, 1, type1, nullptr, 1},
                                   {&connectivity2, 0, count2, rows, connectivity1.cols() + 1, type2, nullptr, 2}};
  return write_matrices(filename, coords, blocks, 2, write);
}

/// True when the offsets increase, weakly, and stay inside the matrix.
inline bool valid_offsets(const dense1D<unsigned>& offsets, std::uint64_t columns) noexcept {
  return std::is_sorted(offsets.begin(), offsets.end()) && (offsets.empty() || *(offsets.end() - 1) <= columns);
}

template <class Write>
int write_blocks(const char* filename, const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                 const dense1D<unsigned>& block_offsets, const dense1D<int>& block_types,
                 const dense1D<unsigned>& property_IDs, Write write) {
  if (connectivity.empty()) return 0;
  file output(filename, access::write);
  if (!output.is_open()) return -1;
  if (!in_plane_or_space(coords)) return -2;
  if (block_offsets.size() != block_types.size() + 1) return -5;
  if (!valid_offsets(block_offsets, connectivity.cols())) return -5;
  if (property_IDs.size() != connectivity.cols()) return -6;
  const auto at = [&](std::uint64_t k) {
    const std::uint64_t first = block_offsets[k];
    return property_block{&connectivity, first,          block_offsets[k + 1], connectivity.rows(),
                          first + 1,     block_types[k], property_IDs.begin(), 0};
  };
  return write_checked(output, block_list<decltype(at)>{block_types.size(), at}, write);
}

}  // namespace qel::gridwork::detail::io

#endif
