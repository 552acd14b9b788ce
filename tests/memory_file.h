#ifndef QEL_TESTS_MEMORY_FILE_H
#define QEL_TESTS_MEMORY_FILE_H

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#if defined(__linux__)
#include <sys/mman.h>

/// A file without a place on any disk. Its path can be opened as often as needed.
class memory_file {
 public:
  memory_file() : fd_(::memfd_create("test", 0)), path_("/proc/self/fd/" + std::to_string(fd_)) {}
  explicit memory_file(const std::string& content) : memory_file() { write(content); }
  memory_file(const memory_file&) = delete;
  memory_file& operator=(const memory_file&) = delete;
  ~memory_file() { ::close(fd_); }

  const char* path() const { return path_.c_str(); }
  std::uint64_t size() const { return static_cast<std::uint64_t>(::lseek(fd_, 0, SEEK_END)); }

  void resize(std::uint64_t bytes) const {
    if (::ftruncate(fd_, static_cast<off_t>(bytes)) != 0) std::abort();
  }

  void write(const std::string& content) const {
    resize(content.size());
    if (::pwrite(fd_, content.data(), content.size(), 0) != static_cast<ssize_t>(content.size())) std::abort();
  }

  std::string content() const {
    std::string bytes(size(), '\0');
    if (::pread(fd_, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) std::abort();
    return bytes;
  }

 private:
  int fd_;
  std::string path_;
};

#else
#include <cstdio>

#if !defined(__wasi__)
#include <filesystem>
#endif

/// Where there is none, a file in the folder for temporary ones.
class memory_file {
 public:
  memory_file() { write(""); }
  explicit memory_file(const std::string& content) { write(content); }
  memory_file(const memory_file&) = delete;
  memory_file& operator=(const memory_file&) = delete;
  ~memory_file() { std::remove(path()); }

  const char* path() const { return path_.c_str(); }

  void write(const std::string& content) const {
    std::FILE* stream = open("wb");
    if (std::fwrite(content.data(), 1, content.size(), stream) != content.size()) std::abort();
    std::fclose(stream);
  }

  std::string content() const {
    std::FILE* stream = open("rb");
    std::string bytes;
    for (int c = std::fgetc(stream); c != EOF; c = std::fgetc(stream)) bytes += static_cast<char>(c);
    std::fclose(stream);
    return bytes;
  }

 private:
  std::FILE* open(const char* mode) const {
    std::FILE* stream = std::fopen(path(), mode);
    if (stream == nullptr) std::abort();
    return stream;
  }

  static std::string fresh_path() {
    static unsigned count = 0;
    const std::string number = std::to_string(++count);
#if defined(__wasi__)
    return "gridwork-" + number;  // in the folder that the host lends
#else
    const std::string name = "gridwork-" + std::to_string(getpid()) + "-" + number;
    return (std::filesystem::temp_directory_path() / name).string();
#endif
  }

  std::string path_ = fresh_path();
};

#endif

#endif
