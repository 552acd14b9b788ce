#include "measure.h"

#ifdef __GLIBC__
#include <malloc.h>
#endif

#include <cstring>
#include <ctime>

namespace {

std::uint64_t sent = 0;

/// A line of the system's report on this process, in bytes.
double status(const char* name) {
  std::FILE* file = std::fopen("/proc/self/status", "r");
  if (file == nullptr) return 0;
  char line[256];
  double kilobytes = 0;
  while (std::fgets(line, sizeof line, file) != nullptr) {
    if (std::strncmp(line, name, std::strlen(name)) == 0) std::sscanf(line + std::strlen(name), "%lf", &kilobytes);
  }
  std::fclose(file);
  return 1024 * kilobytes;
}

}  // namespace

/// Counts what goes to other ranks; the library's calls come here first.
extern "C" int MPI_Alltoallv(const void* out, const int* out_counts, const int* out_places, MPI_Datatype out_type,
                             void* in, const int* in_counts, const int* in_places, MPI_Datatype in_type,
                             MPI_Comm comm) {
  int rank = 0, size = 1, item = 1;
  MPI_Comm_rank(comm, &rank);
  MPI_Comm_size(comm, &size);
  MPI_Type_size(out_type, &item);
  for (int r = 0; r < size; ++r) sent += r == rank ? 0 : static_cast<std::uint64_t>(out_counts[r] * item);
  return PMPI_Alltoallv(out, out_counts, out_places, out_type, in, in_counts, in_places, in_type, comm);
}

std::uint64_t bytes_sent() { return sent; }

double cpu_seconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

int rank_of_world() {
  int rank = 0;
  MPI_Comm_rank(MPI_COMM_WORLD, &rank);
  return rank;
}

bool report(const char* name, const cost& c, double elements, double most) {
  const double each = c.bytes / elements;
  const bool passes = each <= most;
  if (rank_of_world() == 0) {
    std::printf("%-34s %8.3f s %8.3f s %9.3f %s\n", name, c.wall, c.cpu, each, passes ? "" : "too many bytes");
  }
  return passes;
}

void keep_memory([[maybe_unused]] bool keep) {
#ifdef __GLIBC__
  constexpr int page = 4096, all_there_is = -1, many = 1 << 20;
  mallopt(M_MMAP_MAX, keep ? 0 : many);
  mallopt(M_TRIM_THRESHOLD, keep ? all_there_is : page);
#endif
}

double peak_memory(const std::function<void()>& work) {
#ifdef __GLIBC__
  malloc_trim(0);
#endif
  if (std::FILE* file = std::fopen("/proc/self/clear_refs", "w")) {
    std::fputs("5", file);  // the most memory held is counted anew
    std::fclose(file);
  }
  const double before = status("VmRSS:");
  work();
  double peak = status("VmHWM:") - before;
  MPI_Allreduce(MPI_IN_PLACE, &peak, 1, MPI_DOUBLE, MPI_MAX, MPI_COMM_WORLD);
  return peak;
}
