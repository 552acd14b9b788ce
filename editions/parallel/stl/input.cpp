// The door of the STL reader: text first, then binary.
#include "parts/checks.h"
#include "stl/piece.h"

namespace qel::gridwork::mpi {

using namespace detail::parallel;

namespace {

int read_file(team& ranks, const char* filename, mesh_part& part) {
  piece text;
  int code = read_text(ranks, filename, text);
  if (code == 0) return join_pieces(ranks, text, part);
  if (code == not_open || code <= detail::out_of_memory) return code;
  piece binary;
  code = read_binary(ranks, filename, binary);
  return code == 0 ? join_pieces(ranks, binary, part) : code;
}

}  // namespace

int STL_input(MPI_Comm comm, const char* filename, mesh_part& part) {
  part = mesh_part();
  team ranks(comm);
  int code = ranks.agree(filename != nullptr ? 0 : not_open);
  if (code == 0) code = read_file(ranks, filename, part);
  if (code < 0) part = mesh_part();
  return code;
}

}  // namespace qel::gridwork::mpi
