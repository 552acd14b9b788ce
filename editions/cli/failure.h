// What ends the work on a file.
#ifndef QEL_GRIDWORK_CLI_FAILURE_H
#define QEL_GRIDWORK_CLI_FAILURE_H

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

#include "report/mesh.h"

namespace cli {

/// A file or a mesh that cannot be worked on: the words for it and, where a function refused it, its result code.
class failure : public std::runtime_error {
 public:
  explicit failure(const std::string& words, int result = 0) : std::runtime_error(words), result_(result) {}
  int result() const noexcept { return result_; }

 private:
  int result_;
};

/// Fails in words where a calculation did; else its count.
inline std::uint64_t require(const report::outcome& done) {
  if (done.failed()) throw failure(done.words(), done.result);
  return done.count();
}

[[noreturn]] inline void fail_by_errno() { throw failure(std::strerror(errno), -1); }

}  // namespace cli

#endif
