// Files that are written whole or not at all.
#ifndef QEL_GRIDWORK_CLI_OUTPUT_H
#define QEL_GRIDWORK_CLI_OUTPUT_H

#include <string>

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

/// Writes a mesh; fails in words, and leaves nothing then.
void save(const session& s, report::mesh m, const output_options& options);

/// From now on signals that end the program remove what is half written.
void remove_temporary_on_signals();

}  // namespace cli

#endif
