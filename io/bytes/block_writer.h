// Collects output in a block and writes it when the block is full.
#ifndef QEL_GRIDWORK_IO_BYTES_BLOCK_WRITER_H
#define QEL_GRIDWORK_IO_BYTES_BLOCK_WRITER_H

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "core/check.h"
#include "core/limits.h"
#include "io/bytes/file.h"
#include "qel/dense.h"

namespace qel::gridwork::detail::io {

class block_writer {
 public:
  explicit block_writer(std::FILE* stream) noexcept : stream_(stream) {}

  /// Takes the memory for the block; before anything else.
  [[nodiscard]] bool prepare() noexcept { return block_.resize(limits::write_block); }

  /// A place for up to `most` bytes, which commit() then counts; null when earlier output could not be written.
  char* room(std::uint64_t most) noexcept {
    QEL_GRIDWORK_CHECK(most <= limits::write_block);
    if (used_ + most > limits::write_block && !flush()) return nullptr;
    return block_.data() + used_;
  }

  void commit(const char* end) noexcept {
    used_ = static_cast<std::uint64_t>(end - block_.data());
    QEL_GRIDWORK_CHECK(used_ <= block_.size());
  }

  [[nodiscard]] bool put(std::string_view text) noexcept {
    char* out = room(text.size());
    if (out == nullptr) return false;
    std::memcpy(out, text.data(), text.size());
    commit(out + text.size());
    return true;
  }

  /// Hands over what was collected; false when it could not be written in full.
  [[nodiscard]] bool flush() noexcept {
    const char* const end = block_.data() + used_;
    used_ = 0;
    for (const char* p = block_.data(); p != end;) {
      p += std::fwrite(p, 1, static_cast<std::size_t>(end - p), stream_);
      if (p != end && !was_interrupted(stream_)) return false;
    }
    return true;
  }

 private:
  std::FILE* stream_;
  dense1D<char> block_;
  std::uint64_t used_ = 0;
};

}  // namespace qel::gridwork::detail::io

#endif
