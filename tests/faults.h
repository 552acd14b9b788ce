// Memory and streams that fail when a test wants them to. faults.cpp puts itself between the library and the C library.
#ifndef QEL_TESTS_FAULTS_H
#define QEL_TESTS_FAULTS_H

#include <cstdint>

#include "memory_file.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define QEL_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define QEL_SANITIZED 1
#endif
#endif

namespace faults {

enum class operation { allocate, open, read, write, close, seek };

/// The at-th call (1, 2, ...) of an operation in this thread fails, and with `onwards` all that follow; none for 0.
struct plan {
  operation what = operation::allocate;
  std::uint64_t at = 0;
  bool onwards = false;
};

void arm(const plan& p);

/// Ends the plan. True when a call failed.
bool disarm();

/// What the program holds: blocks of memory and open streams.
std::uint64_t live_blocks();
std::uint64_t live_streams();

/// What the at-th read of an armed plan does instead of failing; null: it fails.
extern void (*instead_of_failing)();

/// What a reader finds in its buffer behind the bytes that it got. (The address sanitizer stops it there.)
extern char junk;

}  // namespace faults

#endif
