// Elements seen from the other side.
#ifndef QEL_GRIDWORK_CLI_REPORT_TURNING_H
#define QEL_GRIDWORK_CLI_REPORT_TURNING_H

#include "mesh.h"

namespace report {

/// Turns every element of a block over: a solid inside out, a face to its other side, an edge end to end. The block gets
/// a matrix of its own.
outcome turn_over(block& b);

}  // namespace report

#endif
