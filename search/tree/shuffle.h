// The fixed pseudo-random order in which nodes enter a tree.
#ifndef QEL_GRIDWORK_SEARCH_TREE_SHUFFLE_H
#define QEL_GRIDWORK_SEARCH_TREE_SHUFFLE_H

#include <cstdint>
#include <random>
#include <utility>

namespace qel::gridwork::detail {

/// Shuffles the list with a generator seeded with 1 at every call, so that equal lists always give equal trees.
inline void shuffle(unsigned* list, std::uint64_t count) {
  std::mt19937 next_random(1);
  for (std::uint64_t i = 1; i < count; ++i) {
    const std::uint64_t j = static_cast<std::uint32_t>(next_random()) % (i + 1);
    if (j != i) std::swap(list[i], list[j]);
  }
}

}  // namespace qel::gridwork::detail

#endif
