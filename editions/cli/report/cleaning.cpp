#include "cleaning.h"

#include <utility>

namespace report {

namespace {

using connectivities = std::vector<qel::dense2D<unsigned>>;

bool copy_all(const mesh& m, connectivities& all) {
  all.resize(m.blocks.size());
  for (std::size_t k = 0; k < all.size(); ++k) {
    if (!all[k].copy(m.blocks[k].connectivity)) return false;
  }
  return true;
}

bool keep_references(const qel::dense1D<unsigned>& new_elements, block& b) {
  if (b.references.empty()) return true;
  qel::dense1D<unsigned> kept;
  if (!kept.resize(b.connectivity.cols())) return false;
  for (std::uint64_t e = 0; e < new_elements.size(); ++e) {
    if (new_elements[e] != ~0U) kept[new_elements[e]] = b.references[e];
  }
  b.references = kept;
  return true;
}

}  // namespace

outcome remove_unused_nodes(mesh& m) {
  connectivities all;
  qel::dense1D<unsigned> new_IDs;
  if (!copy_all(m, all)) return outcome::of_memory(false);
  const outcome done{gw::operation::simplify, gw::simplify(m.coords, all.data(), all.data() + all.size(), new_IDs, 0)};
  for (std::size_t k = 0; k < all.size() && !done.failed(); ++k) m.blocks[k].connectivity = all[k];
  return done;
}

outcome merge_nodes(mesh& m, double tolerance, unsigned mode) {
  connectivities all;
  if (!copy_all(m, all)) return outcome::of_memory(false);
  qel::dense2D<unsigned>* const first = all.data();
  const outcome done{gw::operation::merge_elements, gw::merge(m.coords, first, first + all.size(), tolerance, mode)};
  for (std::size_t k = 0; k < all.size() && !done.failed(); ++k) m.blocks[k].connectivity = all[k];
  return done;
}

outcome remove_degenerate(mesh& m, std::uint64_t& removed) {
  for (block& b : m.blocks) {
    qel::dense1D<unsigned> new_elements;
    const outcome done{gw::operation::remove_degenerated, gw::remove_degenerated(b.connectivity, new_elements, true)};
    if (done.failed()) return done;
    if (!keep_references(new_elements, b)) return outcome::of_memory(false);
    removed += done.count();
  }
  std::erase_if(m.blocks, [](const block& b) { return b.connectivity.empty(); });
  return {};
}

outcome clean(mesh& m, double tolerance, unsigned mode, cleaned& counts) {
  const outcome merged = merge_nodes(m, tolerance, mode);
  if (merged.failed()) return merged;
  const outcome removed = remove_degenerate(m, counts.removed_elements);
  if (removed.failed()) return removed;
  const outcome simplified = remove_unused_nodes(m);
  counts.merged = merged.count();
  counts.removed_nodes = simplified.failed() ? 0 : simplified.count();
  return simplified;
}

}  // namespace report
