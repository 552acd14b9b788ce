// The two forms of STL files.
#ifndef QEL_GRIDWORK_IO_STL_INPUT_H
#define QEL_GRIDWORK_IO_STL_INPUT_H

#include "io/text/file.h"
#include "qel/dense.h"

namespace qel::gridwork::detail::io {

/// Read an open file into empty outputs. Results as those of STL_input(); on a negative one the outputs hold anything.
/// @{
int read_stl_text(const file& input, dense2D<double>& coords, dense2D<unsigned>& connectivity);
int read_stl_binary(const file& input, dense2D<double>& coords, dense2D<unsigned>& connectivity);
/// @}

}  // namespace qel::gridwork::detail::io

#endif
