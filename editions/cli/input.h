// Mesh files that are read, from a path or from standard input.
#ifndef QEL_GRIDWORK_CLI_INPUT_H
#define QEL_GRIDWORK_CLI_INPUT_H

#include <string>

#include "report/reading.h"
#include "session.h"

namespace cli {

using report::loaded;

/// A file that can be read as often as is needed: what comes from a pipe is kept in memory.
class input_file {
 public:
  /// "-" is standard input. Fails with the words of errno.
  explicit input_file(const std::string& name);
  ~input_file();
  input_file(const input_file&) = delete;
  input_file& operator=(const input_file&) = delete;

  const char* path() const { return path_.c_str(); }

 private:
  void keep_in_memory();

  int descriptor_ = -1;
  std::string path_;
};

/// Reads a file; fails in words, with the line where it is known.
loaded load(const session& s, const std::string& name, const std::string& from);

}  // namespace cli

#endif
