// What comes back of every element type in every format that is written and read.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "input_meshes.h"
#include "memory_file.h"

namespace {

using namespace input_meshes;

struct format {
  const char* name;
  int (*write)(const char*, const dense2D<double>&, const matrix&, element_type);
  int (*read)(const char*, dense2D<double>&, matrix&, element_type);
};

constexpr format formats[] = {{"VTK", vtk_output, vtk_input},
                              {"MEDIT", medit_output, medit_input},
                              {"NASTRAN", NASTRAN_output, NASTRAN_input},
                              {"FEMAP", FEMAP_output, FEMAP_input}};

constexpr element_type lost = ELT_UNKNOWN;  // what a format does not write

/// A type, and what it comes back as from each format.
constexpr struct {
  element_type written, read[4];
} types[] = {
    {ELT_EDGE2, {ELT_EDGE2, ELT_EDGE2, ELT_EDGE2, ELT_EDGE2}},
    {ELT_EDGE3, {ELT_EDGE3, ELT_EDGE2, ELT_EDGE2, ELT_EDGE3}},
    {ELT_FACE_MIX, {ELT_FACE_MIX, ELT_FACE_MIX, ELT_FACE_MIX, ELT_FACE_MIX}},
    {ELT_TRIA3, {ELT_TRIA3, ELT_TRIA3, ELT_TRIA3, ELT_TRIA3}},
    {ELT_QUAD4, {ELT_QUAD4, ELT_QUAD4, ELT_QUAD4, ELT_QUAD4}},
    {ELT_TRIA6, {ELT_TRIA6, ELT_TRIA3, ELT_TRIA6, ELT_TRIA6}},
    {ELT_QUAD8, {ELT_QUAD8, ELT_QUAD4, ELT_QUAD8, ELT_QUAD8}},
    {ELT_QUAD9, {ELT_QUAD9, ELT_QUAD4, ELT_QUAD8, ELT_QUAD8}},
    {ELT_SOLID_MIX, {ELT_SOLID_MIX, ELT_SOLID_MIX, ELT_SOLID_MIX, ELT_SOLID_MIX}},
    {ELT_TETRA4, {ELT_TETRA4, ELT_TETRA4, ELT_TETRA4, ELT_TETRA4}},
    {ELT_TETRA10, {ELT_TETRA10, ELT_TETRA4, ELT_TETRA10, ELT_TETRA10}},
    {ELT_PYRAMID5, {ELT_PYRAMID5, ELT_PYRAMID5, ELT_PYRAMID5, ELT_PYRAMID5}},
    {ELT_PYRAMID13, {lost, lost, ELT_PYRAMID13, ELT_PYRAMID13}},
    {ELT_PYRAMID14, {ELT_PYRAMID14, ELT_PYRAMID5, ELT_PYRAMID13, ELT_PYRAMID13}},
    {ELT_WEDGE6, {ELT_WEDGE6, ELT_WEDGE6, ELT_WEDGE6, ELT_WEDGE6}},
    {ELT_WEDGE15, {lost, lost, ELT_WEDGE15, ELT_WEDGE15}},
    {ELT_WEDGE18, {ELT_WEDGE18, ELT_WEDGE6, ELT_WEDGE15, ELT_WEDGE15}},
    {ELT_HEXA8, {ELT_HEXA8, ELT_HEXA8, ELT_HEXA8, ELT_HEXA8}},
    {ELT_HEXA20, {ELT_HEXA20, ELT_HEXA8, ELT_HEXA20, ELT_HEXA20}},
    {ELT_HEXA27, {ELT_HEXA27, ELT_HEXA8, ELT_HEXA20, ELT_HEXA20}},
};

/// Elements of a mixed type by increasing node count, as all formats write them.
matrix mixed_elements(element_type type) {
  const bool is_solid = type == ELT_SOLID_MIX;
  matrix elements(is_solid ? 8 : 4, 8, none);
  for (unsigned j = 0; j < 8; ++j) {
    const unsigned counts[] = {4, 5, 6, 8}, count = is_solid ? counts[j / 2] : 3 + j / 4;
    for (unsigned k = 0; k < count; ++k) elements(k, j) = (7 * k + 11 * j) % 60;
  }
  return elements;
}

/// Writes elements, reads them and writes them again: the bytes are the same, and the nodes as far as they are written.
void expect_round_trip(const format& f, const sample& m, const matrix& elements, element_type written,
                       element_type comes_back) {
  const memory_file first, second;
  dense2D<double> coords;
  matrix back;
  ASSERT_EQ(f.write(first.path(), m.coords, elements, written), 0);
  ASSERT_EQ(f.read(first.path(), coords, back, comes_back), 0);
  EXPECT_EQ(back, elements.sub_matrix(0, 0, nbr_nodes(comes_back), elements.cols()));
  EXPECT_EQ(coords.cols(), m.coords.cols());
  const bool is_flat = m.coords.rows() == 2 && f.write != formats[1].write;  // MEDIT has its dimension
  EXPECT_EQ(coords.rows(), is_flat ? 3 : m.coords.rows());
  for (unsigned j = 0; is_flat && j < coords.cols(); ++j) EXPECT_EQ(coords(2, j), 0);
  ASSERT_EQ(f.write(second.path(), coords, back, comes_back), 0);
  EXPECT_EQ(second.content(), first.content());
}

TEST(round_trip, every_type_in_every_format) {
  for (const auto& type : types) {
    const bool is_mixed = type.written == ELT_FACE_MIX || type.written == ELT_SOLID_MIX;
    for (unsigned k = 0; k < 4; ++k) {
      for (unsigned rows = 2; rows <= 3 && type.read[k] != lost; ++rows) {
        SCOPED_TRACE(std::string(formats[k].name) + ", type " + std::to_string(type.written));
        const sample m(type.written, rows);
        expect_round_trip(formats[k], m, is_mixed ? mixed_elements(type.written) : m.elements, type.written,
                          type.read[k]);
      }
    }
  }
}

/// Numbers without a value come back from VTK and MEDIT, and large ones from VTK as they were.
TEST(round_trip, unusual_numbers) {
  const matrix edge(2, 1, {0, 1});
  for (const format& f : formats) {
    const bool takes_all = f.write == formats[0].write || f.write == formats[1].write;
    for (const double x : {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
                           std::numeric_limits<double>::quiet_NaN()}) {
      const memory_file first, second;
      dense2D<double> coords;
      matrix back;
      ASSERT_EQ(f.write(first.path(), dense2D<double>(3, 2, {1, x, 2}), edge, ELT_EDGE2), 0);
      EXPECT_EQ(f.read(first.path(), coords, back, ELT_EDGE2), takes_all ? 0 : -2) << f.name << x;
      if (!takes_all) continue;
      ASSERT_EQ(f.write(second.path(), coords, back, ELT_EDGE2), 0);
      EXPECT_EQ(second.content(), first.content()) << f.name;
    }
  }
  random_meshes::generator random(3);
  dense2D<double> large(3, 1000), coords;
  for (double& x : large.as_vector()) {
    x = std::ldexp(1 + random_meshes::real(random), 33 + int(random_meshes::below(random, 100)));
  }
  const memory_file file;
  matrix back;
  ASSERT_EQ(vtk_output(file.path(), large, edge, ELT_EDGE2), 0);
  ASSERT_EQ(vtk_input(file.path(), coords, back, ELT_EDGE2), 0);
  EXPECT_EQ(coords, large);
}

/// What is left of an output that lay in memory of a caller's.
template <class Matrix>
class lent {
 public:
  Matrix view;

  explicit lent(std::uint64_t rows = 1) {
    std::fill(std::begin(memory_), std::end(memory_), 7);
    if constexpr (std::is_same_v<Matrix, dense2D<typename Matrix::value_type>>) {
      view = Matrix(rows, 1000 / rows, memory_);
    } else {
      view = Matrix(1000, memory_);
    }
  }
  ~lent() {
    EXPECT_FALSE(view.is_borrowed());
    EXPECT_TRUE(std::all_of(std::begin(memory_), std::end(memory_), [](auto x) { return x == 7; }));
  }

 private:
  typename Matrix::value_type memory_[1000];
};

/// Outputs leave memory of a caller's alone; a list that is passed for several outputs ends as one of them.
TEST(readers, outputs_in_the_memory_of_a_caller_and_one_list_for_several) {
  const sample m(ELT_TRIA3, 3);
  const memory_file vtk, medit, nastran, femap, solution;
  ASSERT_EQ(vtk_output(vtk.path(), m.coords, m.elements, ELT_TRIA3), 0);
  ASSERT_EQ(medit_output(medit.path(), m.coords, m.elements, ELT_TRIA3), 0);
  ASSERT_EQ(NASTRAN_output(nastran.path(), m.coords, m.elements, ELT_TRIA3), 0);
  ASSERT_EQ(FEMAP_output(femap.path(), m.coords, m.elements, ELT_TRIA3), 0);
  ASSERT_EQ(medit_vector(solution.path(), 3, m.coords), 0);
  for (unsigned k = 0; k < 5; ++k) {
    lent<dense2D<double>> coords(3);
    lent<matrix> elements(3);
    lent<dense1D<unsigned>> list;
    lent<dense1D<int>> codes;
    dense2D<double>& c = coords.view;
    matrix& e = elements.view;
    dense1D<unsigned>& l = list.view;
    dense1D<int>& t = codes.view;
    unsigned dim = 0;
    const auto call = [&] {
      if (k == 0) return vtk_input(vtk.path(), c, e, l, t, l);
      if (k == 1) return medit_input(medit.path(), c, e, l, t, l, l);
      if (k == 2) return NASTRAN_input(nastran.path(), c, e, l, t, l, l, l);
      if (k == 3) return FEMAP_input(femap.path(), c, e, l, t, l, l, l);
      e = matrix(), l = dense1D<unsigned>();
      return medit_solution_input(solution.path(), dim, c, t);
    };
    EXPECT_EQ(call(), 0);
    EXPECT_EQ(c.cols(), 60U);
    EXPECT_EQ(e.cols(), k < 4 ? 5U : 0U);
    EXPECT_EQ(l.size(), k == 0 ? 5U : k < 4 ? 60U : 0U);
    EXPECT_EQ(t.size(), 1U);
  }
}

}  // namespace
