// Files that all ranks of a test see.
#ifndef QEL_GRIDWORK_PARALLEL_TESTS_SHARED_PATH_H
#define QEL_GRIDWORK_PARALLEL_TESTS_SHARED_PATH_H

#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>

#include "parts.h"

namespace parts {

/// A path that all ranks have; the first one removes what is there in the end.
class shared_path {
 public:
  explicit shared_path(const std::string& name) {
    int process = getpid();
    MPI_Bcast(&process, 1, MPI_INT, 0, world);
    path_ = testing::TempDir() + "qel_mpi_" + std::to_string(process) + name;
  }
  shared_path(const shared_path&) = delete;
  shared_path& operator=(const shared_path&) = delete;
  ~shared_path() {
    MPI_Barrier(world);
    if (rank() == 0) std::remove(path_.c_str());
  }

  const char* path() const { return path_.c_str(); }

  void write(const std::string& bytes) const {
    if (rank() == 0) std::ofstream(path_, std::ios::binary) << bytes;
    MPI_Barrier(world);
  }

  /// The triangles, by the serial writer.
  void write_STL(const dense2D<double>& coords, const dense2D<unsigned>& triangles, bool ascii) const {
    const bool writes = rank() == 0;
    EXPECT_EQ(writes ? STL_output(path(), coords, triangles, ascii) : 0, 0);
    MPI_Barrier(world);
  }

  std::string content() const {
    MPI_Barrier(world);
    std::ifstream stream(path_, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

 private:
  std::string path_;
};

}  // namespace parts

#endif
