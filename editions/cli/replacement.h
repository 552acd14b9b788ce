// Files that come into being beside their places, and take these when they are complete.
#ifndef QEL_GRIDWORK_CLI_REPLACEMENT_H
#define QEL_GRIDWORK_CLI_REPLACEMENT_H

#include <string>

namespace cli {

/// A temporary file in the folder of its target. It is removed when it has not taken its place, also when a signal ends
/// the program.
class replacement {
 public:
  /// Fails with the words of errno.
  explicit replacement(std::string target);
  ~replacement();
  replacement(const replacement&) = delete;
  replacement& operator=(const replacement&) = delete;

  int descriptor() const { return descriptor_; }
  const std::string& target() const { return target_; }

  /// Ends the writing: all bytes are on the disk behind it.
  void complete();

  /// Takes the name of the target, with `force` over a file that has it.
  void take_place(bool force);

  /// From now on signals that end the program remove all temporary files.
  static void remove_all_on_signals();

 private:
  static void end_by_signal(int signal);
  bool appear();
  void forget();

  std::string target_;
  std::string path_;
  int descriptor_ = -1;
  replacement* next_ = nullptr;  // of those that are there
};

}  // namespace cli

#endif
