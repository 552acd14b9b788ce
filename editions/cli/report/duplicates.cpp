#include "duplicates.h"

#include <algorithm>
#include <utility>

namespace report {

namespace {

using node_set = std::vector<unsigned>;

node_set nodes_of(const block& b, std::uint64_t e) {
  node_set nodes(b.connectivity.begin_column(e), b.connectivity.end_column(e));
  std::sort(nodes.begin(), nodes.end());
  return nodes;
}

// The same for all orders of the nodes.
std::uint64_t hash_of(const block& b, std::uint64_t e) {
  std::uint64_t sum = 0;
  for (const unsigned* node = b.connectivity.begin_column(e); node != b.connectivity.end_column(e); ++node) {
    const std::uint64_t mixed = (*node + 1ULL) * 0x9E3779B97F4A7C15ULL;
    sum += (mixed ^ mixed >> 29U) * 0xBF58476D1CE4E5B9ULL;
  }
  return sum;
}

bool keep(const std::vector<bool>& is_kept, std::uint64_t count, block& b) {
  block kept{b.type, {}, {}};
  if (!kept.connectivity.resize(b.connectivity.rows(), count)) return false;
  if (!b.references.empty() && !kept.references.resize(count)) return false;
  for (std::uint64_t e = 0, at = 0; e < is_kept.size(); ++e) {
    if (!is_kept[e]) continue;
    std::copy(b.connectivity.begin_column(e), b.connectivity.end_column(e), kept.connectivity.begin_column(at));
    if (!b.references.empty()) kept.references[at] = b.references[e];
    ++at;
  }
  b = kept;
  return true;
}

}  // namespace

std::vector<duplicate> find_duplicates(const block& b) {
  std::vector<std::pair<std::uint64_t, std::uint64_t>> order;
  order.reserve(b.connectivity.cols());
  for (std::uint64_t e = 0; e < b.connectivity.cols(); ++e) order.emplace_back(hash_of(b, e), e);
  std::sort(order.begin(), order.end());
  std::vector<duplicate> found;
  for (std::size_t i = 1; i < order.size(); ++i) {
    const auto [hash, element] = order[i];
    if (hash == order[i - 1].first && nodes_of(b, element) == nodes_of(b, order[i - 1].second))
      found.push_back({element, order[i - 1].second});
  }
  return found;
}

outcome remove_duplicates(mesh& m, std::uint64_t& removed) {
  for (block& b : m.blocks) {
    const std::vector<duplicate> found = find_duplicates(b);
    std::vector<bool> is_kept(b.connectivity.cols(), true);
    for (const duplicate& d : found) is_kept[d.element] = false;
    if (!found.empty() && !keep(is_kept, is_kept.size() - found.size(), b)) return outcome::of_memory(false);
    removed += found.size();
  }
  return {};
}

}  // namespace report
