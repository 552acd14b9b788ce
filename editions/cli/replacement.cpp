#include "replacement.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <utility>

#include "failure.h"

namespace cli {

namespace {

// Read by the handler of signals, changed only while these are held back.
replacement* newest = nullptr;

class signals_held_back {
 public:
  signals_held_back() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &before_);
  }
  ~signals_held_back() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  signals_held_back(const signals_held_back&) = delete;
  signals_held_back& operator=(const signals_held_back&) = delete;

 private:
  sigset_t before_ = {};
};

mode_t new_file_mode() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

}  // namespace

replacement::replacement(std::string target)
    : target_(std::move(target)),
      path_((std::filesystem::path(target_).parent_path() / ".gridwork.XXXXXX").string()),
      next_(newest) {
  const signals_held_back here;
  descriptor_ = mkostemp(path_.data(), O_CLOEXEC);
  if (descriptor_ < 0) fail_by_errno();
  newest = this;
}

replacement::~replacement() {
  const signals_held_back here;
  if (!path_.empty()) unlink(path_.c_str());
  forget();
  if (descriptor_ >= 0) close(descriptor_);
}

// An existing file keeps its mode.
void replacement::complete() {
  struct stat old = {};
  const mode_t mode = stat(target_.c_str(), &old) == 0 ? old.st_mode & 07777U : new_file_mode();
  if (fchmod(descriptor_, mode) != 0 || fsync(descriptor_) != 0) fail_by_errno();
  if (close(std::exchange(descriptor_, -1)) != 0) fail_by_errno();
}

void replacement::take_place(bool force) {
  const signals_held_back here;
  if (!(force ? rename(path_.c_str(), target_.c_str()) == 0 : appear())) fail_by_errno();
  path_.clear();
}

// Never over a file that came into being meanwhile; some file systems have no links.
bool replacement::appear() {
  if (link(path_.c_str(), target_.c_str()) == 0) return unlink(path_.c_str()) == 0;
  if (errno != EPERM && errno != EOPNOTSUPP) return false;
  return renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, target_.c_str(), RENAME_NOREPLACE) == 0;
}

void replacement::forget() {
  for (replacement** place = &newest; *place != nullptr; place = &(*place)->next_) {
    if (*place != this) continue;
    *place = next_;
    return;
  }
}

void replacement::end_by_signal(int signal) {
  for (const replacement* file = newest; file != nullptr; file = file->next_) {
    if (!file->path_.empty()) unlink(file->path_.c_str());
  }
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

void replacement::remove_all_on_signals() {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGXFSZ}) {
    if (std::signal(signal, end_by_signal) == SIG_IGN) std::signal(signal, SIG_IGN);
  }
}

}  // namespace cli
