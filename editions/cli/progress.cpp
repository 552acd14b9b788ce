#include "progress.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

namespace cli {

step::step(const session& s, std::string name, std::uint64_t size, const char* unit) : name_(std::move(name)) {
  if (size != 0) name_ += " (" + grouped(size) + " " + unit + ")";
  if (!s.quiet && isatty(STDERR_FILENO) == 1) watcher_ = std::thread(&step::watch, this);
}

step::~step() {
  if (!watcher_.joinable()) return;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    over_ = true;
  }
  ended_.notify_one();
  watcher_.join();
}

void step::watch() {
  std::unique_lock<std::mutex> lock(mutex_);
  if (ended_.wait_for(lock, std::chrono::milliseconds(500), [&] { return over_; })) return;
  std::fprintf(stderr, "%s ... ", printable(name_).c_str());
  ended_.wait(lock, [&] { return over_; });
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start_;
  std::fprintf(stderr, "%.1f s\n", seconds.count());
}

}  // namespace cli
