// Bytes on descriptors.
#ifndef QEL_GRIDWORK_CLI_DESCRIPTORS_H
#define QEL_GRIDWORK_CLI_DESCRIPTORS_H

#include <unistd.h>

#include <cerrno>
#include <cstddef>

namespace cli {

/// As read(), but for what signals break off.
inline ssize_t read_some(int from, char* bytes, std::size_t count) {
  for (;;) {
    const ssize_t got = read(from, bytes, count);
    if (got >= 0 || errno != EINTR) return got;
  }
}

/// Writes all bytes; 0 or an errno.
inline int write_all(int to, const char* bytes, std::size_t count) {
  while (count > 0) {
    const ssize_t written = write(to, bytes, count);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    bytes += written;
    count -= static_cast<std::size_t>(written);
  }
  return 0;
}

}  // namespace cli

#endif
