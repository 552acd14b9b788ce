// The one result code that every function shares.
#ifndef QEL_GRIDWORK_CORE_RESULT_H
#define QEL_GRIDWORK_CORE_RESULT_H

namespace qel::gridwork::detail {

constexpr int out_of_memory = -199;
constexpr unsigned none = ~0U;

}  // namespace qel::gridwork::detail

#endif
