// Test programs on several ranks: each rank runs all tests, and the program fails when any rank does.
#include <gtest/gtest.h>
#include <mpi.h>

int main(int argc, char** argv) {
  MPI_Init(&argc, &argv);
  testing::GTEST_FLAG(brief) = true;  // or every rank tells the same
  testing::InitGoogleTest(&argc, argv);
  int failed = RUN_ALL_TESTS();
  MPI_Allreduce(MPI_IN_PLACE, &failed, 1, MPI_INT, MPI_MAX, MPI_COMM_WORLD);
  MPI_Finalize();
  return failed;
}
