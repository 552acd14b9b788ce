// The one place where arrays get their memory.
#include <cstddef>
#include <cstdlib>

#include "core/limits.h"
#include "qel/dense.h"

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace qel {
namespace {

#if defined(__linux__)
using gridwork::detail::limits::huge_page;

void* allocate_in_huge_pages(std::size_t bytes) noexcept {
  void* raw = nullptr;
  if (posix_memalign(&raw, huge_page, bytes) != 0) return nullptr;
  madvise(raw, bytes, MADV_HUGEPAGE);  // advice only: a refusal changes nothing but the speed
  return raw;
}
#endif

}  // namespace

void* __vector_num_alloc(std::uint64_t bytes) noexcept {
  if (bytes > static_cast<std::uint64_t>(PTRDIFF_MAX)) return nullptr;
  const auto size = static_cast<std::size_t>(bytes);
#if defined(__linux__)
  if (size >= huge_page) return allocate_in_huge_pages(size);
#endif
  return std::malloc(size);
}

void __vector_num_free(void* raw) noexcept { std::free(raw); }

}  // namespace qel
