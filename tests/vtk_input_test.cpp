// Legacy VTK files: what they hold, what comes back of what was written, and what is refused.
#include <gtest/gtest.h>

#include <bit>
#include <numeric>
#include <string>

#include "core/limits.h"
#include "facts.h"
#include "input_meshes.h"
#include "written_file.h"

namespace {

using namespace input_meshes;
using std::string;

/// What vtk_input() makes of a file.
struct vtk_reading : reading {
  dense1D<unsigned> cell_IDs{5};

  explicit vtk_reading(const char* path) {
    code = vtk_input(path, coords, connectivity, offsets, types, cell_IDs);
    if (code < 0) {
      EXPECT_ALL(is_blank(), cell_IDs.empty());
    } else {
      EXPECT_ALL(is_sound(), coords.rows() == 3, cell_IDs.size() == connectivity.cols());
    }
  }
};

vtk_reading read(const string& text) {
  const written_file file;
  return vtk_reading(file.hold(text));
}

const string head = "# vtk DataFile Version 3.0\ntitle\nASCII\nDATASET ";
const string grid = head + "UNSTRUCTURED_GRID\n";

/// A grid of 20 points on a line.
string with_points(const string& cells, const string& before = grid) {
  string text = before + "POINTS 20 float\n";
  for (unsigned k = 0; k < 20; ++k) text += std::to_string(k) + " 0 0\n";
  return text + cells;
}

/// A grid of one cell, and what is behind it.
string with_cell(unsigned type, unsigned nodes, const string& behind = "") {
  string text = "CELLS 1 " + std::to_string(nodes + 1) + "\n" + std::to_string(nodes);
  for (unsigned k = 0; k < nodes; ++k) text += " " + std::to_string(k);
  return with_points(text + "\nCELL_TYPES 1\n" + std::to_string(type) + "\n" + behind);
}

TEST(vtk_input, comes_back_as_it_was_written) {
  for (unsigned rows = 2; rows <= 3; ++rows) {
    for (const element_type type : plain_types) {
      if (type == ELT_PYRAMID13 || type == ELT_WEDGE15) continue;  // not written
      const sample m(type, rows);
      const written_file file;
      ASSERT_EQ(vtk_output(file.path(), m.coords, m.elements, type), 0);
      const string bytes = file.content();
      const vtk_reading got(file.path());
      ASSERT_EQ(got.code, 0) << type;
      EXPECT_EQ(got.types, dense1D<int>{type});
      EXPECT_EQ(got.connectivity, m.elements);
      const unsigned cells = nbr_nodes(type) == nbr_base_nodes(type) ? 1 : 2;
      for (unsigned j = 0; j < got.cell_IDs.size(); ++j) EXPECT_EQ(got.cell_IDs[j], j * cells);
      ASSERT_EQ(vtk_output(file.path(), got.coords, got.connectivity, type), 0);
      EXPECT_EQ(file.content(), bytes) << type;
      dense2D<double> coords;
      matrix elements;
      ASSERT_EQ(vtk_input(file.path(), coords, elements, type), 0);
      EXPECT_ALL(elements == m.elements, coords == got.coords);
    }
  }
}

TEST(vtk_input, types_together_come_back_by_type) {
  const sample hexahedra(ELT_HEXA20, 3), quads(ELT_QUAD4, 3), corners(ELT_TRIA6, 3);
  const matrix all[] = {hexahedra.elements, quads.elements, corners.elements};
  const written_file file;
  ASSERT_EQ(vtk_output(file.path(), quads.coords, all, all + 3, {ELT_HEXA20, ELT_QUAD4, ELT_TRIA6}), 0);
  const vtk_reading got(file.path());
  ASSERT_EQ(got.code, 0);
  EXPECT_EQ(got.types, (dense1D<int>{ELT_QUAD4, ELT_TRIA6, ELT_HEXA20}));
  EXPECT_EQ(got.connectivity.sub_matrix(0, 0, 4, 5), quads.elements);
  EXPECT_EQ(got.connectivity.sub_matrix(0, 5, 6, 5), corners.elements);
  EXPECT_EQ(got.connectivity.sub_matrix(0, 10, 20, 5), hexahedra.elements);
  EXPECT_EQ(got.cell_IDs, (dense1D<unsigned>{10, 11, 12, 13, 14, 15, 17, 19, 21, 23, 0, 2, 4, 6, 8}));
  dense2D<double> coords;
  matrix elements;
  EXPECT_EQ(vtk_input(file.path(), coords, elements, ELT_HEXA8), 0);
  EXPECT_TRUE(elements.empty());
  EXPECT_EQ(vtk_input(file.path(), coords, elements, ELT_FACE_MIX), 0);
  EXPECT_EQ(elements, quads.elements);
  for (const int code : {0, 1, 2, 23, -1}) {
    EXPECT_EQ(vtk_input(file.path(), coords, elements, element_type(code)), -4);
    EXPECT_ALL(coords.empty(), elements.empty());
  }
}

TEST(vtk_input, runs_of_cells_end_before_one_of_two_cells) {
  const unsigned at_once = unsigned{detail::limits::cells_at_once};
  const dense2D<double> coords(3, 10);
  const matrix large(10, 1, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
  for (const unsigned count : {at_once - 1, at_once, at_once + 1, 2 * at_once - 1, 2 * at_once}) {
    matrix small(4, count);
    for (unsigned j = 0; j < count; ++j) std::iota(small.begin_column(j), small.end_column(j), j % 7);
    const matrix all[] = {small, large};
    const written_file file;
    ASSERT_EQ(vtk_output(file.path(), coords, all, all + 2, {ELT_TETRA4, ELT_TETRA10}), 0);
    const vtk_reading got(file.path());
    ASSERT_EQ(got.types, (dense1D<int>{ELT_TETRA4, ELT_TETRA10})) << count;
    EXPECT_EQ(got.connectivity.sub_matrix(0, 0, 4, count), small);
    EXPECT_EQ(got.connectivity.sub_matrix(0, count, 10, 1), large);
  }
}

TEST(vtk_input, cells_of_every_type) {
  const struct {
    unsigned type, nodes;
    element_type element;
    dense1D<unsigned> order;
  } cases[] = {{3, 2, ELT_EDGE2, {0, 1}},
               {5, 3, ELT_TRIA3, {0, 1, 2}},
               {5, 5, ELT_TRIA3, {0, 1, 2}},
               {7, 3, ELT_TRIA3, {0, 1, 2}},
               {7, 4, ELT_QUAD4, {0, 1, 2, 3}},
               {8, 4, ELT_QUAD4, {0, 1, 3, 2}},
               {9, 4, ELT_QUAD4, {0, 1, 2, 3}},
               {10, 4, ELT_TETRA4, {0, 1, 3, 2}},
               {11, 8, ELT_HEXA8, {0, 1, 3, 2, 4, 5, 7, 6}},
               {12, 8, ELT_HEXA8, {0, 1, 2, 3, 4, 5, 6, 7}},
               {13, 6, ELT_WEDGE6, {0, 1, 2, 3, 4, 5}},
               {14, 5, ELT_PYRAMID5, {0, 1, 2, 3, 4}},
               {21, 3, ELT_EDGE3, {0, 1, 2}},
               {22, 6, ELT_TRIA6, {0, 1, 2, 4, 5, 3}},
               {23, 8, ELT_QUAD8, {0, 1, 2, 3, 4, 5, 6, 7}},
               {24, 10, ELT_TETRA10, {0, 1, 3, 2, 8, 7, 4, 6, 5, 9}},
               {25, 20, ELT_HEXA20, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19}},
               {26, 15, ELT_WEDGE15, {0, 1, 2, 3, 4, 5, 12, 13, 14, 7, 8, 6, 10, 11, 9}},
               {27, 13, ELT_PYRAMID13, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}},
               {28, 9, ELT_QUAD9, {0, 1, 2, 3, 4, 5, 6, 7, 8}},
               {32, 18, ELT_WEDGE18, {0, 1, 2, 3, 4, 5, 12, 13, 14, 7, 8, 6, 10, 11, 9, 16, 17, 15}}};
  for (const auto& c : cases) {
    const vtk_reading got = read(with_cell(c.type, c.nodes));
    ASSERT_EQ(got.code, 0) << c.type;
    EXPECT_EQ(got.types, dense1D<int>{c.element});
    EXPECT_EQ(got.connectivity.as_vector(), c.order) << c.type;
    EXPECT_EQ(read(with_cell(c.type, c.type == 7 ? 2 : unsigned(c.order.size()) - 1)).code, -2) << c.type;
  }
  for (const unsigned type : {0, 1, 2, 15, 16, 30, 31, 33, 41, 42, 68, 75, 200, 255, 256, 1000000}) {
    const vtk_reading got = read(with_cell(type, 12));
    EXPECT_ALL(got.code == 1, got.types.empty()) << type;
  }
  EXPECT_EQ(read(with_cell(7, 5)).code, 1);
  const vtk_reading wedge = read(with_points("CELLS 1 9 8 0 1 2 2 3 4 5 5 CELL_TYPES 1 12"));
  EXPECT_EQ(wedge.connectivity, matrix(8, 1, {0, 1, 2, 2, 3, 4, 5, 5})) << "a hexahedron stays one";
  EXPECT_EQ(read(with_cell(4, 4)).connectivity, matrix(2, 3, {0, 1, 1, 2, 2, 3}));
  EXPECT_EQ(read(with_cell(6, 5)).connectivity, matrix(3, 3, {0, 1, 2, 2, 1, 3, 2, 3, 4}));
  EXPECT_EQ(read(with_cell(4, 1)).code, -2);
  EXPECT_EQ(read(with_cell(6, 2)).code, -2);
}

/// Cells in both forms of lists: nodes behind their number, and offsets before all nodes.
struct cells_in_both_forms {
  unsigned count = 0, size = 0;
  string counted, offsets = "0", nodes, types;

  void add(unsigned type, unsigned nbr_nodes, unsigned first) {
    counted += " " + std::to_string(nbr_nodes);
    for (unsigned k = 0; k < nbr_nodes; ++k) {
      counted += " " + std::to_string(first + k);
      nodes += " " + std::to_string(first + k);
    }
    ++count, size += nbr_nodes;
    offsets += " " + std::to_string(size);
    types += " " + std::to_string(type);
  }

  string with_types(const string& numbers) const {
    return with_points("CELLS " + numbers + "\nCELL_TYPES " + std::to_string(count) + types);
  }

  void expect_the_same() const {
    const vtk_reading first = read(with_types(std::to_string(count) + " " + std::to_string(size + count) + counted));
    const vtk_reading second = read(with_types(std::to_string(count + 1) + " " + std::to_string(size) +
                                               " OFFSETS int " + offsets + " CONNECTIVITY int" + nodes));
    EXPECT_ALL(first.code == second.code, first.types == second.types, first.offsets == second.offsets,
               first.connectivity == second.connectivity, first.cell_IDs == second.cell_IDs)
        << counted;
  }
};

TEST(vtk_input, both_forms_of_lists_say_the_same) {
  const unsigned at_once = unsigned{detail::limits::cells_at_once};
  const struct {
    unsigned type, nodes;
  } cases[] = {{3, 2}, {5, 3}, {7, 3}, {8, 4}, {10, 4}, {11, 8}, {12, 8}, {22, 6}, {24, 10}, {10, 5}, {1, 2}};
  for (const auto& c : cases) {
    for (const unsigned count : {1U, 2U, at_once, at_once + 1}) {
      cells_in_both_forms alike;
      for (unsigned j = 0; j < count; ++j) alike.add(c.type, c.nodes, j % 11);
      alike.expect_the_same();
      cells_in_both_forms another_type = alike, another_size = alike, points = alike, unknown = alike;
      another_type.add(c.type == 3 ? 4 : 3, c.nodes, 1);
      another_type.expect_the_same();
      another_size.add(c.type, c.nodes + 1, 1);
      another_size.add(c.type, c.nodes - 1, 1);
      another_size.expect_the_same();
      points.add(2, c.nodes, 12);
      points.expect_the_same();
      unknown.add(c.type, c.nodes, 21 - c.nodes);
      unknown.expect_the_same();
    }
  }
}

TEST(vtk_input, points_behind_a_cell_that_do_not_complete_it) {
  const vtk_reading fitting = read(with_points("CELLS 2 10 4 0 1 2 3 4 4 5 6 7 CELL_TYPES 2 9 2"));
  EXPECT_ALL(fitting.code == 0, fitting.types == dense1D<int>{ELT_QUAD8});
  for (const char* const cells :
       {"CELLS 2 9 4 0 1 2 3 3 4 5 6 CELL_TYPES 2 9 2", "CELLS 2 10 4 0 1 2 3 4 4 5 6 0 CELL_TYPES 2 9 2",
        "CELLS 2 10 4 0 1 2 3 4 4 5 6 7 CELL_TYPES 2 8 2", "CELLS 2 11 5 0 1 2 3 4 4 5 6 7 8 CELL_TYPES 2 9 2"}) {
    const vtk_reading got = read(with_points(cells));
    EXPECT_ALL(got.code == 1, got.types == dense1D<int>{ELT_QUAD4}) << cells;
  }
}

TEST(vtk_input, lists_of_polydata) {
  const vtk_reading got = read(with_points(
      "TRIANGLE_STRIPS 1 5 4 0 1 2 3\npolygons 3 14 3 0 1 2 4 0 1 2 3 4 4 5 6 7 METADATA\nINFORMATION 0\n\nLINES 2 7 2 "
      "8 9 3 1 2 3\nVERTICES 2 4 1 0 1 1 CELL_DATA 8 SCALARS",
      head + "POLYDATA\n"));
  ASSERT_EQ(got.code, 2) << "the vertices";
  EXPECT_EQ(got.types, (dense1D<int>{ELT_EDGE2, ELT_TRIA3, ELT_QUAD4}));
  EXPECT_EQ(got.offsets, (dense1D<unsigned>{0, 3, 6, 8}));
  EXPECT_EQ(got.cell_IDs, (dense1D<unsigned>{2, 3, 3, 4, 7, 7, 5, 6}));
}

// --- Forms of files ------------------------------------------------------------------------------------------------

/// The bytes of a number, the highest first.
template <class T>
string big(T value) {
  using bits = std::conditional_t<sizeof(T) == 8, std::uint64_t,
                                  std::conditional_t<sizeof(T) == 4, std::uint32_t, unsigned char>>;
  string bytes;
  for (unsigned k = sizeof(T); k-- > 0;) bytes += static_cast<char>(std::bit_cast<bits>(value) >> 8 * k);
  return bytes;
}

template <class T>
string big(std::initializer_list<T> values) {
  string bytes;
  for (const T value : values) bytes += big(value);
  return bytes;
}

const string binary =
    "# vtk DataFile Version 5.1\r\n\nbinary\r\nDATASET unstructured_grid\nFIELD FieldData 3\n"
    "A 1 2 int\n" +
    string(8, '\n') + "METADATA\nINFORMATION 0\n\nB 9 1 bit\n12\nNULL_ARRAY\n";

TEST(vtk_input, binary_files_of_any_numbers) {
  const string points = "POINTS 3 double\n" + big({0.0, -0.0, 1e-310, 1.0, 2.0, 3.0, 4.0, 5.0, 6.0}) + "\n";
  const string counted = "CELLS 1 4\n" + big({3, 2, 1, 0}), types = "CELL_TYPES 1\n" + big(5);
  const auto offsets = [](const char* type, auto zero) {
    using T = decltype(zero);
    return "CELLS 2 3\nOFFSETS " + string(type) + "\n" + big({T(0), T(3)}) + "\nCONNECTIVITY " + type + "\n" +
           big({T(2), T(1), T(0)});
  };
  for (const string& file :
       {binary + points + counted + "\n" + types, binary + types + "\n" + points + counted,
        binary + points + counted + types, binary + points + offsets("vtktypeint64", std::int64_t()) + "\n" + types,
        binary + points + offsets("long", std::int64_t()) + types, binary + points + offsets("vtkIdType", 0) + types,
        binary + points + offsets("Unsigned_Char", static_cast<unsigned char>(0)) + types + "\nPOINT_DATA 7 rubbish"}) {
    const vtk_reading got = read(file);
    ASSERT_EQ(got.code, 0) << file;
    EXPECT_EQ(got.connectivity, matrix(3, 1, {2, 1, 0}));
    EXPECT_TRUE(random_meshes::same_bits(got.coords, dense2D<double>(3, 3, {0, -0.0, 1e-310, 1, 2, 3, 4, 5, 6})));
  }
  const vtk_reading floats = read(binary + "POINTS 1 float\n" + big({0.1F, 1e30F, -1.0F}));
  EXPECT_EQ(floats.coords, dense2D<double>(3, 1, {0.1F, 1e30F, -1}));
  EXPECT_EQ(read(binary + "FIELD f 1\nnames 1 1 string\n\5three").code, -7);
  EXPECT_EQ(read(binary + "POINTS 3 double\n" + string(71, '1')).code, -2);
  EXPECT_EQ(read(binary + "POINTS 1152921504606846976 double\n" + string(71, '1')).code, -2);
  EXPECT_EQ(read(binary + points + offsets("float", 0.0F) + types).code, -2);
}

TEST(vtk_input, binary_points_lie_across_the_ends_of_blocks) {
  constexpr unsigned bytes = 3 * sizeof(double), count = 2 * detail::limits::read_block / bytes + 2;
  dense2D<double> coords(3, count);
  const string before = binary + "POINTS " + std::to_string(count) + " double";
  string points = "\n";
  for (unsigned j = 0; j < count; ++j) {
    for (unsigned k = 0; k < 3; ++k) coords(k, j) = j + 0.25 * k, points += big({coords(k, j)});
  }
  for (unsigned shift = 0; shift < bytes; ++shift) {
    EXPECT_EQ(read(before + string(shift, ' ') + points).coords, coords) << shift;
  }
}

TEST(vtk_input, texts_of_any_form) {
  const vtk_reading got = read(
      "# VTK datafile version 99.x\n" + string(1000, 't') +
      "\nascii dataset Unstructured_Grid Field d 2\nnames 1 2 "
      "string\nCELLS 1 2\n\nlong 3 1 int 1 2 3 METADATA\nINFORMATION 1\nNAME x\n \nCELL_TYPES 1 10 CELLS 2 4 OFFSETS "
      "vtktypeint64 0 4 CONNECTIVITY vtktypeint64 0 1 2 3 POINTS 4 int 0 0 0 1 0 0 0.5 1D1 inf -0 0x10 1e-999 "
      "point_data");
  ASSERT_EQ(got.code, 0);
  EXPECT_EQ(got.connectivity, matrix(4, 1, {0, 1, 3, 2}));
  EXPECT_EQ(got.coords, dense2D<double>(3, 4, {0, 0, 0, 1, 0, 0, 0.5, 10, random_meshes::infinity, 0, 16, 0}));
}

TEST(vtk_input, codes) {
  const struct {
    int code;
    string text;
  } cases[] = {{0, grid},
               {0, with_points("")},
               {0, with_points("CELLS 0 0 CELL_TYPES 0")},
               {0, with_points("CELLS 1 0 OFFSETS int 0 CONNECTIVITY int CELL_TYPES 0")},
               {-2, ""},
               {-2, "# vtk DataFile Version 3.0"},
               {-2, "# vtk DataFile\n\nASCII\nDATASET POLYDATA"},
               {-2, "# vtk DataFile Version 3.0\n\nTEXT\nDATASET POLYDATA"},
               {-2, head},
               {-7, head + "STRUCTURED_POINTS\nDIMENSIONS 1 1 1"},
               {-7, "# vtk DataFile Version 3.0\n\nASCII\nFIELD f 0"},
               {-2, grid + "SPACING 1 1 1"},
               {-2, grid + "POLYGONS 0 0"},
               {-2, head + "POLYDATA\nCELLS 0 0"},
               {-2, with_points("POINTS 0 float")},
               {-2, grid + "POINTS -1 float"},
               {-2, grid + "POINTS 1 number 0 0 0"},
               {-2, grid + "POINTS 1 float 0 0"},
               {-2, grid + "POINTS 1 float 0 0 0,"},
               {-2, grid + "POINTS 1 float 0 0 " + string(5000, '0')},
               {-2, grid + "POINTS 18446744073709551615 float 0 0 0"},
               {-2, with_points("CELLS 1 3 2 0 1")},
               {-2, with_points("CELLS 1 3 2 0 1 CELL_TYPES 2 3 3")},
               {-2, with_points("CELLS 1 4 2 0 1 CELL_TYPES 1 3")},
               {-2, with_points("CELLS 2 3 2 0 1 CELL_TYPES 2 3 3")},
               {-2, with_points("CELLS 1 3 3 0 1 CELL_TYPES 1 3")},
               {-2, with_points("CELLS 1 3 -2 0 1 CELL_TYPES 1 3")},
               {-2, with_points("CELLS 2 2 OFFSETS int 1 2 CONNECTIVITY int 0 1 CELL_TYPES 1 3")},
               {-2, with_points("CELLS 2 2 OFFSETS int 0 1 CONNECTIVITY int 0 1 CELL_TYPES 1 3")},
               {-2, with_points("CELLS 3 2 OFFSETS int 0 3 2 CONNECTIVITY int 0 1 CELL_TYPES 2 3 3")},
               {-2, with_points("CELLS 2 2 OFFSETS int 0 2 CELL_TYPES 1 3")},
               {-2, with_points("CELLS 2 2 OFFSETS long 0 4294967296 CONNECTIVITY int 0 1 CELL_TYPES 1 3")},
               {-3, with_points("CELLS 1 3 2 0 20 CELL_TYPES 1 3")},
               {-3, with_points("CELLS 1 3 2 0 -1 CELL_TYPES 1 3")},
               {-3, with_points("CELLS 1 3 2 0 4294967296 CELL_TYPES 1 3")},
               {1, with_points("CELLS 1 3 2 0 20 CELL_TYPES 1 2")},
               {-3, with_points("FIELD f 2 \"a 1 1 int \"1 \"b 0 0 int CELLS 1 3 2 0 20 CELL_TYPES 1 3")},
               {-2, with_points("FIELD f 1 a 4294967296 4294967296 int 1 2")},
               {-2, with_points("FIELD f 1 a 1 1 number 1")},
               {-2, with_points("FIELD f 1 a 1 3 string\n1\n2\n")},
               {-2, with_points(string(5000, 'x'))}};
  for (const auto& c : cases) EXPECT_EQ(read(c.text).code, c.code) << c.text.substr(0, 500);
  EXPECT_EQ(vtk_reading("/nonexistent/file").code, -1);
  EXPECT_EQ(vtk_reading(nullptr).code, -1);
}

}  // namespace
