#include "output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <utility>

#include "failure.h"
#include "progress.h"
#include "sink.h"

namespace cli {

namespace {

namespace fs = std::filesystem;
namespace gw = qel::gridwork;

using writing = std::function<report::outcome(const char* path)>;

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

const report::format& writable_format(const output_options& options) {
  const report::format* kind = report::find_format(options.out, options.to);
  if (kind == nullptr && options.out == "-") throw failure("standard output needs --to; `gridwork formats` lists them");
  if (kind == nullptr) throw failure("the format is not known; --to names it, `gridwork formats` lists them");
  return *kind;
}

bool has_case(const report::format& kind, const std::string& out) {
  return kind.writer == gw::operation::ensight_output && report::extension_of(out) == ".case";
}

std::string geometry_of(const std::string& out) { return fs::path(out).replace_extension(".geo").string(); }

// A case file tells other programs which file has the mesh.
report::outcome write_case(const char* path, const std::string& geometry) {
  std::FILE* file = std::fopen(path, "w");
  if (file == nullptr) fail_by_errno();
  std::fprintf(file, "FORMAT\ntype: ensight\n\nGEOMETRY\nmodel: %s\n", fs::path(geometry).filename().c_str());
  if (std::fclose(file) != 0) fail_by_errno();
  return {};
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

void write_to(int descriptor, const writing& write) {
  sink bytes(descriptor);
  const report::outcome done = write(bytes.path().c_str());
  const int failed = bytes.finish();
  if (failed != 0) throw failure(std::strerror(failed), -1);
  require(done);
}

void write_to_stream(const std::string& out, const writing& write) {
  const int device = out == "-" ? dup(STDOUT_FILENO) : open(out.c_str(), O_WRONLY | O_CLOEXEC);
  if (device < 0) fail_by_errno();
  try {
    write_to(device, write);
  } catch (...) {
    close(device);
    throw;
  }
  if (close(device) != 0) fail_by_errno();
}

writing writing_of(const report::format& kind, const report::mesh& m, bool text) {
  return [&kind, &m, text](const char* path) { return report::outcome{kind.writer, kind.write(path, m, text)}; };
}

void refuse_existing(const std::string& out, bool force) {
  std::error_code error;
  if (fs::is_directory(out, error)) throw failure(std::strerror(EISDIR));
  if (!force && fs::exists(out, error))
    throw failure(fs::path(out).filename().string() + " exists; --force overwrites it");
}

}  // namespace

bool is_stream(const std::string& out) {
  std::error_code error;
  const fs::file_status state = fs::status(out, error);
  return out == "-" || (fs::exists(state) && !fs::is_regular_file(state) && !fs::is_directory(state));
}

void check_overwriting(const output_options& options) {
  if (!is_stream(options.out)) refuse_existing(options.out, options.force);
}

void check_output(const output_options& options) {
  const report::format& kind = writable_format(options);
  check_overwriting(options);
  if (!is_stream(options.out) && has_case(kind, options.out)) refuse_existing(geometry_of(options.out), options.force);
}

void save(const session& s, report::mesh m, const output_options& options) {
  if (is_stream(options.out)) {
    const report::format& kind = writable_format(options);
    leave_out_or_refuse(m, kind, options.drop, s);
    const step progress(s, "writing " + options.out, count_elements(m));
    write_to_stream(options.out, writing_of(kind, m, options.text));
    return;
  }
  output_files files(options.force);
  files.add(s, std::move(m), options);
  files.appear();
}

void save_bytes(const output_options& options, const writing& write) {
  if (is_stream(options.out)) return write_to_stream(options.out, write);
  output_files files(options.force);
  files.add(options.out, write);
  files.appear();
}

void output_files::add(const std::string& out, const writing& write) {
  refuse_existing(out, force_);
  auto file = std::make_unique<replacement>(resolved(out));
  write_to(file->descriptor(), write);
  file->complete();
  files_.push_back(std::move(file));
}

void output_files::add(const session& s, report::mesh m, const output_options& options) {
  const report::format& kind = writable_format(options);
  leave_out_or_refuse(m, kind, options.drop, s);
  const step progress(s, "writing " + options.out, count_elements(m));
  const std::string geometry = has_case(kind, options.out) ? geometry_of(options.out) : options.out;
  add(geometry, writing_of(kind, m, options.text));
  if (geometry != options.out) add(options.out, [&](const char* path) { return write_case(path, geometry); });
}

void output_files::appear() {
  std::size_t placed = 0;
  try {
    for (; placed < files_.size(); ++placed) files_[placed]->take_place(force_);
  } catch (...) {
    for (std::size_t k = 0; k < placed && !force_; ++k) unlink(files_[k]->target().c_str());
    throw;
  }
}

}  // namespace cli
