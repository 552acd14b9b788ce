#include "cleaning.h"

namespace report {

namespace {

using connectivities = std::vector<qel::dense2D<unsigned>>;

connectivities copies(const mesh& m) {
  connectivities all(m.blocks.size());
  for (std::size_t k = 0; k < all.size(); ++k) require_memory(all[k].copy(m.blocks[k].connectivity));
  return all;
}

std::uint64_t remove_degenerate(connectivities& all) {
  std::uint64_t removed = 0;
  for (qel::dense2D<unsigned>& connectivity : all) {
    removed += static_cast<std::uint64_t>(
        require(gw::operation::remove_degenerated, gw::remove_degenerated(connectivity, true)));
  }
  return removed;
}

}  // namespace

cleaned clean(mesh& m, double tolerance, unsigned mode) {
  connectivities all = copies(m);
  qel::dense2D<unsigned>* const first = all.data();
  qel::dense2D<unsigned>* const last = first + all.size();
  cleaned counts;
  counts.merged = static_cast<std::uint64_t>(
      require(gw::operation::merge_elements, gw::merge(m.coords, first, last, tolerance, mode)));
  counts.removed_elements = remove_degenerate(all);
  qel::dense1D<unsigned> new_IDs;
  counts.removed_nodes =
      static_cast<std::uint64_t>(require(gw::operation::simplify, gw::simplify(m.coords, first, last, new_IDs, 0)));
  for (std::size_t k = 0; k < all.size(); ++k) m.blocks[k].connectivity = all[k];
  std::erase_if(m.blocks, [](const block& b) { return b.connectivity.empty(); });
  return counts;
}

}  // namespace report
