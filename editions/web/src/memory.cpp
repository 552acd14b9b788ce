// Memory that JavaScript fills, and results that it has read.
#include <__verbose_abort>
#include <cstdlib>

#include "exports.h"
#include "slots.h"

// Nobody reads what the standard library would print before it ends, and printf() would take much room.
_LIBCPP_BEGIN_NAMESPACE_STD
void __libcpp_verbose_abort(const char*, ...) noexcept { __builtin_trap(); }
_LIBCPP_END_NAMESPACE_STD
extern "C" void __abort_message(const char*, ...) { __builtin_trap(); }

namespace web {

QEL_GRIDWORK_WEB_EXPORT("take") void* take(std::size_t bytes) { return std::malloc(bytes); }

QEL_GRIDWORK_WEB_EXPORT("drop") void drop(void* memory) { std::free(memory); }

QEL_GRIDWORK_WEB_EXPORT("release") void release(kept* owner) { delete owner; }

}  // namespace web
