// The linker sends the library's calls (--wrap) and every `new` of the program here.
#include "faults.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <new>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(place, size) (static_cast<void>(place), static_cast<void>(size))
#define ASAN_UNPOISON_MEMORY_REGION(place, size) (static_cast<void>(place), static_cast<void>(size))
#endif

namespace faults {
namespace {

thread_local plan current;
thread_local bool armed = false;
thread_local std::uint64_t calls = 0;
std::atomic<std::uint64_t> blocks{0}, streams{0};

[[maybe_unused]] bool fails(operation what) {
  if (!armed || what != current.what) return false;
  ++calls;
  return current.at != 0 && (calls == current.at || (current.onwards && calls > current.at));
}

[[maybe_unused]] void* counted(void* block) {
  if (block != nullptr) ++blocks;
  return block;
}

}  // namespace

void (*instead_of_failing)() = nullptr;
char junk = '\x5a';

void arm(const plan& p) {
  current = p;
  calls = 0;
  armed = true;
}

bool disarm() {
  armed = false;
  return current.at != 0 && calls >= current.at;
}

std::uint64_t live_blocks() { return blocks; }
std::uint64_t live_streams() { return streams; }

}  // namespace faults

#if defined(__linux__)  // elsewhere nothing fails on purpose

using faults::fails;
using faults::operation;

extern "C" {

void* __real_malloc(std::size_t bytes);
int __real_posix_memalign(void** block, std::size_t alignment, std::size_t bytes);
void __real_free(void* block);
std::FILE* __real_fopen(const char* path, const char* mode);
std::size_t __real_fread(void* to, std::size_t size, std::size_t count, std::FILE* stream);
std::size_t __real_fwrite(const void* from, std::size_t size, std::size_t count, std::FILE* stream);
int __real_fclose(std::FILE* stream);
int __real_fseek(std::FILE* stream, long offset, int origin);

void* __wrap_malloc(std::size_t bytes) {
  return fails(operation::allocate) ? nullptr : faults::counted(__real_malloc(bytes));
}

int __wrap_posix_memalign(void** block, std::size_t alignment, std::size_t bytes) {
  if (fails(operation::allocate)) return 12;
  const int result = __real_posix_memalign(block, alignment, bytes);
  if (result == 0) faults::counted(*block);
  return result;
}

void __wrap_free(void* block) {
  if (block != nullptr) --faults::blocks;
  __real_free(block);
}

std::FILE* __wrap_fopen(const char* path, const char* mode) {
  std::FILE* stream = fails(operation::open) ? nullptr : __real_fopen(path, mode);
  if (stream != nullptr) ++faults::streams;
  return stream;
}

/// What fopen is called where files beyond 2 GiB ask for it.
std::FILE* __wrap_fopen64(const char* path, const char* mode) { return __wrap_fopen(path, mode); }

std::size_t __wrap_fread(void* to, std::size_t size, std::size_t count, std::FILE* stream) {
  if (fails(operation::read)) {
    if (faults::instead_of_failing == nullptr) return 0;
    faults::instead_of_failing();
  }
  char* bytes = static_cast<char*>(to);
  ASAN_UNPOISON_MEMORY_REGION(bytes, size * count);
  const std::size_t got = __real_fread(to, size, count, stream);
  std::memset(bytes + got * size, faults::junk, std::min<std::size_t>(size * (count - got), 4096));
  constexpr std::size_t ending = 16;  // is left to a reader for what it ends its bytes with
  const std::size_t used = got * size + ending;
  if (used < size * count) ASAN_POISON_MEMORY_REGION(bytes + used, size * count - used);
  return got;
}

/// A write that fails leaves a part of it in the file.
std::size_t __wrap_fwrite(const void* from, std::size_t size, std::size_t count, std::FILE* stream) {
  return __real_fwrite(from, size, fails(operation::write) ? count / 2 : count, stream);
}

/// A stream is closed also where that fails.
int __wrap_fclose(std::FILE* stream) {
  --faults::streams;
  const int result = __real_fclose(stream);
  return fails(operation::close) ? -1 : result;
}

int __wrap_fseek(std::FILE* stream, long offset, int origin) {
  return fails(operation::seek) ? -1 : __real_fseek(stream, offset, origin);
}
}

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept { return std::malloc(bytes); }
void* operator new(std::size_t bytes) {
  void* block = std::malloc(bytes);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }

#endif
