// A file that all ranks have open.
#ifndef QEL_GRIDWORK_PARALLEL_COMMUNICATION_SHARED_FILE_H
#define QEL_GRIDWORK_PARALLEL_COMMUNICATION_SHARED_FILE_H

#include <mpi.h>

#include <cstdint>

#include "communication/team.h"

namespace qel::gridwork::detail::parallel {

/// Bytes at explicit offsets, contiguous, no views and no derived types: what implementations of MPI-IO do best. Opening,
/// closing and cutting are collective, the destructor too; each rank reads and writes by itself, as pieces of so many bytes
/// in a row gain nothing when ranks gather them for each other.
class shared_file {
 public:
  /// Where some rank cannot open the file, it is open nowhere: what others opened stays so, as that rank would not take part
  /// in closing it.
  shared_file(team& ranks, const char* path, int mode) noexcept {
    const bool opened = MPI_File_open(ranks.comm(), path, mode, MPI_INFO_NULL, &file_) == MPI_SUCCESS;
    is_open_ = ranks.agree(opened ? 0 : -1) == 0;
  }
  shared_file(const shared_file&) = delete;
  shared_file& operator=(const shared_file&) = delete;
  ~shared_file() { close(); }

  bool is_open() const noexcept { return is_open_; }

  bool close() noexcept {
    if (!is_open_) return true;
    is_open_ = false;
    return MPI_File_close(&file_) == MPI_SUCCESS;
  }

  /// Cuts the file to this size.
  bool resize(std::uint64_t bytes) noexcept {
    return MPI_File_set_size(file_, static_cast<MPI_Offset>(bytes)) == MPI_SUCCESS;
  }

  /// False when not all bytes are there.
  bool read(std::uint64_t offset, char* bytes, int count) noexcept {
    MPI_Status status;
    const int result = MPI_File_read_at(file_, static_cast<MPI_Offset>(offset), bytes, count, MPI_BYTE, &status);
    return result == MPI_SUCCESS && count_of(status) == count;
  }

  /// False when they could not be written in full.
  bool write(std::uint64_t offset, const char* bytes, int count) noexcept {
    MPI_Status status;
    const int result = MPI_File_write_at(file_, static_cast<MPI_Offset>(offset), bytes, count, MPI_BYTE, &status);
    return result == MPI_SUCCESS && count_of(status) == count;
  }

 private:
  static int count_of(MPI_Status& status) noexcept {
    int count = 0;
    MPI_Get_count(&status, MPI_BYTE, &count);
    return count;
  }

  MPI_File file_ = MPI_FILE_NULL;
  bool is_open_ = false;
};

}  // namespace qel::gridwork::detail::parallel

#endif
