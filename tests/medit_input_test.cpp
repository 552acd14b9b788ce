// MEDIT meshes and solutions: what they hold, what comes back of what was written, and what is refused.
#include <gtest/gtest.h>

#include <string>

#include "facts.h"
#include "input_meshes.h"
#include "written_file.h"

namespace {

using namespace input_meshes;
using std::string;

constexpr element_type linear_type(element_type type) {
  switch (type) {
    case ELT_EDGE3:
      return ELT_EDGE2;
    case ELT_TRIA6:
      return ELT_TRIA3;
    case ELT_QUAD8:
    case ELT_QUAD9:
      return ELT_QUAD4;
    case ELT_TETRA10:
      return ELT_TETRA4;
    case ELT_PYRAMID14:
      return ELT_PYRAMID5;
    case ELT_WEDGE18:
      return ELT_WEDGE6;
    case ELT_HEXA20:
    case ELT_HEXA27:
      return ELT_HEXA8;
    default:
      return type;
  }
}

/// What medit_input() makes of a file.
struct medit_reading : reading {
  dense1D<unsigned> references, node_references;

  explicit medit_reading(const char* path) {
    code = medit_input(path, coords, connectivity, offsets, types, references, node_references);
    if (code < 0) {
      EXPECT_ALL(is_blank(), references.empty(), node_references.empty());
    } else {
      EXPECT_ALL(is_sound(), references.size() == connectivity.cols(), node_references.size() == coords.cols());
    }
  }
};

medit_reading read(const string& text) {
  const written_file file;
  return medit_reading(file.hold(text));
}

const string head = "MeshVersionFormatted 2 Dimension 3\n";
const string five = head + "Vertices 5  0 0 0 1  1 0 0 2  0 1 0 -3  0 0 1 4294967295  1 1 1 0\n";

TEST(medit_input, comes_back_as_it_was_written) {
  for (unsigned rows = 1; rows <= 3; ++rows) {
    for (const element_type type : plain_types) {
      if (type == ELT_PYRAMID13 || type == ELT_WEDGE15) continue;  // not written
      const sample m(type, rows);
      dense1D<unsigned> references(m.elements.cols(), 7U);
      references[0] = 0, references[references.size() - 1] = 0x80000001;
      const written_file first, second;
      ASSERT_EQ(medit_output(first.path(), m.coords, m.elements, type, references), 0);
      const medit_reading got(first.path());
      ASSERT_EQ(got.code, 0) << type;
      ASSERT_EQ(got.types, dense1D<int>{linear_type(type)});
      EXPECT_EQ(got.connectivity, m.elements.sub_matrix(0, 0, nbr_nodes(linear_type(type)), m.elements.cols()));
      EXPECT_EQ(got.references, references);
      EXPECT_EQ(got.node_references, dense1D<unsigned>(m.coords.cols(), 0U));
      const string bytes = first.content();
      ASSERT_EQ(medit_output(second.path(), got.coords, got.connectivity, linear_type(type), got.references), 0);
      EXPECT_EQ(second.content(), bytes) << type;
      dense2D<double> coords;
      matrix elements;
      second.hold(bytes);
      ASSERT_EQ(medit_input(second.path(), coords, elements, linear_type(type)), 0);
      EXPECT_ALL(elements == got.connectivity, coords.cols() == m.coords.cols());
    }
  }
}

TEST(medit_input, sections_in_any_order_and_form) {
  const medit_reading got = read(
      "# a comment\nmeshversionformatted\n1\nTriangles 1 5 4 3 -1 # behind\nDimension\n\n3 Identifier \"End of 7\" "
      "BoundingBox 0 1\nVertices#\n2\n0 0 0 0\n.5 1d2 -1.5D-1 0\r\nEDGES 1 1 2 9 Normals 2 nan 0 1 inf 0 1 Corners 1 "
      "1\n"
      "Vertices 3 0 0x1p-1 +1E+1 4 1e999 0 0 5 -inf 0 0 6 Triangles 1 1 2 3 2147483648 PrismsP2 1 1 2 3 Hexaedra 0 "
      "RequiredVertices 1 1 end Triangles 1 1 1 1 1");
  ASSERT_EQ(got.code, 1) << "a prism is left out";
  EXPECT_EQ(got.types, (dense1D<int>{ELT_EDGE2, ELT_TRIA3}));
  EXPECT_EQ(got.offsets, (dense1D<unsigned>{0, 1, 3}));
  EXPECT_EQ(got.connectivity, matrix(3, 3, {0, 1, none, 4, 3, 2, 0, 1, 2}));
  EXPECT_EQ(got.references, (dense1D<unsigned>{9, 0xffffffff, 0x80000000}));
  EXPECT_EQ(got.node_references, (dense1D<unsigned>{0, 0, 4, 5, 6}));
  constexpr double infinite = std::numeric_limits<double>::infinity();
  EXPECT_EQ(got.coords, dense2D<double>(3, 5, {0, 0, 0, 0.5, 100, -0.15, 0, 0.5, 10, infinite, 0, 0, -infinite, 0, 0}));
}

TEST(medit_input, elements_of_every_section) {
  const medit_reading got =
      read(head +
           "Vertices 10 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 "
           "0 0 EdgesP2 1 1 2 3 0 TrianglesP2 1 1 2 3 4 5 6 0 QuadrilateralsQ2 1 1 2 3 4 5 6 7 8 "
           "9 0 TetrahedraP2 1 1 2 3 4 5 6 7 8 9 10 0 Pyramids 1 1 2 3 4 5 0 Prisms 1 1 2 3 4 5 6 "
           "0 Pentahedra 1 6 5 4 3 2 1 0 Hexahedra 4 1 2 3 4 5 5 5 5 0 1 2 3 3 4 5 6 6 0 1 1 2 2 "
           "3 3 3 3 0 1 2 3 3 1 5 6 6 0");
  ASSERT_EQ(got.code, 0);
  EXPECT_EQ(got.types,
            (dense1D<int>{ELT_EDGE3, ELT_TRIA6, ELT_QUAD9, ELT_TETRA10, ELT_PYRAMID5, ELT_WEDGE6, ELT_HEXA8}));
  EXPECT_EQ(got.offsets, (dense1D<unsigned>{0, 1, 2, 3, 4, 6, 9, 11}));
  const auto column = [&](unsigned j, unsigned rows) { return got.connectivity.sub_matrix(0, j, rows, 1); };
  EXPECT_EQ(column(1, 6), matrix(6, 1, {0, 1, 2, 4, 5, 3}));
  EXPECT_EQ(column(2, 9), matrix(9, 1, {0, 1, 2, 3, 4, 5, 6, 7, 8}));
  EXPECT_EQ(column(3, 10), matrix(10, 1, {0, 1, 2, 3, 5, 6, 4, 7, 8, 9}));
  EXPECT_EQ(column(5, 5), matrix(5, 1, {0, 1, 2, 3, 4}));
  EXPECT_EQ(column(7, 6), matrix(6, 1, {5, 4, 3, 2, 1, 0}));
  EXPECT_EQ(column(8, 6), matrix(6, 1, {0, 1, 2, 3, 4, 5}));
  EXPECT_EQ(column(9, 8), matrix(8, 1, {0, 0, 1, 1, 2, 2, 2, 2})) << "not five distinct nodes";
  EXPECT_EQ(column(10, 8), matrix(8, 1, {0, 1, 2, 2, 0, 4, 5, 5})) << "not six distinct nodes";
}

TEST(medit_input, one_type_alone) {
  const written_file file;
  file.hold(five +
            "Hexahedra 2 1 2 3 4 5 5 5 5 0 1 2 3 4 5 1 2 3 0 Tetrahedra 1 4 3 2 1 0 Triangles 1 1 2 3 0 "
            "Quadrilaterals 1 1 2 3 99 0 HexahedraQ3 100 1 2");
  dense2D<double> coords;
  matrix elements;
  const struct {
    element_type type;
    int code;
    matrix expected;
  } cases[] = {{ELT_TETRA4, 2, matrix(4, 1, {3, 2, 1, 0})},
               {ELT_PYRAMID5, 2, matrix(5, 1, {0, 1, 2, 3, 4})},
               {ELT_SOLID_MIX, 2, matrix(8, 3, {0, 1, 2, 3, 4, none, none, none, 0,    1,    2,    3,
                                                4, 0, 1, 2, 3, 2,    1,    0,    none, none, none, none})},
               {ELT_WEDGE6, 2, matrix()},
               {ELT_FACE_MIX, -3, matrix()},
               {ELT_UNKNOWN, -4, matrix()},
               {ELT_NODE, -4, matrix()},
               {ELT_EDGE_MIX, -4, matrix()},
               {element_type(23), -4, matrix()}};
  for (const auto& c : cases) {
    EXPECT_EQ(medit_input(file.path(), coords, elements, c.type), c.code) << c.type;
    EXPECT_EQ(elements, c.expected) << c.type;
    EXPECT_EQ(coords.cols(), c.code < 0 ? 0U : 5U);
  }
}

TEST(medit_input, codes) {
  const struct {
    int code;
    string text;
  } cases[] = {{0, head},
               {0, "MeshVersionFormatted 2"},
               {0, head + "Vertices 0 End"},
               {-2, ""},
               {-2, "Dimension 3 Vertices 0"},
               {-2, "MeshVersionFormatted Dimension 3"},
               {-2, "MeshVersionFormatted 2 Dimension 4"},
               {-2, "MeshVersionFormatted 2 Vertices 0"},
               {-2, head + "Vertices -1"},
               {-2, head + "Vertices 1 0 0 0"},
               {-2, head + "Vertices 1 0 0 x 0"},
               {-2, head + "Vertices 1 0 0 0 4294967296"},
               {-2, head + "Vertices 1 0 0 0 -2147483649"},
               {-2, head + "Vertices 1 0 0 0 1.0"},
               {-2, five + "Dimension 2"},
               {-2, five + "Triangles 1 1 2 3"},
               {-2, five + "Triangles 1 1 2 3x 0"},
               {-2, five + "Triangles 18446744073709551617 1 2 3 0"},
               {-2, five + "Q" + string(5000, 'x')},
               {-2, five + "Corners 1 \"" + string(5000, 'x')},
               {-2, five + "Identifier \"without an end Triangles 1 1 2 3 0"},
               {-3, five + "Triangles 1 1 2 6 0"},
               {-3, five + "Triangles 1 1 2 0 0"},
               {-3, five + "Triangles 1 1 2 -1 0"},
               {-3, five + "Triangles 1 1 2 4294967296 0"},
               {-3, five + "Triangles 1 1 2 00000000000000000000000000007 0"},
               {0, five + "Triangles 1 1 2 00000000000000000000000000005 0"},
               {3, five + "Polyhedra 2147483647 1 2 3"},
               {-7, string("\1\0\0\0\4\0\0\0", 8)},
               {-7, string("\0\0\0\1\0\0\0\4", 8)}};
  for (const auto& c : cases) EXPECT_EQ(read(c.text).code, c.code) << c.text.substr(0, 200);
  EXPECT_EQ(medit_reading("/nonexistent/file").code, -1);
  EXPECT_EQ(medit_reading(nullptr).code, -1);
}

TEST(medit_input, sections_that_are_counted_and_others) {
  for (const char* const section :
       {"EdgesP3",          "EdgesP4",      "TrianglesP3",  "TrianglesP4", "Quadrilaterals6", "QuadrilateralsQ3",
        "QuadrilateralsQ4", "TetrahedraP3", "TetrahedraP4", "PyramidsP2",  "PyramidsP3",      "PyramidsP4",
        "PrismsP2",         "PrismsP3",     "PrismsP4",     "Prisms9",     "Hexahedra12",     "HexahedraQ2",
        "HexahedraQ3",      "HexahedraQ4",  "Polyhedra"}) {
    EXPECT_EQ(read(five + section + " 2 1 2 3 4 5 6 0\nTriangles 1 1 2 3 0").code, 2) << section;
  }
  for (const char* const section : {"Corners", "Ridges", "RequiredVertices", "NormalAtVertices", "Tangents", "Any"}) {
    EXPECT_EQ(read(five + section + " 2 1 2 3 4 5 6 0\nTriangles 1 1 2 3 0").connectivity, matrix(3, 1, {0, 1, 2}));
  }
}

/// What medit_solution_input() makes of a file.
struct solution_reading {
  unsigned dim = 9;
  dense2D<double> values{1, 1};
  dense1D<int> kinds{5};
  int code;

  explicit solution_reading(const char* path) : code(medit_solution_input(path, dim, values, kinds)) {
    EXPECT_TRUE(code == 0 || (dim == 0 && values.empty() && kinds.empty()));
  }
};

TEST(medit_solution_input, comes_back_as_it_was_written) {
  const written_file file;
  for (unsigned dim = 1; dim <= 3; ++dim) {
    const sample m(ELT_HEXA8, 3);
    const unsigned size = dim * (dim + 1) / 2;
    dense2D<double> tensors(size, 20);
    std::copy_n(m.coords.data(), tensors.size(), tensors.data());
    const dense1D<double> scalars = tensors.as_vector();
    ASSERT_EQ(medit_scalar(file.path(), dim, scalars), 0);
    const solution_reading scalar(file.path());
    EXPECT_ALL(scalar.code == 0, scalar.dim == dim, scalar.kinds == dense1D<int>{1});
    string bytes = file.content();
    ASSERT_EQ(medit_scalar(file.path(), dim, scalar.values.as_vector()), 0);
    EXPECT_EQ(file.content(), bytes);
    ASSERT_EQ(medit_vector(file.path(), dim, tensors.sub_matrix(0, 0, 1, 20)), 0);
    EXPECT_TRUE(solution_reading(file.path()).kinds == dense1D<int>{1});
    if (dim == 1) continue;
    ASSERT_EQ(medit_tensor(file.path(), tensors), 0);
    const solution_reading tensor(file.path());
    EXPECT_ALL(tensor.code == 0, tensor.dim == dim);
    EXPECT_EQ(tensor.kinds, dense1D<int>{3});
    bytes = file.content();
    ASSERT_EQ(medit_tensor(file.path(), tensor.values), 0);
    EXPECT_EQ(file.content(), bytes);
  }
}

TEST(medit_solution_input, fields_below_one_another) {
  const written_file file;
  const solution_reading got(
      file.hold(five + "Triangles 1 1 2 3 0 SolAtTriangles 1 1 1 4 SolAtVertices 2 3 1 3 2\n1 2 3 4 5 6 7 8 9 10\n"
                       "11 12 13 14 15 16 17 18 19 2d1 SolAtVertices 1 1 1 5"));
  ASSERT_EQ(got.code, 0);
  EXPECT_EQ(got.dim, 3U);
  EXPECT_EQ(got.kinds, (dense1D<int>{1, 3, 2}));
  ASSERT_EQ(got.values.cols(), 2U);
  for (unsigned k = 0; k < 20; ++k) EXPECT_EQ(got.values(k % 10, k / 10), k + 1);
  const struct {
    int code;
    string text;
    dense1D<int> kinds;
  } cases[] = {{0, "2 5 1 2 1 2 3 4 5", {1, 1, 1, 1, 1}},
               {0, "2 2 1 2 1 2", {2}},
               {0, "3 3 0 2", {}},
               {0, head, {}},
               {0, head + "SolAtVertices 1 1 4 1 2 3 4 5 6 7 8 9", {4}},
               {-2, "", {}},
               {-2, "3 3 1 1 1 2 3", {}},
               {-2, "3 4000000000 4000000000 2 1 2 3", {}},
               {-2, head + "SolAtVertices 1 1 5 1", {}},
               {-2, head + "SolAtVertices 1 2 1", {}},
               {-2, head + "SolAtVertices 4294967295 1 1 7", {}},
               {-2, "MeshVersionFormatted 2 SolAtVertices 1 1 1 1", {}},
               {-7, string("\1\0\0\0", 4), {}}};
  for (const auto& c : cases) {
    const solution_reading other(file.hold(c.text));
    EXPECT_ALL(other.code == c.code, other.kinds == c.kinds) << c.text << ": " << other.code;
  }
  EXPECT_EQ(solution_reading("/nonexistent/file").code, -1);
}

}  // namespace
