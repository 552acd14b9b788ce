// Reads a stream in whole blocks and hands out its bytes in small pieces.
#ifndef QEL_GRIDWORK_IO_BYTES_BLOCK_READER_H
#define QEL_GRIDWORK_IO_BYTES_BLOCK_READER_H

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "core/check.h"
#include "core/limits.h"
#include "io/bytes/file.h"
#include "io/text/text.h"
#include "qel/dense.h"

namespace qel::gridwork::detail::io {

class block_reader {
 public:
  explicit block_reader(std::FILE* stream) noexcept : stream_(stream) {}

  /// Takes the memory for a block; before anything else.
  [[nodiscard]] bool prepare() noexcept {
    if (!block_.resize(limits::read_block + 1 + scan_margin)) return false;
    begin_ = end_ = block_.data();
    end_text();
    return true;
  }

  /// The bytes that are there, followed by a NUL and scan_margin more. fill() may move them.
  const char* begin() const noexcept { return begin_; }
  const char* end() const noexcept { return end_; }
  std::uint64_t available() const noexcept { return static_cast<std::uint64_t>(end_ - begin_); }

  /// Bytes consumed so far.
  std::uint64_t position() const noexcept { return read_ - available(); }

  /// Makes `count` bytes, at most a block, available if the stream has them. True when they are.
  bool fill(std::uint64_t count) noexcept {
    QEL_GRIDWORK_CHECK(count <= limits::read_block);
    if (available() >= count) return true;
    if (ended_) return false;
    const std::uint64_t left = available();
    std::memmove(block_.data(), begin_, static_cast<std::size_t>(left));
    begin_ = block_.data();
    end_ = begin_ + left;
    while (available() < count) {
      const std::size_t got = std::fread(end_, 1, static_cast<std::size_t>(limits::read_block - available()), stream_);
      if (got == 0 && was_interrupted(stream_)) continue;
      ended_ = got == 0;
      if (ended_) break;
      end_ += got;
      read_ += got;
    }
    end_text();
    return available() >= count;
  }

  void consume(std::uint64_t count) noexcept {
    QEL_GRIDWORK_CHECK(count <= available());
    begin_ += count;
  }

  /// Consumes what is left of a line; false when the stream ends before its newline.
  bool pass_line() noexcept {
    while (fill(1)) {
      const void* newline = std::memchr(begin_, '\n', static_cast<std::size_t>(end_ - begin_));
      begin_ = newline != nullptr ? begin_ + (static_cast<const char*>(newline) - begin_) + 1 : end_;
      if (newline != nullptr) return true;
    }
    return false;
  }

  /// Goes back to the first byte. False when that is neither in the block any more nor can be read again.
  [[nodiscard]] bool rewind() noexcept {
    if (end_ != block_.data() + read_) {
      if (std::fseek(stream_, 0, SEEK_SET) != 0) return false;
      end_ = block_.data();
      read_ = 0;
      ended_ = false;
      end_text();
    }
    begin_ = block_.data();
    return true;
  }

 private:
  void end_text() noexcept { std::memset(end_, 0, 1 + scan_margin); }

  std::FILE* stream_;
  dense1D<char> block_;
  char* begin_ = nullptr;
  char* end_ = nullptr;
  std::uint64_t read_ = 0;
  bool ended_ = false;
};

}  // namespace qel::gridwork::detail::io

#endif
