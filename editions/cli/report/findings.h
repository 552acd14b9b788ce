// What is wanting in a mesh.
#ifndef QEL_GRIDWORK_CLI_REPORT_FINDINGS_H
#define QEL_GRIDWORK_CLI_REPORT_FINDINGS_H

#include "mesh.h"

namespace report {

/// One kind of fault: how often, and where it is first.
struct finding {
  const char* name;  ///< as programs read it
  const char* words;
  std::uint64_t count = 0;
  std::string first;  ///< in words; empty when nothing is to be said
};

struct check_options {
  double tolerance = 0;     ///< nodes within this distance of one another are a finding
  bool closed = false;      ///< open sides are a finding
  double min_quality = -2;  ///< elements below it are a finding
};

/// The findings in a fixed order, none with a count of 0. Where elements have nodes that are not there, what depends on
/// nodes is not looked for.
outcome find_faults(const mesh& m, const check_options& options, std::vector<finding>& faults);

}  // namespace report

#endif
