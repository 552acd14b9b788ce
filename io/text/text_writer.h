// Output of text formats, record by record.
#ifndef QEL_GRIDWORK_IO_TEXT_TEXT_WRITER_H
#define QEL_GRIDWORK_IO_TEXT_TEXT_WRITER_H

#include <cstdint>
#include <cstdio>
#include <string_view>

#include "core/check.h"
#include "io/bytes/block_writer.h"
#include "io/text/number_format.h"
#include "io/text/text.h"

namespace qel::gridwork::detail::io {

/// What "%<width>d" prints for an index, which is an unsigned number.
inline char* append_id(char* out, unsigned id, unsigned width = 0) noexcept {
  return format_integer(out, static_cast<std::int32_t>(id), width);
}

/// Like block_writer, for the formats that do not report what the stream could not take: it is dropped.
class text_writer {
 public:
  explicit text_writer(std::FILE* stream) noexcept : blocks_(stream) {}

  /// Takes the memory for the block; before anything else.
  [[nodiscard]] bool prepare() noexcept { return blocks_.prepare(); }

  /// Appends what append(out) writes to `out`, up to `most` bytes; it returns the position behind them.
  template <class Append>
  void write(std::uint64_t most, Append append) {
    char* out = blocks_.room(most);
    if (out == nullptr) out = blocks_.room(most);  // there is room now: the block that failed is gone
    const char* end = append(out);
    QEL_GRIDWORK_CHECK(end >= out && end <= out + most);
    blocks_.commit(end);
  }

  void put(std::string_view text) {
    write(text.size(), [text](char* out) { return append(out, text); });
  }

  /// Appends a count as "%<width>d" prints it, and a text.
  void put_count(std::uint64_t count, std::string_view behind, unsigned width = 0) {
    write(longest_integer, [=](char* out) { return format_integer(out, static_cast<std::int64_t>(count), width); });
    put(behind);
  }

  void finish() noexcept { static_cast<void>(blocks_.flush()); }

 private:
  block_writer blocks_;
};

}  // namespace qel::gridwork::detail::io

#endif
