// MPI's profiling interface lets a program put itself before it: to fail, to count, and to wait in another way.
#include "mpi_events.h"

#include <mpi.h>
#include <sched.h>

#include <utility>

namespace mpi_events {
namespace {

std::uint64_t calls_left = 0;
std::function<int()> event;
of counted = of::collectives;
std::uint64_t sent = 0;

template <class Call>
int pass(Call call, of kind = of::collectives) {
  int outcome = MPI_SUCCESS;
  if (kind == counted && calls_left != 0 && --calls_left == 0) outcome = event();
  const int result = call();
  return outcome != MPI_SUCCESS ? outcome : result;
}

#ifdef MPICH_VERSION
constexpr bool spins = true;
#else
constexpr bool spins = false;
#endif

/// MPICH waits spinning: where there are more ranks than processors, each call takes a whole slice of the scheduler, some
/// milliseconds. So there calls are started, start(request), and waited for here, yielding.
template <class Call, class Start>
int finish(Call call, Start start) {
  if (!spins) return call();
  MPI_Request request = MPI_REQUEST_NULL;
  int done = 0, result = start(&request);
  while (result == MPI_SUCCESS && done == 0) {
    result = PMPI_Test(&request, &done, MPI_STATUS_IGNORE);
    sched_yield();
  }
  return result;
}

void count_sent(const int* counts, MPI_Datatype type, MPI_Comm comm) {
  int rank = 0, size = 1, item = 1;
  MPI_Comm_rank(comm, &rank);
  MPI_Comm_size(comm, &size);
  MPI_Type_size(type, &item);
  for (int r = 0; r < size; ++r) sent += r == rank ? 0 : static_cast<std::uint64_t>(counts[r] * item);
}

}  // namespace

void arm(std::uint64_t at, std::function<int()> what, of which) {
  event = std::move(what);
  counted = which;
  calls_left = at;
}

bool disarm() { return std::exchange(calls_left, 0) == 0; }

std::uint64_t bytes_sent() { return sent; }

}  // namespace mpi_events

using mpi_events::count_sent;
using mpi_events::finish;
using mpi_events::of;
using mpi_events::pass;

extern "C" {

int MPI_Barrier(MPI_Comm comm) {
  return finish([&] { return PMPI_Barrier(comm); }, [&](MPI_Request* r) { return PMPI_Ibarrier(comm, r); });
}

int MPI_Allreduce(const void* out, void* in, int count, MPI_Datatype type, MPI_Op op, MPI_Comm comm) {
  return pass([&] {
    return finish([&] { return PMPI_Allreduce(out, in, count, type, op, comm); },
                  [&](MPI_Request* r) { return PMPI_Iallreduce(out, in, count, type, op, comm, r); });
  });
}

int MPI_Exscan(const void* out, void* in, int count, MPI_Datatype type, MPI_Op op, MPI_Comm comm) {
  return pass([&] {
    return finish([&] { return PMPI_Exscan(out, in, count, type, op, comm); },
                  [&](MPI_Request* r) { return PMPI_Iexscan(out, in, count, type, op, comm, r); });
  });
}

int MPI_Bcast(void* items, int count, MPI_Datatype type, int root, MPI_Comm comm) {
  return pass([&] {
    return finish([&] { return PMPI_Bcast(items, count, type, root, comm); },
                  [&](MPI_Request* r) { return PMPI_Ibcast(items, count, type, root, comm, r); });
  });
}

int MPI_Allgather(const void* out, int out_count, MPI_Datatype out_type, void* in, int in_count, MPI_Datatype in_type,
                  MPI_Comm comm) {
  return pass([&] {
    return finish(
        [&] { return PMPI_Allgather(out, out_count, out_type, in, in_count, in_type, comm); },
        [&](MPI_Request* r) { return PMPI_Iallgather(out, out_count, out_type, in, in_count, in_type, comm, r); });
  });
}

int MPI_Alltoall(const void* out, int out_count, MPI_Datatype out_type, void* in, int in_count, MPI_Datatype in_type,
                 MPI_Comm comm) {
  return pass([&] {
    return finish(
        [&] { return PMPI_Alltoall(out, out_count, out_type, in, in_count, in_type, comm); },
        [&](MPI_Request* r) { return PMPI_Ialltoall(out, out_count, out_type, in, in_count, in_type, comm, r); });
  });
}

int MPI_Alltoallv(const void* out, const int* out_counts, const int* out_places, MPI_Datatype out_type, void* in,
                  const int* in_counts, const int* in_places, MPI_Datatype in_type, MPI_Comm comm) {
  count_sent(out_counts, out_type, comm);
  return pass([&] {
    return finish(
        [&] { return PMPI_Alltoallv(out, out_counts, out_places, out_type, in, in_counts, in_places, in_type, comm); },
        [&](MPI_Request* r) {
          return PMPI_Ialltoallv(out, out_counts, out_places, out_type, in, in_counts, in_places, in_type, comm, r);
        });
  });
}

int MPI_File_open(MPI_Comm comm, const char* path, int mode, MPI_Info info, MPI_File* file) {
  return pass([&] { return PMPI_File_open(comm, path, mode, info, file); }, of::files);
}

int MPI_File_read_at(MPI_File file, MPI_Offset offset, void* bytes, int count, MPI_Datatype type, MPI_Status* status) {
  return pass([&] { return PMPI_File_read_at(file, offset, bytes, count, type, status); }, of::files);
}

int MPI_File_write_at(MPI_File file, MPI_Offset offset, const void* bytes, int count, MPI_Datatype type,
                      MPI_Status* status) {
  return pass([&] { return PMPI_File_write_at(file, offset, bytes, count, type, status); }, of::files);
}

}  // extern "C"
