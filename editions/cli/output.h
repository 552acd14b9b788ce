// Files that are written whole or not at all.
#ifndef QEL_GRIDWORK_CLI_OUTPUT_H
#define QEL_GRIDWORK_CLI_OUTPUT_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "replacement.h"
#include "report/formats.h"
#include "session.h"

namespace cli {

/// What the commands that write take on their command line.
struct output_options {
  std::string out;
  std::string to;
  bool text = false;
  bool force = false;
  bool drop = false;  ///< leave out the elements that the format does not hold
};

/// Fails early, before anything is read, when the output cannot become one.
void check_output(const output_options& options);

/// The same for files whose format is not that of a mesh.
void check_overwriting(const output_options& options);

/// Writes a mesh; fails in words, and leaves nothing then.
void save(const session& s, report::mesh m, const output_options& options);

/// Writes a function's bytes, which it sends to the path that it is given, to the file of the options.
void save_bytes(const output_options& options, const std::function<report::outcome(const char* path)>& write);

/// True for standard output, devices and pipes, which are written to as they are.
bool is_stream(const std::string& out);

/// Several files that appear together.
class output_files {
 public:
  explicit output_files(bool force) : force_(force) {}

  /// Writes a file, which has no name as yet.
  void add(const std::string& out, const std::function<report::outcome(const char* path)>& write);

  /// The same for a mesh: a file or, for EnSight's case files, two.
  void add(const session& s, report::mesh m, const output_options& options);

  /// Gives the files their names; where one of them cannot have it, those that are new disappear again.
  void appear();

 private:
  bool force_;
  std::vector<std::unique_ptr<replacement>> files_;
};

}  // namespace cli

#endif
