// VTK, MEDIT, NASTRAN and EnSight files, byte for byte as a plain transcription of the formats prints them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "io/reference_order.h"
#include "qel/gridwork.h"
#include "random_meshes.h"
#include "written_file.h"

namespace {

using namespace qel::gridwork;
using qel::dense1D;
using qel::dense2D;
using std::string;
using matrix = dense2D<unsigned>;

constexpr unsigned none = ~0U;

// --- The formats, literally ----------------------------------------------------------------------------------------

struct row {
  string name;
  std::vector<unsigned> nodes;
};

/// What stands between the separators of a text, but for nothing. (Not all standard libraries that the tests run with have
/// streams that read.)
std::vector<string> split(const string& text, char separator) {
  std::vector<string> parts;
  for (std::size_t at = 0; (at = text.find_first_not_of(separator, at)) != string::npos;) {
    const std::size_t end = std::min(text.find(separator, at), text.size());
    parts.push_back(text.substr(at, end - at));
    at = end;
  }
  return parts;
}

/// Lines of "types name nodes;" for the types that are written; "2-5" stands for all from 2 to 5.
std::map<int, row> table(const char* text) {
  std::map<int, row> rows;
  for (const string& line : split(text, ';')) {
    const std::vector<string> fields = split(line, ' ');
    row r = {fields[1], {}};
    for (std::size_t k = 2; k < fields.size(); ++k) {
      const auto dash = fields[k].find('-');
      const int last = std::stoi(fields[k].substr(dash == string::npos ? 0 : dash + 1));
      for (int node = std::stoi(fields[k]); node <= last; ++node) r.nodes.push_back(static_cast<unsigned>(node));
    }
    for (const string& type : split(fields[0], ',')) rows[std::stoi(type)] = r;
  }
  return rows;
}

const auto vtk_cells =
    table("3,4 3 0-1; 6,8 5 0-2; 7,9,10 9 0-3; 12,13 10 0 1 3 2; 14,16 14 0-4; 17,19 13 0-5; 20,21,22 12 0-7");
const auto medit_sections = table(
    "3,4 Edges 0-1; 6,8 Triangles 0-2; 7,9,10 Quadrilaterals 0-3; 12,13 Tetrahedra 0-3; 14,16 Hexahedra 0-4 4 4 4;"
    "17,19 Hexahedra 0-2 2-5 5; 20,21,22 Hexahedra 0-7");
const auto nastran_cards = table(
    "3,4 CBAR 0-1; 6 CTRIA3 0-2; 7 CQUAD4 0-3; 8 CTRIA6 0-2 5 3 4; 9,10 CQUAD8 0-7; 12 CTETRA 0 2 1 3; 13 CTETRA 0 2 1 "
    "3 "
    "5 4 6 7 9 8; 14 CPYRAM 0-4; 15,16 CPYRAM 0-12; 17 CPENTA 0-5; 18,19 CPENTA 0-5 11 9 10 6-8 14 12 13; 20 CHEXA 0-7;"
    "21,22 CHEXA 0-11 16-19 12-15");
const auto ensight_elements = table(
    "3 bar2 0-1; 4 bar3 0-2; 6 tria3 0-2; 7 quad4 0-3; 8 tria6 0-2 5 3 4; 9,10 quad8 0-7; 12 tetra4 0 2 1 3; 13 "
    "tetra10 "
    "0 2 1 3 5 4 6 7 9 8; 17,19 penta6 0-5; 20 hexa8 0-7; 21,22 hexa20 0-19");

struct block {
  int type;
  unsigned reference;
  std::vector<std::vector<unsigned>> elements;
};

/// The plain type of a column with `used` nodes.
int plain(int type, std::size_t used) {
  if (type == ELT_FACE_MIX) return used == 3 ? ELT_TRIA3 : ELT_QUAD4;
  if (type == ELT_SOLID_MIX)
    return used == 4 ? ELT_TETRA4 : used == 5 ? ELT_PYRAMID5 : used == 6 ? ELT_WEDGE6 : ELT_HEXA8;
  return type;
}

std::vector<unsigned> used_nodes(const matrix& m, std::uint64_t j) {
  return {m.begin_column(j), std::find(m.begin_column(j), m.end_column(j), none)};
}

std::vector<block> split(const std::vector<matrix>& matrices, const std::vector<int>& types) {
  std::vector<block> blocks;
  for (std::size_t i = 0; i < matrices.size(); ++i) {
    std::map<int, block> groups;
    for (std::uint64_t j = 0; !matrices[i].empty() && j < matrices[i].cols(); ++j) {
      const auto nodes = used_nodes(matrices[i], j);
      const int type = plain(types[i], nodes.size());
      groups.try_emplace(type, block{type, static_cast<unsigned>(i), {}}).first->second.elements.push_back(nodes);
    }
    for (const auto& [type, group] : groups) blocks.push_back(group);
  }
  return blocks;
}

/// One number after another, each printed so.
template <class Numbers>
string all(const char* format, const Numbers& numbers) {
  string text;
  for (const auto x : numbers) text += print(format, x);
  return text;
}

/// The nodes of an element, numbered from `first` on, in the order of a format.
string ids(const char* format, const std::vector<unsigned>& nodes, const std::vector<unsigned>& order, unsigned first) {
  string text;
  for (const unsigned k : order) text += print(format, nodes[k] + first);
  return text;
}

/// Lines of a node's number, if there is a format for it, and its coordinates, with zeros up to `rows`.
string node_lines(const dense2D<double>& coords, const char* id, std::vector<const char*> formats, unsigned rows) {
  string text;
  for (unsigned j = 0; j < coords.cols(); ++j) {
    text += print(id, j + 1);
    for (unsigned k = 0; k < rows; ++k) text += print(formats[k], k < coords.rows() ? coords(k, j) : 0.0);
    text += formats.back();
  }
  return text;
}

string vtk(const dense2D<double>& coords, const std::vector<block>& blocks) {
  string cells, types;
  unsigned count = 0, entries = 0;
  const auto add = [&](const std::vector<unsigned>& nodes, const string& type) {
    cells += print("%d ", nodes.size()) + all("%d ", nodes) + "\n", types += type + "\n";
    ++count, entries += 1 + static_cast<unsigned>(nodes.size());
  };
  for (const block& b : blocks) {
    const row& r = vtk_cells.at(b.type);
    for (const auto& nodes : b.elements) {
      const auto base = static_cast<std::ptrdiff_t>(r.nodes.size());
      std::vector<unsigned> cell;
      for (const unsigned k : r.nodes) cell.push_back(nodes[k]);
      add(cell, r.name);
      if (nodes.size() > r.nodes.size()) add({nodes.begin() + base, nodes.end()}, "2");
    }
  }
  return "# vtk DataFile Version 2.0\nGenerated by QEL Gridwork(R).\nASCII\nDATASET UNSTRUCTURED_GRID\n\n" +
         print("POINTS %d double\n", coords.cols()) + node_lines(coords, "", {"%f ", "%f ", "%f", "\n"}, 3) +
         print("\nCELLS %d %d\n", count, entries) + cells + print("\nCELL_TYPES %d\n", count) + types;
}

string medit(const dense2D<double>& coords, const std::vector<block>& blocks) {
  string text = print("MeshVersionFormatted 1\nDimension %d\n", coords.rows()) +
                print("# Mesh format for MEDIT, generated by QEL Gridwork(R).\n\nVertices\n%d\n", coords.cols()) +
                node_lines(coords, "", {"%E ", "%E ", "%E ", "0 \n"}, static_cast<unsigned>(coords.rows())) + "\n";
  for (const auto& [type, r] : medit_sections) {
    unsigned count = 0;
    string lines;
    for (const block& b : blocks) {
      if (b.type != type) continue;
      count += static_cast<unsigned>(b.elements.size());
      for (const auto& nodes : b.elements) lines += ids("%d ", nodes, r.nodes, 1) + print("%d \n", b.reference);
    }
    if (count != 0) text += print("%s\n%d\n", r.name.c_str(), count) + lines + "\n";
  }
  return text + "End\n";
}

string nastran(const dense2D<double>& coords, const matrix& m, const std::vector<unsigned>& offsets,
               const std::vector<int>& types, const std::vector<unsigned>& properties) {
  const string line = "$----------------------------------------\n";
  string text = "$ QEL Gridwork(R) NASTRAN exporter\nBEGIN BULK\n" + line +
                "$ Referenced Material Records -----------\n$ Material Record :    ------------------\n"
                "$ Description of Material :   -----------\nMAT1    1       0.                 0.  0.\n" +
                line + "$                GRID POINTS             \n" + line +
                node_lines(coords, "GRID*   %16d                ", {"%16E", "%16E*C\n*C      ", "%16E", "\n"}, 3) +
                line + "$                 ELEMENTS               \n" + line;
  for (std::size_t k = 0; k < types.size(); ++k) {
    for (unsigned j = offsets[k]; j < offsets[k + 1]; ++j) {
      const auto found = nastran_cards.find(plain(types[k], used_nodes(m, j).size()));
      if (found == nastran_cards.end()) continue;
      text += print("%s,%d,%d", found->second.name.c_str(), j + 1, properties[j]);
      unsigned fields = 3;
      for (const unsigned local : found->second.nodes) {
        if (fields == 9) text += ",+C\n+C", fields = 1;
        text += print(",%d", m(local, j) + 1), ++fields;
      }
      text += "\n";
    }
  }
  return text + "ENDDATA\n";
}

string ensight(const dense2D<double>& coords, const std::vector<matrix>& matrices, const std::vector<int>& types) {
  string text = "EnSight Mesh File.\nGenerated by QEL Gridwork(R).\nnode id given\nelement id given\ncoordinates\n" +
                print("%8d\n", coords.cols()) + node_lines(coords, "%8d", {"%12.5e", "%12.5e", "%12.5e", "\n"}, 3);
  for (std::size_t i = 0; i < matrices.size(); ++i) {
    const auto found = ensight_elements.find(types[i]);
    const auto cols = static_cast<unsigned>(matrices[i].cols());
    if (matrices[i].empty() || found == ensight_elements.end()) continue;
    text += print("part %8d\n*************\n%s\n%8d\n", i + 1, found->second.name.c_str(), cols);
    for (unsigned j = 0; j < cols; ++j) {
      text += print("%8d", j + 1) + ids("%8d", used_nodes(matrices[i], j), found->second.nodes, 1) + "\n";
    }
  }
  return text;
}

// --- Meshes --------------------------------------------------------------------------------------------------------

std::mt19937 random_bits(1);

/// Random elements of a type on n nodes; a view whose columns lie apart.
matrix some(int type, unsigned cols, unsigned n) {
  constexpr unsigned face_nodes[] = {3, 4}, solid_nodes[] = {4, 5, 6, 8};
  matrix m(nbr_nodes(static_cast<element_type>(type)), cols, none);
  for (unsigned j = 0; j < cols; ++j) {
    const unsigned pick = random_bits() % 4;
    const std::uint64_t used = type == ELT_FACE_MIX    ? face_nodes[pick % 2]
                               : type == ELT_SOLID_MIX ? solid_nodes[pick]
                                                       : m.rows();
    for (unsigned i = 0; i < used; ++i) m(i, j) = random_bits() % n;
  }
  return random_meshes::with_gaps(m, none);
}

dense2D<double> some_nodes(unsigned rows, unsigned n) {
  constexpr double special[] = {
      0.0,  -0.0,        1e300, -1e-300, 5e-324, -0.5, 123456.5, random_meshes::infinity, -random_meshes::infinity,
      1e13, 2097152.5e-6};
  dense2D<double> all(rows + 2, n + 1);
  for (std::uint64_t k = 0; k < all.size(); ++k) {
    const unsigned pick = random_bits() % 40;
    all.data()[k] =
        pick < std::size(special) ? special[pick] : std::ldexp(random_bits() - 2e9, -static_cast<int>(pick));
  }
  all(1, 0) = random_meshes::not_a_number;
  return all.sub_matrix(1, 0, rows, n);
}

template <class T>
dense1D<T> array(const std::vector<T>& values) {
  dense1D<T> result(values.size());
  std::copy(values.begin(), values.end(), result.begin());
  return result;
}

bool has_vtk(int type) { return type == ELT_FACE_MIX || type == ELT_SOLID_MIX || vtk_cells.count(type) != 0; }

// --- Tests ---------------------------------------------------------------------------------------------------------

class writers : public ::testing::Test, protected written_file {};

TEST_F(writers, every_type_alone_and_in_pairs) {
  for (int run = 0; run < 23 * 12 && !HasFailure(); ++run) {
    const unsigned cols = std::vector<unsigned>{0, 1, 7, 1500}[run % 4], dim = 1 + run / 4 % 3;
    const std::vector<int> types = {run / 12, static_cast<int>(random_bits() % 23)};
    const auto type = static_cast<element_type>(types[0]), type2 = static_cast<element_type>(types[1]);
    SCOPED_TRACE(print("types %d %d, columns %u", type, type2, cols));
    const auto coords = some_nodes(dim, 40 + cols);
    const std::vector<matrix> m = {some(type, cols, 40), some(type2, 5, 40)};
    expect(ensight(coords, {m[0]}, types), 0, [&] { return ensight_output(path(), coords, m[0], type); });
    expect(ensight(coords, m, types), 0, [&] { return ensight_output(path(), coords, m[0], m[1], type, type2); });
    expect(medit(coords, split({m[0]}, types)), 0, [&] { return medit_output(path(), coords, m[0], type); });
    expect(medit(coords, split(m, types)), 0, [&] { return medit_output(path(), coords, m[0], m[1], type, type2); });
    if (dim == 1) continue;

    const bool bad = !has_vtk(type), bad2 = bad || !has_vtk(type2);
    const auto one_vtk = bad ? "" : vtk(coords, split({m[0]}, types)),
               two_vtk = bad2 ? "" : vtk(coords, split(m, types));
    expect(one_vtk, bad ? -2 : 0, [&] { return vtk_output(path(), coords, m[0], type); });
    expect(two_vtk, bad2 ? -2 : 0, [&] { return vtk_output(path(), coords, m[0], m[1], type, type2); });

    const std::vector<unsigned> ones(cols, 1);
    const auto one_deck = m[0].empty() ? absent : nastran(coords, m[0], {0, cols}, {type}, ones);
    expect(one_deck, 0, [&] { return NASTRAN_output(path(), coords, m[0], type); });
    matrix joined(std::max(m[0].rows(), m[1].rows()), cols + 5, none);
    for (unsigned j = 0; j < cols + 5; ++j) {
      const std::vector<unsigned> nodes = j < cols ? used_nodes(m[0], j) : used_nodes(m[1], j - cols);
      std::copy(nodes.begin(), nodes.end(), joined.column(j));
    }
    std::vector<unsigned> properties(cols + 5, 2);
    std::fill_n(properties.begin(), cols, 1);
    const std::vector<unsigned> offsets = {0, cols, cols + 5};
    const bool high = joined.rows() > 8 && ((type == ELT_SOLID_MIX && cols != 0) || type2 == ELT_SOLID_MIX);
    const string deck = joined.empty() ? absent : high ? "" : nastran(coords, joined, offsets, types, properties);
    expect(deck, high ? -3 : 0, [&] { return NASTRAN_output(path(), coords, m[0], m[1], type, type2); });
    expect(deck, high ? -3 : 0,
           [&] { return NASTRAN_output(path(), coords, joined, array(offsets), array(types), array(properties)); });
  }
}

TEST_F(writers, short_mixed_matrices_ranges_and_references) {
  const auto coords = some_nodes(3, 50);
  const std::vector<int> mixed = {ELT_FACE_MIX,  ELT_SOLID_MIX, ELT_SOLID_MIX,
                                  ELT_SOLID_MIX, ELT_SOLID_MIX, ELT_FACE_MIX};
  const std::vector<int> pure = {ELT_TRIA3, ELT_TETRA4, ELT_PYRAMID5, ELT_WEDGE6, ELT_SOLID_MIX, ELT_FACE_MIX};
  std::vector<matrix> m;
  for (std::size_t i = 0; i < pure.size(); ++i) m.push_back(some(pure[i], 30, 50));
  const auto codes = array(mixed);
  expect(vtk(coords, split(m, pure)), 0, [&] { return vtk_output(path(), coords, &m[0], &m[0] + 6, codes); });
  expect(medit(coords, split(m, pure)), 0, [&] { return medit_output(path(), coords, &m[0], &m[0] + 6, codes); });
  expect(ensight(coords, m, pure), 0, [&] { return ensight_output(path(), coords, &m[0], &m[0] + 6, codes); });
  expect(ensight(coords, {}, {}), 0, [&] { return ensight_output(path(), coords, &m[0], &m[0], {}); });
  for (std::size_t i = 0; i < pure.size(); ++i) {
    const auto deck = nastran(coords, m[i], {0, 30}, {pure[i]}, std::vector<unsigned>(30, 1));
    expect(deck, 0, [&] { return NASTRAN_output(path(), coords, m[i], static_cast<element_type>(mixed[i])); });

    std::vector<unsigned> references(30);
    for (unsigned& r : references) r = random_bits() % 8 == 0 ? none : random_bits() % 9;
    m[i](0, 4) = i % 2 == 0 ? 3 : 50, references[4] = none;  // left out, so it need not be valid
    std::vector<matrix> groups(9, matrix(m[i].rows(), 0));
    for (unsigned j = 0; j < 30; ++j) {
      ASSERT_TRUE(references[j] == none || groups[references[j]].push_back_column(m[i].column(j)));
    }
    const string grouped = medit(coords, split(groups, std::vector<int>(9, pure[i])));
    const auto type = static_cast<element_type>(mixed[i]);
    expect(grouped, 0, [&] { return medit_output(path(), coords, m[i], type, array(references)); });
  }
}

TEST(reference_order, is_the_stable_order) {
  for (const unsigned largest : {1U, 40U, 2047U, 2048U, 1U << 22, none - 1}) {
    std::vector<unsigned> references(500), expected, found;
    for (unsigned& r : references) r = random_bits() % 5 == 0 ? none : random_bits() % largest + 1;
    references[7] = 0, references[3] = largest;
    const auto wanted = [&](std::uint64_t j) { return j % 4 != 0; };
    for (unsigned j = 0; j < 500; ++j) {
      if (wanted(j) && references[j] != none) expected.push_back(j);
    }
    std::stable_sort(expected.begin(), expected.end(),
                     [&](unsigned a, unsigned b) { return references[a] < references[b]; });
    const auto values = array(references);
    detail::io::reference_order order(values);
    ASSERT_TRUE(order.prepare());
    order.for_each(wanted, [&](std::uint64_t j, unsigned) { found.push_back(static_cast<unsigned>(j)); });
    EXPECT_EQ(found, expected) << largest;
  }
}

TEST_F(writers, solutions) {
  for (const unsigned n : {0U, 7U, 8U, 16U, 21U}) {
    for (const unsigned rows : {0U, 2U, 3U, 4U, 6U}) {
      const auto field = some_nodes(rows, n);
      string scalar = print("%d %d %d 2\n", 3, 1, n), vector = print("3 %d %d 2\n", rows, n), lines;
      dense1D<double> values(n);
      for (unsigned j = 0; j < n; ++j) {
        values[j] = rows == 0 ? 1.5 * j : field(0, j);
        scalar += print("%E ", values[j]) + (j % 8 == 7 ? "\n" : "");
        for (unsigned k = 0; k < rows; ++k) lines += print("%E ", field(k, j));
        lines += "\n";
      }
      expect(scalar + "\n", 0, [&] { return medit_scalar(path(), 3, values); });
      expect(vector + lines, 0, [&] { return medit_vector(path(), 3, field); });
      const bool metric = rows == 3 || rows == 6;
      expect(metric ? print("%d %d %d 2\n", rows == 3 ? 2 : 3, rows, n) + lines : "", metric ? 0 : -2,
             [&] { return medit_tensor(path(), field); });
    }
  }
}

TEST_F(writers, vtk_cell_lists) {
  unsigned count = 3;
  dense1D<unsigned> cells{9}, types;
  EXPECT_EQ(vtk_convert(matrix(4, 1, {0, 1, 2, 3}), ELT_TETRA4, count, cells, types), 0);
  EXPECT_EQ(vtk_convert(matrix(6, 1, {0, 1, 2, 3, 4, none}), ELT_TRIA6, count, cells, types), 0);
  EXPECT_EQ(vtk_convert(matrix(), ELT_TRIA6, count, cells, types), 0);
  EXPECT_EQ(vtk_convert(matrix(3, 1, {7, 8, 9}), ELT_FACE_MIX, count, cells, types), 0);
  EXPECT_EQ(vtk_convert(matrix(3, 1), ELT_TRIA6, count, cells, types), -1);
  EXPECT_EQ(vtk_convert(matrix(4, 1), ELT_FACE_MIX, count, cells, types), -2);
  EXPECT_EQ(vtk_convert(matrix(), ELT_NODE, count, cells, types), -2);
  EXPECT_EQ(vtk_convert(matrix(13, 1), ELT_PYRAMID13, count, cells, types), -2);
  unsigned full = none;
  EXPECT_EQ(vtk_convert(matrix(3, 1), ELT_TRIA3, full, cells, types), -199);
  EXPECT_EQ(count, 7U);
  EXPECT_EQ(cells, (dense1D<unsigned>{9, 4, 0, 1, 3, 2, 3, 0, 1, 2, 3, 3, 4, none, 3, 7, 8, 9}));
  EXPECT_EQ(types, (dense1D<unsigned>{10, 5, 2, 5}));

  const dense2D<double> coords(2, 1, {1, 2});
  const auto stream = [&](const dense2D<double>& nodes, unsigned n) {
    std::FILE* file = std::fopen(path(), "w");
    const int code = vtk_output(file, nodes, n, cells, types);
    std::fputs("more", file);
    std::fclose(file);
    return code;
  };
  const string head = "# vtk DataFile Version 2.0\nGenerated by QEL Gridwork(R).\nASCII\nDATASET UNSTRUCTURED_GRID\n\n";
  cells = dense1D<unsigned>{2, 5, none, 1, 8, 4, 1};  // the last cell is cut short
  const string points = "POINTS 1 double\n1.000000 2.000000 0.000000\n\n";
  const string ends = "\nCELL_TYPES 4\n10\n5\n2\n5\nmore";
  expect(head + points + "CELLS 1 7\n2 5 -1 \n" + ends, 0, [&] { return stream(coords, 1); });
  expect(head + points + "CELLS 9 7\n2 5 -1 \n1 8 \n4 1 \n" + ends, 0, [&] { return stream(coords, 9); });
  expect("more", -2, [&] { return stream(dense2D<double>(1, 1), 1); });
  EXPECT_EQ(vtk_output(static_cast<std::FILE*>(nullptr), coords, 0, cells, types), -1);
}

TEST_F(writers, refusals) {
  const dense2D<double> coords(3, 3), wrong(4, 3), line(1, 3);
  const matrix good(3, 2, 1), beyond(3, 2, 3), high(10, 2, 1), mixed(8, 2, 1);
  const matrix* const first = &good;
  const dense1D<int> codes{ELT_TRIA3}, bad_code{23};
  const dense1D<unsigned> offsets{0, 2}, references{1, 2};
  const auto deck = [&](const dense1D<unsigned>& o, const dense1D<int>& t, const dense1D<unsigned>& p) {
    return NASTRAN_output(path(), coords, good, o, t, p);
  };
  // Refused before the file is opened: MEDIT meshes, and NASTRAN without elements.
  expect(absent, -2, [&] { return medit_output(path(), wrong, beyond, ELT_TRIA3); });
  expect(absent, -3, [&] { return medit_output(path(), coords, beyond, ELT_TRIA3); });
  expect(absent, -4, [&] { return medit_output(path(), coords, first + 1, first, codes); });
  expect(absent, -5, [&] { return medit_output(path(), coords, first, first, codes); });
  expect(absent, -3, [&] { return medit_output(path(), coords, first, first + 1, bad_code); });
  expect(absent, -5, [&] { return medit_output(path(), wrong, good, ELT_TRIA3, {}); });
  expect(absent, -3, [&] { return medit_output(path(), coords, beyond, ELT_TRIA3, references); });
  expect(absent, 0, [&] { return medit_output(path(), wrong, matrix(3, 0), ELT_TRIA3, {}); });
  expect(absent, 0, [&] { return NASTRAN_output(path(), wrong, matrix(3, 0), ELT_TRIA3); });
  expect(absent, 0, [&] { return NASTRAN_output(path(), wrong, matrix(), matrix(), ELT_TRIA3, ELT_QUAD4); });
  // Refused afterwards: the file is there and empty.
  for (const auto& nodes : {wrong, line}) {
    expect("", -2, [&] { return vtk_output(path(), nodes, first + 1, first, codes); });
    expect("", -2, [&] { return NASTRAN_output(path(), nodes, good, ELT_QUAD4); });
  }
  expect("", -2, [&] { return ensight_output(path(), wrong, first + 1, first, codes); });
  expect("", -4, [&] { return ensight_output(path(), line, first + 1, first, codes); });
  expect("", -5, [&] { return ensight_output(path(), line, first, first + 1, {}); });
  expect("", -3, [&] { return ensight_output(path(), line, good, ELT_QUAD4); });
  expect("", -4, [&] { return vtk_output(path(), coords, first + 1, first, codes); });
  expect("", -5, [&] { return vtk_output(path(), coords, first, first, codes); });
  expect("", -3, [&] { return vtk_output(path(), coords, beyond, ELT_TRIA3); });
  expect("", -2, [&] { return vtk_output(path(), coords, matrix(), ELT_NODE); });
  expect("", -3, [&] { return NASTRAN_output(path(), coords, good, ELT_QUAD4); });
  expect("", -3, [&] { return NASTRAN_output(path(), coords, high, ELT_SOLID_MIX); });
  expect("", -3, [&] { return NASTRAN_output(path(), coords, mixed, high, ELT_SOLID_MIX, ELT_TETRA10); });
  expect("", -5, [&] { return deck({0}, codes, {}); });
  expect("", -5, [&] { return deck({0, 3}, codes, {}); });
  expect("", -5, [&] { return deck({2, 1}, codes, {}); });
  expect("", -6, [&] { return deck(offsets, codes, {1}); });
  expect("", -3, [&] { return deck(offsets, bad_code, references); });
  const char* nowhere = "/nonexistent/file";  // with a fault behind it
  EXPECT_EQ(vtk_output(nowhere, wrong, good, ELT_TRIA3) + ensight_output(nowhere, wrong, good, ELT_TRIA3), -2);
  EXPECT_EQ(NASTRAN_output(nowhere, wrong, good, ELT_TRIA3) + medit_tensor(nowhere, wrong), -2);
}

// Elements that are left out are not looked at: not even for the rows that their type has.
TEST_F(writers, references_of_no_element) {
  const auto coords = some_nodes(3, 50);
  const string nodes = medit(coords, {});
  for (const int type : {ELT_SOLID_MIX, ELT_FACE_MIX, ELT_TETRA10}) {
    for (const unsigned rows : {1U, 2U, 7U}) {
      const dense1D<unsigned> references(9, none);
      expect(nodes, 0, [&] {
        return medit_output(path(), coords, matrix(rows, 9), static_cast<element_type>(type), references);
      });
    }
  }
}

// Entries of one number that all columns share: more columns than indices can name take no memory.
TEST_F(writers, more_nodes_than_indices) {
  for (const std::uint64_t count : {std::uint64_t{none}, std::uint64_t{none} + 1, std::uint64_t{none} + 5}) {
    double x[3] = {};
    const dense2D<double> coords(3, count, 0, x);
    const matrix tail(15, 1, none - 2), beyond(15, 1, none - 1);
    const char* nowhere = "/nonexistent/file";
    EXPECT_EQ(medit_output(nowhere, coords, tail, ELT_WEDGE15), -1) << "no fault but the path";
    EXPECT_EQ(medit_output(nowhere, coords, tail, ELT_WEDGE15, {1}), -1);
    EXPECT_EQ(medit_output(nowhere, coords, beyond, ELT_WEDGE15), -3);
    expect("", -2, [&] { return vtk_output(path(), coords, tail, ELT_WEDGE15); });
    expect("", -3, [&] { return vtk_output(path(), coords, beyond, ELT_WEDGE15); });
  }
}

}  // namespace
