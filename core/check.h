// Statements of what must be true inside the library, whatever the input.
#ifndef QEL_GRIDWORK_CORE_CHECK_H
#define QEL_GRIDWORK_CORE_CHECK_H

#ifdef QEL_GRIDWORK_CHECKS

#include <cstdio>
#include <cstdlib>

namespace qel::gridwork::detail {

[[noreturn]] inline void report_and_abort(const char* condition, const char* file, int line) noexcept {
  std::fprintf(stderr, "%s:%d: not true: %s\n", file, line, condition);
  std::abort();
}

}  // namespace qel::gridwork::detail

/// Ends the process when a condition does not hold that the code behind it relies on. Live in builds for tests,
/// sanitizers and fuzzers; a release build does not evaluate it.
#define QEL_GRIDWORK_CHECK(condition) \
  ((condition) ? static_cast<void>(0) : ::qel::gridwork::detail::report_and_abort(#condition, __FILE__, __LINE__))

#else
#define QEL_GRIDWORK_CHECK(condition) static_cast<void>(sizeof(!(condition)))
#endif

#endif
