// A place for the bytes of a writer that does not tell whether they arrived.
#ifndef QEL_GRIDWORK_CLI_SINK_H
#define QEL_GRIDWORK_CLI_SINK_H

#include <string>
#include <thread>

namespace cli {

/// A pipe whose other end writes to a descriptor and remembers the first failure: so a full disk is noticed for every
/// format, at the byte where it happens.
class sink {
 public:
  explicit sink(int to);
  ~sink();
  sink(const sink&) = delete;
  sink& operator=(const sink&) = delete;

  /// What the writer opens.
  const std::string& path() const { return path_; }

  /// Waits until all bytes arrived; 0 or the errno of the first failure.
  int finish();

 private:
  void drain();

  int to_;
  int ends_[2] = {-1, -1};
  int error_ = 0;
  std::string path_;
  std::thread drainer_;
};

}  // namespace cli

#endif
