// Numbers in the files that MEDIT reads.
#ifndef QEL_GRIDWORK_IO_MEDIT_VALUES_H
#define QEL_GRIDWORK_IO_MEDIT_VALUES_H

#include <cstdint>
#include <string_view>

#include "io/text/text_writer.h"
#include "qel/dense.h"

namespace qel::gridwork::detail::io::medit {

constexpr unsigned digits_behind_point = 6;

/// Writes numbers as "%E ", and what ends their line.
inline void write_values(text_writer& writer, const double* values, std::uint64_t count, std::string_view end) {
  for (const double* last = values + count; values != last; ++values) {
    writer.write(longest_scientific + 1, [=](char* out) {
      out = format_upper_scientific(out, *values, digits_behind_point);
      *out++ = ' ';
      return out;
    });
  }
  writer.put(end);
}

inline void write_columns(text_writer& writer, const dense2D<double>& columns, std::string_view end) {
  for (std::uint64_t j = 0; j < columns.cols(); ++j) write_values(writer, columns.column(j), columns.rows(), end);
}

}  // namespace qel::gridwork::detail::io::medit

#endif
