#include "input.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <vector>

#include "descriptors.h"
#include "failure.h"
#include "progress.h"

namespace cli {

namespace {

struct stat state_of(int descriptor) {
  struct stat state = {};
  if (fstat(descriptor, &state) != 0) fail_by_errno();
  return state;
}

void copy_stream(int from, int to) {
  std::vector<char> block(1U << 16U);
  for (;;) {
    const ssize_t count = read_some(from, block.data(), block.size());
    if (count < 0) fail_by_errno();
    if (count == 0) return;
    errno = write_all(to, block.data(), static_cast<std::size_t>(count));
    if (errno != 0) fail_by_errno();
  }
}

std::string known_formats() {
  std::string words;
  for (const report::format& kind : report::formats()) {
    if (kind.read != nullptr) words += (words.empty() ? "" : ", ") + std::string(kind.option);
  }
  return words;
}

const report::format& readable_format(const std::string& name, const std::string& from) {
  const report::format* kind = report::find_format(name, from);
  if (kind == nullptr && name == "-") throw failure("standard input needs --from, one of " + known_formats());
  if (kind == nullptr) throw failure("the format is not known; --from names it, one of " + known_formats());
  if (kind->read == nullptr) throw failure(std::string(kind->name) + " is written, but not read");
  return *kind;
}

// Not known of pipes.
std::uint64_t size_of(const std::string& name) {
  std::error_code unknown;
  const std::uintmax_t size = std::filesystem::file_size(name, unknown);
  return unknown ? 0 : size;
}

}  // namespace

input_file::input_file(const std::string& name) {
  descriptor_ = name == "-" ? dup(STDIN_FILENO) : open(name.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor_ < 0) fail_by_errno();
  const mode_t mode = state_of(descriptor_).st_mode;
  if (S_ISDIR(mode)) throw failure(std::strerror(EISDIR), -1);
  if (!S_ISREG(mode)) keep_in_memory();
  path_ = S_ISREG(mode) && name != "-" ? name : "/proc/self/fd/" + std::to_string(descriptor_);
}

input_file::~input_file() {
  if (descriptor_ >= 0) close(descriptor_);
}

void input_file::keep_in_memory() {
  const int memory = memfd_create("gridwork", MFD_CLOEXEC);
  if (memory < 0) fail_by_errno();
  copy_stream(descriptor_, memory);
  close(descriptor_);
  descriptor_ = memory;
}

loaded load(const session& s, const std::string& name, const std::string& from) {
  loaded file;
  file.kind = &readable_format(name, from);
  const step progress(s, "reading " + name, size_of(name), "bytes");
  const input_file input(name);
  const report::refusal refused = read_file(input.path(), file);
  if (!refused.words.empty()) throw failure(refused.words, refused.result);
  return file;
}

}  // namespace cli
