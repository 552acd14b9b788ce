// Slots in groups by the colours that they separate.
//
// There are few groups and very many slots: a hash table numbers the pairs of colours as they come, only the groups are
// sorted, and the slots are counted into place.
#include <algorithm>
#include <climits>
#include <utility>

#include "core/distribute.h"
#include "core/identity_map.h"
#include "core/limits.h"
#include "core/position_table.h"
#include "core/result.h"
#include "qel/gridwork/topology.h"

namespace qel::gridwork {

using namespace detail;

namespace {

/// Numbers pairs of colours in the order in which they come, then in lexicographic order.
class pair_numbers {
 public:
  [[nodiscard]] bool prepare() { return table_.reset(0); }

  std::uint64_t size() const noexcept { return keys_.size(); }

  /// The number of a pair, or `none` when memory ran out.
  unsigned find_or_add(unsigned own, unsigned across) {
    const std::uint64_t key = std::uint64_t{own} << 32 | across;
    if (last_ < keys_.size() && keys_[last_] == key) return last_;  // slots of a pair often come in runs
    const auto next = static_cast<unsigned>(keys_.size());
    if (!table_.make_room() || !keys_.reserve(next + std::uint64_t{1}, 2)) return none;
    last_ = table_.find_or_insert(mix_bits(key), next, [this, key](unsigned i) { return keys_[i] == key; });
    if (last_ == next) (void)keys_.push_back(key);  // there is room
    return last_;
  }

  /// Sorts the pairs; `place` tells for each number where its pair is now.
  [[nodiscard]] bool sort(dense1D<unsigned>& place) {
    dense1D<unsigned> numbers;
    dense1D<std::uint64_t> sorted;
    if (!set_identity(numbers, size()) || !sorted.resize(size()) || !place.resize(size())) return false;
    std::sort(numbers.begin(), numbers.end(), [this](unsigned a, unsigned b) { return keys_[a] < keys_[b]; });
    for (unsigned i = 0; i < numbers.size(); ++i) {
      place[numbers[i]] = i;
      sorted[i] = keys_[numbers[i]];
    }
    keys_ = std::move(sorted);
    return true;
  }

  [[nodiscard]] bool copy_to(dense2D<unsigned>& pairs) const {
    if (!pairs.resize(2, size())) return false;
    for (std::uint64_t i = 0; i < size(); ++i) {
      pairs(0, i) = static_cast<unsigned>(keys_[i] >> 32);
      pairs(1, i) = static_cast<unsigned>(keys_[i]);
    }
    return true;
  }

 private:
  position_table table_;
  dense1D<std::uint64_t> keys_;
  unsigned last_ = none;
};

/// Reads the colours on both sides of slots.
class slot_colors {
 public:
  slot_colors(const dense2D<unsigned>& neighbors, const dense1D<unsigned>& colors) noexcept
      : neighbors_(neighbors),
        colors_(colors),
        rows_(static_cast<unsigned>(std::min<std::uint64_t>(neighbors.rows(), none))) {}  // 32 bits divide faster

  /// Finds the elements on both sides of up to limits::slot_chunk slots, whose colours are on their way then. False when
  /// there is no such element.
  [[nodiscard]] bool read(const unsigned* slots, std::uint64_t count) noexcept {
    for (std::uint64_t i = 0; i < count; ++i) {
      sides_[i] = {none, none};
      if (slots[i] == none) continue;
      const unsigned e = slots[i] / rows_, across = neighbors_(slots[i] - e * rows_, e);
      if (across != none && across >= neighbors_.cols()) return false;
      sides_[i] = {e, across};
      prefetch(colors_.data() + e);
      if (across != none) prefetch(colors_.data() + across);
    }
    return true;
  }

  /// The colour of the element of slot i, which is not `none`.
  unsigned own(std::uint64_t i) const noexcept { return colors_[sides_[i].own]; }

  /// The colour across, `none` where there is no element.
  unsigned across(std::uint64_t i) const noexcept {
    return sides_[i].across == none ? none : colors_[sides_[i].across];
  }

 private:
  struct elements {
    unsigned own, across;
  };

  const dense2D<unsigned>& neighbors_;
  const dense1D<unsigned>& colors_;
  unsigned rows_;
  elements sides_[limits::slot_chunk];
};

/// Gives every slot the number of its pair of colours, `none` to those that are `none`. 0, or a negative result.
int number_slots(const dense2D<unsigned>& neighbors, const dense1D<unsigned>& colors, const dense1D<unsigned>& slots,
                 pair_numbers& pairs, dense1D<unsigned>& groups) {
  if (!pairs.prepare() || !groups.resize(slots.size(), none)) return out_of_memory;
  slot_colors colors_of(neighbors, colors);
  for (std::uint64_t first = 0; first < slots.size(); first += limits::slot_chunk) {
    const auto count = std::min<std::uint64_t>(limits::slot_chunk, slots.size() - first);
    if (!colors_of.read(slots.begin() + first, count)) return -1;
    for (std::uint64_t i = 0; i < count; ++i) {
      if (slots[first + i] == none) continue;
      groups[first + i] = pairs.find_or_add(colors_of.own(i), colors_of.across(i));
      if (groups[first + i] == none) return out_of_memory;
    }
  }
  return 0;
}

/// Replaces numbers of pairs by their places; entries without one get the place behind all pairs.
void replace_numbers(const dense1D<unsigned>& place, dense1D<unsigned>& groups) noexcept {
  for (unsigned& group : groups) group = group == none ? static_cast<unsigned>(place.size()) : place[group];
}

/// Sorts slots into groups, of which the last one has no entry in `offsets`.
[[nodiscard]] bool distribute_slots(const dense1D<unsigned>& groups, std::uint64_t count, dense1D<unsigned>& order,
                                    dense1D<unsigned>& offsets) {
  const auto walk = [&groups](auto visit) {
    for (unsigned i = 0; i < groups.size(); ++i) visit(groups[i], i);
  };
  return distribute(count + 1, walk, order, offsets) && offsets.resize(count + 1);
}

}  // namespace

int sort_elfes(const dense2D<unsigned>& neighbors, const dense1D<unsigned>& colors, dense1D<unsigned>& slots,
               dense1D<unsigned>& order, dense2D<unsigned>& pairs, dense1D<unsigned>& offsets) {
  if (colors.size() != neighbors.cols()) return -2;
  const std::uint64_t bound = neighbors.size();
  if (!std::all_of(slots.begin(), slots.end(), [bound](unsigned s) { return s == none || s < bound; })) return -3;
  pair_numbers numbers;
  dense1D<unsigned> groups, place, old_slots, new_order, new_offsets;
  dense2D<unsigned> new_pairs;
  if (const int result = number_slots(neighbors, colors, slots, numbers, groups); result != 0) return result;
  if (slots.size() >= none || numbers.size() > INT_MAX || !numbers.sort(place)) return out_of_memory;
  replace_numbers(place, groups);
  if (!numbers.copy_to(new_pairs) || !old_slots.copy(slots) ||
      !distribute_slots(groups, numbers.size(), new_order, new_offsets)) {
    return out_of_memory;
  }
  for (std::uint64_t i = 0; i < slots.size(); ++i) slots[i] = old_slots[new_order[i]];
  order = std::move(new_order);
  pairs = std::move(new_pairs);
  offsets = std::move(new_offsets);
  return static_cast<int>(numbers.size());
}

}  // namespace qel::gridwork
