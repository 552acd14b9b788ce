// Memory and streams that fail when a test wants them to. faults.cpp puts itself between the library and the C library.
#ifndef QEL_TESTS_FAULTS_H
#define QEL_TESTS_FAULTS_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define QEL_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define QEL_SANITIZED 1
#endif
#endif

namespace faults {

enum class operation { allocate, open, read, write, close, seek };

/// The at-th call (1, 2, ...) of an operation fails, and with `onwards` all that follow; none for 0.
struct plan {
  operation what = operation::allocate;
  std::uint64_t at = 0;
  bool onwards = false;
};

void arm(const plan& p);

/// Ends the plan. True when a call failed.
bool disarm();

/// What the program holds: blocks of memory and open streams.
std::uint64_t live_blocks();
std::uint64_t live_streams();

/// What the at-th read of an armed plan does instead of failing; null: it fails.
extern void (*instead_of_failing)();

/// What a reader finds in its buffer behind the bytes that it got. (The address sanitizer stops it there.)
extern char junk;

/// A file without a place on any disk. Its path can be opened as often as needed.
class memory_file {
 public:
  memory_file() : fd_(::memfd_create("test", 0)), path_("/proc/self/fd/" + std::to_string(fd_)) {}
  explicit memory_file(const std::string& content) : memory_file() { write(content); }
  memory_file(const memory_file&) = delete;
  memory_file& operator=(const memory_file&) = delete;
  ~memory_file() { ::close(fd_); }

  const char* path() const { return path_.c_str(); }
  std::uint64_t size() const { return static_cast<std::uint64_t>(::lseek(fd_, 0, SEEK_END)); }

  void resize(std::uint64_t bytes) {
    if (::ftruncate(fd_, static_cast<off_t>(bytes)) != 0) std::abort();
  }

  void write(const std::string& content) {
    resize(content.size());
    if (::pwrite(fd_, content.data(), content.size(), 0) != static_cast<ssize_t>(content.size())) std::abort();
  }

  std::string content() const {
    std::string bytes(size(), '\0');
    if (::pread(fd_, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) std::abort();
    return bytes;
  }

 private:
  int fd_;
  std::string path_;
};

}  // namespace faults

#endif
