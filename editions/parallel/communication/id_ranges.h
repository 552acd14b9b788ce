// IDs are parted into ranges, one for each rank, where what belongs to them meets.
#ifndef QEL_GRIDWORK_PARALLEL_COMMUNICATION_ID_RANGES_H
#define QEL_GRIDWORK_PARALLEL_COMMUNICATION_ID_RANGES_H

#include <algorithm>
#include <cstdint>

#include "communication/team.h"
#include "qel/dense.h"

namespace qel::gridwork::detail::parallel {

/// Ranges of equal width between the lowest and the highest ID of all ranks: where IDs grow with the ranks, as a file gives
/// them, most lie in the range of the rank that has them.
class id_ranges {
 public:
  /// Collective. The IDs of this rank increase.
  id_ranges(team& ranks, const dense1D<std::uint64_t>& ids) noexcept
      : last_(static_cast<std::uint64_t>(ranks.size()) - 1) {
    std::uint64_t ends[] = {~std::uint64_t{0}, ~std::uint64_t{0}};  // the lowest, and the highest from above
    if (!ids.empty()) ends[0] = ids[0], ends[1] = ~ids[ids.size() - 1];
    ranks.lower(ends, 2);
    lowest_ = ends[0];
    if (ends[0] <= ~ends[1]) width_ = (~ends[1] - ends[0]) / (last_ + 1) + 1;
  }

  /// The rank in whose range an ID lies; the last one for those outside of all.
  int owner(std::uint64_t id) const noexcept { return static_cast<int>(std::min((id - lowest_) / width_, last_)); }

  /// Where the IDs of a rank's range end.
  std::uint64_t end(int owner) const noexcept {
    const auto r = static_cast<std::uint64_t>(owner);
    return r == last_ ? ~std::uint64_t{0} : lowest_ + (r + 1) * width_;
  }

 private:
  std::uint64_t lowest_ = 0;
  std::uint64_t width_ = 1;
  std::uint64_t last_;
};

}  // namespace qel::gridwork::detail::parallel

#endif
