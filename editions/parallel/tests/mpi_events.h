// Things that happen between the calls of MPI that the library makes.
#ifndef QEL_GRIDWORK_PARALLEL_TESTS_MPI_EVENTS_H
#define QEL_GRIDWORK_PARALLEL_TESTS_MPI_EVENTS_H

#include <cstdint>
#include <functional>

namespace mpi_events {

/// Before the at-th call (1, 2, ...) `event` happens. The call is made all the same; an event that is not 0 stands for its
/// result.
void arm(std::uint64_t at, std::function<int()> event);

/// True when the event has happened.
bool disarm();

}  // namespace mpi_events

#endif
