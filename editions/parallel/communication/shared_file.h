// A file that all ranks have open.
#ifndef QEL_GRIDWORK_PARALLEL_COMMUNICATION_SHARED_FILE_H
#define QEL_GRIDWORK_PARALLEL_COMMUNICATION_SHARED_FILE_H

#include <mpi.h>

#include <cstdint>

namespace qel::gridwork::detail::parallel {

/// Bytes at explicit offsets, contiguous, no views and no derived types: what implementations of MPI-IO do best. Every
/// member is collective, the destructor too.
class shared_file {
 public:
  shared_file(MPI_Comm comm, const char* path, int mode) noexcept {
    is_open_ = MPI_File_open(comm, path, mode, MPI_INFO_NULL, &file_) == MPI_SUCCESS;
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
    const int result = MPI_File_read_at_all(file_, static_cast<MPI_Offset>(offset), bytes, count, MPI_BYTE, &status);
    return result == MPI_SUCCESS && count_of(status) == count;
  }

  /// False when they could not be written in full.
  bool write(std::uint64_t offset, const char* bytes, int count) noexcept {
    MPI_Status status;
    const int result = MPI_File_write_at_all(file_, static_cast<MPI_Offset>(offset), bytes, count, MPI_BYTE, &status);
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
