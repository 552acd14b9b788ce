// Things that happen between the calls of MPI that the library makes.
#ifndef QEL_GRIDWORK_PARALLEL_TESTS_MPI_EVENTS_H
#define QEL_GRIDWORK_PARALLEL_TESTS_MPI_EVENTS_H

#include <cstdint>
#include <functional>

namespace mpi_events {

/// Calls that all ranks make together, or those that open, read and write files.
enum class of { collectives, files };

/// Before this rank's at-th call (1, 2, ...) of a kind `event` happens. The call is made all the same; an event that is not 0 stands for its
/// result.
void arm(std::uint64_t at, std::function<int()> event, of which);

/// True when the event has happened on this rank.
bool disarm();

/// Bytes that this rank sent to others since the program began.
std::uint64_t bytes_sent();

}  // namespace mpi_events

#endif
