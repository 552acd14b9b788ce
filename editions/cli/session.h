// What all commands share: the streams, the options about them, and the exit status.
#ifndef QEL_GRIDWORK_CLI_SESSION_H
#define QEL_GRIDWORK_CLI_SESSION_H

#include <string>
#include <string_view>

#include "report/json.h"

namespace cli {

using report::json;

/// Exit statuses.
enum status { done = 0, wanting = 1, error = 2 };

class session {
 public:
  bool as_json = false;
  bool quiet = false;
  std::string color = "auto";  // or always, never

  /// An object of one line about a file, to which a command adds what it found.
  json object(std::string_view command, std::string_view file) const;

  /// Prints an object on a line of its own.
  void print(const json& object) const;

  /// Says on the stream of errors, and as JSON if that is wanted, what is wrong with a file.
  void report_error(std::string_view command, std::string_view file, std::string_view words, int result);

  /// Where standard output is the mesh, it takes no objects.
  void leave_stdout_to(std::string_view out) { as_json = as_json && out != "-"; }

  /// The worst status that was noted is the program's.
  void note(status s) { status_ = s > status_ ? s : status_; }

  /// Writes out what stdout still holds; the exit status.
  int finish();

  /// A word that stands out on stdout or, with `on_errors`, on stderr, if that is a terminal.
  std::string strong(std::string_view word, bool on_errors = false) const;

 private:
  bool has_color(int descriptor) const;

  status status_ = done;
};

/// 1234567 as "1 234 567".
std::string grouped(unsigned long long value);

/// The text, with bytes that would steer a terminal replaced.
std::string printable(std::string_view text);

}  // namespace cli

#endif
