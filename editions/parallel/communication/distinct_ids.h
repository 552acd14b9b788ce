// How many IDs all ranks have together.
#ifndef QEL_GRIDWORK_PARALLEL_COMMUNICATION_DISTINCT_IDS_H
#define QEL_GRIDWORK_PARALLEL_COMMUNICATION_DISTINCT_IDS_H

#include <algorithm>
#include <cstdint>

#include "communication/exchange.h"
#include "communication/id_ranges.h"

namespace qel::gridwork::detail::parallel {

/// IDs in a row, on their way as bytes: how many are left out before them, and how many they are, a few bits in each byte.
struct id_run {
  std::uint64_t first, end;

  static constexpr unsigned bits = 7;  // of a byte; the next one tells that the number goes on
  static constexpr unsigned char goes_on = 1U << bits;

  template <class Visit>
  static void write(std::uint64_t number, Visit visit) {
    for (; number >= goes_on; number >>= bits) visit(static_cast<unsigned char>(number | goes_on));
    visit(static_cast<unsigned char>(number));
  }

  static std::uint64_t read(const unsigned char*& next) noexcept {
    std::uint64_t number = 0;
    for (unsigned shift = 0;; shift += bits) {
      number |= static_cast<std::uint64_t>(*next & (goes_on - 1)) << shift;
      if ((*next++ & goes_on) == 0) return number;
    }
  }
};

/// Calls visit(owner, byte) for the bytes of all runs; those of an owner begin anew.
template <class Visit>
void write_runs(const id_ranges& ranges, const dense1D<std::uint64_t>& ids, Visit visit) {
  std::uint64_t behind = 0, end_of_range = 0;
  int owner = 0;
  for (std::uint64_t i = 0; i < ids.size();) {
    if (ids[i] >= end_of_range) behind = 0, owner = ranges.owner(ids[i]), end_of_range = ranges.end(owner);
    const std::uint64_t first = ids[i], before = i;
    while (i < ids.size() && ids[i] - first == i - before && ids[i] < end_of_range) ++i;
    for (const std::uint64_t number : {first - behind, i - before}) {
      id_run::write(number, [&](unsigned char byte) { visit(owner, byte); });
    }
    behind = first + (i - before);
  }
}

/// The runs that came from all ranks. False when memory ran out.
[[nodiscard]] inline bool read_runs(const inbox<unsigned char>& in, dense1D<id_run>& runs) {
  bool room = true;
  for (std::uint64_t r = 0; r + 1 < in.offsets.size(); ++r) {
    std::uint64_t at = 0;
    for (const unsigned char* next = in.items.begin() + in.offsets[r];
         room && next != in.items.begin() + in.offsets[r + 1];) {
      const std::uint64_t first = at + id_run::read(next);
      at = first + id_run::read(next);
      room = runs.push_back({first, at});
    }
  }
  return room;
}

/// Collective. Counts the IDs of all ranks, each once: this rank's share of them. `ids` increase. The code of the ranks so
/// far; this one's own may be added.
inline int count_distinct(team& ranks, int code, const dense1D<std::uint64_t>& ids, std::uint64_t& count) {
  const id_ranges ranges(ranks, ids);
  outbox<unsigned char> out;
  inbox<unsigned char> in;
  dense1D<id_run> runs;
  count = 0;
  if (code == 0 && !out.fill(ranks, [&](auto visit) { write_runs(ranges, ids, visit); })) code = out_of_memory;
  code = exchange(ranks, code, out, in);
  if (code < 0) return code;
  if (!read_runs(in, runs)) return out_of_memory;
  std::sort(runs.begin(), runs.end(), [](const id_run& a, const id_run& b) { return a.first < b.first; });
  std::uint64_t counted = 0;  // up to here
  for (const id_run& run : runs) {
    if (run.end <= counted) continue;
    count += run.end - std::max(run.first, counted);
    counted = run.end;
  }
  return 0;
}

}  // namespace qel::gridwork::detail::parallel

#endif
