// A stream that is closed on every path; and calls that a signal broke off.
#ifndef QEL_GRIDWORK_IO_TEXT_FILE_H
#define QEL_GRIDWORK_IO_TEXT_FILE_H

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

class file {
 public:
  /// Opens the stream without a buffer of its own: readers and writers here move whole blocks.
  file(const char* path, const char* mode) noexcept : stream_(path != nullptr ? open(path, mode) : nullptr) {
    if (stream_ != nullptr) std::setvbuf(stream_, nullptr, _IONBF, 0);
  }
  file(const file&) = delete;
  file& operator=(const file&) = delete;
  ~file() { close(); }

  bool is_open() const noexcept { return stream_ != nullptr; }
  std::FILE* stream() const noexcept { return stream_; }

  /// Closes the stream; false when what was written did not all arrive.
  bool close() noexcept { return stream_ == nullptr || std::fclose(std::exchange(stream_, nullptr)) == 0; }

  /// Size in bytes, to be called before anything is read; 0 when it is not known, as for pipes.
  std::uint64_t size() const noexcept {
    if (std::fseek(stream_, 0, SEEK_END) != 0) return 0;
    const long end = std::ftell(stream_);
    std::rewind(stream_);
    return end > 0 ? static_cast<std::uint64_t>(end) : 0;
  }

 private:
  /// A pipe makes this wait for its other end, and signals may come meanwhile.
  static std::FILE* open(const char* path, const char* mode) noexcept {
    std::FILE* stream = nullptr;
    do {
      errno = 0;
      stream = std::fopen(path, mode);
    } while (stream == nullptr && errno == EINTR);
    return stream;
  }

  std::FILE* stream_;
};

}  // namespace qel::gridwork::detail::io

#endif
