// Memory that JavaScript fills, and results that it has read.
#include <cstdlib>

#include "exports.h"
#include "slots.h"

namespace web {

QEL_GRIDWORK_WEB_EXPORT("take") void* take(std::size_t bytes) { return std::malloc(bytes); }

QEL_GRIDWORK_WEB_EXPORT("drop") void drop(void* memory) { std::free(memory); }

QEL_GRIDWORK_WEB_EXPORT("release") void release(kept* owner) { delete owner; }

}  // namespace web
