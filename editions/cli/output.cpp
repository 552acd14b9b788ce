#include "output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <utility>

#include "progress.h"
#include "sink.h"

namespace cli {

using report::failure;

namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail_by_errno() { throw failure(std::strerror(errno), -1); }

// The file that a signal has to remove; empty when there is none.
char temporary_path[4096] = "";

void end_by_signal(int signal) {
  if (temporary_path[0] != '\0') unlink(temporary_path);
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

mode_t new_file_mode() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

// A file beside the target that takes its place when it is complete.
class replacement {
 public:
  explicit replacement(std::string target) : target_(std::move(target)) {
    const std::string pattern = (fs::path(target_).parent_path() / ".gridwork.XXXXXX").string();
    if (pattern.size() >= sizeof temporary_path) throw failure(std::strerror(ENAMETOOLONG));
    std::string path = pattern;
    descriptor_ = mkostemp(path.data(), O_CLOEXEC);
    if (descriptor_ < 0) fail_by_errno();
    std::strcpy(temporary_path, path.c_str());
  }

  ~replacement() {
    if (temporary_path[0] != '\0') unlink(temporary_path);
    temporary_path[0] = '\0';
    close(descriptor_);
  }

  replacement(const replacement&) = delete;
  replacement& operator=(const replacement&) = delete;

  int descriptor() const { return descriptor_; }

  void take_place(bool force) {
    struct stat old = {};
    const mode_t mode = stat(target_.c_str(), &old) == 0 ? old.st_mode & 07777U : new_file_mode();
    if (fchmod(descriptor_, mode) != 0 || fsync(descriptor_) != 0) fail_by_errno();
    if (!(force ? rename(temporary_path, target_.c_str()) == 0 : appear())) fail_by_errno();
    if (force) temporary_path[0] = '\0';
  }

 private:
  // Never over a file that came into being meanwhile; some file systems have no links.
  bool appear() {
    if (link(temporary_path, target_.c_str()) == 0) return true;
    if (errno != EPERM && errno != EOPNOTSUPP) return false;
    return renameat2(AT_FDCWD, temporary_path, AT_FDCWD, target_.c_str(), RENAME_NOREPLACE) == 0;
  }

  std::string target_;
  int descriptor_ = -1;
};

constexpr int most_links = 40;

// Follows links, also to files that are not there yet.
std::string resolved(const std::string& out) {
  std::error_code absent;  // is no fault of a target that is to come
  fs::path target = out;
  for (int k = 0; k < most_links && fs::is_symlink(target, absent); ++k) {
    target = target.parent_path() / fs::read_symlink(target, absent);
  }
  return target.string();
}

bool is_special(const std::string& out) {
  std::error_code error;
  const fs::file_status state = fs::status(out, error);
  return fs::exists(state) && !fs::is_regular_file(state) && !fs::is_directory(state);
}

const report::format& writable_format(const output_options& options) {
  const report::format* kind = report::find_format(options.out, options.to);
  if (kind == nullptr && options.out == "-") throw failure("standard output needs --to; `gridwork formats` lists them");
  if (kind == nullptr) throw failure("the format is not known; --to names it, `gridwork formats` lists them");
  return *kind;
}

void leave_out_or_refuse(report::mesh& m, const report::format& kind, bool drop, const session& s) {
  std::string refused;
  std::uint64_t count = 0;
  std::erase_if(m.blocks, [&](const report::block& b) {
    if (kind.holds(b.type)) return false;
    refused += (refused.empty() ? "" : ", ") + std::string(report::type_name(b.type));
    count += b.connectivity.cols();
    return true;
  });
  const std::string words = std::string(kind.name) + " does not hold " + refused;
  if (count != 0 && !drop) throw failure(words + "; --drop leaves them out");
  if (count != 0 && !s.quiet)
    std::fprintf(stderr, "gridwork: %s: %s left out\n", words.c_str(), grouped(count).c_str());
  if (m.blocks.empty()) throw failure("there is no element to write");
}

void write_to(int descriptor, const report::mesh& m, const report::format& kind, bool text) {
  sink bytes(descriptor);
  const int result = kind.write(bytes.path().c_str(), m, text);
  const int failed = bytes.finish();
  if (failed != 0) throw failure(std::strerror(failed), -1);
  report::require(kind.writer, result);
}

void write_to_device(const report::mesh& m, const report::format& kind, const output_options& options) {
  const int device = options.out == "-" ? dup(STDOUT_FILENO) : open(options.out.c_str(), O_WRONLY | O_CLOEXEC);
  if (device < 0) fail_by_errno();
  try {
    write_to(device, m, kind, options.text);
  } catch (...) {
    close(device);
    throw;
  }
  if (close(device) != 0) fail_by_errno();
}

}  // namespace

void check_output(const output_options& options) {
  writable_format(options);
  if (options.out == "-" || is_special(options.out)) return;
  std::error_code error;
  if (fs::is_directory(options.out, error)) throw failure(std::strerror(EISDIR));
  if (!options.force && fs::exists(options.out, error)) throw failure("the file exists; --force overwrites it");
}

void save(const session& s, report::mesh m, const output_options& options) {
  const report::format& kind = writable_format(options);
  leave_out_or_refuse(m, kind, options.drop, s);
  const step progress(s, "writing " + options.out);
  if (options.out == "-" || is_special(options.out)) {
    write_to_device(m, kind, options);
    return;
  }
  replacement file(resolved(options.out));
  write_to(file.descriptor(), m, kind, options.text);
  file.take_place(options.force);
}

void remove_temporary_on_signals() {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGXFSZ}) {
    if (std::signal(signal, end_by_signal) == SIG_IGN) std::signal(signal, SIG_IGN);
  }
}

}  // namespace cli
