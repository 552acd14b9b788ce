// MPI's profiling interface lets a program put itself before it.
#include "mpi_events.h"

#include <mpi.h>

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
using mpi_events::of;
using mpi_events::pass;

extern "C" {

int MPI_Allreduce(const void* out, void* in, int count, MPI_Datatype type, MPI_Op op, MPI_Comm comm) {
  return pass([&] { return PMPI_Allreduce(out, in, count, type, op, comm); });
}

int MPI_Exscan(const void* out, void* in, int count, MPI_Datatype type, MPI_Op op, MPI_Comm comm) {
  return pass([&] { return PMPI_Exscan(out, in, count, type, op, comm); });
}

int MPI_Bcast(void* items, int count, MPI_Datatype type, int root, MPI_Comm comm) {
  return pass([&] { return PMPI_Bcast(items, count, type, root, comm); });
}

int MPI_Allgather(const void* out, int out_count, MPI_Datatype out_type, void* in, int in_count, MPI_Datatype in_type,
                  MPI_Comm comm) {
  return pass([&] { return PMPI_Allgather(out, out_count, out_type, in, in_count, in_type, comm); });
}

int MPI_Alltoall(const void* out, int out_count, MPI_Datatype out_type, void* in, int in_count, MPI_Datatype in_type,
                 MPI_Comm comm) {
  return pass([&] { return PMPI_Alltoall(out, out_count, out_type, in, in_count, in_type, comm); });
}

int MPI_Alltoallv(const void* out, const int* out_counts, const int* out_places, MPI_Datatype out_type, void* in,
                  const int* in_counts, const int* in_places, MPI_Datatype in_type, MPI_Comm comm) {
  count_sent(out_counts, out_type, comm);
  return pass(
      [&] { return PMPI_Alltoallv(out, out_counts, out_places, out_type, in, in_counts, in_places, in_type, comm); });
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
