// Writes MEDIT solutions.
#include <cstdint>

#include "core/result.h"
#include "io/bytes/file.h"
#include "io/medit_values.h"
#include "io/text/text_writer.h"
#include "qel/gridwork/io.h"

namespace qel::gridwork {

using namespace detail;

namespace {

using io::text_writer;
using io::medit::write_values;

void write_solution_header(text_writer& writer, unsigned dim, std::uint64_t rows, std::uint64_t count) {
  writer.write(io::longest_integer, [=](char* out) { return io::append_id(out, dim); });
  writer.put(" ");
  writer.put_count(rows, " ");
  writer.put_count(count, " 2\n");
}

void write_lines(text_writer& writer, const dense1D<double>& values) {
  constexpr std::uint64_t values_per_line = 8;
  const std::uint64_t in_full_lines = values.size() - values.size() % values_per_line;
  for (std::uint64_t i = 0; i < in_full_lines; i += values_per_line) {
    write_values(writer, values.begin() + i, values_per_line, "\n");
  }
  write_values(writer, values.begin() + in_full_lines, values.size() - in_full_lines, "\n");
}

int write_field(io::file& output, unsigned dim, const dense2D<double>& columns) {
  text_writer writer(output.stream());
  if (!writer.prepare()) return out_of_memory;
  write_solution_header(writer, dim, columns.rows(), columns.cols());
  io::medit::write_columns(writer, columns, "\n");
  writer.finish();
  return 0;
}

}  // namespace

int medit_scalar(const char* filename, unsigned dim, const dense1D<double>& values) {
  io::file output(filename, io::access::write);
  if (!output.is_open()) return -1;
  text_writer writer(output.stream());
  if (!writer.prepare()) return out_of_memory;
  write_solution_header(writer, dim, 1, values.size());
  write_lines(writer, values);
  writer.finish();
  return 0;
}

int medit_vector(const char* filename, unsigned dim, const dense2D<double>& vectors) {
  io::file output(filename, io::access::write);
  if (!output.is_open()) return -1;
  return write_field(output, dim, vectors);
}

int medit_tensor(const char* filename, const dense2D<double>& metrics) {
  io::file output(filename, io::access::write);
  if (!output.is_open()) return -1;
  if (metrics.rows() != 3 && metrics.rows() != 6) return -2;
  return write_field(output, metrics.rows() == 3 ? 2 : 3, metrics);
}

}  // namespace qel::gridwork
