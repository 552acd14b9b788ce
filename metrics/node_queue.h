// Nodes that wait for their turn.
#ifndef QEL_GRIDWORK_METRICS_NODE_QUEUE_H
#define QEL_GRIDWORK_METRICS_NODE_QUEUE_H

#include <algorithm>
#include <cstdint>

#include "core/limits.h"
#include "core/result.h"
#include "qel/dense.h"

namespace qel::gridwork::detail {

/// A heap of nodes, each in it at most once. `Before` orders the entries: before(x, y) when x has its turn first.
template <class Before>
class node_queue {
 public:
  struct entry {
    double key;
    unsigned node;
  };

  explicit node_queue(Before before) noexcept : before_(before) {}

  /// Room for the nodes below `nodes`, so that nothing later takes memory.
  [[nodiscard]] bool prepare(std::uint64_t nodes) {
    if (!entry_memory_.resize(nodes) || !place_memory_.resize(nodes, none)) return false;
    entries_ = entry_memory_.data();
    places_ = place_memory_.data();
    return true;
  }

  bool empty() const noexcept { return size_ == 0; }

  /// Makes the node wait; one that waits already moves forward, if at all.
  void push(entry added) noexcept {
    unsigned& place = places_[added.node];
    if (place == none) {
      place = size_++;
    } else if (!before_(added, entries_[place])) {
      return;
    }
    rise(place, added);
  }

  /// Takes out the node whose turn it is.
  unsigned pop() noexcept {
    const unsigned first = entries_[0].node;
    places_[first] = none;
    --size_;
    if (size_ != 0) sink(entries_[size_]);
    return first;
  }

 private:
  static constexpr unsigned children = limits::heap_children;

  void put(unsigned place, const entry& e) noexcept {
    entries_[place] = e;
    places_[e.node] = place;
  }

  void rise(unsigned place, const entry& rising) noexcept {
    while (place != 0) {
      const unsigned parent = (place - 1) / children;
      if (!before_(rising, entries_[parent])) break;
      put(place, entries_[parent]);
      place = parent;
    }
    put(place, rising);
  }

  /// Fills the place in front.
  void sink(const entry sinking) noexcept {
    unsigned place = 0;
    for (std::uint64_t child; (child = std::uint64_t{place} * children + 1) < size_;) {
      const auto begin = entries_ + child;
      const auto end = entries_ + std::min<std::uint64_t>(child + children, size_);
      const entry* least = std::min_element(begin, end, before_);
      if (!before_(*least, sinking)) break;
      put(place, *least);
      place = static_cast<unsigned>(least - entries_);
    }
    put(place, sinking);
  }

  Before before_;
  dense1D<entry> entry_memory_;
  dense1D<unsigned> place_memory_;
  entry* entries_ = nullptr;
  unsigned* places_ = nullptr;  // of the nodes; none where one does not wait
  unsigned size_ = 0;
};

}  // namespace qel::gridwork::detail

#endif
