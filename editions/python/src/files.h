// Calls on named files: what the system refuses is told by errno.
#ifndef QEL_GRIDWORK_PYTHON_FILES_H
#define QEL_GRIDWORK_PYTHON_FILES_H

#include <cerrno>
#include <filesystem>
#include <string>

#include "failure.h"

namespace core {

/// Runs call(), which opens `path` and returns -1 when it cannot.
template <class Call>
int opened(gw::operation operation, const std::string& path, const Call& call) {
  errno = 0;
  const int result = call();
  if (result == -1) throw file_failure(path, errno != 0 ? errno : EIO);
  return checked(operation, result);
}

/// As opened(). The standard library reads a folder as an empty file.
template <class Call>
int read(gw::operation operation, const std::string& path, const Call& call) {
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored)) throw file_failure(path, EISDIR);
  return opened(operation, path, call);
}

/// What a write that failed leaves in errno, and nothing else does.
inline bool is_write_error(int error) {
  return error == ENOSPC || error == EIO || error == EFBIG || error == EDQUOT || error == EPIPE;
}

/// As opened(). Not every writer reports a full disk; errno does, which no call that succeeds sets back.
template <class Call>
void write(gw::operation operation, const std::string& path, const Call& call) {
  opened(operation, path, call);
  if (is_write_error(errno)) throw file_failure(path, errno);
}

}  // namespace core

#endif
