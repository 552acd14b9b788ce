// Tells a person at a terminal what takes so long.
#ifndef QEL_GRIDWORK_CLI_PROGRESS_H
#define QEL_GRIDWORK_CLI_PROGRESS_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

#include "session.h"

namespace cli {

/// A step of the work, named on stderr when it lasts longer than half a second, and there is a terminal.
class step {
 public:
  /// With the size of what is worked on, where it is known.
  step(const session& s, std::string name, std::uint64_t size, const char* unit = "elements");
  ~step();
  step(const step&) = delete;
  step& operator=(const step&) = delete;

 private:
  void watch();

  std::string name_;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  std::mutex mutex_;
  std::condition_variable ended_;
  bool over_ = false;
  std::thread watcher_;
};

}  // namespace cli

#endif
