// A stream that is closed on every path; and calls that a signal broke off.
#ifndef QEL_GRIDWORK_IO_BYTES_FILE_H
#define QEL_GRIDWORK_IO_BYTES_FILE_H

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <utility>

namespace qel::gridwork::detail::io {

/// True when a signal, whose handler does not restart calls, broke off the last one: it is to be repeated.
inline bool was_interrupted(std::FILE* stream) noexcept {
  const bool interrupted = std::ferror(stream) != 0 && errno == EINTR;
  if (interrupted) std::clearerr(stream);
  return interrupted;
}

enum class access { read, write };

class file {
 public:
  /// Opens a stream of bytes, which no system translates, without a buffer of its own: readers and writers here move
  /// whole blocks. A path is in UTF-8 where names of files are not just bytes.
  file(const char* path, access wanted) noexcept;
  file(const file&) = delete;
  file& operator=(const file&) = delete;
  ~file() { close(); }

  bool is_open() const noexcept { return stream_ != nullptr; }
  std::FILE* stream() const noexcept { return stream_; }

  /// Closes the stream; false when what was written did not all arrive.
  bool close() noexcept { return stream_ == nullptr || std::fclose(std::exchange(stream_, nullptr)) == 0; }

  /// Size in bytes, to be called before anything is read; 0 when it is not known, as for pipes, or beyond what the system
  /// counts.
  std::uint64_t size() const noexcept;

 private:
  std::FILE* stream_ = nullptr;
};

}  // namespace qel::gridwork::detail::io

#endif
