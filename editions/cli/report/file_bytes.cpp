#include "file_bytes.h"

#include <algorithm>
#include <cstring>

namespace report {

namespace {

constexpr std::size_t head_size = 512;
constexpr std::size_t block_size = 1U << 16U;

}  // namespace

file_bytes::file_bytes(const char* path) : path_(path) {
  const file_handle stream(std::fopen(path, "rb"));
  if (stream == nullptr) return;
  head_.resize(head_size);
  head_.resize(std::fread(head_.data(), 1, head_size, stream.get()));
  if (fseeko(stream.get(), 0, SEEK_END) == 0) size_ = static_cast<std::uint64_t>(ftello(stream.get()));
}

line_reader::line_reader(const file_bytes& file) : stream_(std::fopen(file.path(), "rb")), block_(block_size) {}

bool line_reader::next() {
  std::size_t end = rest_.find('\n');
  while (end == std::string_view::npos && fill()) end = rest_.find('\n');
  if (rest_.empty()) return false;
  line_ = rest_.substr(0, end);
  rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
  ++number_;
  return true;
}

bool line_reader::at_end() { return rest_.empty() && !fill(); }

// Reads on behind the rest, which moves to the front; false when nothing came.
bool line_reader::fill() {
  if (stream_ == nullptr || rest_.size() >= longest) return false;
  if (!rest_.empty()) std::memmove(block_.data(), rest_.data(), rest_.size());
  if (rest_.size() == block_.size()) block_.resize(2 * block_.size());
  char* const end = block_.data() + rest_.size();
  const std::size_t count = std::fread(end, 1, block_.size() - rest_.size(), stream_.get());
  rest_ = {block_.data(), rest_.size() + count};
  return count != 0;
}

std::string_view without_blanks(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(blanks), text.size()));
}

std::string lower_case(std::string_view text) {
  std::string all(text);
  for (char& c : all) c = lower_case(c);
  return all;
}

bool holds_in_any_case(std::string_view text, std::string_view word) {
  const auto same = [](char a, char b) { return lower_case(a) == b; };
  return std::search(text.begin(), text.end(), word.begin(), word.end(), same) != text.end();
}

}  // namespace report
