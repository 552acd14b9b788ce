#include "sink.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "failure.h"

namespace cli {

namespace {

constexpr std::size_t block_size = 1U << 18U;

// 0 or an errno.
int write_all(int to, const char* bytes, std::size_t count) {
  while (count > 0) {
    const ssize_t written = write(to, bytes, count);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    bytes += written;
    count -= static_cast<std::size_t>(written);
  }
  return 0;
}

}  // namespace

sink::sink(int to) : to_(to) {
  if (pipe2(ends_, O_CLOEXEC) != 0) throw failure(std::strerror(errno));
  fcntl(ends_[1], F_SETPIPE_SZ, static_cast<int>(block_size));
  path_ = "/proc/self/fd/" + std::to_string(ends_[1]);
  drainer_ = std::thread(&sink::drain, this);
}

sink::~sink() { finish(); }

int sink::finish() {
  if (!drainer_.joinable()) return error_;
  close(ends_[1]);
  drainer_.join();
  close(ends_[0]);
  return error_;
}

// Reads on behind a failure, so that the writer comes to its end.
void sink::drain() {
  std::vector<char> block(block_size);
  for (;;) {
    const ssize_t count = read(ends_[0], block.data(), block.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return;
    if (error_ == 0) error_ = write_all(to_, block.data(), static_cast<std::size_t>(count));
  }
}

}  // namespace cli
