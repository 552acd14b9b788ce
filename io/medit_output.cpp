// Writes MEDIT meshes and the solutions that go with them.
#include <cstdint>
#include <string_view>
#include <utility>

#include "core/coordinates.h"
#include "core/elements.h"
#include "core/result.h"
#include "io/matrix_range.h"
#include "io/reference_order.h"
#include "io/text/file.h"
#include "io/text/text_writer.h"
#include "qel/gridwork/elements.h"
#include "qel/gridwork/io.h"

namespace qel::gridwork {

using namespace detail;

namespace {

using io::matrix_range;
using io::text_writer;

/// How an element appears in a file: the section, and its nodes by local number. Without nodes, it does not appear.
struct section {
  std::string_view keyword;
  unsigned nodes;
  unsigned char order[8];
};

constexpr section no_section = {"", 0, {}};
constexpr section edges = {"Edges\n", 2, {0, 1}};
constexpr section triangles = {"Triangles\n", 3, {0, 1, 2}};
constexpr section quadrilaterals = {"Quadrilaterals\n", 4, {0, 1, 2, 3}};
constexpr section tetrahedra = {"Tetrahedra\n", 4, {0, 1, 2, 3}};
constexpr section pyramids = {"Hexahedra\n", 8, {0, 1, 2, 3, 4, 4, 4, 4}};
constexpr section wedges = {"Hexahedra\n", 8, {0, 1, 2, 2, 3, 4, 5, 5}};
constexpr section hexahedra = {"Hexahedra\n", 8, {0, 1, 2, 3, 4, 5, 6, 7}};

constexpr section sections[] = {
    no_section,      // ELT_UNKNOWN
    no_section,      // ELT_NODE
    no_section,      // ELT_EDGE_MIX
    edges,           // ELT_EDGE2
    edges,           // ELT_EDGE3
    no_section,      // ELT_FACE_MIX
    triangles,       // ELT_TRIA3
    quadrilaterals,  // ELT_QUAD4
    triangles,       // ELT_TRIA6
    quadrilaterals,  // ELT_QUAD8
    quadrilaterals,  // ELT_QUAD9
    no_section,      // ELT_SOLID_MIX
    tetrahedra,      // ELT_TETRA4
    tetrahedra,      // ELT_TETRA10
    pyramids,        // ELT_PYRAMID5
    no_section,      // ELT_PYRAMID13
    pyramids,        // ELT_PYRAMID14
    wedges,          // ELT_WEDGE6
    no_section,      // ELT_WEDGE15
    wedges,          // ELT_WEDGE18
    hexahedra,       // ELT_HEXA8
    hexahedra,       // ELT_HEXA20
    hexahedra,       // ELT_HEXA27
};
static_assert(sizeof(sections) / sizeof(sections[0]) == ELT_HEXA27 + 1);

// --- Elements with their references, one plain type after another --------------------------------------------------

/// Elements whose reference is the position of their matrix.
class matrices {
 public:
  explicit matrices(const matrix_range& range) noexcept : range_(range) {}

  int check(unsigned n) const noexcept { return io::check_matrices(range_, n); }

  std::uint64_t count(element_type plain) const noexcept {
    std::uint64_t sum = 0;
    for (std::uint64_t i = 0; i < range_.size(); ++i) sum += io::count_of(plain, range_.first[i], range_.type(i));
    return sum;
  }

  /// Calls action(nodes, reference) for the elements of a plain type.
  template <class Action>
  void for_each(element_type plain, Action action) {
    for (std::uint64_t i = 0; i < range_.size(); ++i) {
      const auto reference = static_cast<unsigned>(i);
      io::for_each_of(plain, range_.first[i], range_.type(i), [&](const unsigned* nodes) { action(nodes, reference); });
    }
  }

 private:
  matrix_range range_;
};

/// Elements with references of their own, in increasing order; those whose reference is `none` are left out.
class referenced {
 public:
  referenced(const dense2D<unsigned>& connectivity, element_type type, const dense1D<unsigned>& references) noexcept
      : connectivity_(connectivity),
        is_type_(is_element_type(type)),
        type_(resolve_type(type, connectivity.rows())),
        order_(references) {}

  [[nodiscard]] bool prepare() noexcept { return order_.prepare(); }

  /// Only the elements that are kept have to be valid.
  int check(unsigned n) const noexcept {
    if (!is_type_) return -3;
    if (check_IDs(connectivity_, type_, n)) return 0;
    for (std::uint64_t j = 0; j < connectivity_.cols(); ++j) {
      if (order_.keeps(j) && !check_IDs(connectivity_.sub_matrix(0, j, connectivity_.rows(), 1), type_, n)) return -3;
    }
    return 0;
  }

  std::uint64_t count(element_type plain) const noexcept {
    std::uint64_t sum = 0;
    for (std::uint64_t j = 0; j < connectivity_.cols(); ++j) sum += order_.keeps(j) && is(plain, j) ? 1 : 0;
    return sum;
  }

  template <class Action>
  void for_each(element_type plain, Action action) {
    order_.for_each([&](std::uint64_t j) { return is(plain, j); },
                    [&](std::uint64_t j, unsigned reference) { action(connectivity_.column(j), reference); });
  }

 private:
  bool is(element_type plain, std::uint64_t j) const noexcept {
    return io::may_hold(type_, plain) && io::plain_type(type_, connectivity_.column(j)) == plain;
  }

  const dense2D<unsigned>& connectivity_;
  bool is_type_;
  element_type type_;
  io::reference_order order_;
};

// --- The parts of a mesh file --------------------------------------------------------------------------------------

void write_header(text_writer& writer, std::uint64_t dim) {
  writer.put("MeshVersionFormatted 1\nDimension ");
  writer.put_count(dim, "\n# Mesh format for MEDIT, generated by QEL Gridwork(R).\n\n");
}

/// Writes numbers as "%E ", and what ends their line.
void write_values(text_writer& writer, const double* values, std::uint64_t count, std::string_view end) {
  for (const double* last = values + count; values != last; ++values) {
    writer.write(io::longest_scientific + 1, [=](char* out) {
      out = io::format_upper_scientific(out, *values, 6);
      *out++ = ' ';
      return out;
    });
  }
  writer.put(end);
}

void write_columns(text_writer& writer, const dense2D<double>& columns, std::string_view end) {
  for (std::uint64_t j = 0; j < columns.cols(); ++j) write_values(writer, columns.column(j), columns.rows(), end);
}

void write_vertices(text_writer& writer, const dense2D<double>& coords) {
  writer.put("Vertices\n");
  writer.put_count(coords.cols(), "\n");
  write_columns(writer, coords, "0 \n");
  writer.put("\n");
}

void write_element(text_writer& writer, const section& form, const unsigned* nodes, unsigned reference) {
  constexpr std::uint64_t most = 9 * (io::longest_integer + 1) + 1;
  writer.write(most, [&](char* out) {
    for (unsigned k = 0; k < form.nodes; ++k) {
      out = io::append_id(out, nodes[form.order[k]] + 1);
      *out++ = ' ';
    }
    return io::append(io::append_id(out, reference), " \n");
  });
}

template <class Elements>
void write_sections(text_writer& writer, Elements& elements) {
  io::for_each_plain_type([&](element_type type) {
    const section& form = sections[type];
    const std::uint64_t count = form.nodes == 0 ? 0 : elements.count(type);
    if (count == 0) return;
    writer.put(form.keyword);
    writer.put_count(count, "\n");
    elements.for_each(
        type, [&](const unsigned* nodes, unsigned reference) { write_element(writer, form, nodes, reference); });
    writer.put("\n");
  });
}

template <class Elements>
int write_mesh(const char* filename, const dense2D<double>& coords, Elements elements) {
  if (!io::has_1_to_3_rows(coords)) return -2;
  const int result = elements.check(node_bound(coords));
  if (result != 0) return result;
  io::file output(filename, "w");
  if (!output.is_open()) return -1;
  text_writer writer(output.stream());
  if (!writer.prepare()) return out_of_memory;
  write_header(writer, coords.rows());
  write_vertices(writer, coords);
  write_sections(writer, elements);
  writer.put("End\n");
  writer.finish();
  return 0;
}

// --- Solutions -----------------------------------------------------------------------------------------------------

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
  write_columns(writer, columns, "\n");
  writer.finish();
  return 0;
}

}  // namespace

int medit_output(const char* filename, const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                 element_type type) {
  const int codes[] = {type};
  return write_mesh(filename, coords, matrices({&connectivity, &connectivity + 1, codes, 1}));
}

int medit_output(const char* filename, const dense2D<double>& coords, const dense2D<unsigned>& connectivity1,
                 const dense2D<unsigned>& connectivity2, element_type type1, element_type type2) {
  const dense2D<unsigned> both[] = {connectivity1, connectivity2};
  const int codes[] = {type1, type2};
  return write_mesh(filename, coords, matrices({both, both + 2, codes, 2}));
}

int medit_output(const char* filename, const dense2D<double>& coords, const dense2D<unsigned>* first,
                 const dense2D<unsigned>* last, const dense1D<int>& codes) {
  return write_mesh(filename, coords, matrices({first, last, codes.begin(), codes.size()}));
}

int medit_output(const char* filename, const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                 element_type type, const dense1D<unsigned>& references) {
  constexpr int no_memory_for_references = -6;
  if (connectivity.empty()) return 0;
  if (references.size() != connectivity.cols()) return -5;
  referenced elements(connectivity, type, references);
  if (!elements.prepare()) return no_memory_for_references;
  return write_mesh(filename, coords, std::move(elements));
}

int medit_scalar(const char* filename, unsigned dim, const dense1D<double>& values) {
  io::file output(filename, "w");
  if (!output.is_open()) return -1;
  text_writer writer(output.stream());
  if (!writer.prepare()) return out_of_memory;
  write_solution_header(writer, dim, 1, values.size());
  write_lines(writer, values);
  writer.finish();
  return 0;
}

int medit_vector(const char* filename, unsigned dim, const dense2D<double>& vectors) {
  io::file output(filename, "w");
  if (!output.is_open()) return -1;
  return write_field(output, dim, vectors);
}

int medit_tensor(const char* filename, const dense2D<double>& metrics) {
  io::file output(filename, "w");
  if (!output.is_open()) return -1;
  if (metrics.rows() != 3 && metrics.rows() != 6) return -2;
  return write_field(output, metrics.rows() == 3 ? 2 : 3, metrics);
}

}  // namespace qel::gridwork
