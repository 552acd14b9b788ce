#include "sink.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "descriptors.h"
#include "failure.h"

namespace cli {

namespace {

constexpr std::size_t block_size = 1U << 18U;

}  // namespace

sink::sink(int to) : to_(to) {
  if (pipe2(ends_, O_CLOEXEC) != 0) throw failure(std::strerror(errno));
  fcntl(ends_[1], F_SETPIPE_SZ, static_cast<int>(block_size));
  path_ = "/proc/self/fd/" + std::to_string(ends_[1]);
  if (access(path_.c_str(), W_OK) != 0) throw failure("files are written through /proc, which is not there");
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
    const ssize_t count = read_some(ends_[0], block.data(), block.size());
    if (count <= 0) return;
    if (error_ == 0) error_ = write_all(to_, block.data(), static_cast<std::size_t>(count));
  }
}

}  // namespace cli
