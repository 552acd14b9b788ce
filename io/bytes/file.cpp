#include "io/bytes/file.h"

#if defined(_WIN32)
#include <windows.h>

#include "qel/dense.h"
#endif

namespace qel::gridwork::detail::io {
namespace {

#if defined(_WIN32)
/// The system's own letters have 16 bits; its narrow names depend on the user's settings.
std::FILE* open_once(const char* path, const char* mode) noexcept {
  const wchar_t wide_mode[] = {static_cast<wchar_t>(mode[0]), L'b', L'\0'};
  const int size = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path, -1, nullptr, 0);
  dense1D<wchar_t> wide_path;
  if (size <= 0 || !wide_path.resize(static_cast<std::uint64_t>(size))) return nullptr;
  MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path, -1, wide_path.data(), size);
  return _wfopen(wide_path.data(), wide_mode);
}

std::int64_t position(std::FILE* stream) noexcept { return _ftelli64(stream); }
#else
std::FILE* open_once(const char* path, const char* mode) noexcept { return std::fopen(path, mode); }

std::int64_t position(std::FILE* stream) noexcept { return std::ftell(stream); }
#endif

/// A pipe makes this wait for its other end, and signals may come meanwhile.
std::FILE* open(const char* path, const char* mode) noexcept {
  std::FILE* stream = nullptr;
  do {
    errno = 0;
    stream = open_once(path, mode);
  } while (stream == nullptr && errno == EINTR);
  return stream;
}

}  // namespace

file::file(const char* path, access wanted) noexcept {
  if (path != nullptr) stream_ = open(path, wanted == access::read ? "rb" : "wb");
  if (stream_ != nullptr) std::setvbuf(stream_, nullptr, _IONBF, 0);
}

std::uint64_t file::size() const noexcept {
  if (std::fseek(stream_, 0, SEEK_END) != 0) return 0;
  const std::int64_t end = position(stream_);
  std::rewind(stream_);
  return end > 0 ? static_cast<std::uint64_t>(end) : 0;
}

}  // namespace qel::gridwork::detail::io
