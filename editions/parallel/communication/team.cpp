#include "communication/team.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "core/limits.h"

namespace qel::gridwork::detail::parallel {
namespace {

constexpr std::uint64_t all_is_well = ~std::uint64_t{0};

/// The place of a code in the order of checks.
std::uint64_t order_of(int code) noexcept {
  if (code == out_of_memory) return 0;
  if (code == mpi_failed) return 1;
  return code < 0 ? static_cast<std::uint64_t>(1 - std::int64_t{code}) : all_is_well;
}

int code_of(std::uint64_t order) noexcept {
  if (order == 0) return out_of_memory;
  if (order == 1) return mpi_failed;
  return order == all_is_well ? 0 : 1 - static_cast<int>(order);
}

}  // namespace

team::team(MPI_Comm comm) noexcept : comm_(comm) {
  note(MPI_Comm_rank(comm, &rank_));
  note(MPI_Comm_size(comm, &size_));
  counts_ = dense1D<std::uint64_t>(2 * static_cast<std::uint64_t>(size_));
}

/// Without memory for the counts, the first agreement fails.
int team::own_code(int code) const noexcept {
  if (counts_.empty()) return out_of_memory;
  return failed_ ? mpi_failed : code;
}

void team::reduce(void* values, int count, MPI_Datatype type, MPI_Op operation) noexcept {
  note(MPI_Allreduce(MPI_IN_PLACE, values, count, type, operation, comm_));
}

/// As signed numbers in the same order: MPICH 4.0 takes the least of unsigned ones as if they were signed.
void team::lower(std::uint64_t* values, int count) noexcept {
  constexpr std::uint64_t sign = std::uint64_t{1} << 63;
  for (int k = 0; k < count; ++k) values[k] ^= sign;
  reduce(values, count, MPI_INT64_T, MPI_MIN);
  for (int k = 0; k < count; ++k) values[k] ^= sign;
}

int team::agree(int code) noexcept {
  std::uint64_t order = order_of(own_code(code));
  lower(&order, 1);
  return own_code(code_of(order));
}

team::share team::number(std::uint64_t count) noexcept {
  share result{0, count};
  note(MPI_Exscan(&count, &result.before, 1, MPI_UINT64_T, MPI_SUM, comm_));
  if (rank_ == 0) result.before = 0;
  add(&result.total, 1);
  return result;
}

void team::broadcast(std::uint64_t* values, int count, int root) noexcept {
  note(MPI_Bcast(values, count, MPI_UINT64_T, root, comm_));
}

void team::gather(std::uint64_t value, std::uint64_t* values) noexcept {
  note(MPI_Allgather(&value, 1, MPI_UINT64_T, values, 1, MPI_UINT64_T, comm_));
}

void team::gather(const double* own, int count, double* values) noexcept {
  note(MPI_Allgather(own, count, MPI_DOUBLE, values, count, MPI_DOUBLE, comm_));
}

void team::announce(int code, const rank_offsets& sent) noexcept {
  const auto ranks = static_cast<std::uint64_t>(size_);
  for (std::uint64_t r = 0; r < ranks; ++r) counts_[r] = code < 0 ? 0 : sent[r + 1] - sent[r];
  note(MPI_Alltoall(counts_.data(), 1, MPI_UINT64_T, counts_.data() + ranks, 1, MPI_UINT64_T, comm_));
}

bool team::announced(rank_offsets& received) const noexcept {
  const auto ranks = static_cast<std::uint64_t>(size_);
  received.clear();
  if (!received.resize(ranks + 1, 0)) return false;
  for (std::uint64_t r = 0; r < ranks; ++r) received[r + 1] = received[r] + counts_[ranks + r];
  return true;
}

/// The way of lists through buffers: in each round a part of what goes to each rank, the same number of bytes at most.
class team::rounds {
 public:
  rounds(team& ranks, std::size_t item_bytes) noexcept
      : ranks_(ranks),
        item_bytes_(item_bytes),
        part_(std::max<std::uint64_t>(1, limits::exchange_round / static_cast<std::uint64_t>(ranks.size()))) {}

  /// Bytes of the longest list for one rank.
  std::uint64_t longest(const rank_offsets& offsets) const noexcept {
    std::uint64_t most = 0;
    for (int r = 0; r < ranks_.size(); ++r) most = std::max(most, bytes(offsets, r));
    return most;
  }

  std::uint64_t count(std::uint64_t longest_of_all) const noexcept { return (longest_of_all + part_ - 1) / part_; }

  /// Memory for the buffers; nothing where nothing is moved.
  [[nodiscard]] bool prepare(const rank_offsets& sent, const rank_offsets& received) noexcept {
    const auto ranks = static_cast<std::uint64_t>(ranks_.size());
    return places_.resize(4 * ranks) && out_.resize(room(sent)) && in_.resize(room(received));
  }

  void move(std::uint64_t round, const char* out, const rank_offsets& sent, char* in,
            const rank_offsets& received) noexcept {
    const int ranks = ranks_.size();
    int* sizes = places_.data();
    layout(round, sent, sizes, sizes + ranks);
    layout(round, received, sizes + 2 * ranks, sizes + 3 * ranks);
    for (int r = 0; r < ranks; ++r) {
      if (sizes[r] != 0) std::memcpy(out_.data() + sizes[ranks + r], start(sent, r, round, out), length(sizes[r]));
    }
    ranks_.note(MPI_Alltoallv(out_.data(), sizes, sizes + ranks, MPI_BYTE, in_.data(), sizes + 2 * ranks,
                              sizes + 3 * ranks, MPI_BYTE, ranks_.comm_));
    for (int r = 0; r < ranks; ++r) {
      const int size = sizes[2 * ranks + r];
      if (size != 0) std::memcpy(start(received, r, round, in), in_.data() + sizes[3 * ranks + r], length(size));
    }
  }

 private:
  /// A rank's own items do not travel.
  std::uint64_t bytes(const rank_offsets& offsets, int r) const noexcept {
    const auto i = static_cast<std::uint64_t>(r);
    return r == ranks_.rank_ ? 0 : (offsets[i + 1] - offsets[i]) * item_bytes_;
  }

  std::uint64_t room(const rank_offsets& offsets) const noexcept {
    std::uint64_t sum = 0;
    for (int r = 0; r < ranks_.size(); ++r) sum += std::min(part_, bytes(offsets, r));
    return sum;
  }

  void layout(std::uint64_t round, const rank_offsets& offsets, int* sizes, int* places) const noexcept {
    int place = 0;
    for (int r = 0; r < ranks_.size(); ++r) {
      const std::uint64_t all = bytes(offsets, r), done = round * part_;
      sizes[r] = done < all ? static_cast<int>(std::min(part_, all - done)) : 0;
      places[r] = place;
      place += sizes[r];
    }
  }

  /// Where the bytes of a round begin, if there are any.
  template <class Byte>
  Byte* start(const rank_offsets& offsets, int r, std::uint64_t round, Byte* first) const noexcept {
    return first + offsets[static_cast<std::uint64_t>(r)] * item_bytes_ + round * part_;
  }

  static std::size_t length(int size) noexcept { return static_cast<std::size_t>(size); }

  team& ranks_;
  std::size_t item_bytes_;
  std::uint64_t part_;
  dense1D<int> places_;
  dense1D<char> out_;
  dense1D<char> in_;
};

int team::transfer(int code, const char* out, const rank_offsets& sent, char* in, const rank_offsets& received,
                   std::size_t item_bytes) noexcept {
  rounds way(*this, item_bytes);
  std::uint64_t longest = code < 0 ? 0 : way.longest(sent);
  if (code == 0 && !way.prepare(sent, received)) code = out_of_memory;
  std::uint64_t agreed[] = {order_of(own_code(code)), ~longest};
  lower(agreed, 2);
  code = own_code(code_of(agreed[0]));
  if (code < 0) return code;
  const auto self = static_cast<std::uint64_t>(rank_);
  if (const std::uint64_t kept = (sent[self + 1] - sent[self]) * item_bytes; kept != 0) {
    std::memcpy(in + received[self] * item_bytes, out + sent[self] * item_bytes, kept);
  }
  const std::uint64_t count = way.count(~agreed[1]);
  for (std::uint64_t round = 0; round < count; ++round) way.move(round, out, sent, in, received);
  return 0;
}

void agreement::same(std::uint64_t value, int code, bool counts) noexcept {
  codes_[count_] = code;
  values_[1 + 2 * count_] = counts ? value : ~std::uint64_t{0};
  values_[2 + 2 * count_] = counts ? ~value : ~std::uint64_t{0};
  ++count_;
}

void agreement::same_number(double value, int code) noexcept { same(std::bit_cast<std::uint64_t>(value), code); }

int agreement::conclude(int code) noexcept {
  values_[0] = order_of(ranks_.own_code(code));
  ranks_.lower(values_, 1 + 2 * count_);
  for (int k = 0; k < count_; ++k) {
    const std::uint64_t least = values_[1 + 2 * k], most = ~values_[2 + 2 * k];
    const bool counts_nowhere = least == ~std::uint64_t{0} && most == 0;
    if (least != most && !counts_nowhere) values_[0] = std::min(values_[0], order_of(codes_[k]));
  }
  return ranks_.own_code(code_of(values_[0]));
}

}  // namespace qel::gridwork::detail::parallel
