// The ranks of a communicator: how they agree, sum and move bytes.
#ifndef QEL_GRIDWORK_PARALLEL_COMMUNICATION_TEAM_H
#define QEL_GRIDWORK_PARALLEL_COMMUNICATION_TEAM_H

#include <mpi.h>

#include <cstddef>
#include <cstdint>

#include "core/result.h"
#include "qel/dense.h"

namespace qel::gridwork::detail::parallel {

constexpr int mpi_failed = -200;

/// Items of each rank in a list that is ordered by rank: rank r has those from offsets[r] up to offsets[r + 1].
using rank_offsets = dense1D<std::uint64_t>;

/// Every member that communicates is collective. What one rank cannot do, all learn at the next agreement, before any of
/// them enters an exchange; so members take the `code` of the work before, and return the one of all ranks.
///
/// An MPI call that fails, where the communicator's handler lets it return, gives mpi_failed at the next agreement.
class team {
 public:
  explicit team(MPI_Comm comm) noexcept;

  int rank() const noexcept { return rank_; }
  int size() const noexcept { return size_; }
  MPI_Comm comm() const noexcept { return comm_; }

  /// The code of the first check that failed anywhere: out_of_memory, then mpi_failed, then -1, -2 and so on.
  int agree(int code) noexcept;

  /// For numbers of all ranks: their smallest, largest or sum takes the place of each.
  /// @{
  void lower(std::uint64_t* values, int count) noexcept;
  void add(std::uint64_t* values, int count) noexcept { reduce(values, count, MPI_UINT64_T, MPI_SUM); }
  void add(std::int64_t* values, int count) noexcept { reduce(values, count, MPI_INT64_T, MPI_SUM); }
  void lower(double* values, int count) noexcept { reduce(values, count, MPI_DOUBLE, MPI_MIN); }
  /// @}

  /// The sum over all ranks before this one, and over all ranks.
  struct share {
    std::uint64_t before, total;
  };
  share number(std::uint64_t count) noexcept;

  /// Gives all ranks what `root` has.
  void broadcast(std::uint64_t* values, int count, int root) noexcept;

  /// Collects what each rank has, in their order: a number; `count` numbers.
  /// @{
  void gather(std::uint64_t value, std::uint64_t* values) noexcept;
  void gather(const double* own, int count, double* values) noexcept;
  /// @}

  /// Tells every rank how many items it will get from each. A rank that failed announces none.
  void announce(int code, const rank_offsets& sent) noexcept;

  /// What the others announced. False when memory ran out.
  [[nodiscard]] bool announced(rank_offsets& received) const noexcept;

  /// Moves items of `item_bytes` each between lists ordered by rank, in rounds, so that neither counts nor buffers grow
  /// with the lists. Agrees first.
  int transfer(int code, const char* out, const rank_offsets& sent, char* in, const rank_offsets& received,
               std::size_t item_bytes) noexcept;

 private:
  class rounds;
  friend class agreement;

  void note(int result) noexcept {
    if (result != MPI_SUCCESS) failed_ = true;
  }
  void reduce(void* values, int count, MPI_Datatype type, MPI_Op operation) noexcept;
  int own_code(int code) const noexcept;

  MPI_Comm comm_;
  int rank_ = 0;
  int size_ = 1;
  bool failed_ = false;
  dense1D<std::uint64_t> counts_;  // sent to each rank, then received from each
};

/// A call's first agreement: on what every rank found wrong with its arguments, and that all were given the same numbers.
class agreement {
 public:
  explicit agreement(team& ranks) noexcept : ranks_(ranks) {}

  /// A number that must be the same on all ranks, or on those where it `counts`; the code where it is not. At most six.
  void same(std::uint64_t value, int code, bool counts = true) noexcept;
  void same_number(double value, int code) noexcept;

  /// The code of all ranks, given that of this one.
  int conclude(int code) noexcept;

  /// The k-th of the numbers, as the others have it where it does not count here; ~0 where it counts nowhere.
  std::uint64_t value(int k) const noexcept { return values_[1 + 2 * k]; }

 private:
  static constexpr int most_values = 6;

  team& ranks_;
  int count_ = 0;
  int codes_[most_values] = {};
  std::uint64_t values_[1 + 2 * most_values] = {};  // the code, then each number and its complement: both are lowered
};

}  // namespace qel::gridwork::detail::parallel

#endif
