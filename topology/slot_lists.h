// Lists of slots that are filled in turn, in one pass and without knowing their sizes beforehand.
#ifndef QEL_GRIDWORK_TOPOLOGY_SLOT_LISTS_H
#define QEL_GRIDWORK_TOPOLOGY_SLOT_LISTS_H

#include <algorithm>
#include <cstdint>

#include "core/check.h"
#include "core/limits.h"
#include "core/result.h"
#include "qel/dense.h"

namespace qel::gridwork::detail {

/// A list is a chain of blocks that are cut from one array.
class slot_lists {
 public:
  /// Room for `lists` lists of `slots` slots together.
  [[nodiscard]] bool prepare(std::uint64_t lists, std::uint64_t slots) {
    const std::uint64_t blocks = slots / block + lists;  // every list but the full ones ends inside a block
    if (!slot_memory_.resize(blocks * block) || !blocks_before_.resize(blocks) || !end_memory_.resize(lists, 0)) {
      return false;
    }
    slots_ = slot_memory_.data();
    ends_ = end_memory_.data();
    return true;
  }

  void push_back(std::uint64_t list, unsigned slot) noexcept {
    QEL_GRIDWORK_CHECK(list < end_memory_.size());
    std::uint64_t end = ends_[list];
    if (end % block == 0) end = begin_block(end);
    slots_[end] = slot;
    ends_[list] = end + 1;
  }

  std::uint64_t size(std::uint64_t list) const noexcept {
    std::uint64_t size = 0;
    visit_blocks(list, [&size](const unsigned*, std::uint64_t n) { size += n; });
    return size;
  }

  /// Writes a list so that it ends before `end`, and returns where it begins.
  unsigned* copy_backward(std::uint64_t list, unsigned* end) const noexcept {
    visit_blocks(list, [&end](const unsigned* slots, std::uint64_t n) {
      end -= n;
      std::copy_n(slots, n, end);
    });
    return end;
  }

 private:
  static constexpr std::uint64_t block = limits::slot_block;

  /// Begins the block that follows the one ending at `end`; 0 stands for a list without blocks.
  std::uint64_t begin_block(std::uint64_t end) noexcept {
    QEL_GRIDWORK_CHECK(used_ < blocks_before_.size());
    blocks_before_[used_] = end;
    return block * used_++;
  }

  /// Calls visit(slots, count) for the blocks of a list, the last one first.
  template <class Visit>
  void visit_blocks(std::uint64_t list, Visit visit) const noexcept {
    for (std::uint64_t end = ends_[list]; end != 0;) {
      const std::uint64_t which = (end - 1) / block;
      visit(slots_ + which * block, end - which * block);
      end = blocks_before_[which];
    }
  }

  dense1D<unsigned> slot_memory_;
  dense1D<std::uint64_t> end_memory_;
  dense1D<std::uint64_t> blocks_before_;  // where the block before each block ends
  unsigned* slots_ = nullptr;
  std::uint64_t* ends_ = nullptr;  // of the lists
  std::uint64_t used_ = 0;
};

}  // namespace qel::gridwork::detail

#endif
