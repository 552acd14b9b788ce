// Text files that a reader refused are looked at a second time, for the place of the fault.
#ifndef QEL_GRIDWORK_CLI_REPORT_SECOND_LOOK_H
#define QEL_GRIDWORK_CLI_REPORT_SECOND_LOOK_H

#include "file_bytes.h"

namespace report {

/// The results of the readers that name a place.
constexpr int malformed = -2, unknown_node = -3, node_differs = -5;

/// The fault behind a reader's result, with its line; empty where none is seen. `Look` is made of the file, the result
/// and, for nodes that are not there, a look that has seen all nodes.
template <class Look>
std::string find_fault(const file_bytes& file, int result) {
  Look first(file, result, nullptr);
  first.look();
  if (result != unknown_node) return first.fault();
  Look second(file, result, &first);
  second.look();
  return second.fault();
}

std::string find_medit_fault(const file_bytes& bytes, int result);
std::string find_vtk_fault(const file_bytes& bytes, int result);
std::string find_nastran_fault(const file_bytes& bytes, int result);
std::string find_femap_fault(const file_bytes& bytes, int result);

inline std::string in_line(std::uint64_t number) { return "line " + std::to_string(number); }

/// A piece of a file as messages quote it.
inline std::string quoted(std::string_view text) {
  constexpr std::size_t longest = 40;
  return '"' + std::string(text.substr(0, longest)) + (text.size() > longest ? "..." : "") + '"';
}

}  // namespace report

#endif
